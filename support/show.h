// What the debug listings share.
#ifndef TAVISYS_SUPPORT_SHOW_H
#define TAVISYS_SUPPORT_SHOW_H

#include "tavisystype.h"

namespace tavisys {

// printf() must not be given a NULL string.
inline const INT8_T *shown(const INT8_T *string) {
    return string == nullptr ? "(null)" : string;
}

} // namespace tavisys

#endif
