#include "movie_records.h"

#include <cstring>
#include <string>

#include "catalogue.h"
#include "dbdata_category.h"

namespace server {

namespace {

constexpr INT32_T YEAR_OF_DATE = 10000; // a date is YYYYMMDD

// The first dimension that doesn't stand for all.
const DBDATA_DIMENSION_INFORMATION_T *dimension_of(const DBDATA_MOVIE_INFORMATION_T &movie) {
    for (const auto *node = movie.dimension_list; node != nullptr; node = next_of(node))
        if (node->info != nullptr && !means_all(node->info->dimension))
            return node->info;
    return nullptr;
}

bool is_absolute(const INT8_T *path) {
    return path[0] == '/' || strstr(path, "://") != nullptr;
}

} // namespace

INT8_T *path_on_loan(ARENA_T *arena, std::string_view folder, const INT8_T *relative) {
    if (relative == nullptr || relative[0] == '\0')
        return nullptr;
    return is_absolute(relative) ? on_loan(relative) : arena->text({folder, "/", relative});
}

// A labelled list without values is left out: one without a list can't be encoded.
template <class NODE>
TP_MOVIE_FILTER_KVP_INFORMATION_T *DETAIL_RECORD_T::labelled(const INT8_T *label, const NODE *list) {
    auto *values = arena_.list_of<TP_MOVIE_FILTER_INFORMATION_LIST_T>(
        list, [](const auto &info) { return TP_MOVIE_FILTER_INFORMATION_T{info.name}; },
        [](const auto &info) { return !means_all(info.name); });
    if (values == nullptr)
        return nullptr;
    return arena_.keep(TP_MOVIE_FILTER_KVP_INFORMATION_T{on_loan(label), values});
}

void DETAIL_RECORD_T::fill_videos(const MOVIE_T &movie) {
    detail_.video_list = arena_.list_or_empty_node<TP_TAVISYS_VIDEO_INFORMATION_LIST_T>(
        movie.record->video_list, [&](const DBDATA_VIDEO_INFORMATION_T &video) {
            detail_.videos++;
            const INT8_T *file = video.mp4 != nullptr ? video.mp4 : video.filepath;
            return TP_TAVISYS_VIDEO_INFORMATION_T{video.id, video.seqno, video.name,
                                                  path_on_loan(&arena_, movie.folder, file)};
        });
}

DETAIL_RECORD_T::DETAIL_RECORD_T(const MOVIE_T &movie) {
    const DBDATA_MOVIE_INFORMATION_T &record = *movie.record;
    const INT32_T cid = category_id_of(record);
    detail_.name = record.info->movie_name_ch;
    detail_.year = record.publish_time / YEAR_OF_DATE;
    if (const auto *dimension = dimension_of(record); dimension != nullptr)
        detail_.dimension_info =
            arena_.keep(TP_MOVIE_DIMENSION_INFORMATION_T{dimension->id, dimension->dimension});
    detail_.poster = path_on_loan(&arena_, movie.folder, record.posters->big);
    detail_.director_info = labelled(get_director_desc_by_cid(cid), record.director_list);
    detail_.actor_info = labelled(get_actor_desc_by_cid(cid), record.actor_list);
    detail_.kind_info = labelled(get_kind_desc_by_cid(cid), record.kind_list);
    detail_.duration_info = arena_.keep(TP_MOVIE_SINGLE_KVP_INFORMATION_T{
        on_loan(get_duration_desc_by_cid(cid)), arena_.text({std::to_string(record.duration), "分钟"})});
    // The long synopsis where the document has one.
    detail_.summary_info = arena_.keep(TP_MOVIE_SINGLE_KVP_INFORMATION_T{
        on_loan(get_descript_desc_by_cid(cid)),
        record.description != nullptr ? record.description : record.summary});
    fill_videos(movie);
}

} // namespace server
