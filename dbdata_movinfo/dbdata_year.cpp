#include "dbdata_year.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/id_map.h"

using namespace tavisys;

namespace {

struct YEAR_T {
    using RECORD_T = DBDATA_YEAR_INFORMATION_T;
    using NODE_T = DBDATA_YEAR_INFORMATION_LIST_T;
    using ID_MAP_T = tavisys::ID_MAP_T<INT32_T>;
    static constexpr auto KEY = &RECORD_T::year;
    static constexpr auto STRINGS = std::tuple<>{};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_YEAR_INFORMATION_T *create_dbdata_year_information(INT32_T year) {
    return create_record_with_id<YEAR_T>(year, alloc_id<YEAR_T, INT32_T>);
}

DBDATA_YEAR_INFORMATION_T *duplicate_dbdata_year_information(DBDATA_YEAR_INFORMATION_T *info) {
    return duplicate_record<YEAR_T>(info);
}

void delete_dbdata_year_information(DBDATA_YEAR_INFORMATION_T **info) {
    release_record<YEAR_T>(info);
}

DBDATA_YEAR_INFORMATION_LIST_T *create_dbdata_year_information_list_node(DBDATA_YEAR_INFORMATION_T *info,
                                                                         PVOID list) {
    return create_list_node<YEAR_T>(info, list);
}

DBDATA_YEAR_INFORMATION_LIST_T *create_dbdata_year_information_list_node_ex(INT32_T year, PVOID list) {
    return create_list_node_ex<YEAR_T>(create_dbdata_year_information(year), list);
}

RTSTATUS add_node_to_dbdata_year_information_list(DBDATA_YEAR_INFORMATION_LIST_T **list,
                                                  DBDATA_YEAR_INFORMATION_LIST_T *node) {
    return add_list_node<YEAR_T>(list, node);
}

DBDATA_YEAR_INFORMATION_LIST_T *
found_node_from_dbdata_year_information_list_by_year(const DBDATA_YEAR_INFORMATION_LIST_T *list,
                                                     INT32_T year) {
    return find_by_key<YEAR_T>(list, year);
}

void delete_node_from_dbdata_year_information_list_by_year(DBDATA_YEAR_INFORMATION_LIST_T **list,
                                                           INT32_T year) {
    delete_by_key<YEAR_T>(list, year);
}

void delete_node_from_dbdata_year_information_list_by_harddisk_serialno(DBDATA_YEAR_INFORMATION_LIST_T **list,
                                                                        const INT8_T *serialno) {
    delete_first_without_movies<YEAR_T>(list, serialno);
}

void delete_dbdata_year_information_list_node(DBDATA_YEAR_INFORMATION_LIST_T **node) {
    delete_list_node<YEAR_T>(node);
}

void delete_dbdata_year_information_list(DBDATA_YEAR_INFORMATION_LIST_T **list) {
    delete_list<YEAR_T>(list);
}

void show_dbdata_publish_year_information(const DBDATA_YEAR_INFORMATION_T *info) {
    if (info != nullptr)
        printf("影片发布年份: %d. 该节点被引用了%d次\n", info->year, info->count);
}

void show_dbdata_publish_year_information_list(const DBDATA_YEAR_INFORMATION_LIST_T *list,
                                               INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_publish_year_information);
}
