// The memory that movies lie in. A movie stays for as long as the server runs, while what it is made of comes
// and goes: side by side in one heap, every movie would keep a hole from closing, and with a million of them
// a third of the time of loading goes into looking for room among the holes.
#ifndef TAVISYS_SERVER_MOVIE_MEMORY_H
#define TAVISYS_SERVER_MOVIE_MEMORY_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>

namespace server {

// Memory of many movies, given up with the last of them.
class SLAB_T {
public:
    explicit SLAB_T(size_t size);
    SLAB_T(const SLAB_T &) = delete;
    SLAB_T &operator=(const SLAB_T &) = delete;
    ~SLAB_T();

    // The next so many bytes; none when there is no room left. One thread at a time, as close().
    std::span<std::byte> take(size_t size);
    void close() { closed_ = true; } // nothing more will be taken

    // What movies that are there take. From any thread.
    void enter(size_t size);
    void leave(size_t size);
    // Whether few movies keep much memory.
    bool is_mostly_empty() const { return closed_ && live_ * 2 < size_; }

private:
    const size_t size_;
    std::byte *const memory_;
    size_t taken_ = 0;
    std::atomic<size_t> live_ = 0;
    std::atomic<bool> closed_ = false;
};

struct SLAB_SHARE_T {
    std::shared_ptr<SLAB_T> slab;
    std::span<std::byte> bytes; // aligned for any record
};

// From any thread. Throws std::bad_alloc.
SLAB_SHARE_T take_movie_memory(size_t size);

// Lets std::allocate_shared() put an object and its counts into memory that has been taken.
template <class T>
struct TAKEN_MEMORY_T {
    using value_type = T;
    static constexpr size_t ROOM = 88; // for the object with its counts

    TAKEN_MEMORY_T(std::shared_ptr<SLAB_T> of, std::byte *taken) : slab(std::move(of)), at(taken) {}
    template <class OTHER>
    TAKEN_MEMORY_T(const TAKEN_MEMORY_T<OTHER> &other) : slab(other.slab), at(other.at) {}
    T *allocate(size_t) {
        static_assert(sizeof(T) <= ROOM);
        return reinterpret_cast<T *>(at);
    }
    void deallocate(T *, size_t) {} // the slab goes with the last that refers to it
    bool operator==(const TAKEN_MEMORY_T &other) const { return at == other.at; }

    std::shared_ptr<SLAB_T> slab;
    std::byte *at;
};

} // namespace server

#endif
