#include "codec_kind_info.h"

#include "codec/named_value.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

using KIND_WIRE = COUNTED_VALUE_WIRE<TP_TAVISYS_KIND_INFORMATION_T>;

} // namespace

TP_TAVISYS_KIND_INFORMATION_T *create_tavisys_kind_information(void) {
    return allocate<TP_TAVISYS_KIND_INFORMATION_T>();
}

TP_TAVISYS_KIND_INFORMATION_T *create_tavisys_kind_information_ex(INT32_T id, const INT8_T *name,
                                                                  INT32_T movies) {
    return create_counted_value<KIND_WIRE>(id, name, movies);
}

void delete_tavisys_kind_information(TP_TAVISYS_KIND_INFORMATION_T **info) {
    delete_record<KIND_WIRE>(info);
}

TP_TAVISYS_KIND_INFORMATION_LIST_T *
create_tavisys_kind_information_list_node(TP_TAVISYS_KIND_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_KIND_INFORMATION_LIST_T>(info);
}

TP_TAVISYS_KIND_INFORMATION_LIST_T *
create_tavisys_kind_information_list_node_ex(INT32_T id, const INT8_T *name, INT32_T movies) {
    return node_for<KIND_WIRE>(create_tavisys_kind_information_ex(id, name, movies),
                               create_tavisys_kind_information_list_node);
}

void add_node_to_tavisys_kind_information_list(TP_TAVISYS_KIND_INFORMATION_LIST_T **list,
                                               TP_TAVISYS_KIND_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void delete_tavisys_kind_information_list_node(TP_TAVISYS_KIND_INFORMATION_LIST_T **node) {
    delete_list_node<KIND_WIRE>(node);
}

void delete_tavisys_kind_information_list(TP_TAVISYS_KIND_INFORMATION_LIST_T **list) {
    delete_list<KIND_WIRE>(list);
}

RTSTATUS encode_tavisys_kind_information_list_to_message(const TP_TAVISYS_KIND_INFORMATION_LIST_T *list,
                                                         PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<KIND_WIRE>(list, EMPTY_NODE_T::REFUSED, msgdata, msglen);
}

INT32_T decode_tavisys_kind_information_from_message(const void *msgdata, INT32_T msglen,
                                                     TP_TAVISYS_KIND_INFORMATION_LIST_T **list) {
    return decode_list_from_message<KIND_WIRE>(msgdata, msglen, list);
}
