// The families of records that a test program lists: record_family.cpp tries on each what every message body
// has in common.
#ifndef TAVISYS_TESTS_RECORD_FAMILY_H
#define TAVISYS_TESTS_RECORD_FAMILY_H

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

#include "harness.h"
#include "support_memory.h"

namespace harness {

// A body's family with the types taken off.
struct FAMILY_T {
    const char *name;
    std::string wire; // one body, written by hand
    RTSTATUS (*encode)(const void *, PVOID *, INT32_T *);
    INT32_T (*decode)(const void *, INT32_T, void **);
    void (*release)(void **);
    bool tells_bytes = true; // otherwise decoding well is 0
};

template <auto ENCODE, auto DECODE, auto RELEASE>
FAMILY_T family(const char *name, const std::string &wire) {
    return {
        name, wire,
        [](const void *record, PVOID *body, INT32_T *length) { return ENCODE(ANY_T{record}, body, length); },
        [](const void *body, INT32_T length, void **out) { return DECODE(body, length, ANY_T{out}); },
        [](void **record) {
            RELEASE(ANY_T{record});
            *record = nullptr; // a list's delete leaves the pointer
        }};
}

// The program's own.
extern const std::vector<FAMILY_T> FAMILIES;

inline const FAMILY_T &family_of(const std::string &name) {
    for (const FAMILY_T &family : FAMILIES)
        if (family.name == name)
            return family;
    throw std::invalid_argument(name);
}

// A record of the family, from its body.
template <class RECORD>
RECORD *decoded(const char *name) {
    const FAMILY_T &family = family_of(name);
    void *record = nullptr;
    family.decode(family.wire.data(), static_cast<INT32_T>(family.wire.size()), &record);
    return static_cast<RECORD *>(record);
}

// The bytes that an encoder makes; none when it fails, which leaves its out-arguments alone.
template <class ENCODE, class... ARGUMENT>
std::string encoded(ENCODE encode, ARGUMENT... argument) {
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    const RTSTATUS result = encode(argument..., &body, &length);
    EXPECT_EQ(result == 0 ? 0 : -1, result);
    EXPECT_EQ(result != 0, body == &mark && length == 77);
    if (result != 0)
        return {};
    std::string bytes(static_cast<char *>(body), static_cast<size_t>(length));
    safe_free(body);
    return bytes;
}

// Calls with every beginning of a body, from none of it to all.
void each_cut(const std::string &whole, const std::function<void(const BODY_T &part)> &call);

} // namespace harness

#endif
