// Time limits of the channels: how long to wait for progress, and how long the whole may take.
#ifndef TAVISYS_SUPPORT_DEADLINE_H
#define TAVISYS_SUPPORT_DEADLINE_H

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <limits>

#include "tavisystype.h"

namespace tavisys {

constexpr int64_t BYTES_PER_SECOND = 64 * 1024; // the slowest line that is still served
constexpr int64_t NO_LIMIT = std::numeric_limits<int64_t>::max();

inline int64_t now_ms() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

// Each wait for progress lasts at most `timeout` seconds, the whole transfer that and a second for every
// 64 KiB. The seconds are earned by bytes that have moved, not by those that a head claims: a peer that
// claims 2 GiB and trickles is dropped as soon as any other. A timeout of 0 or less sets no limit.
class DEADLINE_T {
public:
    explicit DEADLINE_T(INT32_T timeout)
        : wait_ms_(timeout > 0 ? timeout * 1000LL : NO_LIMIT), start_ms_(now_ms()) {}

    void count_moved(int64_t bytes) { moved_ += bytes; }

    // Milliseconds that the next wait may take, as poll() takes them: -1 for no limit, 0 when time is up.
    int wait_ms() const {
        if (wait_ms_ == NO_LIMIT)
            return -1;
        const int64_t end_ms = start_ms_ + wait_ms_ + moved_ * 1000 / BYTES_PER_SECOND;
        const int64_t left = std::max<int64_t>(end_ms - now_ms(), 0);
        return static_cast<int>(std::min<int64_t>({left, wait_ms_, std::numeric_limits<int>::max()}));
    }

private:
    int64_t wait_ms_;
    int64_t start_ms_;
    int64_t moved_ = 0;
};

} // namespace tavisys

#endif
