#include "transfer_records.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "support_codec.h"

namespace server {

namespace {

constexpr size_t USUAL_MOVIE = 1024;
constexpr size_t LONGEST_BODY = std::numeric_limits<INT32_T>::max();

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

TRANSFER_RECORD_T::TRANSFER_RECORD_T(const DBDATA_MOVIE_INFORMATION_T &movie) {
    record_.mid = movie.id;
    record_.movcode = movie.info->movie_code;
    record_.movnamech = movie.info->movie_name_ch;
    record_.movnameen = movie.info->movie_name_en;
    record_.imdbvalue = movie.imdbvalue;
    record_.acronym = movie.acronym;
    record_.dimension_list = arena_.list_of<VALUES_T>(movie.dimension_list, dimension_of);
    record_.resolution_list = arena_.list_of<VALUES_T>(movie.resolution_list, resolution_of);
    record_.category_list =
        arena_.list_of<VALUES_T>(movie.category_list, name_of<DBDATA_CATEGORY_INFORMATION_T>);
    record_.kind_list = arena_.list_of<VALUES_T>(movie.kind_list, name_of<DBDATA_KIND_INFORMATION_T>);
    record_.area_list = arena_.list_of<VALUES_T>(movie.area_list, name_of<DBDATA_AREA_INFORMATION_T>);
    record_.director_list =
        arena_.list_or_empty_node<PERSONS_T>(movie.director_list, person_of<DBDATA_DIRECTOR_INFORMATION_T>);
    record_.actor_list =
        arena_.list_or_empty_node<PERSONS_T>(movie.actor_list, person_of<DBDATA_ACTOR_INFORMATION_T>);
    record_.year_list = arena_.list_or_empty_node<YEARS_T>(movie.year_list, year_of);
    record_.puttime = movie.put_time;
    record_.pubtime = movie.publish_time;
    record_.putintime = movie.putin_time;
    record_.duration = movie.duration;
    record_.summary = movie.summary;
    record_.episodes = movie.episodes;
    record_.video_list = arena_.list_or_empty_node<VIDEOS_T>(movie.video_list, video_of);
    if (movie.posters != nullptr)
        record_.posters = arena_.keep(TP_TAVISYS_DBDATA_POSTER_INFORMATION_T{
            movie.posters->big, movie.posters->middle, movie.posters->small});
}

TRANSFER_BODY_T::TRANSFER_BODY_T(size_t expected)
    : length_(static_cast<size_t>(calc_codec_int_data_length())) { // the count is written when it is known
    make_room(std::min(expected, LONGEST_BODY / USUAL_MOVIE / 2) * USUAL_MOVIE);
}

void TRANSFER_BODY_T::append(const DBDATA_MOVIE_INFORMATION_T &movie) {
    const TRANSFER_RECORD_T record(movie);
    PVOID body = nullptr;
    INT32_T length = 0;
    if (encode_tp_tavisys_dbdata_movie_information_list_to_message_packed(record.get(), &body, &length) < 0)
        throw std::bad_alloc(); // nothing else can keep such a record from being encoded
    const std::unique_ptr<INT8_T, FREE_T> owner(static_cast<INT8_T *>(body));
    const auto head = static_cast<size_t>(calc_codec_int_data_length()); // the count of this list of one
    const size_t count = static_cast<size_t>(length) - head;
    make_room(count);
    memcpy(body_.get() + length_, owner.get() + head, count);
    length_ += count;
    movies_++;
}

void TRANSFER_BODY_T::make_room(size_t count) {
    const size_t needed = length_ + count;
    if (needed <= size_)
        return;
    if (needed > LONGEST_BODY)
        throw std::bad_alloc();
    const size_t size = std::max(needed, 2 * size_);
    auto *grown = static_cast<INT8_T *>(realloc(body_.get(), size));
    if (grown == nullptr)
        throw std::bad_alloc();
    static_cast<void>(body_.release());
    body_.reset(grown);
    size_ = size;
}

PVOID TRANSFER_BODY_T::release(INT32_T *length) {
    encode_int_data_to_buffer(movies_, body_.get(), calc_codec_int_data_length());
    *length = static_cast<INT32_T>(length_);
    return body_.release();
}

} // namespace server
