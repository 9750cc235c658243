#include "dbdata_dimension.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/id_map.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct DIMENSION_T {
    using RECORD_T = DBDATA_DIMENSION_INFORMATION_T;
    using NODE_T = DBDATA_DIMENSION_INFORMATION_LIST_T;
    using ID_MAP_T = tavisys::ID_MAP_T<std::string>;
    static constexpr auto KEY = &RECORD_T::dimension;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::dimension};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_DIMENSION_INFORMATION_T *create_dbdata_dimension_information(INT32_T /*id*/, const INT8_T *dimension) {
    return create_record_with_id<DIMENSION_T>(dimension, alloc_id<DIMENSION_T, const INT8_T *>);
}

DBDATA_DIMENSION_INFORMATION_T *duplicate_dbdata_dimension_information(DBDATA_DIMENSION_INFORMATION_T *info) {
    return duplicate_record<DIMENSION_T>(info);
}

void delete_dbdata_dimension_information(DBDATA_DIMENSION_INFORMATION_T **info) {
    release_record<DIMENSION_T>(info);
}

DBDATA_DIMENSION_INFORMATION_LIST_T *
create_dbdata_dimension_information_list_node(DBDATA_DIMENSION_INFORMATION_T *info, PVOID list) {
    return create_list_node<DIMENSION_T>(info, list);
}

DBDATA_DIMENSION_INFORMATION_LIST_T *
create_dbdata_dimension_information_list_node_ex(INT32_T id, const INT8_T *dimension, PVOID list) {
    return create_list_node_ex<DIMENSION_T>(create_dbdata_dimension_information(id, dimension), list);
}

RTSTATUS add_node_to_dbdata_dimension_information_list(DBDATA_DIMENSION_INFORMATION_LIST_T **list,
                                                       DBDATA_DIMENSION_INFORMATION_LIST_T *node) {
    return add_list_node<DIMENSION_T>(list, node);
}

DBDATA_DIMENSION_INFORMATION_LIST_T *found_node_from_dbdata_dimension_information_list_by_dimension(
    const DBDATA_DIMENSION_INFORMATION_LIST_T *list, const INT8_T *dimension) {
    return find_by_key<DIMENSION_T>(list, dimension);
}

void delete_node_from_dbdata_dimension_information_list_by_dimension(
    DBDATA_DIMENSION_INFORMATION_LIST_T **list, const INT8_T *dimension) {
    delete_by_key<DIMENSION_T>(list, dimension);
}

void delete_node_from_dbdata_dimension_information_list_by_harddisk_serialno(
    DBDATA_DIMENSION_INFORMATION_LIST_T **list, const INT8_T *serialno) {
    delete_first_without_movies<DIMENSION_T>(list, serialno);
}

void delete_dbdata_dimension_information_list_node(DBDATA_DIMENSION_INFORMATION_LIST_T **node) {
    delete_list_node<DIMENSION_T>(node);
}

void delete_dbdata_dimension_information_list(DBDATA_DIMENSION_INFORMATION_LIST_T **list) {
    delete_list<DIMENSION_T>(list);
}

void show_dbdata_dimension_information(const DBDATA_DIMENSION_INFORMATION_T *info) {
    if (info != nullptr)
        printf("维度: %s. 该节点被引用了%d次\n", shown(info->dimension), info->count);
}

void show_dbdata_dimension_information_list(const DBDATA_DIMENSION_INFORMATION_LIST_T *list,
                                            INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_dimension_information);
}
