// What a person would write for each record who has nothing else in mind: see codecs.h.
#include "codecs.h"

namespace bench {

namespace {

using BASIC_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
using MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
using VALUES_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;
using PERSONS_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;
using YEARS_T = TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T;
using LABELLED_T = TP_MOVIE_FILTER_KVP_INFORMATION_T;
using SINGLE_T = TP_MOVIE_SINGLE_KVP_INFORMATION_T;

// ---- Encoding

void put(char *&at, INT32_T value) {
    memcpy(at, &value, sizeof value);
    at += sizeof value;
}
void put(char *&at, const INT8_T *text) {
    if (text == nullptr) {
        put(at, -1);
        return;
    }
    const size_t length = strlen(text);
    put(at, static_cast<INT32_T>(length));
    memcpy(at, text, length); // NOLINT(bugprone-not-null-terminated-result): no terminator travels
    at += length;
}
void put(char *&at, const BASIC_MOVIE_IDS_T *ids) {
    if (ids == nullptr) {
        put(at, 0);
        return;
    }
    put(at, ids->num);
    for (INT32_T i = 0; i < ids->num; i++) // of one or two ids: faster than memcpy()
        put(at, ids->ids[i]);
}
template <class NODE, class PUT_ENTRY>
void put_list(char *&at, const NODE *list, PUT_ENTRY put_entry) {
    char *count_at = at;
    at += sizeof(INT32_T);
    INT32_T count = 0;
    for (const NODE *node = list; node != nullptr; node = next_of(node), count++)
        put_entry(content_of(*node));
    put(count_at, count);
}

void put_page(char *at, const PAGE_T &page) {
    put(at, page.pageinfo.pagenum);
    put(at, page.pageinfo.pagesize);
    put(at, page.pageinfo.totalpages);
    put(at, page.pageinfo.totalmovies);
    put(at, page.pageinfo.replymovies);
    put_list(at, page.list, [&](const BASIC_T &movie) {
        put(at, movie.movid);
        put(at, movie.movcode);
        put(at, movie.movname);
        put(at, static_cast<INT32_T>(movie.score));
        put(at, movie.puttime);
        put(at, movie.pubtime);
        put(at, movie.nposter);
        put(at, movie.bposter);
        put(at, movie.acronym);
        put(at, movie.category_id);
        put(at, movie.year_id);
        put(at, movie.kind_ids);
        put(at, movie.area_ids);
        put(at, movie.dimension_ids);
        put(at, movie.resolution_ids);
        put(at, movie.hdsn);
        put(at, movie.index);
    });
}

void put_values(char *&at, const VALUES_T *list) {
    put_list(at, list, [&](const auto &value) { put(at, value.name); });
}
void put_persons(char *&at, const PERSONS_T *list) {
    put_list(at, list, [&](const auto &person) {
        put(at, person.code);
        put(at, person.name);
    });
}
void put_movie(char *&at, const MOVIE_T &movie) {
    put(at, movie.mid);
    put(at, movie.movcode);
    put(at, movie.movnamech);
    put(at, movie.movnameen);
    put(at, movie.imdbvalue);
    put(at, movie.acronym);
    put_values(at, movie.dimension_list);
    put_values(at, movie.resolution_list);
    put_values(at, movie.category_list);
    put_values(at, movie.kind_list);
    put_values(at, movie.area_list);
    put_persons(at, movie.director_list);
    put_persons(at, movie.actor_list);
    put_list(at, movie.year_list, [&](const auto &year) { put(at, year.year); });
    put(at, movie.puttime);
    put(at, movie.pubtime);
    put(at, movie.putintime);
    put(at, movie.duration);
    put(at, movie.posters == nullptr ? 0 : 1);
    if (movie.posters != nullptr) {
        put(at, movie.posters->big);
        put(at, movie.posters->middle);
        put(at, movie.posters->small);
    }
    put(at, movie.summary);
    put(at, movie.episodes);
    put_list(at, movie.video_list, [&](const auto &video) {
        put(at, video.vid);
        put(at, video.seqno);
        put(at, video.name);
        put(at, video.filepath);
        put(at, video.mp4);
    });
}

void put_labelled(char *&at, const LABELLED_T *record) {
    put(at, record == nullptr ? 0 : 1);
    if (record == nullptr)
        return;
    put(at, record->desc);
    put_list(at, record->list, [&](const auto &value) { put(at, value.name); });
}
void put_single(char *&at, const SINGLE_T *record) {
    put(at, record == nullptr ? 0 : 1);
    if (record == nullptr)
        return;
    put(at, record->desc);
    put(at, record->value);
}
void put_detail(char *at, const DETAIL_T &detail) {
    put(at, detail.name);
    put(at, detail.year);
    put(at, detail.dimension_info == nullptr ? 0 : 1);
    if (detail.dimension_info != nullptr) {
        put(at, detail.dimension_info->id);
        put(at, detail.dimension_info->name);
    }
    put(at, detail.poster);
    put_labelled(at, detail.director_info);
    put_labelled(at, detail.actor_info);
    put_labelled(at, detail.kind_info);
    put_single(at, detail.duration_info);
    put_single(at, detail.summary_info);
    put(at, detail.videos);
    put_list(at, detail.video_list, [&](const auto &video) {
        put(at, video.id);
        put(at, video.seqno);
        put(at, video.name);
        put(at, video.mp4);
    });
}

void put_disks(char *at, const DISKS_T &disks) {
    put_list(at, &disks, [&](const DISKS_T &disk) {
        put(at, disk.info->devname);
        put(at, disk.info->serialno);
        put_list(at, disk.list, [&](const auto &partition) {
            put(at, partition.seqno);
            put(at, partition.devname);
            put(at, partition.uuid);
            put(at, partition.mntp);
        });
    });
}

// ---- Decoding

INT32_T take(const char *&at) {
    INT32_T value = 0;
    memcpy(&value, at, sizeof value);
    at += sizeof value;
    return value;
}
INT8_T *take_text(const char *&at) {
    const INT32_T count = take(at);
    if (count < 0)
        return nullptr;
    const char *text = at;
    at += count;
    return make_text(text, static_cast<size_t>(count));
}
BASIC_MOVIE_IDS_T *take_ids(const char *&at) {
    const INT32_T count = take(at);
    if (count == 0)
        return nullptr;
    const auto length = static_cast<size_t>(count) * sizeof(INT32_T);
    auto *ids = static_cast<BASIC_MOVIE_IDS_T *>(malloc(sizeof(BASIC_MOVIE_IDS_T)));
    *ids = {count, static_cast<INT32_T *>(malloc(length))};
    for (INT32_T i = 0; i < count; i++)
        ids->ids[i] = take(at);
    return ids;
}
template <class RECORD>
RECORD *room_for() {
    return static_cast<RECORD *>(malloc(sizeof(RECORD)));
}
template <class NODE, class TAKE_ENTRY>
NODE *take_list(const char *&at, TAKE_ENTRY take_entry) {
    PVOID head = nullptr;
    PVOID *link = &head;
    for (INT32_T count = take(at); count > 0; count--) {
        using RECORD = std::remove_pointer_t<decltype(NODE::info)>;
        auto *info = room_for<RECORD>();
        auto *node = room_for<NODE>();
        node->info = info;
        take_entry(*info, *node);
        *link = node;
        link = &node->next;
    }
    *link = nullptr;
    return static_cast<NODE *>(head);
}

void take_basic(const char *&at, BASIC_T &movie) {
    movie.movid = take(at);
    movie.movcode = take_text(at);
    movie.movname = take_text(at);
    movie.score = static_cast<UINT32_T>(take(at));
    movie.puttime = take(at);
    movie.pubtime = take(at);
    movie.nposter = take_text(at);
    movie.bposter = take_text(at);
    movie.acronym = take_text(at);
    movie.category_id = take(at);
    movie.year_id = take(at);
    movie.kind_ids = take_ids(at);
    movie.area_ids = take_ids(at);
    movie.dimension_ids = take_ids(at);
    movie.resolution_ids = take_ids(at);
    movie.hdsn = take_text(at);
    movie.index = take(at);
    movie.totalvideo = 0;
    movie.duration = 0;
}
PAGE_T *take_page(const char *at) {
    auto *page = room_for<PAGE_T>();
    page->pageinfo.pagenum = take(at);
    page->pageinfo.pagesize = take(at);
    page->pageinfo.totalpages = take(at);
    page->pageinfo.totalmovies = take(at);
    page->pageinfo.replymovies = take(at);
    page->list = take_list<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T>(
        at, [&](BASIC_T &movie, auto &) { take_basic(at, movie); });
    return page;
}

VALUES_T *take_values(const char *&at) {
    return take_list<VALUES_T>(at, [&](auto &value, auto &) { value.name = take_text(at); });
}
PERSONS_T *take_persons(const char *&at) {
    return take_list<PERSONS_T>(at, [&](auto &person, auto &) {
        person.code = take_text(at);
        person.name = take_text(at);
    });
}
void take_movie(const char *&at, MOVIE_T &movie) {
    movie.mid = take(at);
    movie.movcode = take_text(at);
    movie.movnamech = take_text(at);
    movie.movnameen = take_text(at);
    movie.imdbvalue = take_text(at);
    movie.acronym = take_text(at);
    movie.dimension_list = take_values(at);
    movie.resolution_list = take_values(at);
    movie.category_list = take_values(at);
    movie.kind_list = take_values(at);
    movie.area_list = take_values(at);
    movie.director_list = take_persons(at);
    movie.actor_list = take_persons(at);
    movie.year_list = take_list<YEARS_T>(at, [&](auto &year, auto &) { year.year = take(at); });
    movie.puttime = take(at);
    movie.pubtime = take(at);
    movie.putintime = take(at);
    movie.duration = take(at);
    movie.posters = nullptr;
    if (take(at) != 0) {
        movie.posters = room_for<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T>();
        movie.posters->big = take_text(at);
        movie.posters->middle = take_text(at);
        movie.posters->small = take_text(at);
    }
    movie.summary = take_text(at);
    movie.episodes = take(at);
    movie.video_list = take_list<VIDEOS_T>(at, [&](auto &video, auto &) {
        video.vid = take(at);
        video.seqno = take(at);
        video.name = take_text(at);
        video.filepath = take_text(at);
        video.mp4 = take_text(at);
    });
}

LABELLED_T *take_labelled(const char *&at) {
    if (take(at) == 0)
        return nullptr;
    auto *record = room_for<LABELLED_T>();
    record->desc = take_text(at);
    record->list = take_list<TP_MOVIE_FILTER_INFORMATION_LIST_T>(
        at, [&](auto &value, auto &) { value.name = take_text(at); });
    return record;
}
SINGLE_T *take_single(const char *&at) {
    if (take(at) == 0)
        return nullptr;
    auto *record = room_for<SINGLE_T>();
    record->desc = take_text(at);
    record->value = take_text(at);
    return record;
}
DETAIL_T *take_detail(const char *at) {
    auto *detail = room_for<DETAIL_T>();
    detail->name = take_text(at);
    detail->year = take(at);
    detail->dimension_info = nullptr;
    if (take(at) != 0) {
        detail->dimension_info = room_for<TP_MOVIE_DIMENSION_INFORMATION_T>();
        detail->dimension_info->id = take(at);
        detail->dimension_info->name = take_text(at);
    }
    detail->poster = take_text(at);
    detail->director_info = take_labelled(at);
    detail->actor_info = take_labelled(at);
    detail->kind_info = take_labelled(at);
    detail->duration_info = take_single(at);
    detail->summary_info = take_single(at);
    detail->videos = take(at);
    detail->video_list = take_list<TP_TAVISYS_VIDEO_INFORMATION_LIST_T>(at, [&](auto &video, auto &) {
        video.id = take(at);
        video.seqno = take(at);
        video.name = take_text(at);
        video.mp4 = take_text(at);
    });
    return detail;
}

DISKS_T *take_disks(const char *at) {
    return take_list<DISKS_T>(at, [&](TP_TAVISYS_HARDDISK_INFORMATION_T &disk, DISKS_T &node) {
        disk.devname = take_text(at);
        disk.serialno = take_text(at);
        node.list = take_list<TP_TAVISYS_PARTITION_INFORMATION_LIST_T>(at, [&](auto &partition, auto &) {
            partition.seqno = take(at);
            partition.devname = take_text(at);
            partition.uuid = take_text(at);
            partition.mntp = take_text(at);
        });
    });
}

MOVIES_T *take_movies(const char *at) {
    return take_list<MOVIES_T>(at, [&](MOVIE_T &movie, auto &) { take_movie(at, movie); });
}

// ---- Freeing

template <class NODE, class FREE_ENTRY>
void free_list(NODE *list, FREE_ENTRY free_entry) {
    for (NODE *next = nullptr; list != nullptr; list = next) {
        next = next_of(list);
        free_entry(*list->info);
        free(list->info);
        free(list);
    }
}
void free_ids(BASIC_MOVIE_IDS_T *ids) {
    if (ids == nullptr)
        return;
    free(ids->ids);
    free(ids);
}
void free_page(PAGE_T **page) {
    free_list((*page)->list, [](BASIC_T &movie) {
        free(movie.movcode);
        free(movie.movname);
        free(movie.nposter);
        free(movie.bposter);
        free(movie.acronym);
        free_ids(movie.kind_ids);
        free_ids(movie.area_ids);
        free_ids(movie.dimension_ids);
        free_ids(movie.resolution_ids);
        free(movie.hdsn);
    });
    free(*page);
}
void free_values(VALUES_T *list) {
    free_list(list, [](auto &value) { free(value.name); });
}
void free_persons(PERSONS_T *list) {
    free_list(list, [](auto &person) {
        free(person.code);
        free(person.name);
    });
}
void free_movie(MOVIE_T &movie) {
    free(movie.movcode);
    free(movie.movnamech);
    free(movie.movnameen);
    free(movie.imdbvalue);
    free(movie.acronym);
    free_values(movie.dimension_list);
    free_values(movie.resolution_list);
    free_values(movie.category_list);
    free_values(movie.kind_list);
    free_values(movie.area_list);
    free_persons(movie.director_list);
    free_persons(movie.actor_list);
    free_list(movie.year_list, [](auto &) {});
    if (movie.posters != nullptr) {
        free(movie.posters->big);
        free(movie.posters->middle);
        free(movie.posters->small);
        free(movie.posters);
    }
    free(movie.summary);
    free_list(movie.video_list, [](auto &video) {
        free(video.name);
        free(video.filepath);
        free(video.mp4);
    });
}
void free_movies(MOVIES_T **list) {
    free_list(*list, free_movie);
}
void free_labelled(LABELLED_T *record) {
    if (record == nullptr)
        return;
    free(record->desc);
    free_list(record->list, [](auto &value) { free(value.name); });
    free(record);
}
void free_single(SINGLE_T *record) {
    if (record == nullptr)
        return;
    free(record->desc);
    free(record->value);
    free(record);
}
void free_detail(DETAIL_T **record) {
    DETAIL_T *detail = *record;
    free(detail->name);
    if (detail->dimension_info != nullptr)
        free(detail->dimension_info->name);
    free(detail->dimension_info);
    free(detail->poster);
    free_labelled(detail->director_info);
    free_labelled(detail->actor_info);
    free_labelled(detail->kind_info);
    free_single(detail->duration_info);
    free_single(detail->summary_info);
    free_list(detail->video_list, [](auto &video) {
        free(video.name);
        free(video.mp4);
    });
    free(detail);
}
void free_disks(DISKS_T **list) {
    for (DISKS_T *node = *list, *next = nullptr; node != nullptr; node = next) {
        next = next_of(node);
        free_list(node->list, [](auto &partition) {
            free(partition.devname);
            free(partition.uuid);
            free(partition.mntp);
        });
        free(node->info->devname);
        free(node->info->serialno);
        free(node->info);
        free(node);
    }
}

// ----

// All in one function each, as the library's are.
template <auto PUT, class RECORD>
[[gnu::flatten]] BODY_T encode(const RECORD &record, size_t length) {
    BODY_T body(length);
    PUT(body.data(), record);
    return body;
}
template <auto TAKE, class RECORD>
[[gnu::flatten]] RECORD *decode(const BODY_T &body) {
    return TAKE(body.data());
}
void put_movies(char *at, const MOVIES_T &movies) {
    put_list(at, &movies, [&](const MOVIE_T &movie) { put_movie(at, movie); });
}

constexpr const char *NAME = "floor";

} // namespace

template <>
CODEC_T<PAGE_T> floor_codec() {
    return {NAME, encode<put_page, PAGE_T>, decode<take_page, PAGE_T>, free_page};
}
template <>
CODEC_T<MOVIES_T> floor_codec() {
    return {NAME, encode<put_movies, MOVIES_T>, decode<take_movies, MOVIES_T>, free_movies};
}
template <>
CODEC_T<DETAIL_T> floor_codec() {
    return {NAME, encode<put_detail, DETAIL_T>, decode<take_detail, DETAIL_T>, free_detail};
}
template <>
CODEC_T<DISKS_T> floor_codec() {
    return {NAME, encode<put_disks, DISKS_T>, decode<take_disks, DISKS_T>, free_disks};
}

} // namespace bench
