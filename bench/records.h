// The records that every codec under comparison encodes and decodes: those of the library, plain structs
// whose strings, records and nodes are allocations of their own. each_field() names their fields once, for
// the checks and for those codecs that need no generated code.
#ifndef TAVISYS_BENCH_RECORDS_H
#define TAVISYS_BENCH_RECORDS_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "tavisys.h"

namespace bench {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using MOVIES_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;
using DETAIL_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;
using DISKS_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;

inline void release(PAGE_T **page) {
    delete_tavisys_basic_movie_ext_information(page);
}
inline void release(MOVIES_T **movies) {
    delete_tp_tavisys_dbdata_movie_information_list(movies);
    *movies = nullptr;
}
inline void release(DETAIL_T **detail) {
    release_tavisys_detail_movie_information(detail);
}
inline void release(DISKS_T **disks) {
    release_tavisys_harddisk_information_list(disks);
}
inline void release(TP_TAVISYS_VERSION_INFORMATION_T **version) {
    delete_tavisys_version_information(version);
}

// ---- Making records as a decoder has to

template <class RECORD>
RECORD *make() { // calloc() would be slower, and the peers' handicap
    auto *record = static_cast<RECORD *>(malloc(sizeof(RECORD)));
    *record = RECORD{};
    return record;
}
inline INT8_T *make_text(const char *text, size_t length) {
    auto *copy = static_cast<INT8_T *>(malloc(length + 1));
    memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}
inline BASIC_MOVIE_IDS_T *make_ids(size_t count) {
    auto *ids = make<BASIC_MOVIE_IDS_T>();
    *ids = {static_cast<INT32_T>(count), static_cast<INT32_T *>(malloc(count * sizeof(INT32_T)))};
    return ids;
}

// ---- What a field is

template <class T>
constexpr bool IS_NODE = requires(T node) {
    node.next;
};

// The record that a node carries: the node of a disk is its own, since the partitions stand beside the disk.
template <class NODE>
auto &content_of(NODE &node) {
    if constexpr (std::is_same_v<std::remove_const_t<NODE>, DISKS_T>)
        return node;
    else
        return *node.info;
}
template <class NODE>
NODE *next_of(NODE *node) {
    return static_cast<NODE *>(node->next);
}
template <class NODE>
size_t length_of(const NODE *list) {
    size_t count = 0;
    for (; list != nullptr; list = next_of(list))
        count++;
    return count;
}

// A list of so many nodes with their records, still to be filled: fill(record) in order.
template <class NODE, class FILL>
NODE *make_list(size_t count, FILL fill) {
    NODE *head = nullptr;
    NODE *tail = nullptr;
    for (size_t i = 0; i < count; i++) {
        NODE *node = make<NODE>();
        if constexpr (!std::is_same_v<NODE, DISKS_T>)
            node->info = make<std::remove_pointer_t<decltype(node->info)>>();
        fill(content_of(*node));
        (head == nullptr ? head : *reinterpret_cast<NODE **>(&tail->next)) = node;
        tail = node;
    }
    return head;
}

template <class T, class RECORD>
concept IS = std::is_same_v<std::remove_const_t<T>, RECORD>;

template <IS<TP_PAGE_INFORMATION> T, class F>
void each_field(T &r, F f) {
    f("pagenum", r.pagenum), f("pagesize", r.pagesize), f("totalpages", r.totalpages);
    f("totalmovies", r.totalmovies), f("replymovies", r.replymovies);
}
template <IS<TP_TAVISYS_BASIC_MOVIE_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("movid", r.movid), f("movcode", r.movcode), f("movname", r.movname), f("score", r.score);
    f("puttime", r.puttime), f("pubtime", r.pubtime), f("nposter", r.nposter), f("bposter", r.bposter);
    f("acronym", r.acronym), f("category_id", r.category_id), f("year_id", r.year_id);
    f("kind_ids", r.kind_ids), f("area_ids", r.area_ids), f("dimension_ids", r.dimension_ids);
    f("resolution_ids", r.resolution_ids), f("hdsn", r.hdsn), f("index", r.index);
}
template <IS<PAGE_T> T, class F>
void each_field(T &r, F f) {
    f("pageinfo", r.pageinfo), f("list", r.list);
}
template <IS<TP_TAVISYS_DBDATA_FILTER_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("name", r.name);
}
template <IS<TP_TAVISYS_DBDATA_PERSON_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("code", r.code), f("name", r.name);
}
template <IS<TP_TAVISYS_DBDATA_YEAR_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("year", r.year);
}
template <IS<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("big", r.big), f("middle", r.middle), f("small", r.small);
}
template <IS<TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("vid", r.vid), f("seqno", r.seqno), f("name", r.name), f("filepath", r.filepath), f("mp4", r.mp4);
}
template <IS<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("mid", r.mid), f("movcode", r.movcode), f("movnamech", r.movnamech), f("movnameen", r.movnameen);
    f("imdbvalue", r.imdbvalue), f("acronym", r.acronym), f("dimension_list", r.dimension_list);
    f("resolution_list", r.resolution_list), f("category_list", r.category_list), f("kind_list", r.kind_list);
    f("area_list", r.area_list), f("director_list", r.director_list), f("actor_list", r.actor_list);
    f("year_list", r.year_list), f("puttime", r.puttime), f("pubtime", r.pubtime);
    f("putintime", r.putintime), f("duration", r.duration), f("posters", r.posters), f("summary", r.summary);
    f("episodes", r.episodes), f("video_list", r.video_list);
}
template <IS<TP_MOVIE_DIMENSION_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("id", r.id), f("name", r.name);
}
template <IS<TP_MOVIE_FILTER_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("name", r.name);
}
template <IS<TP_MOVIE_FILTER_KVP_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("desc", r.desc), f("list", r.list);
}
template <IS<TP_MOVIE_SINGLE_KVP_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("desc", r.desc), f("value", r.value);
}
template <IS<TP_TAVISYS_VIDEO_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("id", r.id), f("seqno", r.seqno), f("name", r.name), f("mp4", r.mp4);
}
template <IS<DETAIL_T> T, class F>
void each_field(T &r, F f) {
    f("name", r.name), f("year", r.year), f("dimension_info", r.dimension_info), f("poster", r.poster);
    f("director_info", r.director_info), f("actor_info", r.actor_info), f("kind_info", r.kind_info);
    f("duration_info", r.duration_info), f("summary_info", r.summary_info), f("videos", r.videos);
    f("video_list", r.video_list);
}
template <IS<TP_TAVISYS_PARTITION_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("seqno", r.seqno), f("devname", r.devname), f("uuid", r.uuid), f("mntp", r.mntp);
}
template <IS<TP_TAVISYS_HARDDISK_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("devname", r.devname), f("serialno", r.serialno);
}
template <IS<DISKS_T> T, class F>
void each_field(T &r, F f) {
    f("info", r.info), f("list", r.list);
}

template <IS<TP_TAVISYS_VERSION_INFORMATION_T> T, class F>
void each_field(T &r, F f) {
    f("version", r.version), f("name", r.name), f("devid", r.devid);
}

template <class RECORD>
constexpr size_t count_fields() {
    RECORD record{};
    size_t count = 0;
    each_field(record, [&](const char *, auto &) { count++; });
    return count;
}

// Calls one of the functions, according to what the field is. Codecs overload them in one place:
//     integer(value) text(value) ids(value) list(value) optional(value) inner(value)
template <class CODEC, class VALUE>
auto dispatch(CODEC &&codec, VALUE &value) {
    using T = std::remove_const_t<VALUE>;
    if constexpr (std::is_integral_v<T>)
        return codec.integer(value);
    else if constexpr (std::is_same_v<T, INT8_T *>)
        return codec.text(value);
    else if constexpr (std::is_same_v<T, BASIC_MOVIE_IDS_T *>)
        return codec.ids(value);
    else if constexpr (!std::is_pointer_v<T>)
        return codec.inner(value);
    else if constexpr (IS_NODE<std::remove_pointer_t<T>>)
        return codec.list(value);
    else
        return codec.optional(value);
}

// ---- Whether two records say the same

template <class RECORD>
bool are_equal(const RECORD &left, const RECORD &right);

template <class VALUE>
bool same_field(const VALUE &left, const VALUE &right) {
    if constexpr (std::is_integral_v<VALUE>) {
        return left == right;
    } else if constexpr (!std::is_pointer_v<VALUE>) {
        return are_equal(left, right);
    } else {
        if (left == nullptr || right == nullptr)
            return left == right;
        if constexpr (std::is_same_v<VALUE, INT8_T *>)
            return strcmp(left, right) == 0;
        else if constexpr (std::is_same_v<VALUE, BASIC_MOVIE_IDS_T *>)
            return left->num == right->num &&
                   memcmp(left->ids, right->ids, static_cast<size_t>(left->num) * sizeof(INT32_T)) == 0;
        else
            return are_equal(*left, *right);
    }
}

template <class NODE>
bool are_equal_lists(const NODE *left, const NODE *right);

template <class RECORD>
bool are_equal_records(const RECORD &left, const RECORD &right) {
    bool same = true;
    const auto *from = reinterpret_cast<const char *>(&left);
    each_field(left, [&](const char *, const auto &field) {
        using FIELD = std::remove_cvref_t<decltype(field)>;
        const auto at = reinterpret_cast<const char *>(&field) - from;
        const auto &other = *reinterpret_cast<const FIELD *>(reinterpret_cast<const char *>(&right) + at);
        if constexpr (std::is_pointer_v<FIELD> && IS_NODE<std::remove_pointer_t<FIELD>>)
            same = same && are_equal_lists(field, other);
        else
            same = same && same_field(field, other);
    });
    return same;
}
template <class NODE>
bool are_equal_lists(const NODE *left, const NODE *right) {
    for (; left != nullptr && right != nullptr; left = next_of(left), right = next_of(right))
        if (!are_equal_records(content_of(*left), content_of(*right)))
            return false;
    return left == nullptr && right == nullptr;
}
// Of a node: of the whole list that it begins.
template <class RECORD>
bool are_equal(const RECORD &left, const RECORD &right) {
    if constexpr (IS_NODE<RECORD>)
        return are_equal_lists(&left, &right);
    else
        return are_equal_records(left, right);
}

} // namespace bench

#endif
