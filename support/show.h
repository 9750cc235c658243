// What the debug listings share.
#ifndef TAVISYS_SUPPORT_SHOW_H
#define TAVISYS_SUPPORT_SHOW_H

#include "support/list.h"
#include "tavisystype.h"

namespace tavisys {

// printf() must not be given a NULL string.
inline const INT8_T *shown(const INT8_T *string) {
    return string == nullptr ? "(null)" : string;
}

// SHOW passes over NULL, the record that a node may lack.
template <auto SHOW, class NODE>
void show_each(const NODE *list) {
    for (const NODE *node : nodes_of(list))
        SHOW(node->info);
}

} // namespace tavisys

#endif
