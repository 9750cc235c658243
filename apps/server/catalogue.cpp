#include "catalogue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numeric>

namespace server {

namespace {

// Calls visit(info) for each record of a catalogue list.
template <class NODE, class VISIT>
void for_each(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next))
        if (node->info != nullptr)
            visit(*node->info);
}

void count_value(VALUES_T *values, INT32_T id, const INT8_T *name, INT32_T year, bool all,
                 POSITION_T position) {
    VALUE_T &value = (*values)[id];
    value.name = name;
    value.year = year;
    value.means_all = all;
    value.movies++;
    if (!all)
        value.positions.push_back(position);
}

// Files a movie under the values of its category that pages filter by.
void file_values(CATEGORY_T *category, const DBDATA_MOVIE_INFORMATION_T &movie, POSITION_T position) {
    for_each(movie.kind_list, [&](const auto &info) {
        count_value(&category->values[TP_FILTER_TYPE_KIND], info.id, info.name, 0, means_all(info.name),
                    position);
    });
    for_each(movie.area_list, [&](const auto &info) {
        count_value(&category->values[TP_FILTER_TYPE_AREA], info.id, info.name, 0, means_all(info.name),
                    position);
    });
    for_each(movie.year_list, [&](const auto &info) {
        count_value(&category->values[TP_FILTER_TYPE_YEAR], info.id, nullptr, info.year, info.year == 0,
                    position);
    });
    for_each(movie.dimension_list, [&](const auto &info) {
        count_value(&category->values[TP_FILTER_TYPE_DIMENSION], info.id, info.dimension, 0,
                    means_all(info.dimension), position);
    });
}

// The sorted lists of a category that a movie belongs into.
void add_lists(CATEGORY_T *category, const DBDATA_MOVIE_INFORMATION_T &movie,
               std::vector<SORTED_T *> *lists) {
    lists->push_back(&category->movies);
    for_each(movie.kind_list, [&](const auto &info) {
        if (!means_all(info.name))
            lists->push_back(&category->movies_of_kind[info.id]);
    });
}

bool has_kind(const DBDATA_MOVIE_INFORMATION_T &movie, INT32_T id) {
    bool found = false;
    for_each(movie.kind_list, [&](const auto &info) { found = found || info.id == id; });
    return found;
}

// The movies that carry the value, or NULL when the id filters nothing. An id that the category doesn't
// know selects no movie.
const POSITIONS_T *selected_by(const VALUES_T &values, INT32_T id) {
    static const POSITIONS_T NOTHING;
    if (id == NO_FILTER)
        return nullptr;
    const auto found = values.find(id);
    if (found == values.end())
        return &NOTHING;
    return found->second.means_all ? nullptr : &found->second.positions;
}

// What a page request asks for once the values that mean all are out of it.
struct CONDITION_T {
    INT32_T kind = NO_FILTER;
    INT32_T area = NO_FILTER;
    INT32_T year = NO_FILTER;
    INT32_T dimension = NO_FILTER;
    const POSITIONS_T *smallest = nullptr; // of the lists that the filters select

    void add(const VALUES_T &values, INT32_T id, INT32_T *condition) {
        const POSITIONS_T *selected = selected_by(values, id);
        if (selected == nullptr)
            return;
        *condition = id;
        if (smallest == nullptr || selected->size() < smallest->size())
            smallest = selected;
    }
    bool is_kind_at_most() const { return area == NO_FILTER && year == NO_FILTER && dimension == NO_FILTER; }
    bool holds_for(DBDATA_MOVIE_INFORMATION_T *movie) const {
        return (kind == NO_FILTER || has_kind(*movie, kind)) &&
               filter_movie_by_condition(movie, area, year, dimension) == 0;
    }
};

// The page's share of a whole result.
struct SLICE_T {
    size_t begin;
    size_t end;
};
SLICE_T slice_of(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, size_t total) {
    const auto size = static_cast<size_t>(request.pagesize);
    const size_t begin = std::min(total, (static_cast<size_t>(request.pagenum) - 1) * size);
    return {begin, std::min(total, begin + size)};
}

POSITIONS_T cut(const POSITIONS_T &positions, SLICE_T slice) {
    return {positions.begin() + static_cast<ptrdiff_t>(slice.begin),
            positions.begin() + static_cast<ptrdiff_t>(slice.end)};
}

const INT8_T *text_or_empty(const INT8_T *text) {
    return text == nullptr ? "" : text;
}

// Which of two movies of the same code goes first.
bool lies_before(const DBDATA_MOVIE_INFORMATION_T &left, const DBDATA_MOVIE_INFORMATION_T &right) {
    if (const int order = strcmp(text_or_empty(left.hddevname), text_or_empty(right.hddevname)); order != 0)
        return order < 0;
    return strcmp(text_or_empty(left.ptdevname), text_or_empty(right.ptdevname)) < 0;
}

// A text to sort by. Its first bytes stand beside it, so that most comparisons need not follow the
// pointer: with many movies each such step is a miss in the caches.
class TEXT_KEY_T {
public:
    explicit TEXT_KEY_T(const INT8_T *text) : text_(text) {
        for (size_t i = 0; i < sizeof start_ && text[i] != '\0'; i++)
            start_ |= uint64_t{static_cast<unsigned char>(text[i])} << (8 * (sizeof start_ - 1 - i));
    }
    int compare(const TEXT_KEY_T &other) const {
        if (start_ != other.start_)
            return start_ < other.start_ ? -1 : 1;
        return strcmp(text_, other.text_);
    }
    bool operator<(const TEXT_KEY_T &other) const { return compare(other) < 0; }

private:
    uint64_t start_ = 0; // big-endian, as strcmp() compares bytes
    const INT8_T *text_;
};

template <class KEY>
POSITIONS_T positions_of(const std::vector<std::pair<KEY, POSITION_T>> &keys) {
    POSITIONS_T positions;
    positions.reserve(keys.size());
    for (const auto &[key, position] : keys)
        positions.push_back(position);
    return positions;
}

// The positions in the order of their keys; equal ones stay as they are.
template <class KEY_OF>
POSITIONS_T sorted_by(const POSITIONS_T &positions, KEY_OF key_of) {
    using KEY_T = decltype(key_of(POSITION_T{}));
    std::vector<std::pair<KEY_T, POSITION_T>> keys;
    keys.reserve(positions.size());
    for (const POSITION_T position : positions)
        keys.emplace_back(key_of(position), position);
    std::stable_sort(keys.begin(), keys.end(),
                     [](const auto &left, const auto &right) { return left.first < right.first; });
    return positions_of(keys);
}

} // namespace

bool means_all(const INT8_T *name) {
    return name != nullptr && strcmp(name, TAVISYS_NAME_OF_ALL) == 0;
}

INT32_T category_id_of(const DBDATA_MOVIE_INFORMATION_T &movie) {
    const DBDATA_CATEGORY_INFORMATION_LIST_T *first = movie.category_list;
    return first == nullptr || first->info == nullptr ? ALL_CATEGORIES : first->info->id;
}

UINT32_T score_of(const DBDATA_MOVIE_INFORMATION_T &movie) {
    char *end = nullptr;
    const double value = strtod(text_or_empty(movie.imdbvalue), &end);
    if (end == movie.imdbvalue || !(value >= 0 && value <= 10))
        return 0;
    return static_cast<UINT32_T>(std::lround(value * 10));
}

CATALOGUE_T::CATALOGUE_T(std::vector<MOVIE_PTR> movies, std::span<const DISK_T> disks)
    : movies_(std::move(movies)), storage_(disks, movies_) {
    by_id_.reserve(movies_.size());
    for (POSITION_T position = 0; position < movies_.size(); position++) {
        by_id_.emplace(record(position).id, position);
        if (*text_or_empty(record(position).posters->big) != '\0')
            with_poster_.push_back(position);
    }
    place_movies();
    sort_movies();
    file_movies();
}

void CATALOGUE_T::place_movies() {
    disk_of_.reserve(movies_.size());
    const auto *disk = storage_.disks();
    for (; disk != nullptr; disk = static_cast<const DBDATA_HARDDISK_INFORMATION_LIST_T *>(disk->next))
        disk_of_.resize(disk_of_.size() + disk->movstat.parseok_movies, disk->info);
}

// Each order sorts by a key of its own and, among equals, by movie code.
void CATALOGUE_T::sort_movies() {
    by_code_ = positions_by_code();
    const auto by = [&](auto key_of) {
        return sorted_by(by_code_, [&](POSITION_T position) { return key_of(record(position)); });
    };
    sorted_[TP_ORDER_BY_PUT_TIME] = by([](const auto &movie) { return -int64_t{movie.put_time}; });
    sorted_[TP_ORDER_BY_PUBLISH_TIME] = by([](const auto &movie) { return -int64_t{movie.publish_time}; });
    sorted_[TP_ORDER_BY_SCORE] = by([](const auto &movie) { return -int64_t{score_of(movie)}; });
    sorted_[TP_ORDER_BY_NAME] = by([](const auto &movie) { return TEXT_KEY_T(movie.info->movie_name_ch); });

    for (size_t order = 0; order < ORDERS; order++) {
        ranks_[order].resize(movies_.size());
        for (uint32_t rank = 0; rank < movies_.size(); rank++)
            ranks_[order][sorted_[order][rank]] = rank;
    }
}

POSITIONS_T CATALOGUE_T::positions_by_code() const {
    std::vector<std::pair<TEXT_KEY_T, POSITION_T>> codes;
    codes.reserve(movies_.size());
    for (POSITION_T position = 0; position < movies_.size(); position++)
        codes.emplace_back(TEXT_KEY_T(record(position).info->movie_code), position);
    std::sort(codes.begin(), codes.end(), [&](const auto &left, const auto &right) {
        if (const int order = left.first.compare(right.first); order != 0)
            return order < 0;
        return lies_before(record(left.second), record(right.second));
    });
    return positions_of(codes);
}

void CATALOGUE_T::file_movies() {
    CATEGORY_T &all = categories_[ALL_CATEGORIES]; // there also when nothing is loaded
    // The lists that each movie stands in, looked up once for all orders; a map's nodes don't move.
    std::vector<SORTED_T *> lists;
    std::vector<size_t> end_of_lists(movies_.size());
    for (POSITION_T position = 0; position < movies_.size(); position++) {
        const DBDATA_MOVIE_INFORMATION_T &movie = record(position);
        CATEGORY_T &own = categories_[category_id_of(movie)];
        own.name = movie.category_list->info->name;
        add_lists(&own, movie, &lists);
        add_lists(&all, movie, &lists);
        end_of_lists[position] = lists.size();
    }
    for (size_t order = 0; order < ORDERS; order++)
        for (const POSITION_T position : sorted_[order])
            for (size_t i = position == 0 ? 0 : end_of_lists[position - 1]; i < end_of_lists[position]; i++)
                (*lists[i])[order].push_back(position);
    for (const POSITION_T position : sorted_[TP_ORDER_BY_PUT_TIME]) {
        const DBDATA_MOVIE_INFORMATION_T &movie = record(position);
        file_values(&categories_[category_id_of(movie)], movie, position);
        file_values(&all, movie, position);
    }
}

const CATEGORY_T *CATALOGUE_T::category(INT32_T cid) const {
    const auto found = categories_.find(cid);
    return found == categories_.end() ? nullptr : &found->second;
}

const MOVIE_T *CATALOGUE_T::movie(INT32_T mid) const {
    const auto found = by_id_.find(mid);
    return found == by_id_.end() ? nullptr : movies_[found->second].get();
}

std::span<const POSITION_T> CATALOGUE_T::movies_of(const INT8_T *code) const {
    const auto code_of = [this](POSITION_T position) { return record(position).info->movie_code; };
    const auto begin = std::partition_point(by_code_.begin(), by_code_.end(), [&](POSITION_T position) {
        return strcmp(code_of(position), code) < 0;
    });
    const auto end = std::partition_point(
        begin, by_code_.end(), [&](POSITION_T position) { return strcmp(code_of(position), code) == 0; });
    return {begin, end};
}

PAGE_T CATALOGUE_T::page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) const {
    const CATEGORY_T *category = this->category(request.cid);
    if (category == nullptr)
        return {};
    CONDITION_T condition;
    condition.add(category->values[TP_FILTER_TYPE_KIND], request.tid, &condition.kind);
    condition.add(category->values[TP_FILTER_TYPE_AREA], request.aid, &condition.area);
    condition.add(category->values[TP_FILTER_TYPE_YEAR], request.yid, &condition.year);
    condition.add(category->values[TP_FILTER_TYPE_DIMENSION], request.did, &condition.dimension);

    const auto order = static_cast<size_t>(request.orderby);
    if (condition.smallest != nullptr && condition.smallest->empty())
        return {};
    if (condition.is_kind_at_most()) { // there is a sorted list of just these
        const SORTED_T &sorted =
            condition.kind == NO_FILTER ? category->movies : category->movies_of_kind.at(condition.kind);
        const POSITIONS_T &all = sorted[order];
        return {static_cast<INT32_T>(all.size()), cut(all, slice_of(request, all.size()))};
    }

    POSITIONS_T matches;
    for (const POSITION_T position : *condition.smallest)
        if (condition.holds_for(movies_[position]->record))
            matches.push_back(position);
    const SLICE_T slice = slice_of(request, matches.size());
    const auto by_rank = [&](POSITION_T left, POSITION_T right) {
        return ranks_[order][left] < ranks_[order][right];
    };
    // Only the page's share needs to be in order, and what goes before it to go before it.
    const auto begin = matches.begin() + static_cast<ptrdiff_t>(slice.begin);
    const auto end = matches.begin() + static_cast<ptrdiff_t>(slice.end);
    if (begin != matches.end())
        std::nth_element(matches.begin(), begin, matches.end(), by_rank);
    std::partial_sort(begin, end, matches.end(), by_rank);
    return {static_cast<INT32_T>(matches.size()), cut(matches, slice)};
}

} // namespace server
