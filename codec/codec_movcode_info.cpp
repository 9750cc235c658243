// Movie codes, and the requests and answers that name movies and videos by code or id.
#include "codec_dbdata_movinfo.h"

#include "codec/wire_items.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct MOVCODE_WIRE {
    using RECORD = TP_MOVCODE_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(string(&RECORD::movcode));
};

// A node travels with or without its record, so that the nodes are what the list consists of.
struct MOVCODE_NODE_WIRE {
    using RECORD = TP_MOVCODE_INFORMATION_LIST_T;
    static constexpr auto FIELDS = std::make_tuple(sized<MOVCODE_WIRE>(&RECORD::info));
};

struct REQUEST_WIRE {
    using RECORD = TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T;
    static constexpr auto FIELDS =
        std::make_tuple(string(&RECORD::deviceid), string(&RECORD::hddevname), string(&RECORD::ptdevname),
                        list<MOVCODE_NODE_WIRE>(&RECORD::list, EMPTY_NODE_T::SKIPPED, NULL_LIST_T::EMPTY));
};

template <class... ITEM>
RTSTATUS encode_items_to_message(PVOID *msgdata, INT32_T *msglen, ITEM... item) {
    if (msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_to_message(items_length(item...), msgdata, msglen,
                             [&](WRITER_T &to) { return encode_items(to, item...); });
}

// Items behind an integer that is the length of the rest, of which only 0 matters: then none follow.
template <class... ITEM>
INT32_T decode_sized_items(const void *msgdata, INT32_T msglen, ITEM *...item) {
    if (msgdata == nullptr)
        return -1;
    READER_T from(msgdata, msglen);
    INT32_T length = 0;
    if (!from.integer(&length) || (length != 0 && !decode_items(from, item...)))
        return -1;
    return from.passed();
}

} // namespace

TP_MOVCODE_INFORMATION_T *create_tp_movcode_information(const INT8_T *movcode) {
    auto *info = allocate<TP_MOVCODE_INFORMATION_T>();
    if (info != nullptr && !store_copy_or_null(info->movcode, movcode))
        delete_record<MOVCODE_WIRE>(&info);
    return info;
}

void delete_tp_movcode_information(TP_MOVCODE_INFORMATION_T **info) {
    delete_record<MOVCODE_WIRE>(info);
}

TP_MOVCODE_INFORMATION_LIST_T *create_tp_movcode_information_list_node(TP_MOVCODE_INFORMATION_T *info) {
    auto *node = allocate<TP_MOVCODE_INFORMATION_LIST_T>();
    if (node != nullptr)
        node->info = info;
    return node;
}

TP_MOVCODE_INFORMATION_LIST_T *create_tp_movcode_information_list_node_ex(const INT8_T *movcode) {
    return node_for<MOVCODE_WIRE>(create_tp_movcode_information(movcode),
                                  create_tp_movcode_information_list_node);
}

void delete_tp_movcode_information_list_node(TP_MOVCODE_INFORMATION_LIST_T **node) {
    delete_list_node<MOVCODE_NODE_WIRE>(node);
}

void delete_tp_movcode_information_list(TP_MOVCODE_INFORMATION_LIST_T **list) {
    delete_list<MOVCODE_NODE_WIRE>(list);
}

void add_node_to_tp_movcode_information_list(TP_MOVCODE_INFORMATION_LIST_T **list,
                                             TP_MOVCODE_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T *
create_tp_tavisys_movcode_information(const INT8_T *deviceid, const INT8_T *hddevname,
                                      const INT8_T *ptdevname, TP_MOVCODE_INFORMATION_LIST_T *list) {
    auto *info = allocate<TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T>();
    if (info == nullptr)
        return nullptr;
    if (store_copy_or_null(info->deviceid, deviceid) && store_copy_or_null(info->hddevname, hddevname) &&
        store_copy_or_null(info->ptdevname, ptdevname))
        info->list = list;
    else
        delete_record<REQUEST_WIRE>(&info);
    return info;
}

void delete_tp_tavisys_movieinfo_request_information(TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T **info) {
    delete_record<REQUEST_WIRE>(info);
}

RTSTATUS
encode_movinfo_request_information_to_message(const TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T *info,
                                              PVOID *msgdata, INT32_T *msglen) {
    if (msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_to_message(optional_length<REQUEST_WIRE>(info), msgdata, msglen, [&](WRITER_T &to) {
        return encode_optional<REQUEST_WIRE>(to, info, PRESENCE_T::LENGTH);
    });
}

INT32_T decode_movinfo_request_information_from_buffer(const void *msgdata, INT32_T msglen,
                                                       TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T **info) {
    if (msgdata == nullptr || info == nullptr)
        return -1;
    READER_T from(msgdata, msglen);
    TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T *decoded = nullptr;
    if (!decode_optional<REQUEST_WIRE>(from, &decoded))
        return -1;
    *info = decoded;
    return from.passed();
}

INT32_T encode_mid_vid_argument_to_buffer(const INT8_T *mid, const INT8_T *vid, PVOID message,
                                          INT32_T length) {
    return encode_items_to_buffer(message, length, mid, vid);
}

// Without the integer that the decoder below expects: each stays as its own peers know it.
INT32_T encode_mid_vid_to_buffer(const INT8_T *mid, const INT8_T *vid, PVOID *msgdata, INT32_T *msglen) {
    return encode_items_to_message(msgdata, msglen, mid, vid);
}

INT32_T decode_mid_vid_to_buffer(const void *msgdata, INT32_T msglen, INT8_T **mid, INT8_T **vid) {
    return decode_sized_items(msgdata, msglen, mid, vid);
}

INT32_T encode_basic_movie_argument_to_buffer(INT32_T index, INT32_T duration, const INT8_T *hdsn,
                                              const INT8_T *name, const INT8_T *movsn,
                                              const INT8_T *dimension, PVOID message, INT32_T length) {
    return encode_items_to_buffer(message, length, index, duration, hdsn, name, movsn, dimension);
}

// The body is calculated without the two integers. Its callers count on the failure: they build the answer
// with the function above.
INT32_T encode_basic_movie_return(INT32_T index, INT32_T duration, const INT8_T *hdsn, const INT8_T *name,
                                  const INT8_T *movsn, const INT8_T *dimension, PVOID *msgdata,
                                  INT32_T *msglen) {
    if (msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_to_message(items_length(hdsn, name, movsn, dimension), msgdata, msglen, [&](WRITER_T &to) {
        return encode_items(to, index, duration, hdsn, name, movsn, dimension);
    });
}

INT32_T decode_basic_movie_to_buffer(const void *msgdata, const INT32_T *msglen, INT32_T *index,
                                     INT32_T *duration, INT8_T **hdsn, INT8_T **name, INT8_T **movsn,
                                     INT8_T **dimension) {
    return msglen == nullptr
               ? -1
               : decode_sized_items(msgdata, *msglen, index, duration, hdsn, name, movsn, dimension);
}

int calc_ffmpegc_movie_path_length(const INT8_T *ptdev, const INT8_T *video_rpath) {
    const int64_t length = items_length(ptdev, video_rpath);
    return length > LONGEST_BODY ? -1 : static_cast<int>(length);
}

INT32_T encode_ffmpegc_movie_path_to_buffer(const INT8_T *ptdev, const INT8_T *video_rpath, PVOID *msgdata,
                                            INT32_T *msglen) {
    if (msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_to_message(
        items_length(ptdev, video_rpath), msgdata, msglen,
        [&](WRITER_T &to) { return encode_items(to, ptdev, video_rpath); },
        [](FAULT_T fault, int64_t) {
            if (fault == FAULT_T::MEMORY)
                fputs("创建内存失败..", stdout);
        });
}

INT32_T decode_ffmpegc_movie_path_from_buffer(const void *msgdata, INT32_T msglen, INT8_T **ptdev,
                                              INT8_T **video_rpath) {
    if (msgdata == nullptr)
        return 0;
    READER_T from(msgdata, msglen);
    if (decode_items(from, ptdev, video_rpath))
        return from.passed();
    fputs("failed to decode_ptr_data_from_buffer", stdout);
    return -1;
}
