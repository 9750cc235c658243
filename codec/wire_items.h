// Bodies of a few items that callers hand over one by one: their order on the wire is that of the arguments.
#ifndef TAVISYS_CODEC_WIRE_ITEMS_H
#define TAVISYS_CODEC_WIRE_ITEMS_H

#include "codec/wire.h"

namespace tavisys::wire {

inline int64_t item_length(INT32_T) {
    return INTEGER_LENGTH;
}
inline int64_t item_length(const INT8_T *item) {
    return string_length(item);
}
inline bool encode_item(WRITER_T &to, INT32_T item) {
    return to.integer(item);
}
inline bool encode_item(WRITER_T &to, const INT8_T *item) {
    return to.string(item);
}
inline bool decode_item(READER_T &from, INT32_T *item) {
    return from.integer(item);
}
inline bool decode_item(READER_T &from, INT8_T **item) {
    return from.string(item);
}

template <class... ITEM>
int64_t items_length(ITEM... item) {
    return (item_length(item) + ...);
}

template <class... ITEM>
bool encode_items(WRITER_T &to, ITEM... item) {
    return (encode_item(to, item) && ...);
}

template <class... ITEM>
INT32_T encode_items_to_buffer(PVOID message, INT32_T length, ITEM... item) {
    if (message == nullptr)
        return -1;
    WRITER_T to(message, length);
    return encode_items(to, item...) ? to.passed() : -1;
}

// What is decoded before a failure stays where it was put, with the caller.
template <class... ITEM>
bool decode_items(READER_T &from, ITEM *...item) {
    return ((item != nullptr) && ...) && (decode_item(from, item) && ...);
}

} // namespace tavisys::wire

#endif
