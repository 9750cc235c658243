// Memory for what a catalogue holds of each movie and reads in small pieces from anywhere: on pages of two
// megabytes, where the system has them. With a million movies the processor else looks up a page nearly as
// often as it reads one.
#ifndef TAVISYS_SERVER_LARGE_PAGES_H
#define TAVISYS_SERVER_LARGE_PAGES_H

#include <cstdlib>
#include <memory_resource>
#include <new>
#include <sys/mman.h>

namespace server {

constexpr size_t LARGE_PAGE = size_t{2} * 1024 * 1024;

// What is smaller than a large page comes from the heap. Throws std::bad_alloc. To be freed by
// free_large_pages() with the same size.
inline void *allocate_large_pages(size_t size) {
    if (size < LARGE_PAGE)
        return operator new(size);
    const size_t whole = (size + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    void *memory = aligned_alloc(LARGE_PAGE, whole);
    if (memory == nullptr)
        throw std::bad_alloc();
    madvise(memory, whole, MADV_HUGEPAGE); // without them it is slower, no more
    return memory;
}

inline void free_large_pages(void *memory, size_t size) {
    if (size < LARGE_PAGE)
        operator delete(memory);
    else
        free(memory);
}

// For containers whose elements need no more alignment than any record.
class LARGE_PAGES_T : public std::pmr::memory_resource {
public:
    // Shared by all that use it, from any thread.
    static LARGE_PAGES_T *get() {
        static LARGE_PAGES_T pages;
        return &pages;
    }

private:
    void *do_allocate(size_t size, size_t) override { return allocate_large_pages(size); }
    void do_deallocate(void *memory, size_t size, size_t) override { free_large_pages(memory, size); }
    bool do_is_equal(const std::pmr::memory_resource &other) const noexcept override {
        return this == &other;
    }
};

} // namespace server

#endif
