// The families of records that travel, with the types taken off: what decode_fuzz tries every body on, and
// what record_fuzz sends its records through.
#ifndef TAVISYS_FUZZ_FAMILIES_H
#define TAVISYS_FUZZ_FAMILIES_H

#include <span>

#include "tavisystype.h"

namespace fuzz {

struct FAMILY_T {
    const char *name;
    INT32_T (*decode)(const void *body, INT32_T length, void **record); // bytes consumed, or -1
    RTSTATUS (*encode)(const void *record, PVOID *body, INT32_T *length);
    void (*release)(void **record); // whole, and clears the pointer
    // Whether the encoder takes what the decoder made: an empty list is decoded as NULL, which most encoders
    // refuse. NULL stands for "the record is not NULL".
    bool (*can_be_sent)(const void *record) = nullptr;
    INT32_T unread = 0;      // bytes at the end of an encoded body that the decoder leaves
    bool tells_bytes = true; // otherwise decoding well is 0
    void (*show)(const void *record) = nullptr;
};

// The place of a family never changes, so that inputs keep their meaning: new ones go to the end.
std::span<const FAMILY_T> families();
const FAMILY_T &family_of(const char *name);

// A body of single items, which its decoder hands over one by one.
struct ITEMS_T {
    INT32_T numbers[2];
    INT8_T *texts[4];
};

} // namespace fuzz

#endif
