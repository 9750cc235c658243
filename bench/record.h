// What the load generators count: requests and their times, and what has gone wrong.
#ifndef TAVISYS_BENCH_RECORD_H
#define TAVISYS_BENCH_RECORD_H

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace bench {

using CLOCK_T = std::chrono::steady_clock;

// Times, each told to a thirty-second of itself.
class TIMES_T {
public:
    void add(CLOCK_T::duration time) {
        const auto nanoseconds = static_cast<uint64_t>(
            std::max<int64_t>(0, std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()));
        counts_[place_of(nanoseconds)]++;
        count_++;
        longest_ = std::max(longest_, nanoseconds);
    }
    void add(const TIMES_T &other) {
        for (size_t i = 0; i < counts_.size(); i++)
            counts_[i] += other.counts_[i];
        count_ += other.count_;
        longest_ = std::max(longest_, other.longest_);
    }
    uint64_t count() const { return count_; }
    double longest_ms() const { return static_cast<double>(longest_) / 1e6; }
    // That many of a thousand took no longer.
    double ms_of(uint64_t per_mille) const {
        uint64_t left = (count_ * per_mille + 999) / 1000;
        for (size_t place = 0; place < counts_.size(); place++) {
            if (counts_[place] >= left)
                return std::min(end_of(place), static_cast<double>(longest_)) / 1e6;
            left -= counts_[place];
        }
        return longest_ms();
    }

private:
    static constexpr unsigned FINE_BITS = 5;
    static constexpr uint64_t FINE = 1U << FINE_BITS;

    static size_t place_of(uint64_t value) {
        if (value < FINE)
            return value;
        const auto shift = static_cast<unsigned>(std::bit_width(value)) - 1 - FINE_BITS;
        return std::min(COUNTS - 1, static_cast<size_t>(shift * FINE + (value >> shift)));
    }
    static double end_of(size_t place) {
        if (place < FINE)
            return static_cast<double>(place + 1);
        const size_t shift = place / FINE - 1;
        return static_cast<double>((place % FINE + FINE + 1) << shift);
    }

    static constexpr size_t COUNTS = FINE * 40;
    std::array<uint64_t, COUNTS> counts_{};
    uint64_t count_ = 0;
    uint64_t longest_ = 0;
};

// Says the first few of what goes wrong, and counts all of it.
class FAILURES_T {
public:
    void add(const std::string &what) {
        if (count_++ >= MOST_SAID)
            return;
        const std::lock_guard lock(mutex_);
        fprintf(stderr, "WRONG: %s\n", what.c_str());
    }
    size_t count() const { return count_; }

private:
    static constexpr size_t MOST_SAID = 30;
    std::atomic<size_t> count_ = 0;
    std::mutex mutex_;
};

} // namespace bench

#endif
