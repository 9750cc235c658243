// What a library holds, as one reading of everything has shown it: what every later reply is compared to.
#ifndef TAVISYS_BENCH_KNOWN_H
#define TAVISYS_BENCH_KNOWN_H

#include <array>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tavisys.h"

namespace bench {

using PAGE_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;
using PLACES_T = std::vector<size_t>; // of movies in KNOWN_T::movies
constexpr size_t ORDERS = TP_ORDER_BY_NAME + 1;

struct MOVIE_T {
    INT32_T id = 0;
    bool rewritten = false; // its document is rewritten now and then: each scan may give it a new id
    std::string code;
    std::string name;
    std::string small_poster;
    std::string poster;
    std::string acronym;
    std::string disk_serial;
    std::array<INT32_T, 5> numbers{};        // score, put time, publish time, category, year
    std::array<std::vector<INT32_T>, 4> ids; // kinds, areas, dimensions, resolutions
    INT32_T videos = 0;
    INT32_T duration = 0;

    INT32_T category() const { return numbers[3]; }
    INT32_T year() const { return numbers[4]; }
    bool carries(INT32_T type, INT32_T value) const;
};
MOVIE_T movie_of(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &record);
// All but the id and what the touch screens' form alone tells.
bool same_movie(const MOVIE_T &left, const MOVIE_T &right);

struct PARTITION_T {
    std::string disk;
    std::string name;
    INT32_T movies = 0;
    std::vector<std::string> codes; // in the order of a transfer
};

struct KNOWN_T {
    std::string uuid;
    std::array<INT32_T, 3> documents{}; // all, loaded, failed
    INT32_T disks = 0;
    std::string disk_list; // as text
    std::vector<PARTITION_T> partitions;
    std::string category_list;                                  // as text
    std::vector<INT32_T> categories;                            // 0, which means all, and the ids
    std::map<std::pair<INT32_T, INT32_T>, std::string> filters; // by category and type, as text
    std::vector<MOVIE_T> movies;
    std::vector<INT32_T> years; // of the movies, which are too large to run over
    std::set<std::string> posters;

    // The movies of a category that carry a value, in each order. Type 0 and value 0: all of them.
    using LIST_KEY_T = std::tuple<INT32_T, INT32_T, INT32_T>;
    std::map<LIST_KEY_T, std::array<PLACES_T, ORDERS>> lists;
    std::vector<LIST_KEY_T> keys; // to pick one

    // Asks the server for everything. Returns what is wrong with it, or nothing.
    std::string read();

private:
    std::string read_lists();
    std::string read_movies();
    std::string read_partitions();
    std::string file_movies(const std::array<PLACES_T, ORDERS> &sorted);
};

// Lists as texts that are easy to compare.
std::string text_of(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list);
std::string text_of(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list);
std::string text_of(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list);
std::vector<std::string> codes_of(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list);

inline std::string text_or_empty(const INT8_T *text) {
    return text == nullptr ? "" : text;
}

// Calls visit(node) for each node that has a record.
template <class NODE, class VISIT>
void for_each_node(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next))
        if (node->info != nullptr)
            visit(*node);
}

// A record or list that a call hands out, released with its object.
template <class T, void (*RELEASE)(T **)>
class OUT_T {
public:
    OUT_T() = default;
    OUT_T(const OUT_T &) = delete;
    OUT_T &operator=(const OUT_T &) = delete;
    ~OUT_T() {
        if (out_ != nullptr)
            RELEASE(&out_);
    }
    T **address() { return &out_; }
    const T *get() const { return out_; }
    const T *operator->() const { return out_; }

private:
    T *out_ = nullptr;
};
using PAGE_OUT_T =
    OUT_T<TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T, delete_tavisys_basic_movie_ext_information>;
using FILTERS_OUT_T = OUT_T<TP_TAVISYS_FILTER_INFORMATION_LIST_T, delete_tavisys_filter_information_list>;
using CATEGORIES_OUT_T =
    OUT_T<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T, delete_tavisys_category_information_list>;
using DISKS_OUT_T = OUT_T<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T, release_tavisys_harddisk_information_list>;
using STATUS_OUT_T = OUT_T<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T, delete_tavisys_sysrun_status_information>;
using SYSTEM_OUT_T = OUT_T<TP_TAVISYS_SYSTEM_INFORMATION_T, delete_tavisys_system_information>;
using VERSION_OUT_T = OUT_T<TP_TAVISYS_VERSION_INFORMATION_T, delete_tavisys_version_information>;
using DETAIL_OUT_T = OUT_T<TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T, release_tavisys_detail_movie_information>;
using TRANSFER_OUT_T =
    OUT_T<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T, delete_tp_tavisys_dbdata_movie_information_list>;

} // namespace bench

#endif
