#include "transfer_records.h"

#include <new>

namespace server {

namespace {

using VALUES_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;
using PERSONS_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;
using YEARS_T = TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T;

TP_TAVISYS_DBDATA_FILTER_INFORMATION_T name_of(const auto &value) {
    return {value.name};
}
TP_TAVISYS_DBDATA_FILTER_INFORMATION_T dimension_of(const DBDATA_DIMENSION_INFORMATION_T &value) {
    return {value.dimension};
}
TP_TAVISYS_DBDATA_FILTER_INFORMATION_T resolution_of(const DBDATA_RESOLUTION_INFORMATION_T &value) {
    return {value.resolution};
}
TP_TAVISYS_DBDATA_PERSON_INFORMATION_T person_of(const auto &person) {
    return {person.code, person.name};
}
TP_TAVISYS_DBDATA_YEAR_INFORMATION_T year_of(const DBDATA_YEAR_INFORMATION_T &year) {
    return {year.year};
}
TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T video_of(const DBDATA_VIDEO_INFORMATION_T &video) {
    return {video.id, video.seqno, video.name, video.filepath, video.mp4};
}

} // namespace

template <class NODE, class RECORD>
void TRANSFER_LIST_T::append_to(LIST_T<NODE> *list, const RECORD &record) {
    struct ENTRY_T { // beside each other, as they are read
        NODE node;
        RECORD record;
    };
    auto *entry = static_cast<ENTRY_T *>(memory_.allocate(sizeof(ENTRY_T), alignof(ENTRY_T)));
    new (entry) ENTRY_T{{nullptr, &entry->record}, record};
    if (list->head == nullptr)
        list->head = &entry->node;
    else
        list->tail->next = &entry->node;
    list->tail = &entry->node;
}

template <class NODE, class FROM, class CONVERT>
NODE *TRANSFER_LIST_T::list_of(const FROM *from, CONVERT convert) {
    LIST_T<NODE> list;
    for (const FROM *node = from; node != nullptr; node = next_of(node))
        if (node->info != nullptr)
            append_to(&list, convert(*node->info));
    return list.head;
}

template <class NODE, class FROM, class CONVERT>
NODE *TRANSFER_LIST_T::list_or_empty_node(const FROM *from, CONVERT convert) {
    static constexpr NODE EMPTY{}; // shared by all; nobody writes to it
    NODE *list = list_of<NODE>(from, convert);
    return list == nullptr ? const_cast<NODE *>(&EMPTY) : list;
}

void TRANSFER_LIST_T::append(const DBDATA_MOVIE_INFORMATION_T &movie) {
    using RECORD_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
    RECORD_T to{};
    to.mid = movie.id;
    to.movcode = movie.info->movie_code;
    to.movnamech = movie.info->movie_name_ch;
    to.movnameen = movie.info->movie_name_en;
    to.imdbvalue = movie.imdbvalue;
    to.acronym = movie.acronym;
    to.dimension_list = list_of<VALUES_T>(movie.dimension_list, dimension_of);
    to.resolution_list = list_of<VALUES_T>(movie.resolution_list, resolution_of);
    to.category_list = list_of<VALUES_T>(movie.category_list, name_of<DBDATA_CATEGORY_INFORMATION_T>);
    to.kind_list = list_of<VALUES_T>(movie.kind_list, name_of<DBDATA_KIND_INFORMATION_T>);
    to.area_list = list_of<VALUES_T>(movie.area_list, name_of<DBDATA_AREA_INFORMATION_T>);
    to.director_list =
        list_or_empty_node<PERSONS_T>(movie.director_list, person_of<DBDATA_DIRECTOR_INFORMATION_T>);
    to.actor_list = list_or_empty_node<PERSONS_T>(movie.actor_list, person_of<DBDATA_ACTOR_INFORMATION_T>);
    to.year_list = list_or_empty_node<YEARS_T>(movie.year_list, year_of);
    to.puttime = movie.put_time;
    to.pubtime = movie.publish_time;
    to.putintime = movie.putin_time;
    to.duration = movie.duration;
    to.summary = movie.summary;
    to.episodes = movie.episodes;
    to.video_list = list_or_empty_node<VIDEOS_T>(movie.video_list, video_of);
    TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *posters = nullptr;
    if (movie.posters != nullptr) {
        posters = static_cast<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *>(
            memory_.allocate(sizeof *posters, alignof(TP_TAVISYS_DBDATA_POSTER_INFORMATION_T)));
        *posters = {movie.posters->big, movie.posters->middle, movie.posters->small};
    }
    to.posters = posters;
    append_to(&movies_, to);
}

} // namespace server
