// What the attribute and person families of the catalogue share: records with a reference count, known by
// a key, and lists of nodes that each hold one reference. A family states what is its own:
//
//     struct AREA_T {
//         using RECORD_T = DBDATA_AREA_INFORMATION_T;
//         using NODE_T = DBDATA_AREA_INFORMATION_LIST_T;
//         static constexpr auto KEY = &RECORD_T::name;                  // a string or a number
//         static constexpr auto STRINGS = std::tuple{&RECORD_T::name};  // freed with the record
//         static constexpr auto BELOW = &NODE_T::movlist;               // the node's list, never owned
//     };
#ifndef TAVISYS_DBDATA_MOVINFO_ATTRIBUTE_H
#define TAVISYS_DBDATA_MOVINFO_ATTRIBUTE_H

#include <tuple>
#include <type_traits>

#include "dbdata_movie.h"
#include "support/list.h"
#include "support/owner.h"
#include "support_memory.h"

namespace tavisys {

template <class FAMILY>
using RECORD_OF = typename FAMILY::RECORD_T;
template <class FAMILY>
using NODE_OF = typename FAMILY::NODE_T;

inline bool same_key(const INT8_T *left, const INT8_T *right) {
    return safe_strcmp(left, right) == 0;
}
inline bool same_key(INT32_T left, INT32_T right) {
    return left == right;
}

template <class FAMILY, class KEY>
bool has_key(const NODE_OF<FAMILY> *node, KEY key) {
    return node->info != nullptr && same_key(node->info->*FAMILY::KEY, key);
}

// What finds the node of a key. A NULL key is no node's, also where a record lacks its own.
inline bool is_key(const INT8_T *key) {
    return key != nullptr;
}
inline bool is_key(INT32_T /*key*/) {
    return true;
}
template <class FAMILY, class KEY>
auto holds_key(KEY key) {
    return [key](const NODE_OF<FAMILY> *node) { return is_key(key) && has_key<FAMILY>(node, key); };
}

inline bool store_key(INT8_T *&field, const INT8_T *key) {
    return store_copy(field, key);
}
inline bool store_key(INT32_T &field, INT32_T key) {
    field = key;
    return true;
}

template <class FAMILY>
RECORD_OF<FAMILY> *duplicate_record(RECORD_OF<FAMILY> *info) {
    if (info != nullptr)
        info->count++;
    return info;
}

// The pointer is cleared by the last reference alone: callers tell by it whether the record lives on.
template <class FAMILY>
void release_record(RECORD_OF<FAMILY> **info) {
    if (info == nullptr || *info == nullptr)
        return;
    RECORD_OF<FAMILY> *record = *info;
    if (--record->count > 0)
        return;
    std::apply([record](auto... string) { (safe_free(record->*string), ...); }, FAMILY::STRINGS);
    safe_free(record);
    *info = nullptr;
}

template <class FAMILY>
using OWNED_RECORD_T = OWNED_T<RECORD_OF<FAMILY>, release_record<FAMILY>>;

// A record of count 1 that holds the key, or null.
template <class FAMILY, class KEY>
OWNED_RECORD_T<FAMILY> create_record(KEY key) {
    OWNED_RECORD_T<FAMILY> record{allocate<RECORD_OF<FAMILY>>()};
    if (record == nullptr)
        return nullptr;
    record->count = 1;
    return store_key((*record).*FAMILY::KEY, key) ? std::move(record) : nullptr;
}

// The same with the id that alloc_id(key) gives; a negative one means that there is none.
template <class FAMILY, class KEY, class ALLOC_ID>
RECORD_OF<FAMILY> *create_record_with_id(KEY key, ALLOC_ID alloc_id) {
    OWNED_RECORD_T<FAMILY> record = create_record<FAMILY>(key);
    if (record == nullptr)
        return nullptr;
    record->id = alloc_id(key);
    return record->id < 0 ? nullptr : record.release();
}

template <class FAMILY>
NODE_OF<FAMILY> *create_list_node(RECORD_OF<FAMILY> *info, PVOID list) {
    auto *node = create_node<NODE_OF<FAMILY>>(info);
    if (node != nullptr)
        node->*FAMILY::BELOW = static_cast<std::remove_reference_t<decltype(node->*FAMILY::BELOW)>>(list);
    return node;
}

// A node for a fresh record, which nobody else holds: without a node it is released.
template <class FAMILY>
NODE_OF<FAMILY> *create_list_node_ex(RECORD_OF<FAMILY> *fresh, PVOID list) {
    OWNED_RECORD_T<FAMILY> record{fresh};
    if (record == nullptr)
        return nullptr;
    auto *node = create_list_node<FAMILY>(record.get(), list);
    if (node != nullptr)
        static_cast<void>(record.release());
    return node;
}

// 0: added or nothing to do; 1: the list has that key, and the node stays the caller's.
template <class FAMILY>
RTSTATUS add_list_node(NODE_OF<FAMILY> **list, NODE_OF<FAMILY> *node) {
    if (list == nullptr || node == nullptr)
        return 0;
    if (*list == nullptr) {
        *list = node;
        return 0;
    }
    if (node->info == nullptr)
        return 0;
    NODE_OF<FAMILY> *last = *list;
    for (NODE_OF<FAMILY> *other : nodes_of(*list)) {
        if (has_key<FAMILY>(other, node->info->*FAMILY::KEY))
            return 1;
        last = other;
    }
    last->next = node;
    return 0;
}

template <class FAMILY, class KEY>
NODE_OF<FAMILY> *find_by_key(const NODE_OF<FAMILY> *list, KEY key) {
    return find_node(list, holds_key<FAMILY>(key));
}

template <class FAMILY>
void delete_list_node(NODE_OF<FAMILY> **node) {
    if (node == nullptr || *node == nullptr)
        return;
    release_record<FAMILY>(&(*node)->info);
    safe_free(*node);
    *node = nullptr;
}

template <class FAMILY>
void delete_list(NODE_OF<FAMILY> **list) {
    delete_nodes(list, delete_list_node<FAMILY>);
}

template <class FAMILY, class KEY>
void delete_by_key(NODE_OF<FAMILY> **list, KEY key) {
    delete_first_node(list, holds_key<FAMILY>(key), delete_list_node<FAMILY>);
}

// Whatever the serial number: callers take the movies of a disk off the nodes first, then call this until
// nothing changes any more.
template <class FAMILY>
void delete_first_without_movies(NODE_OF<FAMILY> **list, const INT8_T *serialno) {
    if (serialno == nullptr)
        return;
    delete_first_node(
        list, [](const NODE_OF<FAMILY> *node) { return node->*FAMILY::BELOW == nullptr; },
        delete_list_node<FAMILY>);
}

template <class NODE, class RECORD>
void show_list(const NODE *list, INT32_T show_movie, void (*show_record)(const RECORD *)) {
    for (const NODE *node : nodes_of(list)) {
        show_record(node->info);
        if (show_movie == 0)
            continue;
        show_dbdata_movie_information_list(
            static_cast<const DBDATA_MOVIE_INFORMATION_LIST_T *>(node->movlist), 1);
    }
}

} // namespace tavisys

#endif
