// The wire form of an integer and a string, once. The exported primitives of support_codec.h and the
// record engine of codec/wire.h are both made of these; they stand in a header so that encoding a record
// compiles to straight-line code instead of two calls a field.
#ifndef TAVISYS_SUPPORT_CODEC_PRIMITIVE_H
#define TAVISYS_SUPPORT_CODEC_PRIMITIVE_H

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "tavisystype.h"

namespace tavisys {

constexpr INT32_T INTEGER_LENGTH = 4;
constexpr INT32_T NULL_STRING_COUNT = -1;
constexpr int64_t LONGEST_BODY = std::numeric_limits<INT32_T>::max();

// Converts between host and wire order; both directions are the same.
constexpr uint32_t wire_order(uint32_t value) {
    if constexpr (std::endian::native == std::endian::big)
        return __builtin_bswap32(value);
    return value;
}

inline void store_integer(INT8_T *to, INT32_T value) {
    const uint32_t wire = wire_order(static_cast<uint32_t>(value));
    memcpy(to, &wire, sizeof wire);
}

inline INT32_T load_integer(const INT8_T *from) {
    uint32_t wire = 0;
    memcpy(&wire, from, sizeof wire);
    return static_cast<INT32_T>(wire_order(wire));
}

// Lengths are summed in 64 bits and checked once against LONGEST_BODY: no sum of fields in memory can
// overflow them.
inline int64_t string_length(const INT8_T *string) {
    return INTEGER_LENGTH + (string == nullptr ? 0 : static_cast<int64_t>(strlen(string)));
}

inline INT32_T encode_integer(INT32_T value, INT8_T *to, INT32_T left) {
    if (left < INTEGER_LENGTH)
        return -1;
    store_integer(to, value);
    return INTEGER_LENGTH;
}

inline INT32_T encode_string(const INT8_T *string, INT8_T *to, INT32_T left) {
    if (string == nullptr)
        return encode_integer(NULL_STRING_COUNT, to, left);
    const size_t count = strlen(string);
    if (left < INTEGER_LENGTH || count > static_cast<size_t>(left - INTEGER_LENGTH))
        return -1;
    store_integer(to, static_cast<INT32_T>(count));
    // NOLINTNEXTLINE(bugprone-not-null-terminated-result): strings travel without their terminator
    memcpy(to + INTEGER_LENGTH, string, count);
    return INTEGER_LENGTH + static_cast<INT32_T>(count);
}

inline INT32_T decode_integer(const INT8_T *from, INT32_T left, INT32_T *value) {
    if (left < INTEGER_LENGTH)
        return -1;
    *value = load_integer(from);
    return INTEGER_LENGTH;
}

// The copy comes from malloc(): every byte of it is written here.
inline INT32_T decode_string(const INT8_T *from, INT32_T left, INT8_T **string, INT32_T longest = 0) {
    INT32_T count = 0;
    if (decode_integer(from, left, &count) < 0)
        return -1;
    if (count == NULL_STRING_COUNT) {
        *string = nullptr;
        return INTEGER_LENGTH;
    }
    if (count < 0 || count > left - INTEGER_LENGTH || (longest > 0 && count > longest))
        return -1;
    const auto size = static_cast<size_t>(count);
    const INT8_T *text = from + INTEGER_LENGTH;
    if (memchr(text, '\0', size) != nullptr)
        return -1;
    auto *copy = static_cast<INT8_T *>(malloc(size + 1));
    if (copy == nullptr)
        return -1;
    memcpy(copy, text, size);
    copy[size] = '\0';
    *string = copy;
    return INTEGER_LENGTH + count;
}

} // namespace tavisys

#endif
