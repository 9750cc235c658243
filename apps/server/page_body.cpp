#include "page_body.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "catalogue.h"
#include "codec_basic_movinfo.h"
#include "movie_records.h"
#include "support_codec.h"

namespace server {

namespace {

constexpr size_t INTEGER = sizeof(INT32_T);
// What stands before the first movie: the page's numbers and the count of its movies.
constexpr size_t HEAD = sizeof(TP_PAGE_INFORMATION) + INTEGER;
// What a part ends in: the index on the page, and what touch screens show beyond that, the number of videos
// and their duration.
constexpr size_t TOUCH = 2 * INTEGER;
constexpr size_t END = INTEGER + TOUCH;

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

OWNED_BODY_T encoded_alone(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *movie, INT32_T *length) {
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T node{nullptr, movie};
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T page{{}, &node};
    PVOID body = nullptr;
    if (encode_touchscreen_basic_movie_ext_information_to_message(&page, &body, length) < 0)
        throw std::bad_alloc(); // nothing else can keep a movie from being encoded
    return OWNED_BODY_T(static_cast<INT8_T *>(body));
}

// Writes what has been measured before.
class WRITER_T {
public:
    explicit WRITER_T(INT8_T *to) : at_(to) {}
    void integer(INT32_T value) {
        encode_int_data_to_buffer(value, at_, INTEGER);
        at_ += INTEGER;
    }
    void bytes(std::string_view bytes) { at_ += bytes.copy(at_, bytes.size()); }

private:
    INT8_T *at_;
};

// Asks for the bytes before they are needed: with many movies they are in none of the caches, and waiting
// for those of all movies of a page at once takes hardly longer than for those of one.
void prefetch(std::string_view bytes) {
    constexpr size_t LINE = 64;
    for (size_t at = 0; at < bytes.size(); at += LINE)
        __builtin_prefetch(bytes.data() + at);
}

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
    INT32_T length = 0;
    const OWNED_BODY_T body = encoded_alone(&record, &length);
    return {body.get() + HEAD, static_cast<size_t>(length) - HEAD};
}

PVOID page_body_of(const CATALOGUE_T &catalogue, const PAGE_T &page,
                   const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, PAGE_FORM_T form,
                   INT32_T *length) {
    const size_t touch = form == PAGE_FORM_T::TOUCH ? TOUCH : 0;
    size_t size = HEAD;
    for (const POSITION_T position : page.positions) {
        const std::string_view part = catalogue.page_part(position);
        prefetch(part);
        size += part.size() - TOUCH + touch;
    }
    auto *body = size > std::numeric_limits<INT32_T>::max() ? nullptr : static_cast<INT8_T *>(malloc(size));
    if (body == nullptr)
        return nullptr;
    *length = static_cast<INT32_T>(size);

    WRITER_T to(body);
    const auto count = static_cast<INT32_T>(page.positions.size());
    const INT32_T pages = page.total / request.pagesize + (page.total % request.pagesize > 0 ? 1 : 0);
    for (const INT32_T number : {request.pagenum, request.pagesize, pages, page.total, count, count})
        to.integer(number);
    int64_t index =
        (int64_t{request.pagenum} - 1) * request.pagesize; // behind the last page as large as it likes
    for (const POSITION_T position : page.positions) {
        const std::string_view part = catalogue.page_part(position);
        to.bytes(part.substr(0, part.size() - END));
        to.integer(static_cast<INT32_T>(++index));
        to.bytes(part.substr(part.size() - TOUCH, touch));
    }
    return body;
}

} // namespace server
