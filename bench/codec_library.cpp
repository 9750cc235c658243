#include "codecs.h"

namespace bench {

namespace {

template <auto ENCODE, class RECORD>
BODY_T encode(const RECORD &record, size_t) {
    PVOID body = nullptr;
    INT32_T length = 0;
    if (ENCODE(&record, &body, &length) != 0)
        abort();
    return {body, static_cast<size_t>(length)};
}

template <auto DECODE, class RECORD>
RECORD *decode(const BODY_T &body) {
    RECORD *record = nullptr;
    if (DECODE(body.data(), static_cast<INT32_T>(body.length()), &record) < 0)
        abort();
    return record;
}

constexpr const char *NAME = "library";

} // namespace

template <>
CODEC_T<PAGE_T> library_codec() {
    return {NAME, encode<encode_tavisys_basic_movie_ext_information_to_message, PAGE_T>,
            decode<decode_tavisys_basic_movie_ext_information_from_message, PAGE_T>, release};
}
template <>
CODEC_T<MOVIES_T> library_codec() {
    return {NAME, encode<encode_tp_tavisys_dbdata_movie_information_list_to_message_packed, MOVIES_T>,
            decode<decode_tp_tavisys_dbdata_movie_information_list_from_message, MOVIES_T>, release};
}
template <>
CODEC_T<DETAIL_T> library_codec() {
    return {NAME, encode<encode_tavisys_detail_movie_information_to_message, DETAIL_T>,
            decode<decode_tavisys_detail_movie_information_from_message, DETAIL_T>, release};
}
template <>
CODEC_T<DISKS_T> library_codec() {
    return {NAME, encode<encode_tavisys_harddisk_information_list_to_message, DISKS_T>,
            decode<decode_tavisys_harddisk_information_list_from_message, DISKS_T>, release};
}

} // namespace bench
