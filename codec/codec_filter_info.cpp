#include "codec_filter_info.h"

#include "codec/named_value.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct FILTER_WIRE {
    using RECORD = TP_TAVISYS_FILTER_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::id), string(&RECORD::name));
};

} // namespace

TP_TAVISYS_FILTER_INFORMATION_T *create_tavisys_filter_information(void) {
    return allocate<TP_TAVISYS_FILTER_INFORMATION_T>();
}

TP_TAVISYS_FILTER_INFORMATION_T *create_tavisys_filter_information_ex(INT32_T id, const INT8_T *name) {
    return create_named_value<FILTER_WIRE>(id, name);
}

void delete_tavisys_filter_information(TP_TAVISYS_FILTER_INFORMATION_T **info) {
    delete_record<FILTER_WIRE>(info);
}

TP_TAVISYS_FILTER_INFORMATION_LIST_T *
create_tavisys_filter_information_list_node(TP_TAVISYS_FILTER_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_FILTER_INFORMATION_LIST_T>(info);
}

TP_TAVISYS_FILTER_INFORMATION_LIST_T *create_tavisys_filter_information_list_node_ex(INT32_T id,
                                                                                     const INT8_T *name) {
    return node_for<FILTER_WIRE>(create_tavisys_filter_information_ex(id, name),
                                 create_tavisys_filter_information_list_node);
}

void add_node_to_tavisys_filter_information_list(TP_TAVISYS_FILTER_INFORMATION_LIST_T **list,
                                                 TP_TAVISYS_FILTER_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void delete_tavisys_filter_information_list_node(TP_TAVISYS_FILTER_INFORMATION_LIST_T **node) {
    delete_list_node<FILTER_WIRE>(node);
}

void delete_tavisys_filter_information_list(TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    delete_list<FILTER_WIRE>(list);
}

RTSTATUS encode_tavisys_filter_information_list_to_message(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list,
                                                           PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<FILTER_WIRE>(list, EMPTY_NODE_T::REFUSED, msgdata, msglen);
}

INT32_T decode_tavisys_filter_information_list_from_message(const void *msgdata, INT32_T msglen,
                                                            TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    return decode_list_from_message<FILTER_WIRE>(msgdata, msglen, list);
}
