#include "dbdata_category.h"

#include <cstdio>
#include <tuple>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/category_table.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct CATEGORY_T {
    using RECORD_T = DBDATA_CATEGORY_INFORMATION_T;
    using NODE_T = DBDATA_CATEGORY_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::name;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::name};
    static constexpr auto BELOW = &NODE_T::kindlist;
};

INT32_T get_id_by_name(const INT8_T *name) {
    for (const CATEGORY_ID_MAP_T &category : category_ids_map) {
        if (same_key(category.name, name))
            return category.id;
    }
    return DEFAULT_CATEGORY.id;
}

// Captions by category id; that of 0 serves every id that is no category's.
using DESC_TABLE_T = const INT8_T * [std::size(category_ids_map) + 1];
constexpr DESC_TABLE_T s_director_desc = {"未知", "导演", "导演", "作曲", "导演", "导演", "作曲"};
constexpr DESC_TABLE_T s_actor_desc = {"未知", "主演", "主演", "演唱", "主持人", "主演", "歌手"};
constexpr DESC_TABLE_T s_kind_desc = {"未知", "类型", "类型", "类型", "类型", "类型", "曲风"};
constexpr DESC_TABLE_T s_duration_desc = {"未知", "时长", "时长", "时长", "时长", "时长", "时长"};
constexpr DESC_TABLE_T s_descript_desc = {"未知", "简介", "简介", "简介", "简介", "简介", "简介"};

INT8_T *desc_by_cid(const DESC_TABLE_T &table, INT32_T cid) {
    const bool known = cid > 0 && static_cast<size_t>(cid) < std::size(table);
    return const_cast<INT8_T *>(table[known ? cid : 0]);
}

} // namespace

DBDATA_CATEGORY_INFORMATION_T *create_dbdata_category_information(const INT8_T *name) {
    return create_record_with_id<CATEGORY_T>(name, get_id_by_name);
}

DBDATA_CATEGORY_INFORMATION_T *duplicate_dbdata_category_information(DBDATA_CATEGORY_INFORMATION_T *info) {
    return duplicate_record<CATEGORY_T>(info);
}

void delete_dbdata_category_information(DBDATA_CATEGORY_INFORMATION_T **info) {
    release_record<CATEGORY_T>(info);
}

DBDATA_CATEGORY_INFORMATION_LIST_T *
create_dbdata_category_information_list_node(DBDATA_CATEGORY_INFORMATION_T *info, PVOID list) {
    return create_list_node<CATEGORY_T>(info, list);
}

DBDATA_CATEGORY_INFORMATION_LIST_T *create_dbdata_category_information_list_node_ex(const INT8_T *name,
                                                                                    PVOID list) {
    return create_list_node_ex<CATEGORY_T>(create_dbdata_category_information(name), list);
}

INT32_T add_node_to_dbdata_category_information_list(DBDATA_CATEGORY_INFORMATION_LIST_T **list,
                                                     DBDATA_CATEGORY_INFORMATION_LIST_T *node) {
    return add_list_node<CATEGORY_T>(list, node);
}

DBDATA_CATEGORY_INFORMATION_LIST_T *
found_node_from_dbdata_category_information_list_by_name(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                                         const INT8_T *name) {
    return find_by_key<CATEGORY_T>(list, name);
}

DBDATA_CATEGORY_INFORMATION_LIST_T *
found_node_from_dbdata_category_information_list_by_id(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                                       INT32_T id) {
    return find_node(list, [id](const DBDATA_CATEGORY_INFORMATION_LIST_T *node) {
        return node->info != nullptr && node->info->id == id;
    });
}

void delete_node_from_dbdata_category_information_list_by_name(DBDATA_CATEGORY_INFORMATION_LIST_T **list,
                                                               const INT8_T *name) {
    delete_by_key<CATEGORY_T>(list, name);
}

// One walk: the categories behind the deleted one keep their empty kinds until the next call.
void delete_node_from_dbdata_category_information_list_by_harddisk_serialno(
    DBDATA_CATEGORY_INFORMATION_LIST_T **list, const INT8_T *serialno) {
    if (serialno == nullptr)
        return;
    const auto prune_kinds = [serialno](DBDATA_CATEGORY_INFORMATION_LIST_T *node) {
        delete_node_from_dbdata_kind_information_list_by_harddisk_serialno(&node->kindlist, serialno);
        return node->kindlist == nullptr;
    };
    delete_first_node(list, prune_kinds, delete_list_node<CATEGORY_T>);
}

void delete_dbdata_category_information_list_node(DBDATA_CATEGORY_INFORMATION_LIST_T **node) {
    delete_list_node<CATEGORY_T>(node);
}

void delete_dbdata_category_information_list(DBDATA_CATEGORY_INFORMATION_LIST_T **list) {
    delete_list<CATEGORY_T>(list);
}

void show_dbdata_category_information(const DBDATA_CATEGORY_INFORMATION_T *info) {
    if (info != nullptr)
        printf("分类名称: %s. 该节点被引用了%d次\n", shown(info->name), info->count);
}

void show_dbdata_category_information_list(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                           INT32_T /*show_movie*/) {
    for (const DBDATA_CATEGORY_INFORMATION_LIST_T *node : nodes_of(list)) {
        show_dbdata_category_information(node->info);
        show_dbdata_kind_information_list(node->kindlist, 0);
    }
}

INT8_T *get_director_desc_by_cid(INT32_T cid) {
    return desc_by_cid(s_director_desc, cid);
}

INT8_T *get_actor_desc_by_cid(INT32_T cid) {
    return desc_by_cid(s_actor_desc, cid);
}

INT8_T *get_kind_desc_by_cid(INT32_T cid) {
    return desc_by_cid(s_kind_desc, cid);
}

INT8_T *get_duration_desc_by_cid(INT32_T cid) {
    return desc_by_cid(s_duration_desc, cid);
}

INT8_T *get_descript_desc_by_cid(INT32_T cid) {
    return desc_by_cid(s_descript_desc, cid);
}
