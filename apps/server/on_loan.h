// Wire records on loan from the catalogue.
//
// Encoders only read their records. So the server's records borrow their texts from the catalogue's snapshot
// instead of copying them, and are never handed to the delete functions: what they need beside those
// texts belongs to the object that holds them.
//
// Most lists can't be encoded when they are NULL. One without entries is a list of one node without a record
// then, of which the encoders write a count of 0.
#ifndef TAVISYS_SERVER_ON_LOAN_H
#define TAVISYS_SERVER_ON_LOAN_H

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

} // namespace server

#endif
