// Owners for what comes from malloc(): freed on every return that does not release it.
#ifndef TAVISYS_SUPPORT_OWNER_H
#define TAVISYS_SUPPORT_OWNER_H

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

#include "support_memory.h"

namespace tavisys {

struct FREE_T {
    void operator()(void *pointer) const { free(pointer); }
};
using OWNED_STRING_T = std::unique_ptr<INT8_T, FREE_T>;
using OWNED_BODY_T = std::unique_ptr<INT8_T, FREE_T>;

// Calls a family's delete function, which takes the address of the pointer.
template <auto DELETE>
struct DELETE_WITH_T {
    template <class RECORD>
    void operator()(RECORD *record) const {
        DELETE(&record);
    }
};
template <class RECORD, auto DELETE>
using OWNED_T = std::unique_ptr<RECORD, DELETE_WITH_T<DELETE>>;

// Clears with plain stores. As one piece, GCC clears what is longer than 64 bytes with a string instruction,
// which takes longer than malloc() does.
template <size_t SIZE>
void clear(unsigned char *at) {
    constexpr size_t PIECE = 64;
    new (at) std::array<unsigned char, std::min(SIZE, PIECE)>{};
    if constexpr (SIZE > PIECE)
        clear<SIZE - PIECE>(at + PIECE);
}

// A zeroed record, the gaps between its fields included. From malloc(): calloc() of the C library passes over
// the blocks that the thread has just freed and takes twice as long.
template <class RECORD>
RECORD *allocate() {
    static_assert(std::is_trivially_copyable_v<RECORD>);
    void *memory = malloc(sizeof(RECORD));
    if (memory != nullptr)
        clear<sizeof(RECORD)>(static_cast<unsigned char *>(memory));
    return static_cast<RECORD *>(memory);
}

// Fills a record's field with a copy; false, also for NULL, when there is none.
inline bool store_copy(INT8_T *&field, const INT8_T *string) {
    field = safe_strdup(string);
    return field != nullptr;
}

// As store_copy(), for strings that may be missing: of NULL the copy is NULL.
inline bool store_copy_or_null(INT8_T *&field, const INT8_T *string) {
    return store_copy(field, string) || string == nullptr;
}

} // namespace tavisys

#endif
