#include "dbdata_resolution.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/id_map.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct RESOLUTION_T {
    using RECORD_T = DBDATA_RESOLUTION_INFORMATION_T;
    using NODE_T = DBDATA_RESOLUTION_INFORMATION_LIST_T;
    using ID_MAP_T = tavisys::ID_MAP_T<std::string>;
    static constexpr auto KEY = &RECORD_T::resolution;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::resolution};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_RESOLUTION_INFORMATION_T *create_dbdata_resolution_information(INT32_T /*id*/,
                                                                      const INT8_T *resolution) {
    return create_record_with_id<RESOLUTION_T>(resolution, alloc_id<RESOLUTION_T, const INT8_T *>);
}

DBDATA_RESOLUTION_INFORMATION_T *
duplicate_dbdata_resolution_information(DBDATA_RESOLUTION_INFORMATION_T *info) {
    return duplicate_record<RESOLUTION_T>(info);
}

void delete_dbdata_resolution_information(DBDATA_RESOLUTION_INFORMATION_T **info) {
    release_record<RESOLUTION_T>(info);
}

DBDATA_RESOLUTION_INFORMATION_LIST_T *
create_dbdata_resolution_information_list_node(DBDATA_RESOLUTION_INFORMATION_T *info, PVOID list) {
    return create_list_node<RESOLUTION_T>(info, list);
}

DBDATA_RESOLUTION_INFORMATION_LIST_T *
create_dbdata_resolution_information_list_node_ex(INT32_T id, const INT8_T *resolution, PVOID list) {
    return create_list_node_ex<RESOLUTION_T>(create_dbdata_resolution_information(id, resolution), list);
}

RTSTATUS add_node_to_dbdata_resolution_information_list(DBDATA_RESOLUTION_INFORMATION_LIST_T **list,
                                                        DBDATA_RESOLUTION_INFORMATION_LIST_T *node) {
    return add_list_node<RESOLUTION_T>(list, node);
}

DBDATA_RESOLUTION_INFORMATION_LIST_T *found_node_from_dbdata_resolution_information_list_by_resolution(
    const DBDATA_RESOLUTION_INFORMATION_LIST_T *list, const INT8_T *resolution) {
    return find_by_key<RESOLUTION_T>(list, resolution);
}

void delete_node_from_dbdata_resolution_information_list_by_resolution(
    DBDATA_RESOLUTION_INFORMATION_LIST_T **list, const INT8_T *resolution) {
    delete_by_key<RESOLUTION_T>(list, resolution);
}

void delete_node_from_dbdata_resolution_information_list_by_harddisk_serialno(
    DBDATA_RESOLUTION_INFORMATION_LIST_T **list, const INT8_T *serialno) {
    delete_first_without_movies<RESOLUTION_T>(list, serialno);
}

void delete_dbdata_resolution_information_list_node(DBDATA_RESOLUTION_INFORMATION_LIST_T **node) {
    delete_list_node<RESOLUTION_T>(node);
}

void delete_dbdata_resolution_information_list(DBDATA_RESOLUTION_INFORMATION_LIST_T **list) {
    delete_list<RESOLUTION_T>(list);
}

void show_dbdata_resolution_information(const DBDATA_RESOLUTION_INFORMATION_T *info) {
    if (info != nullptr)
        printf("分辨率: %s. 该节点被引用了%d次\n", shown(info->resolution), info->count);
}

void show_dbdata_resolution_information_list(const DBDATA_RESOLUTION_INFORMATION_LIST_T *list,
                                             INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_resolution_information);
}
