#include "catalogue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <tuple>

#include "page_body.h"
#include "share_work.h"

namespace server {

namespace {

// Calls visit(info) for each record of a catalogue list.
template <class NODE, class VISIT>
void for_each(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next))
        if (node->info != nullptr)
            visit(*node->info);
}

// Movies that are asked for ahead of their turn, when they come in another order than they lie in memory.
constexpr size_t AHEAD = 12;

// Has the processor fetch what will be read soon.
void fetch(std::span<const std::byte> bytes) {
    constexpr size_t CACHE_LINE = 64;
    constexpr int SECOND_LEVEL = 2;
    for (size_t at = 0; at < bytes.size(); at += CACHE_LINE)
        __builtin_prefetch(&bytes[at], 0, SECOND_LEVEL);
}

// The lists that each movie stands in: found once, filled in each order.
class RANK_LISTS_T {
public:
    void add(SORTED_T *list) {
        if (list->movies == 1) { // the first one
            list->number = static_cast<uint32_t>(lists_.size());
            lists_.push_back(list);
        }
        of_movies_.push_back(list->number);
    }
    void end_movie() { ends_.push_back(of_movies_.size()); }

    // Of one of the orders. `came`: where each movie has come, by position.
    void fill(size_t order, const POSITIONS_T &sorted, const POSITIONS_T &came) const {
        for (SORTED_T *list : lists_) {
            list->ranks[order].reserve(list->is_filter ? list->movies : 0);
            list->positions[order].reserve(list->is_often_alone ? list->movies : 0);
        }
        for (RANK_T rank = 0; rank < sorted.size(); rank++) {
            if (rank + AHEAD < sorted.size())
                __builtin_prefetch(begin(came[sorted[rank + AHEAD]]));
            const POSITION_T position = sorted[rank];
            const uint32_t *end = begin(came[position] + 1);
            for (const uint32_t *number = begin(came[position]); number < end; number++)
                append(lists_[*number], order, rank, position);
        }
    }

private:
    static void append(SORTED_T *list, size_t order, RANK_T rank, POSITION_T position) {
        if (list->is_filter)
            list->ranks[order].push_back(rank);
        if (list->is_often_alone)
            list->positions[order].push_back(position);
    }

    const uint32_t *begin(size_t came) const { return of_movies_.data() + (came == 0 ? 0 : ends_[came - 1]); }

    std::vector<SORTED_T *> lists_;
    std::vector<uint32_t> of_movies_; // numbers of lists, movie by movie
    std::vector<size_t> ends_;        // of a movie's numbers
};

// A year has no name of its own.
void add_value(CATEGORY_T *category, TP_FILTER_TYPE_E type, INT32_T id, const INT8_T *name, INT32_T year,
               RANK_LISTS_T *lists) {
    const auto [found, fresh] = category->values[static_cast<size_t>(type)].try_emplace(id);
    VALUE_T &value = found->second;
    if (fresh) {
        value.means_all = name == nullptr ? year == 0 : means_all(name);
        value.name = value.means_all ? TAVISYS_NAME_OF_ALL : name == nullptr ? std::to_string(year) : name;
        value.year = year;
    }
    value.sorted.movies++;
    if (value.means_all)
        return;
    value.sorted.is_filter = true;
    value.sorted.is_often_alone = type == TP_FILTER_TYPE_KIND && category->name != nullptr;
    lists->add(&value.sorted);
}

// Files a movie under its category and under the values that pages filter by.
void file_movie(CATEGORY_T *category, const DBDATA_MOVIE_INFORMATION_T &movie, RANK_LISTS_T *lists) {
    category->sorted.movies++;
    const auto add = [&](TP_FILTER_TYPE_E type, INT32_T id, const INT8_T *name) {
        add_value(category, type, id, name, 0, lists);
    };
    for_each(movie.kind_list, [&](const auto &info) { add(TP_FILTER_TYPE_KIND, info.id, info.name); });
    for_each(movie.area_list, [&](const auto &info) { add(TP_FILTER_TYPE_AREA, info.id, info.name); });
    for_each(movie.dimension_list,
             [&](const auto &info) { add(TP_FILTER_TYPE_DIMENSION, info.id, info.dimension); });
    for_each(movie.year_list, [&](const auto &info) {
        add_value(category, TP_FILTER_TYPE_YEAR, info.id, nullptr, info.year, lists);
    });
}

// The value that means all first; then years from the latest on, everything else by the number of its
// movies.
bool shown_before(const VALUES_T::value_type *left, const VALUES_T::value_type *right) {
    const auto key = [](const auto &entry) {
        const VALUE_T &value = entry.second;
        return std::tuple(!value.means_all, -int64_t{value.year}, -int64_t{value.sorted.movies}, entry.first);
    };
    return key(*left) < key(*right);
}

MENU_T menu_of(const VALUES_T &values) {
    MENU_T menu;
    menu.reserve(values.size());
    for (const auto &entry : values)
        menu.push_back(&entry);
    std::sort(menu.begin(), menu.end(), shown_before);
    return menu;
}

// The page's share of a whole result.
struct SLICE_T {
    size_t begin;
    size_t end;
};
SLICE_T slice_of(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) {
    const auto size = static_cast<size_t>(request.pagesize);
    const size_t begin = (static_cast<size_t>(request.pagenum) - 1) * size;
    return {begin, begin + size};
}

template <class PLACES>
std::span<const uint32_t> cut(const PLACES &places, SLICE_T slice) {
    const size_t begin = std::min(places.size(), slice.begin);
    return std::span(places).subspan(begin, std::min(places.size(), slice.end) - begin);
}

// Ranks from some place of a list on, ascending.
class CURSOR_T {
public:
    explicit CURSOR_T(const RANKS_T &ranks) : at_(ranks.data()), end_(at_ + ranks.size()) {}
    bool at_end() const { return at_ == end_; }
    RANK_T rank() const { return *at_; }
    void step() { at_++; }
    // Moves to the first rank that is not below the given one: the nearer it is, the sooner.
    void seek(RANK_T rank) {
        size_t step = 1;
        while (step < static_cast<size_t>(end_ - at_) && at_[step] < rank) {
            at_ += step;
            step *= 2;
        }
        at_ = std::lower_bound(at_, at_ + std::min(step + 1, static_cast<size_t>(end_ - at_)), rank);
    }

private:
    const RANK_T *at_;
    const RANK_T *end_;
};

// The lists that a page's filters select, in the page's order.
class SELECTION_T {
public:
    explicit SELECTION_T(size_t order) : order_(order) {}

    // An id that the category doesn't know selects no movie.
    void add(const VALUES_T &values, INT32_T id) {
        static const SORTED_T NOTHING;
        if (id == NO_FILTER)
            return;
        const auto found = values.find(id);
        if (found == values.end())
            select(NOTHING);
        else if (!found->second.means_all)
            select(found->second.sorted);
    }
    size_t count() const { return count_; }
    const SORTED_T &only() const { return *lists_[0]; }

    // Calls visit(rank) for what stands in all lists. It takes a step for each rank of the shortest at most.
    template <class VISIT>
    void for_each_common(VISIT visit) {
        CURSOR_T shortest(lists_[0]->ranks[order_]);
        std::vector<CURSOR_T> others;
        for (size_t i = 1; i < count_; i++)
            others.emplace_back(lists_[i]->ranks[order_]);
        while (!shortest.at_end()) {
            const RANK_T rank = shortest.rank();
            RANK_T next = rank;
            for (CURSOR_T &other : others) {
                other.seek(rank);
                if (other.at_end())
                    return;
                next = other.rank();
                if (next != rank)
                    break;
            }
            if (next == rank) {
                visit(rank);
                shortest.step();
            } else {
                shortest.seek(next);
            }
        }
    }

private:
    void select(const SORTED_T &list) {
        size_t at = count_++;
        for (; at > 0 && lists_[at - 1]->movies > list.movies; at--)
            lists_[at] = lists_[at - 1];
        lists_[at] = &list;
    }
    const size_t order_;
    size_t count_ = 0;
    std::array<const SORTED_T *, VALUE_TYPES> lists_{}; // the shortest first
};

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

// What a movie is sorted by.
struct CATALOGUE_T::KEYS_T {
    explicit KEYS_T(const DBDATA_MOVIE_INFORMATION_T &movie)
        : code(movie.info->movie_code), name(movie.info->movie_name_ch), category(category_id_of(movie)),
          put_time(-int64_t{movie.put_time}), publish_time(-int64_t{movie.publish_time}),
          score(-int64_t{score_of(movie)}) {}
    TEXT_KEY_T code;
    TEXT_KEY_T name;
    INT32_T category;
    int64_t put_time; // the latest first, as below
    int64_t publish_time;
    int64_t score;
};

CATALOGUE_T::CATALOGUE_T(std::vector<MOVIE_PTR> movies, std::span<const DISK_T> disks, size_t threads)
    : movies_(std::move(movies)), storage_(disks, movies_) {
    // What filing takes is given up before placing takes more.
    place_movies(file_movies(threads), threads);
}

// Looks at each movie as it has come: so they lie in memory, and one in another place would be waited for.
// Returns where each has come, by position.
POSITIONS_T CATALOGUE_T::file_movies(size_t threads) {
    std::vector<KEYS_T> keys;
    keys.reserve(movies_.size());
    CATEGORY_T &all = categories_[ALL_CATEGORIES]; // there also when nothing is loaded
    std::array<RANK_LISTS_T, 2> lists;             // of each movie's own category, of all together
    const auto file_under_own = [&](const DBDATA_MOVIE_INFORMATION_T &movie) {
        const KEYS_T &key = keys.emplace_back(movie);
        CATEGORY_T &own = categories_[key.category];
        own.name = movie.category_list->info->name;
        file_movie(&own, movie, &lists[0]);
        own.sorted.is_often_alone = true;
        lists[0].add(&own.sorted);
    };
    share_work(threads, lists.size(), [&](size_t part) {
        for (const MOVIE_PTR &movie : movies_) {
            if (part == 0)
                file_under_own(*movie->record);
            else
                file_movie(&all, *movie->record, &lists[1]);
            lists[part].end_movie();
        }
    });
    POSITIONS_T came = sort_movies(keys, threads);
    share_work(threads, lists.size() * ORDERS, [&](size_t piece) {
        const size_t order = piece % ORDERS;
        lists[piece / ORDERS].fill(order, sorted_[order], came);
    });
    for (auto &[id, category] : categories_)
        std::transform(category.values.begin(), category.values.end(), category.menus.begin(), menu_of);
    return came;
}

// Each order sorts by a key of its own and, among equals, by movie code. The movies of a category lie side by
// side, in the order in which most pages are asked for: such a page, however deep, reads memory from front to
// end.
POSITIONS_T CATALOGUE_T::sort_movies(const std::vector<KEYS_T> &keys, size_t threads) {
    by_code_ = sorted_by_code(keys, threads);
    POSITIONS_T came;
    const auto sort = [&](POSITIONS_T *sorted, auto key_of) {
        *sorted = sorted_by(by_code_, [&](POSITION_T at) { return key_of(keys[at]); });
    };
    share_work(threads, 1 + ORDERS, [&](size_t piece) {
        switch (piece) {
        case TP_ORDER_BY_PUT_TIME:
            return sort(&sorted_[piece], [](const KEYS_T &key) { return key.put_time; });
        case TP_ORDER_BY_PUBLISH_TIME:
            return sort(&sorted_[piece], [](const KEYS_T &key) { return key.publish_time; });
        case TP_ORDER_BY_SCORE:
            return sort(&sorted_[piece], [](const KEYS_T &key) { return key.score; });
        case TP_ORDER_BY_NAME:
            return sort(&sorted_[piece], [](const KEYS_T &key) { return key.name; });
        default:
            return sort(&came, [](const KEYS_T &key) { return std::pair(key.category, key.put_time); });
        }
    });

    POSITIONS_T position_of(came.size());
    for (POSITION_T position = 0; position < came.size(); position++)
        position_of[came[position]] = position;
    const auto place = [&](POSITIONS_T *sorted) {
        for (POSITION_T &at : *sorted)
            at = position_of[at];
    };
    place(&by_code_);
    std::for_each(sorted_.begin(), sorted_.end(), [&](POSITIONS_T &sorted) { place(&sorted); });
    return came;
}

POSITIONS_T CATALOGUE_T::sorted_by_code(const std::vector<KEYS_T> &keys, size_t threads) const {
    std::vector<std::pair<TEXT_KEY_T, POSITION_T>> codes;
    codes.reserve(keys.size());
    for (POSITION_T came = 0; came < keys.size(); came++)
        codes.emplace_back(keys[came].code, came);
    const auto goes_before = [&](const auto &left, const auto &right) {
        if (const int order = left.first.compare(right.first); order != 0)
            return order < 0;
        return lies_before(record(left.second), record(right.second));
    };
    const auto middle = codes.begin() + static_cast<ptrdiff_t>(codes.size() / 2);
    share_work(threads, 2, [&](size_t half) {
        std::sort(half == 0 ? codes.begin() : middle, half == 0 ? middle : codes.end(), goes_before);
    });
    std::inplace_merge(codes.begin(), middle, codes.end(), goes_before);
    return positions_of(codes);
}

// Of the disks, for each movie as it has come.
std::vector<const INT8_T *> CATALOGUE_T::serials() const {
    std::vector<const INT8_T *> serials;
    const auto *disk = storage_.disks();
    for (; disk != nullptr; disk = static_cast<const DBDATA_HARDDISK_INFORMATION_LIST_T *>(disk->next))
        serials.resize(serials.size() + disk->movstat.parseok_movies, disk->info->serialno);
    return serials;
}

void CATALOGUE_T::place_movies(const POSITIONS_T &came, size_t threads) {
    for (POSITION_T position = 0; position < came.size(); position++) {
        POSITION_T now_at = came[position];
        while (now_at < position) // has made room for another
            now_at = came[now_at];
        std::swap(movies_[position], movies_[now_at]);
    }
    const std::vector<const INT8_T *> serials = this->serials();
    page_parts_.resize(came.size());
    by_id_.resize(came.size());
    std::array<POSITIONS_T, 2> with_poster; // of each half
    share_work(threads, with_poster.size(), [&](size_t half) {
        const auto begin_of = [&](size_t of) { return static_cast<POSITION_T>(came.size() * of / 2); };
        for (POSITION_T position = begin_of(half); position < begin_of(half + 1); position++) {
            fetch_movies_after(position);
            place_movie(position, serials[came[position]], &page_memory_[half]);
            if (*text_or_empty(record(position).posters->big) != '\0')
                with_poster[half].push_back(position);
        }
    });
    with_poster_ = std::move(with_poster[0]);
    with_poster_.insert(with_poster_.end(), with_poster[1].begin(), with_poster[1].end());
    std::sort(by_id_.begin(), by_id_.end());
}

void CATALOGUE_T::fetch_movies_after(POSITION_T position) const {
    if (position + 2 * AHEAD < movies_.size())
        __builtin_prefetch(movies_[position + 2 * AHEAD].get());
    if (position + AHEAD < movies_.size())
        fetch(movies_[position + AHEAD]->bytes());
}

void CATALOGUE_T::place_movie(POSITION_T position, const INT8_T *serial, PAGE_MEMORY_T *memory) {
    const DBDATA_MOVIE_INFORMATION_T &movie = record(position);
    by_id_[position] = {movie.id, position};
    const std::string part = page_part_of(movie, movies_[position]->folder, serial);
    auto *kept = static_cast<char *>(memory->allocate(part.size(), 1));
    page_parts_[position] = {kept, static_cast<INT32_T>(part.copy(kept, part.size()))};
}

const CATEGORY_T *CATALOGUE_T::category(INT32_T cid) const {
    const auto found = categories_.find(cid);
    return found == categories_.end() ? nullptr : &found->second;
}

const MOVIE_T *CATALOGUE_T::movie(INT32_T mid) const {
    const auto found = std::lower_bound(by_id_.begin(), by_id_.end(), std::pair(mid, POSITION_T{0}));
    return found == by_id_.end() || found->first != mid ? nullptr : movies_[found->second].get();
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
    const auto order = static_cast<size_t>(request.orderby);
    const POSITIONS_T &at_rank = sorted_[order];
    const SLICE_T slice = slice_of(request);
    SELECTION_T selection(order);
    selection.add(category->values[TP_FILTER_TYPE_KIND], request.tid);
    selection.add(category->values[TP_FILTER_TYPE_AREA], request.aid);
    selection.add(category->values[TP_FILTER_TYPE_YEAR], request.yid);
    selection.add(category->values[TP_FILTER_TYPE_DIMENSION], request.did);

    PAGE_T page;
    if (selection.count() > 1) {
        size_t total = 0;
        selection.for_each_common([&](RANK_T rank) {
            if (slice.begin <= total && total < slice.end)
                page.positions.push_back(at_rank[rank]);
            total++;
        });
        page.total = static_cast<INT32_T>(total);
    } else if (selection.count() == 0 && category->name == nullptr) {
        const auto share = cut(at_rank, slice);
        page = {static_cast<INT32_T>(at_rank.size()), {share.begin(), share.end()}};
    } else { // there is a list of just these
        const SORTED_T &list = selection.count() == 0 ? category->sorted : selection.only();
        page.total = static_cast<INT32_T>(list.movies);
        if (list.is_often_alone) {
            const auto share = cut(list.positions[order], slice);
            page.positions.assign(share.begin(), share.end());
            return page;
        }
        const auto share = cut(list.ranks[order], slice);
        page.positions.resize(share.size());
        std::transform(share.begin(), share.end(), page.positions.begin(),
                       [&](RANK_T rank) { return at_rank[rank]; });
    }
    return page;
}

} // namespace server
