// Counts of what the server does, for its file of metrics. Counting takes no lock and never fails: whoever
// counts is in the middle of answering somebody.
#ifndef TAVISYS_SERVER_METRICS_H
#define TAVISYS_SERVER_METRICS_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "scan_events.h"
#include "store.h"
#include "tavisystype.h"

namespace server {

class COUNTER_T {
public:
    void add(uint64_t number = 1) { value_.fetch_add(number, std::memory_order_relaxed); }
    void set(uint64_t number) { value_.store(number, std::memory_order_relaxed); }
    uint64_t value() const { return value_.load(std::memory_order_relaxed); }

private:
    std::atomic<uint64_t> value_ = 0;
};

class METRICS_T {
public:
    METRICS_T();

    void count_request(INT32_T type, RTSTATUS result, std::chrono::nanoseconds took);
    void count_scan(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, const SCAN_END_T &end);

    COUNTER_T accepted;   // connections
    COUNTER_T refused;    // of them, for their address
    COUNTER_T dropped;    // of them, for want of a whole request
    COUNTER_T broken;     // exchanges that ended before the reply was sent whole
    COUNTER_T sent_bytes; // by the others, heads included
    COUNTER_T pending;    // connections whose request hasn't arrived yet, now

    // All of it in Prometheus' text format. `held` is the number of connections, the pending ones included.
    std::string text(const CATALOGUE_T &catalogue, size_t held) const;

private:
    static constexpr size_t BUCKETS = 15; // of the time to make a reply, the last without limit
    static constexpr size_t RESULTS = 6;
    // Requests of one type: on cache lines of its own, for threads count different types at once.
    struct alignas(64) TYPE_T {
        std::array<COUNTER_T, RESULTS> results;
        std::array<COUNTER_T, BUCKETS> buckets; // each without those below it
        COUNTER_T nanoseconds;
    };
    std::string label_of(size_t type) const;
    std::string requests() const;
    std::string durations() const;

    const std::chrono::system_clock::time_point started_ = std::chrono::system_clock::now();
    const std::vector<INT32_T> types_; // that are answered
    std::vector<TYPE_T> by_type_;      // the last one for all others
    COUNTER_T scans_;
    COUNTER_T broken_scans_;
    COUNTER_T scan_microseconds_;
    COUNTER_T last_scan_microseconds_;
    COUNTER_T documents_left_out_;
    COUNTER_T folders_left_out_;
};

inline METRICS_T metrics;

// handle_request(), counted.
RTSTATUS handle_and_count(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen);

} // namespace server

#endif
