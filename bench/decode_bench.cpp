// What a byte of a body costs to decode, as bodies grow: the same for every length, whatever a peer puts
// into them.
//
//     decode_bench [--benchmark_...]
//
// Each case is a body of n records, n doubling from 1024; the allocations of the records are part of it.
// Times are those of the processor. Counters, of the fastest run: `ns_per_byte`; `ratio`, that over the same
// of the smallest body of the case. It grows as the records outgrow the caches, and in lists without repeats
// with the depth of the sort that looks for them; decoding in n squared would show as 128.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <malloc.h>
#include <memory>
#include <string>

#include "tavisys.h"

namespace {

constexpr int FEWEST = 1024;
constexpr int MOST = 128 * FEWEST;

// ---- Bodies, item by item: wire(2, "电影", nullptr)

void append_item(std::string *to, INT32_T value) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        to->push_back(static_cast<char>(static_cast<uint32_t>(value) >> shift));
}
void append_item(std::string *to, std::nullptr_t) {
    append_item(to, -1);
}
void append_item(std::string *to, const std::string &text) {
    append_item(to, static_cast<INT32_T>(text.size()));
    to->append(text);
}
template <class... ITEM>
std::string wire(const ITEM &...item) {
    std::string bytes;
    (append_item(&bytes, item), ...);
    return bytes;
}
std::string repeat(int count, const std::string &record) {
    std::string bytes;
    bytes.reserve(record.size() * static_cast<size_t>(count));
    for (; count > 0; count--)
        bytes += record;
    return bytes;
}
template <class RECORD>
std::string each(int count, RECORD record) {
    std::string bytes;
    for (int i = 0; i < count; i++)
        bytes += record(i);
    return bytes;
}

std::string movies(int count) {
    const std::string movie =
        wire(7, "TV1993-0001", "霸王别姬", "Farewell My Concubine", "9.3", "BWBJ", 1, "2D", 1, "BD", 1,
             "电影", 2, "剧情", "爱情", 2, "中国", "香港", 1, "P0001", "陈凯歌", 2, "P0002", "张国荣",
             "P0003", "张丰毅", 2, 0, 1993, 20230101, 19930101, 20230102, 171, 1, "posters/b.jpg",
             "posters/m.jpg", "posters/s.jpg") +
        wire(std::string(240, 's'), 1, 1, 31, 1, "霸王别姬", "videos/TV1993-0001.mkv", nullptr);
    return wire(count) + repeat(count, movie);
}

std::string page(int count) {
    const std::string movie = wire(1001, "TV-1", "霸王别姬", 93, 20170101, 19930102, "/n", "/b", "BWBJ", 6,
                                   1993, 1, 11, 1, 12, 1, 13, 1, 14, "SN", 4);
    return wire(1, 20, 3, 42, count, count) + repeat(count, movie);
}

// One movie whose kinds are names of no length: each four bytes of the body become two nodes and a string.
std::string empty_values(int count) {
    return wire(1, 7, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, count) + repeat(count, wire("")) +
           wire(0, 0, 0, 0, 1, 2, 3, 4, 0, nullptr, 0, 0);
}

std::string codes_without_record(int count) {
    return wire(1, nullptr, nullptr, nullptr, count) + repeat(count, wire(0));
}

std::string disks_of_one_name(int count) {
    return wire(count) + repeat(count, wire("sda", nullptr, 0));
}

std::string disks_without_names(int count) {
    return wire(count) + repeat(count, wire(nullptr, nullptr, 0));
}

// Scattered, so that the sort has to move every node. `count` is a power of two.
std::string scattered_number(int i, int count) {
    constexpr int64_t STEP = 40503; // odd: each number comes once
    return std::to_string(MOST + i * STEP % count);
}

std::string disks_of_many_names(int count) {
    return wire(count) +
           each(count, [=](int i) { return wire("sd" + scattered_number(i, count), nullptr, 0); });
}

// Names that differ behind 200 bytes: each comparison reads them.
std::string partitions_that_begin_alike(int count) {
    const std::string beginning(200, 'p');
    return wire(1, "sda", "SN", count) + each(count, [&](int i) {
               return wire(i, beginning + scattered_number(i, count), nullptr, nullptr);
           });
}

std::string long_strings(int count) {
    const std::string text(static_cast<size_t>(count) * 64, 'x');
    return wire(text, text, text);
}

// ---- Measuring

// Of this thread alone: what else the machine does is no part of it.
double cpu_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Seconds that decoding takes; what was decoded is freed outside of the measurement.
template <auto DECODE, auto RELEASE, class RECORD>
double decode_once(const std::string &body, void (*)(RECORD **)) {
    RECORD *record = nullptr;
    malloc_trim(0); // into memory as new as that of a program that decodes once
    const double begun = cpu_seconds();
    const INT32_T used = DECODE(body.data(), static_cast<INT32_T>(body.size()), &record);
    const double spent = cpu_seconds() - begun;
    if (used != static_cast<INT32_T>(body.size()))
        abort();
    RELEASE(&record);
    return spent;
}

template <auto DECODE, auto RELEASE>
void add(const char *name, std::string (*body_of)(int count)) {
    const auto smallest = std::make_shared<double>(0); // time per byte of the first body
    const auto measure = [=](benchmark::State &state) {
        const std::string body = body_of(static_cast<int>(state.range(0)));
        double least = std::numeric_limits<double>::max();
        for (auto _ : state) {
            const double once = decode_once<DECODE, RELEASE>(body, RELEASE);
            least = std::min(least, once);
            state.SetIterationTime(once);
        }
        const double per_byte = least / static_cast<double>(body.size());
        if (state.range(0) == FEWEST)
            *smallest = per_byte;
        state.counters["ns_per_byte"] = per_byte * 1e9;
        state.counters["ratio"] = per_byte / *smallest;
    };
    benchmark::RegisterBenchmark(name, measure)
        ->UseManualTime()
        ->RangeMultiplier(2)
        ->Range(FEWEST, MOST)
        ->MinTime(0.1)
        ->Unit(benchmark::kMicrosecond);
}

void add_cases() {
    add<decode_tp_tavisys_dbdata_movie_information_list_from_message,
        delete_tp_tavisys_dbdata_movie_information_list>("movies", movies);
    add<decode_tavisys_basic_movie_ext_information_from_message, delete_tavisys_basic_movie_ext_information>(
        "page", page);
    add<decode_tp_tavisys_dbdata_movie_information_list_from_message,
        delete_tp_tavisys_dbdata_movie_information_list>("empty_values", empty_values);
    add<decode_movinfo_request_information_from_buffer, delete_tp_tavisys_movieinfo_request_information>(
        "codes_without_record", codes_without_record);
    constexpr auto DECODE_DISKS = decode_tavisys_harddisk_information_list_from_message;
    constexpr auto RELEASE_DISKS = release_tavisys_harddisk_information_list;
    add<DECODE_DISKS, RELEASE_DISKS>("disks_of_one_name", disks_of_one_name);
    add<DECODE_DISKS, RELEASE_DISKS>("disks_without_names", disks_without_names);
    add<DECODE_DISKS, RELEASE_DISKS>("disks_of_many_names", disks_of_many_names);
    add<DECODE_DISKS, RELEASE_DISKS>("partitions_that_begin_alike", partitions_that_begin_alike);
    add<decode_tavisys_version_information_from_message, delete_tavisys_version_information>("long_strings",
                                                                                             long_strings);
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    add_cases();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
