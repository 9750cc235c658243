// Wire records on loan from the catalogue.
//
// Encoders only read their records. So the server's records borrow their texts from the catalogue's snapshot
// instead of copying them, and are never handed to the delete functions: what they need beside those
// texts lies in an arena, which goes with the reply.
//
// Most lists can't be encoded when they are NULL. One without entries is a list of one node without a record
// then, of which the encoders write a count of 0.
#ifndef TAVISYS_SERVER_ON_LOAN_H
#define TAVISYS_SERVER_ON_LOAN_H

#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <memory_resource>
#include <new>
#include <string_view>

#include "tavisystype.h"

namespace server {

// The records have fields for texts that they own; on loan they are only read.
inline INT8_T *on_loan(const INT8_T *text) {
    return const_cast<INT8_T *>(text);
}

template <class NODE>
const NODE *next_of(const NODE *node) {
    return static_cast<const NODE *>(node->next);
}

// Makes the nodes a list in their order; returns its head, NULL when there are none.
template <class NODES>
auto *chain(NODES *nodes) {
    for (size_t i = 1; i < nodes->size(); i++)
        (*nodes)[i - 1].next = &(*nodes)[i];
    return nodes->empty() ? nullptr : &nodes->front();
}

// What is made for one reply, all freed at once. A usual reply fits into the arena itself.
class ARENA_T {
public:
    ARENA_T() = default;
    ARENA_T(const ARENA_T &) = delete;
    ARENA_T &operator=(const ARENA_T &) = delete;
    ~ARENA_T() = default;

    template <class RECORD>
    RECORD *keep(const RECORD &record) {
        return new (memory_.allocate(sizeof(RECORD), alignof(RECORD))) RECORD{record};
    }

    // The parts, one behind the other.
    INT8_T *text(std::initializer_list<std::string_view> parts) {
        size_t length = 0;
        for (const std::string_view part : parts)
            length += part.size();
        auto *text = static_cast<INT8_T *>(memory_.allocate(length + 1, 1));
        INT8_T *end = text;
        for (const std::string_view part : parts)
            end += part.copy(end, part.size());
        *end = '\0';
        return text;
    }

    // The records of a catalogue list for which wanted(info) holds, as convert(info) makes them; NULL for
    // none.
    template <class NODE, class FROM, class CONVERT, class WANTED>
    NODE *list_of(const FROM *from, CONVERT convert, WANTED wanted) {
        NODE *head = nullptr;
        NODE *tail = nullptr;
        for (const FROM *node = from; node != nullptr; node = next_of(node)) {
            if (node->info == nullptr || !wanted(*node->info))
                continue;
            NODE *added = keep(NODE{nullptr, keep(convert(*node->info))});
            if (head == nullptr)
                head = added;
            else
                tail->next = added;
            tail = added;
        }
        return head;
    }
    template <class NODE, class FROM, class CONVERT>
    NODE *list_of(const FROM *from, CONVERT convert) {
        return list_of<NODE>(from, convert, [](const auto &) { return true; });
    }

    // An empty node, see above, where there are none.
    template <class NODE, class FROM, class CONVERT>
    NODE *list_or_empty_node(const FROM *from, CONVERT convert) {
        NODE *list = list_of<NODE>(from, convert);
        return list == nullptr ? keep(NODE{}) : list;
    }

private:
    std::array<std::byte, size_t{8} * 1024> room_;
    std::pmr::monotonic_buffer_resource memory_{room_.data(), room_.size()};
};

} // namespace server

#endif
