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

// Files a movie under its category and kinds; called in the order of the lists.
void file_sorted(CATEGORY_T *category, const DBDATA_MOVIE_INFORMATION_T &movie, POSITION_T position,
                 size_t order) {
    category->movies[order].push_back(position);
    for_each(movie.kind_list, [&](const auto &info) {
        if (!means_all(info.name))
            category->movies_of_kind[info.id][order].push_back(position);
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

// Movie code, then disk and partition: the order among equals, and the key of a movie.
bool code_before(const DBDATA_MOVIE_INFORMATION_T &left, const DBDATA_MOVIE_INFORMATION_T &right) {
    if (const int order = strcmp(left.info->movie_code, right.info->movie_code); order != 0)
        return order < 0;
    if (const int order = strcmp(text_or_empty(left.hddevname), text_or_empty(right.hddevname)); order != 0)
        return order < 0;
    return strcmp(text_or_empty(left.ptdevname), text_or_empty(right.ptdevname)) < 0;
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

CATALOGUE_T::CATALOGUE_T(std::vector<MOVIE_PTR> movies, INT32_T disks)
    : movies_(std::move(movies)), disks_(disks) {
    by_id_.reserve(movies_.size());
    for (POSITION_T position = 0; position < movies_.size(); position++)
        by_id_.emplace(record(position).id, position);
    sort_movies();
    file_movies();
}

// Each order sorts by a number of its own and, among equals, by movie code. The rank by movie code is
// taken first, so that the strings are compared in two sorts only.
void CATALOGUE_T::sort_movies() {
    const size_t count = movies_.size();
    POSITIONS_T by_code(count);
    std::iota(by_code.begin(), by_code.end(), POSITION_T{0});
    std::sort(by_code.begin(), by_code.end(),
              [&](POSITION_T left, POSITION_T right) { return code_before(record(left), record(right)); });

    std::vector<UINT32_T> scores(count);
    for (POSITION_T position = 0; position < count; position++)
        scores[position] = score_of(record(position));

    sorted_.fill(by_code);
    std::stable_sort(
        sorted_[TP_ORDER_BY_PUT_TIME].begin(), sorted_[TP_ORDER_BY_PUT_TIME].end(),
        [&](POSITION_T left, POSITION_T right) { return record(left).put_time > record(right).put_time; });
    std::stable_sort(sorted_[TP_ORDER_BY_PUBLISH_TIME].begin(), sorted_[TP_ORDER_BY_PUBLISH_TIME].end(),
                     [&](POSITION_T left, POSITION_T right) {
                         return record(left).publish_time > record(right).publish_time;
                     });
    std::stable_sort(sorted_[TP_ORDER_BY_SCORE].begin(), sorted_[TP_ORDER_BY_SCORE].end(),
                     [&](POSITION_T left, POSITION_T right) { return scores[left] > scores[right]; });
    std::stable_sort(sorted_[TP_ORDER_BY_NAME].begin(), sorted_[TP_ORDER_BY_NAME].end(),
                     [&](POSITION_T left, POSITION_T right) {
                         return strcmp(record(left).info->movie_name_ch, record(right).info->movie_name_ch) <
                                0;
                     });
    for (size_t order = 0; order < ORDERS; order++) {
        ranks_[order].resize(count);
        for (uint32_t rank = 0; rank < count; rank++)
            ranks_[order][sorted_[order][rank]] = rank;
    }
}

void CATALOGUE_T::file_movies() {
    categories_[ALL_CATEGORIES]; // there also when nothing is loaded
    for (size_t order = 0; order < ORDERS; order++) {
        for (const POSITION_T position : sorted_[order]) {
            const DBDATA_MOVIE_INFORMATION_T &movie = record(position);
            const INT32_T cid = category_id_of(movie);
            CATEGORY_T &own = categories_[cid];
            own.name = movie.category_list->info->name;
            file_sorted(&own, movie, position, order);
            file_sorted(&categories_[ALL_CATEGORIES], movie, position, order);
            if (order != TP_ORDER_BY_PUT_TIME)
                continue;
            file_values(&own, movie, position);
            file_values(&categories_[ALL_CATEGORIES], movie, position);
        }
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
