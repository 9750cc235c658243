// An encoded body: one block that its owner frees.
#ifndef TAVISYS_BENCH_BODY_H
#define TAVISYS_BENCH_BODY_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace bench {

class BODY_T {
public:
    BODY_T() = default;
    // Takes over the block.
    BODY_T(void *data, size_t length) : data_(static_cast<char *>(data)), length_(length) {}
    explicit BODY_T(size_t length) : BODY_T(malloc(length), length) {}
    BODY_T(BODY_T &&other)
    noexcept : data_(std::exchange(other.data_, nullptr)), length_(std::exchange(other.length_, 0)) {}
    BODY_T &operator=(BODY_T &&other) noexcept {
        std::swap(data_, other.data_);
        std::swap(length_, other.length_);
        return *this;
    }
    BODY_T(const BODY_T &) = delete;
    BODY_T &operator=(const BODY_T &) = delete;
    ~BODY_T() { free(data_); }
    char *data() const { return data_; }
    size_t length() const { return length_; }

private:
    char *data_ = nullptr;
    size_t length_ = 0;
};

} // namespace bench

#endif
