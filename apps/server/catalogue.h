// The catalogue as the requests read it: an immutable snapshot of what has been loaded, with the lists
// that answer a page without a search. A snapshot is built by the scanner, shared by all readers and
// freed with its last reader.
#ifndef TAVISYS_SERVER_CATALOGUE_H
#define TAVISYS_SERVER_CATALOGUE_H

#include <array>
#include <cstdint>
#include <map>
#include <memory_resource>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "codec_basic_movinfo.h"
#include "large_pages.h"
#include "movie.h"
#include "storage.h"
#include "tavisystype.h"

namespace server {

constexpr INT32_T ALL_CATEGORIES = 0;
constexpr INT32_T NO_FILTER = 0;
constexpr size_t ORDERS = TP_ORDER_BY_NAME + 1;

using POSITION_T = uint32_t; // of a movie in a snapshot
using POSITIONS_T = std::vector<POSITION_T>;
// The place of a movie among all movies of a snapshot, in one of the orders. Lists hold ranks, ascending: so
// they are in order, and what two of them have in common is found without looking at a movie.
using RANK_T = uint32_t;
using RANKS_T = std::vector<RANK_T>;

// The movies of a category, or with a value, in each order.
struct SORTED_T {
    bool is_filter = false;      // is one of several that a page may have to match: has ranks
    bool is_often_alone = false; // most of its pages match nothing else: has positions, to look nowhere else
    uint32_t number = 0;         // of the lists, while they are made
    uint32_t movies = 0;
    std::array<RANKS_T, ORDERS> ranks;
    std::array<POSITIONS_T, ORDERS> positions;
};

// One value of an attribute and the movies that carry it.
struct VALUE_T {
    std::string name;       // "全部" for the value that means all, "1993" for a year
    INT32_T year = 0;       // for a year
    bool means_all = false; // every movie carries it: "全部", the year 0
    SORTED_T sorted;        // empty for a value that means all
};
using VALUES_T = std::map<INT32_T, VALUE_T>;              // by id
using MENU_T = std::vector<const VALUES_T::value_type *>; // as a menu shows them
constexpr size_t VALUE_TYPES = TP_FILTER_TYPE_DIMENSION + 1;

struct CATEGORY_T {
    const INT8_T *name = nullptr;             // NULL for all categories together
    SORTED_T sorted;                          // empty for all categories together
    std::array<VALUES_T, VALUE_TYPES> values; // by TP_FILTER_TYPE_E
    std::array<MENU_T, VALUE_TYPES> menus;
};

struct PAGE_T {
    INT32_T total = 0;     // movies in the whole result
    POSITIONS_T positions; // those of the page, in order
};

class CATALOGUE_T {
public:
    // The movies are those of the disks, by disk and partition. So many threads make it.
    CATALOGUE_T(std::vector<MOVIE_PTR> movies, std::span<const DISK_T> disks, size_t threads = 1);

    const STORAGE_T &storage() const { return storage_; }
    const std::vector<MOVIE_PTR> &movies() const { return movies_; } // by position
    // Categories that hold movies, by id, ALL_CATEGORIES among them.
    const std::map<INT32_T, CATEGORY_T> &categories() const { return categories_; }
    const CATEGORY_T *category(INT32_T cid) const;
    // The movie of that id, or NULL.
    const MOVIE_T *movie(INT32_T mid) const;
    // The movies of that code: at most one on each partition.
    std::span<const POSITION_T> movies_of(const INT8_T *code) const;
    // The movie's part of a page's body, see page_body.h: at hand without a look at the movie.
    const TP_TAVISYS_BASIC_MOVIE_PART_T &page_part(POSITION_T position) const {
        return page_parts_[position];
    }
    // Movies that have a large poster.
    const POSITIONS_T &with_poster() const { return with_poster_; }
    // The request's numbers have been checked.
    PAGE_T page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) const;

private:
    struct KEYS_T;
    struct PAGE_MEMORY_T : std::pmr::monotonic_buffer_resource {
        PAGE_MEMORY_T() : monotonic_buffer_resource(LARGE_PAGES_T::get()) {}
    };

    POSITIONS_T file_movies(size_t threads);
    POSITIONS_T sort_movies(const std::vector<KEYS_T> &keys, size_t threads);
    POSITIONS_T sorted_by_code(const std::vector<KEYS_T> &keys, size_t threads) const;
    void place_movies(const POSITIONS_T &came, size_t threads);
    std::vector<const INT8_T *> serials() const;
    void fetch_movies_after(POSITION_T position) const;
    void place_movie(POSITION_T position, const INT8_T *serial, PAGE_MEMORY_T *memory);
    const DBDATA_MOVIE_INFORMATION_T &record(POSITION_T position) const { return *movies_[position]->record; }

    std::vector<MOVIE_PTR> movies_; // given up after the storage, whose nodes refer to their records
    STORAGE_T storage_;
    std::array<PAGE_MEMORY_T, 2> page_memory_; // of each half of the movies
    std::pmr::vector<TP_TAVISYS_BASIC_MOVIE_PART_T> page_parts_{LARGE_PAGES_T::get()}; // by position
    POSITIONS_T with_poster_;
    POSITIONS_T by_code_;
    std::array<POSITIONS_T, ORDERS> sorted_;            // every movie, by rank in each order
    std::vector<std::pair<INT32_T, POSITION_T>> by_id_; // ascending
    std::map<INT32_T, CATEGORY_T> categories_;
};

// Category id of a movie that has been loaded: the parser makes sure that there is one.
INT32_T category_id_of(const DBDATA_MOVIE_INFORMATION_T &movie);
// Score in tenths, 93 for "9.3"; 0 for a text that is no number from 0 to 10.
UINT32_T score_of(const DBDATA_MOVIE_INFORMATION_T &movie);
// Whether a value is the one that stands for all values.
bool means_all(const INT8_T *name);

} // namespace server

#endif
