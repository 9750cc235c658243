// What the storage positions share: records with a reference count, as those of the attribute families,
// and lists of nodes {next, info, list, movstat}, where `list` is the level below and belongs to the node.
// A level states what is its own:
//
//     struct DISK_T {
//         using RECORD_T = DBDATA_HARDDISK_INFORMATION_T;
//         using NODE_T = DBDATA_HARDDISK_INFORMATION_LIST_T;
//         static constexpr auto KEY = &RECORD_T::devname;                   // what tells records apart
//         static constexpr auto STRINGS = std::tuple{&RECORD_T::serialno};  // freed by a delete
//         static constexpr auto LEFT = std::tuple{&RECORD_T::devname};      // left by it to the caller
//         static constexpr auto DELETE_BELOW = delete_dbdata_partition_information_list;
//         static constexpr auto RELEASE_BELOW = release_dbdata_partition_information_list;
//         static constexpr auto SHOW_BELOW = show_dbdata_partition_information_list;
//         static void show(const RECORD_T &disk, INT32_T indent);
//     };
#ifndef TAVISYS_DBDATA_POSITION_POSITION_H
#define TAVISYS_DBDATA_POSITION_POSITION_H

#include <cstdio>
#include <tuple>

#include "dbdata_movie_stat.h"
#include "dbdata_movinfo/attribute.h"

namespace tavisys {

// The text of a node's record, or null when one of the two is missing.
template <auto FIELD, class NODE>
const INT8_T *text_of(const NODE *node) {
    return node->info == nullptr ? nullptr : node->info->*FIELD;
}

template <auto FIELD>
auto has_text(const INT8_T *key) {
    return [key](const auto *node) { return key != nullptr && safe_strcmp(text_of<FIELD>(node), key) == 0; };
}

template <auto FIELD, class NODE>
NODE *find_by(const NODE *list, const INT8_T *key) {
    return find_node(list, has_text<FIELD>(key));
}

template <auto FIELD, class NODE>
NODE *take_by(NODE **list, const INT8_T *key) {
    return take_node(list, has_text<FIELD>(key));
}

template <auto FIELD, class NODE>
INT32_T count_with(const NODE *list) {
    INT32_T count = 0;
    for (const NODE *node : nodes_of(list))
        count += text_of<FIELD>(node) != nullptr ? 1 : 0;
    return count;
}

template <class LEVEL, class BELOW>
NODE_OF<LEVEL> *create_position(RECORD_OF<LEVEL> *info, BELOW *list, INT32_T movies) {
    auto *node = create_node<NODE_OF<LEVEL>>(info);
    if (node == nullptr)
        return nullptr;
    node->list = list;
    node->movstat.total_movies = static_cast<UINT32_T>(movies);
    return node;
}

// The last reference frees everything, also what a delete leaves to the caller.
template <class LEVEL>
void release_whole(RECORD_OF<LEVEL> **info) {
    if (info == nullptr || *info == nullptr)
        return;
    RECORD_OF<LEVEL> *record = *info;
    if (record->count <= 1)
        std::apply([record](auto... string) { (safe_free(record->*string), ...); }, LEVEL::LEFT);
    release_record<LEVEL>(info);
}

// A node for a fresh record, which nobody else holds: without a node it is released, with the complaint.
template <class LEVEL, class BELOW>
NODE_OF<LEVEL> *create_position_ex(RECORD_OF<LEVEL> *fresh, BELOW *list, INT32_T movies,
                                   const INT8_T *complaint) {
    NODE_OF<LEVEL> *node = create_position<LEVEL>(fresh, list, movies);
    if (node == nullptr) {
        puts(complaint);
        release_whole<LEVEL>(&fresh);
    }
    return node;
}

// Anything may head a list; what joins one has to have the text REQUIRED. join() gives it its place.
template <auto REQUIRED, class NODE, class JOIN>
RTSTATUS head_or_join(NODE **list, NODE *node, JOIN join) {
    if (list == nullptr || node == nullptr)
        return 0;
    if (*list == nullptr) {
        *list = node;
        return 0;
    }
    return text_of<REQUIRED>(node) == nullptr ? 0 : join();
}

// Adds at the end what has the text REQUIRED and a key that the list has not.
template <class LEVEL, auto REQUIRED>
RTSTATUS add_position(NODE_OF<LEVEL> **list, NODE_OF<LEVEL> *node) {
    return head_or_join<REQUIRED>(list, node, [=] { return add_list_node<LEVEL>(list, node); });
}

// Inserts before the first node that compare() calls greater (above 0). 1: it calls one equal (0).
template <class NODE, class COMPARE>
RTSTATUS insert_in_order(NODE **list, NODE *node, COMPARE compare) {
    NODE *previous = nullptr;
    for (NODE *other : nodes_of(*list)) {
        const INT32_T order = compare(other);
        if (order == 0)
            return 1;
        if (order > 0)
            break;
        previous = other;
    }
    node->next = previous == nullptr ? *list : previous->next;
    if (previous == nullptr)
        *list = node;
    else
        previous->next = node;
    return 0;
}

template <class LEVEL>
void delete_position(NODE_OF<LEVEL> **node) {
    if (node != nullptr && *node != nullptr)
        LEVEL::DELETE_BELOW(&(*node)->list);
    delete_list_node<LEVEL>(node);
}

template <class LEVEL>
void delete_position_list(NODE_OF<LEVEL> **list) {
    delete_nodes(list, delete_position<LEVEL>);
}

template <class LEVEL>
void release_position_list(NODE_OF<LEVEL> **list) {
    if (list == nullptr)
        return;
    for (NODE_OF<LEVEL> *node : nodes_of(*list)) {
        release_whole<LEVEL>(&node->info);
        LEVEL::RELEASE_BELOW(&node->list);
        safe_free(node);
    }
    *list = nullptr;
}

template <class LEVEL>
void show_position_list(const NODE_OF<LEVEL> *list, INT32_T indent) {
    for (const NODE_OF<LEVEL> *node : nodes_of(list)) {
        if (node->info != nullptr)
            LEVEL::show(*node->info, indent);
        show_dbdata_movie_stat_information(&node->movstat, indent);
        LEVEL::SHOW_BELOW(node->list, indent + 1);
    }
}

} // namespace tavisys

#endif
