#include "page_body.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "catalogue.h"
#include "codec_basic_movinfo.h"
#include "movie_records.h"

namespace server {

namespace {

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

// The ids of a list.
class IDS_T {
public:
    template <class NODE>
    explicit IDS_T(const NODE *list) {
        values_.reserve(static_cast<size_t>(count_of(list)));
        for (const NODE *node = list; node != nullptr; node = next_of(node))
            if (node->info != nullptr)
                values_.push_back(node->info->id);
        record_ = {static_cast<INT32_T>(values_.size()), values_.data()};
    }
    IDS_T(const IDS_T &) = delete;
    IDS_T &operator=(const IDS_T &) = delete;
    ~IDS_T() = default;
    BASIC_MOVIE_IDS_T *get() { return &record_; }

private:
    std::vector<INT32_T> values_;
    BASIC_MOVIE_IDS_T record_{};
};

struct FREE_T {
    void operator()(INT8_T *body) const { free(body); }
};
using OWNED_BODY_T = std::unique_ptr<INT8_T, FREE_T>;

} // namespace

std::string page_part_of(const DBDATA_MOVIE_INFORMATION_T &movie, std::string_view folder,
                         const INT8_T *serial) {
    ARENA_T arena;
    IDS_T kinds(movie.kind_list);
    IDS_T areas(movie.area_list);
    IDS_T dimensions(movie.dimension_list);
    IDS_T resolutions(movie.resolution_list);
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_T record{};
    record.movid = movie.id;
    record.movcode = movie.info->movie_code;
    record.movname = movie.info->movie_name_ch;
    record.score = score_of(movie);
    record.puttime = movie.put_time;
    record.pubtime = movie.publish_time;
    record.nposter = path_on_loan(&arena, folder, movie.posters->middle);
    record.bposter = path_on_loan(&arena, folder, movie.posters->big);
    record.acronym = movie.acronym;
    record.category_id = category_id_of(movie);
    record.year_id = year_id_of(movie);
    record.kind_ids = kinds.get();
    record.area_ids = areas.get();
    record.dimension_ids = dimensions.get();
    record.resolution_ids = resolutions.get();
    record.hdsn = on_loan(serial);
    record.totalvideo = count_of(movie.video_list);
    record.duration = movie.duration;
    PVOID part = nullptr;
    INT32_T length = 0;
    if (encode_tavisys_basic_movie_information_to_part(&record, &part, &length) < 0)
        throw std::bad_alloc(); // nothing else can keep a movie from being encoded
    const OWNED_BODY_T owned(static_cast<INT8_T *>(part));
    return {owned.get(), static_cast<size_t>(length)};
}

PVOID page_body_of(const CATALOGUE_T &catalogue, const PAGE_T &page,
                   const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, PAGE_FORM_T form,
                   INT32_T *length) {
    std::vector<TP_TAVISYS_BASIC_MOVIE_PART_T> parts;
    parts.reserve(page.positions.size());
    for (const POSITION_T position : page.positions)
        parts.push_back(catalogue.page_part(position));
    const INT32_T pages = page.total / request.pagesize + (page.total % request.pagesize > 0 ? 1 : 0);
    const TP_PAGE_INFORMATION info{request.pagenum, request.pagesize, pages, page.total,
                                   static_cast<INT32_T>(parts.size())};
    const int64_t before = (int64_t{request.pagenum} - 1) * request.pagesize; // as large as the request likes
    auto *const encode = form == PAGE_FORM_T::TOUCH ? encode_touchscreen_basic_movie_parts_to_message
                                                    : encode_tavisys_basic_movie_parts_to_message;
    PVOID body = nullptr;
    if (encode(&info, static_cast<INT32_T>(before + 1), parts.data(), &body, length) < 0)
        return nullptr;
    return body;
}

} // namespace server
