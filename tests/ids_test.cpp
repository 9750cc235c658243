// Ids of everything that has any, from many threads at once.
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <latch>
#include <numeric>
#include <thread>

#include "dbdata_movie.h"
#include "harness.h"

using namespace harness;

namespace {

constexpr size_t THREADS = 8;
constexpr INT32_T KEYS = 1000;

template <class RECORD>
INT32_T id_of(RECORD *fresh, void (*release)(RECORD **)) {
    const INT32_T id = fresh->id;
    release(&fresh);
    return id;
}
std::string name_of(INT32_T key) {
    return "并发" + std::to_string(key);
}

struct IDS_T {
    const char *what;
    INT32_T (*id_of)(INT32_T key);
    bool has_key; // one id for each key, instead of one for each record
};
const IDS_T ALL_IDS[] = {
    {"kind",
     [](INT32_T key) {
         return id_of(create_dbdata_kind_information(1, name_of(key).c_str()),
                      delete_dbdata_kind_information);
     },
     true},
    {"area",
     [](INT32_T key) {
         return id_of(create_dbdata_area_information(name_of(key).c_str()), delete_dbdata_area_information);
     },
     true},
    {"dimension",
     [](INT32_T key) {
         return id_of(create_dbdata_dimension_information(0, name_of(key).c_str()),
                      delete_dbdata_dimension_information);
     },
     true},
    {"resolution",
     [](INT32_T key) {
         return id_of(create_dbdata_resolution_information(0, name_of(key).c_str()),
                      delete_dbdata_resolution_information);
     },
     true},
    {"year",
     [](INT32_T key) { return id_of(create_dbdata_year_information(key), delete_dbdata_year_information); },
     true},
    {"movie",
     [](INT32_T) { return id_of(create_dbdata_movie_information(), release_dbdata_movie_information); },
     false},
    {"video",
     [](INT32_T) {
         return id_of(create_dbdata_video_information(1, "n", "f", nullptr), delete_dbdata_video_information);
     },
     false},
};

using Ids = LEAK_CHECKED_T;

} // namespace

TEST_F(Ids, ThreadsGetOneForEachKeyOrRecordAndLeaveNoGaps) {
    using SEEN_T = std::array<std::vector<INT32_T>, std::size(ALL_IDS)>;
    std::array<SEEN_T, THREADS> seen;
    std::array<INT32_T, std::size(ALL_IDS)> before{};
    ALL_IDS[0].id_of(KEYS); // of a category's first kinds the first alone is numbered apart
    for (size_t i = 0; i < before.size(); i++)
        before[i] = ALL_IDS[i].id_of(KEYS + 1);
    std::latch all(THREADS);
    std::vector<std::jthread> threads;
    for (size_t t = 0; t < THREADS; t++)
        threads.emplace_back([&all, &mine = seen[t], begin = static_cast<INT32_T>(t) * 37] {
            for (std::vector<INT32_T> &ids : mine)
                ids.resize(KEYS);
            all.arrive_and_wait();
            for (INT32_T key = begin; key < begin + KEYS; key++) // every thread begins elsewhere
                for (size_t i = 0; i < mine.size(); i++)
                    mine[i][static_cast<size_t>(key % KEYS)] = ALL_IDS[i].id_of(key % KEYS);
        });
    threads.clear(); // and joined
    for (size_t i = 0; i < std::size(ALL_IDS); i++) {
        SCOPED_TRACE(ALL_IDS[i].what);
        std::vector<INT32_T> ids = seen[0][i];
        for (size_t t = 1; t < THREADS; t++) {
            if (ALL_IDS[i].has_key)
                EXPECT_EQ(seen[0][i], seen[t][i]);
            else
                ids.insert(ids.end(), seen[t][i].begin(), seen[t][i].end());
        }
        std::sort(ids.begin(), ids.end());
        std::vector<INT32_T> dense(ids.size());
        std::iota(dense.begin(), dense.end(), before[i] + 1);
        EXPECT_EQ(dense, ids);
    }
}
