#include "movie_memory.h"

#include <algorithm>
#include <mutex>

#include "large_pages.h"

namespace server {

namespace {

// Up to a slab is kept of movies that have gone, so it is a small part of those that are there.
constexpr size_t SMALLEST_SLAB = size_t{64} * 1024;
constexpr size_t LARGEST_SLAB = LARGE_PAGE;
constexpr size_t SLABS = 8;
constexpr size_t LARGEST_SHARE = LARGEST_SLAB / 8; // what is larger has a slab of its own

constinit std::atomic<size_t> s_live = 0; // in all slabs

} // namespace

SLAB_T::SLAB_T(size_t size) : size_(size), memory_(static_cast<std::byte *>(allocate_large_pages(size))) {}

SLAB_T::~SLAB_T() {
    free_large_pages(memory_, size_);
}

void SLAB_T::enter(size_t size) {
    live_ += size;
    s_live += size;
}

void SLAB_T::leave(size_t size) {
    live_ -= size;
    s_live -= size;
}

std::span<std::byte> SLAB_T::take(size_t size) {
    constexpr size_t ALIGNMENT = alignof(std::max_align_t);
    const size_t whole = (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    if (whole > size_ - taken_)
        return {};
    const std::span<std::byte> bytes(memory_ + taken_, size);
    taken_ += whole;
    return bytes;
}

SLAB_SHARE_T take_movie_memory(size_t size) {
    static std::mutex s_mutex;
    static std::shared_ptr<SLAB_T> s_current;
    if (size > LARGEST_SHARE) {
        auto slab = std::make_shared<SLAB_T>(size + alignof(std::max_align_t));
        slab->close();
        const auto bytes = slab->take(size);
        return {std::move(slab), bytes};
    }
    const std::lock_guard lock(s_mutex);
    for (;;) {
        if (s_current != nullptr) {
            if (const auto bytes = s_current->take(size); !bytes.empty())
                return {s_current, bytes};
            s_current->close();
        }
        const size_t fitting = std::clamp(s_live / SLABS, SMALLEST_SLAB, LARGEST_SLAB);
        s_current = std::make_shared<SLAB_T>(std::max(fitting, size + alignof(std::max_align_t)));
    }
}

} // namespace server
