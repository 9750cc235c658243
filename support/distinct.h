// Lists in which no key may stand twice. KEY takes a node and gives the string; NULL is a key like others.
#ifndef TAVISYS_SUPPORT_DISTINCT_H
#define TAVISYS_SUPPORT_DISTINCT_H

#include <algorithm>
#include <memory>
#include <span>

#include "support/list.h"
#include "support/owner.h"

namespace tavisys {

// safe_strcmp() < 0, without a call for keys that differ in their first bytes.
inline bool is_smaller(const INT8_T *left, const INT8_T *right) {
    if (left == nullptr || right == nullptr)
        return left == nullptr && right != nullptr;
    for (; *left != '\0' && *left == *right; left++)
        right++;
    return static_cast<unsigned char>(*left) < static_cast<unsigned char>(*right);
}

// Whether each key is behind the one before: how servers send their lists, and no key repeats then.
template <class NODE, class KEY>
bool is_ascending(const NODE *list, KEY key) {
    if (list == nullptr)
        return true;
    for (const NODE *node = list; node->next != nullptr; node = next_of(node))
        if (!is_smaller(key(node), key(next_of(node))))
            return false;
    return true;
}

// Keeps of each key the node that stands first, in the order of the list, and deletes the others. `count`
// is the number of nodes. False, with nothing changed, when memory is short.
//
// It goes by sorted keys, which costs about n log n whatever keys a peer may think of; comparing all pairs
// or hashing would not.
template <class NODE, class KEY, class DELETE_NODE>
bool drop_repeats(NODE **list, INT32_T count, KEY key, DELETE_NODE delete_node) {
    struct PLACE_T {
        NODE *node;
        INT32_T position;
    };
    if (is_ascending(*list, key))
        return true;
    const auto size = static_cast<size_t>(count);
    const std::unique_ptr<PLACE_T, FREE_T> owner(static_cast<PLACE_T *>(calloc(size, sizeof(PLACE_T))));
    if (owner == nullptr)
        return false;
    const std::span<PLACE_T> places(owner.get(), size);
    INT32_T position = 0;
    for (NODE *node = *list; node != nullptr; node = next_of(node), position++)
        places[static_cast<size_t>(position)] = {node, position};
    const auto by_position = [](const PLACE_T &left, const PLACE_T &right) {
        return left.position < right.position;
    };
    std::sort(places.begin(), places.end(), [&](const PLACE_T &left, const PLACE_T &right) {
        const INT32_T order = safe_strcmp(key(left.node), key(right.node));
        return order == 0 ? by_position(left, right) : order < 0;
    });
    const NODE *first = places[0].node; // of its key
    for (PLACE_T &place : places.subspan(1))
        if (safe_strcmp(key(first), key(place.node)) == 0)
            delete_node(&place.node);
        else
            first = place.node;
    std::sort(places.begin(), places.end(), by_position);
    TAIL_T<NODE> tail;
    for (const PLACE_T &place : places)
        if (place.node != nullptr) {
            place.node->next = nullptr;
            tail.append(place.node);
        }
    *list = tail.head();
    return true;
}

} // namespace tavisys

#endif
