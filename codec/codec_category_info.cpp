#include "codec_category_info.h"

#include <cstdio>

#include "codec/named_value.h"
#include "support/show.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

using CATEGORY_WIRE = COUNTED_VALUE_WIRE<TP_TAVISYS_CATEGORY_INFORMATION_T>;

void show_category(const TP_TAVISYS_CATEGORY_INFORMATION_T *info) {
    if (info != nullptr)
        printf("\t分类编号: %d, 分类名称: %s, 分类下的影片数: %d\n", info->id, shown(info->name),
               info->movies);
}

} // namespace

TP_TAVISYS_CATEGORY_INFORMATION_T *create_tavisys_category_information(void) {
    return allocate<TP_TAVISYS_CATEGORY_INFORMATION_T>();
}

TP_TAVISYS_CATEGORY_INFORMATION_T *create_tavisys_category_information_ex(INT32_T id, const INT8_T *name,
                                                                          INT32_T movies) {
    return create_counted_value<CATEGORY_WIRE>(id, name, movies);
}

void delete_tavisys_category_information(TP_TAVISYS_CATEGORY_INFORMATION_T **info) {
    delete_record<CATEGORY_WIRE>(info);
}

TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *
create_tavisys_category_information_list_node(TP_TAVISYS_CATEGORY_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T>(info);
}

TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *
create_tavisys_category_information_list_node_ex(INT32_T id, const INT8_T *name, INT32_T movies) {
    return node_for<CATEGORY_WIRE>(create_tavisys_category_information_ex(id, name, movies),
                                   create_tavisys_category_information_list_node);
}

void add_node_to_tavisys_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list,
                                                   TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void delete_tavisys_category_information_list_node(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **node) {
    delete_list_node<CATEGORY_WIRE>(node);
}

void delete_tavisys_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list) {
    delete_list<CATEGORY_WIRE>(list);
}

RTSTATUS
encode_tavisys_category_information_list_to_message(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list,
                                                    PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<CATEGORY_WIRE>(list, EMPTY_NODE_T::REFUSED, msgdata, msglen);
}

INT32_T decode_tavisys_category_information_list_from_message(const void *msgdata, INT32_T msglen,
                                                              TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list) {
    return decode_list_from_message<CATEGORY_WIRE>(msgdata, msglen, list);
}

void show_tavisys_category_information_list(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list) {
    puts("影片分类信息: ");
    show_each<show_category>(list);
}
