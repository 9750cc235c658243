#include "dbdata_director.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct DIRECTOR_T {
    using RECORD_T = DBDATA_DIRECTOR_INFORMATION_T;
    using NODE_T = DBDATA_DIRECTOR_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::code;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::code, &RECORD_T::name};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_DIRECTOR_INFORMATION_T *create_dbdata_director_information(const INT8_T *code, const INT8_T *name) {
    OWNED_RECORD_T<DIRECTOR_T> record = create_record<DIRECTOR_T>(code);
    return record != nullptr && store_copy(record->name, name) ? record.release() : nullptr;
}

DBDATA_DIRECTOR_INFORMATION_T *duplicate_dbdata_director_information(DBDATA_DIRECTOR_INFORMATION_T *info) {
    return duplicate_record<DIRECTOR_T>(info);
}

void delete_dbdata_director_information(DBDATA_DIRECTOR_INFORMATION_T **info) {
    release_record<DIRECTOR_T>(info);
}

DBDATA_DIRECTOR_INFORMATION_LIST_T *
create_dbdata_director_information_list_node(DBDATA_DIRECTOR_INFORMATION_T *info, PVOID list) {
    return create_list_node<DIRECTOR_T>(info, list);
}

DBDATA_DIRECTOR_INFORMATION_LIST_T *
create_dbdata_director_information_list_node_ex(const INT8_T *code, const INT8_T *name, PVOID list) {
    return create_list_node_ex<DIRECTOR_T>(create_dbdata_director_information(code, name), list);
}

RTSTATUS add_node_to_dbdata_director_information_list(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                      DBDATA_DIRECTOR_INFORMATION_LIST_T *node) {
    return add_list_node<DIRECTOR_T>(list, node);
}

DBDATA_DIRECTOR_INFORMATION_LIST_T *
found_node_from_dbdata_director_information_list_by_code(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                         const INT8_T *code) {
    return list == nullptr ? nullptr : find_by_key<DIRECTOR_T>(*list, code);
}

void delete_node_from_dbdata_director_information_list_by_code(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                               const INT8_T *code) {
    delete_by_key<DIRECTOR_T>(list, code);
}

void delete_dbdata_director_information_list_node(DBDATA_DIRECTOR_INFORMATION_LIST_T **node) {
    delete_list_node<DIRECTOR_T>(node);
}

void delete_dbdata_director_information_list(DBDATA_DIRECTOR_INFORMATION_LIST_T **list) {
    delete_list<DIRECTOR_T>(list);
}

void show_dbdata_director_information(const DBDATA_DIRECTOR_INFORMATION_T *info) {
    if (info != nullptr)
        printf("导演编码: %s, 导演名称: %s. 该节点被引用了%d次\n", shown(info->code), shown(info->name),
               info->count);
}

void show_dbdata_director_information_list(const DBDATA_DIRECTOR_INFORMATION_LIST_T *list,
                                           INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_director_information);
}
