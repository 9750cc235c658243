#include "movie_records.h"

#include <cstring>

#include "dbdata_category.h"

namespace server {

namespace {

constexpr INT32_T YEAR_OF_DATE = 10000; // a date is YYYYMMDD

template <class NODE>
INT32_T count_of(const NODE *list) {
    INT32_T count = 0;
    for (const NODE *node = list; node != nullptr; node = next_of(node))
        count += node->info != nullptr ? 1 : 0;
    return count;
}

// The first year and the first dimension that don't stand for all.
INT32_T year_id_of(const DBDATA_MOVIE_INFORMATION_T &movie) {
    for (const auto *node = movie.year_list; node != nullptr; node = next_of(node))
        if (node->info != nullptr && node->info->year != 0)
            return node->info->id;
    return NO_FILTER;
}
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

INT8_T *TEXTS_T::path(const MOVIE_T &movie, const INT8_T *relative) {
    if (relative == nullptr || relative[0] == '\0')
        return nullptr;
    if (is_absolute(relative))
        return on_loan(relative);
    return keep(movie.folder + '/' + relative);
}

PAGE_RECORD_T::PAGE_RECORD_T(const CATALOGUE_T &catalogue, const PAGE_T &page,
                             const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) {
    const auto count = static_cast<INT32_T>(page.positions.size());
    const INT32_T pages = page.total / request.pagesize + (page.total % request.pagesize > 0 ? 1 : 0);
    page_.pageinfo = {request.pagenum, request.pagesize, pages, page.total, count};

    movies_.resize(page.positions.size());
    nodes_.resize(movies_.empty() ? 1 : movies_.size()); // an empty page, see on_loan.h
    for (INT32_T i = 0; i < count; i++) {
        const auto at = static_cast<size_t>(i);
        const POSITION_T position = page.positions[at];
        fill(&movies_[at], *catalogue.movies()[position], (request.pagenum - 1) * request.pagesize + i + 1);
        movies_[at].hdsn = catalogue.disk_of(position).serialno;
        nodes_[at].info = &movies_[at];
    }
    page_.list = chain(&nodes_);
}

template <class NODE>
BASIC_MOVIE_IDS_T *PAGE_RECORD_T::ids_of(const NODE *list) {
    std::vector<INT32_T> &values = ids_.emplace_back();
    for (const NODE *node = list; node != nullptr; node = next_of(node))
        if (node->info != nullptr)
            values.push_back(node->info->id);
    return &id_records_.emplace_back(BASIC_MOVIE_IDS_T{static_cast<INT32_T>(values.size()), values.data()});
}

void PAGE_RECORD_T::fill(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *to, const MOVIE_T &movie, INT32_T index) {
    const DBDATA_MOVIE_INFORMATION_T &record = *movie.record;
    to->movid = record.id;
    to->movcode = record.info->movie_code;
    to->movname = record.info->movie_name_ch;
    to->score = score_of(record);
    to->puttime = record.put_time;
    to->pubtime = record.publish_time;
    to->nposter = texts_.path(movie, record.posters->middle);
    to->bposter = texts_.path(movie, record.posters->big);
    to->acronym = record.acronym;
    to->category_id = category_id_of(record);
    to->year_id = year_id_of(record);
    to->kind_ids = ids_of(record.kind_list);
    to->area_ids = ids_of(record.area_list);
    to->dimension_ids = ids_of(record.dimension_list);
    to->resolution_ids = ids_of(record.resolution_list);
    to->index = index;
    to->totalvideo = count_of(record.video_list);
    to->duration = record.duration;
}

template <class NODE>
TP_MOVIE_FILTER_KVP_INFORMATION_T *DETAIL_RECORD_T::labelled(LABELLED_LIST_T *to, const INT8_T *label,
                                                             const NODE *list) {
    for (const NODE *node = list; node != nullptr; node = next_of(node)) {
        if (node->info == nullptr || means_all(node->info->name))
            continue;
        to->values.push_back({node->info->name});
        to->nodes.push_back({nullptr, &to->values.back()});
    }
    // A labelled list without values is left out: one without a list can't be encoded.
    if (to->nodes.empty())
        return nullptr;
    to->record = {on_loan(label), chain(&to->nodes)};
    return &to->record;
}

void DETAIL_RECORD_T::fill_videos(const MOVIE_T &movie) {
    for (const auto *node = movie.record->video_list; node != nullptr; node = next_of(node)) {
        if (node->info == nullptr)
            continue;
        const DBDATA_VIDEO_INFORMATION_T &video = *node->info;
        const INT8_T *file = video.mp4 != nullptr ? video.mp4 : video.filepath;
        videos_.push_back({video.id, video.seqno, video.name, texts_.path(movie, file)});
        video_nodes_.push_back({nullptr, &videos_.back()});
    }
    detail_.videos = static_cast<INT32_T>(videos_.size());
    if (video_nodes_.empty()) // as with an empty page
        video_nodes_.push_back({nullptr, nullptr});
    detail_.video_list = chain(&video_nodes_);
}

DETAIL_RECORD_T::DETAIL_RECORD_T(const MOVIE_T &movie) {
    const DBDATA_MOVIE_INFORMATION_T &record = *movie.record;
    const INT32_T cid = category_id_of(record);
    detail_.name = record.info->movie_name_ch;
    detail_.year = record.publish_time / YEAR_OF_DATE;
    if (const auto *dimension = dimension_of(record); dimension != nullptr) {
        dimension_ = {dimension->id, dimension->dimension};
        detail_.dimension_info = &dimension_;
    }
    detail_.poster = texts_.path(movie, record.posters->big);
    detail_.director_info = labelled(&directors_, get_director_desc_by_cid(cid), record.director_list);
    detail_.actor_info = labelled(&actors_, get_actor_desc_by_cid(cid), record.actor_list);
    detail_.kind_info = labelled(&kinds_, get_kind_desc_by_cid(cid), record.kind_list);
    duration_ = {on_loan(get_duration_desc_by_cid(cid)),
                 texts_.keep(std::to_string(record.duration) + "分钟")};
    detail_.duration_info = &duration_;
    // The long synopsis where the document has one.
    summary_ = {on_loan(get_descript_desc_by_cid(cid)),
                record.description != nullptr ? record.description : record.summary};
    detail_.summary_info = &summary_;
    fill_videos(movie);
}

} // namespace server
