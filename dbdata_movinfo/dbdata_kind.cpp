#include "dbdata_kind.h"

#include <cstdio>
#include <string_view>
#include <tuple>
#include <unordered_set>

#include "dbdata_movinfo/attribute.h"
#include "dbdata_movinfo/id_map.h"
#include "support/show.h"

using namespace tavisys;

namespace {

// Clients rely on these ids: the first kind of every category that is new gets the first id, and all later
// kinds, whatever their category, are numbered in the map of the head category, the one met first.
class KIND_ID_MAP_T {
public:
    INT32_T id_of(INT32_T category_id, std::string_view name) {
        if (!categories_.insert(category_id).second)
            return head_category_.id_of(name);
        if (categories_.size() > 1)
            return FIRST_ID;
        try {
            return head_category_.id_of(name);
        } catch (...) {
            categories_.clear(); // a category without a kind has not been met
            throw;
        }
    }

private:
    std::unordered_set<INT32_T> categories_;
    ID_MAP_T<std::string> head_category_;
};

struct KIND_T {
    using RECORD_T = DBDATA_KIND_INFORMATION_T;
    using NODE_T = DBDATA_KIND_INFORMATION_LIST_T;
    using ID_MAP_T = KIND_ID_MAP_T;
    static constexpr auto KEY = &RECORD_T::name;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::name};
    static constexpr auto BELOW = &NODE_T::movlist;
};

} // namespace

DBDATA_KIND_INFORMATION_T *create_dbdata_kind_information(INT32_T category_id, const INT8_T *name) {
    return create_record_with_id<KIND_T>(
        name, [category_id](const INT8_T *key) { return alloc_id<KIND_T>(category_id, key); });
}

DBDATA_KIND_INFORMATION_T *duplicate_dbdata_kind_information(DBDATA_KIND_INFORMATION_T *info) {
    return duplicate_record<KIND_T>(info);
}

void delete_dbdata_kind_information(DBDATA_KIND_INFORMATION_T **info) {
    release_record<KIND_T>(info);
}

DBDATA_KIND_INFORMATION_LIST_T *create_dbdata_kind_information_list_node(DBDATA_KIND_INFORMATION_T *info,
                                                                         PVOID list) {
    return create_list_node<KIND_T>(info, list);
}

DBDATA_KIND_INFORMATION_LIST_T *create_dbdata_kind_information_list_node_ex(INT32_T category_id,
                                                                            const INT8_T *name, PVOID list) {
    return create_list_node_ex<KIND_T>(create_dbdata_kind_information(category_id, name), list);
}

RTSTATUS add_node_to_dbdata_kind_information_list(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                  DBDATA_KIND_INFORMATION_LIST_T *node) {
    return add_list_node<KIND_T>(list, node);
}

DBDATA_KIND_INFORMATION_LIST_T *
found_node_from_dbdata_kind_information_list_by_name(const DBDATA_KIND_INFORMATION_LIST_T *list,
                                                     const INT8_T *name) {
    return find_by_key<KIND_T>(list, name);
}

void delete_node_from_dbdata_kind_information_list_by_name(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                           const INT8_T *name) {
    delete_by_key<KIND_T>(list, name);
}

void delete_node_from_dbdata_kind_information_list_by_harddisk_serialno(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                                        const INT8_T *serialno) {
    delete_first_without_movies<KIND_T>(list, serialno);
}

void delete_dbdata_kind_information_list_node(DBDATA_KIND_INFORMATION_LIST_T **node) {
    delete_list_node<KIND_T>(node);
}

void delete_dbdata_kind_information_list(DBDATA_KIND_INFORMATION_LIST_T **list) {
    delete_list<KIND_T>(list);
}

void show_dbdata_kind_information(const DBDATA_KIND_INFORMATION_T *info) {
    if (info != nullptr)
        printf("类型名称: %s. 该节点被引用了%d次\n", shown(info->name), info->count);
}

void show_dbdata_kind_information_list(const DBDATA_KIND_INFORMATION_LIST_T *list, INT32_T show_movie) {
    show_list(list, show_movie, show_dbdata_kind_information);
}
