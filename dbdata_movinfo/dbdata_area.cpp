#include "dbdata_area.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/id_map.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct AREA_T {
    using RECORD_T = DBDATA_AREA_INFORMATION_T;
    using NODE_T = DBDATA_AREA_INFORMATION_LIST_T;
    using ID_MAP_T = tavisys::ID_MAP_T<std::string>;
    static constexpr auto KEY = &RECORD_T::name;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::name};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_AREA_INFORMATION_T *create_dbdata_area_information(const INT8_T *name) {
    return create_record_with_id<AREA_T>(name, alloc_id<AREA_T, const INT8_T *>);
}

DBDATA_AREA_INFORMATION_T *duplicate_dbdata_area_information(DBDATA_AREA_INFORMATION_T *info) {
    return duplicate_record<AREA_T>(info);
}

void delete_dbdata_area_information(DBDATA_AREA_INFORMATION_T **info) {
    release_record<AREA_T>(info);
}

DBDATA_AREA_INFORMATION_LIST_T *create_dbdata_area_information_list_node(DBDATA_AREA_INFORMATION_T *info,
                                                                         PVOID list) {
    return create_list_node<AREA_T>(info, list);
}

DBDATA_AREA_INFORMATION_LIST_T *create_dbdata_area_information_list_node_ex(const INT8_T *name, PVOID list) {
    return create_list_node_ex<AREA_T>(create_dbdata_area_information(name), list);
}

RTSTATUS add_node_to_dbdata_area_information_list(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                  DBDATA_AREA_INFORMATION_LIST_T *node) {
    return add_list_node<AREA_T>(list, node);
}

DBDATA_AREA_INFORMATION_LIST_T *
found_node_from_dbdata_area_information_list_by_name(const DBDATA_AREA_INFORMATION_LIST_T *list,
                                                     const INT8_T *name) {
    return find_by_key<AREA_T>(list, name);
}

void delete_node_from_dbdata_area_information_list_by_name(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                           const INT8_T *name) {
    delete_by_key<AREA_T>(list, name);
}

void delete_node_from_dbdata_area_information_list_by_harddisk_serialno(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                                        const INT8_T *serialno) {
    delete_first_without_movies<AREA_T>(list, serialno);
}

void delete_dbdata_area_information_list_node(DBDATA_AREA_INFORMATION_LIST_T **node) {
    delete_list_node<AREA_T>(node);
}

void delete_dbdata_area_information_list(DBDATA_AREA_INFORMATION_LIST_T **list) {
    delete_list<AREA_T>(list);
}

void show_dbdata_area_information(const DBDATA_AREA_INFORMATION_T *info) {
    if (info != nullptr)
        printf("影片拍摄地: %s. 该节点被引用了%d次\n", shown(info->name), info->count);
}

void show_dbdata_area_information_list(const DBDATA_AREA_INFORMATION_LIST_T *list, INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_area_information);
}
