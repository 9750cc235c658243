#include "codec_video_info.h"

#include "codec/video_wire.h"

using namespace tavisys;
using namespace tavisys::wire;

TP_TAVISYS_VIDEO_INFORMATION_T *create_tavisys_video_information(void) {
    return allocate<TP_TAVISYS_VIDEO_INFORMATION_T>();
}

void delete_tavisys_video_information(TP_TAVISYS_VIDEO_INFORMATION_T **info) {
    delete_record<VIDEO_WIRE>(info);
}

TP_TAVISYS_VIDEO_INFORMATION_LIST_T *
create_tavisys_video_information_list_node(TP_TAVISYS_VIDEO_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_VIDEO_INFORMATION_LIST_T>(info);
}

void add_node_to_tavisys_video_information_list(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list,
                                                TP_TAVISYS_VIDEO_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void delete_tavisys_video_information_list_node(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **node) {
    delete_list_node<VIDEO_WIRE>(node);
}

void delete_tavisys_video_information_list(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list) {
    delete_list<VIDEO_WIRE>(list);
}

INT32_T calc_encode_video_information_list_length(const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list,
                                                  INT32_T *number) {
    const int64_t length = list_length<VIDEO_WIRE>(list);
    if (length > LONGEST_BODY)
        return -1;
    if (number != nullptr)
        *number = count_records<VIDEO_WIRE>(list);
    return static_cast<INT32_T>(length);
}

INT32_T encode_tavisys_video_information_list_to_buffer(const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list,
                                                        PVOID message, INT32_T length) {
    if (list == nullptr || message == nullptr)
        return -1;
    WRITER_T to(message, length);
    return encode_list<VIDEO_WIRE>(to, list, EMPTY_NODE_T::SKIPPED) ? to.passed() : -1;
}

RTSTATUS encode_tavisys_video_information_list_to_message(const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list,
                                                          PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<VIDEO_WIRE>(list, EMPTY_NODE_T::SKIPPED, msgdata, msglen);
}

INT32_T decode_tavisys_video_information_list_from_buffer(const void *msgdata, INT32_T msglen,
                                                          TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list) {
    return decode_list_from_message<VIDEO_WIRE>(msgdata, msglen, list);
}
