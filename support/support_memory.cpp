#include "support_memory.h"

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr INT32_T INDENT_WIDTH = 4;

constexpr unsigned char lower_ascii(INT8_T character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

// NULL before any string. Decides a comparison that holds one; 0 when both are strings or both NULL.
INT32_T compare_null(const INT8_T *left, const INT8_T *right) {
    return static_cast<INT32_T>(left != nullptr) - static_cast<INT32_T>(right != nullptr);
}

template <class VALUE>
INT32_T sign_of_difference(VALUE left, VALUE right) {
    return static_cast<INT32_T>(left > right) - static_cast<INT32_T>(left < right);
}

// Numeric value of a dotted IPv4 address, or -1.
int64_t address_value(const INT8_T *address) {
    in_addr value{};
    if (address == nullptr || inet_pton(AF_INET, address, &value) != 1)
        return -1;
    return ntohl(value.s_addr);
}

} // namespace

void safe_free(PVOID pointer) {
    free(pointer);
}

INT8_T *safe_strdup(const INT8_T *string) {
    return string == nullptr ? nullptr : strdup(string);
}

INT32_T safe_strcmp(const INT8_T *left, const INT8_T *right) {
    if (left == nullptr || right == nullptr)
        return compare_null(left, right);
    return strcmp(left, right);
}

INT32_T safe_strcasecmp(const INT8_T *left, const INT8_T *right) {
    if (left == nullptr || right == nullptr)
        return compare_null(left, right);
    while (*left != '\0' && lower_ascii(*left) == lower_ascii(*right)) {
        left++;
        right++;
    }
    return lower_ascii(*left) - lower_ascii(*right);
}

void safe_memcpy(PVOID destination, const void *source, INT32_T count) {
    if (destination == nullptr || source == nullptr || count < 1)
        return;
    memcpy(destination, source, static_cast<size_t>(count));
}

INT32_T safe_ipcmp(const INT8_T *left, const INT8_T *right) {
    const int64_t left_value = address_value(left);
    const int64_t right_value = address_value(right);
    if (left_value < 0 && right_value < 0)
        return sign_of_difference(safe_strcmp(left, right), 0);
    return sign_of_difference(left_value, right_value);
}

void show_indent(INT32_T level) {
    for (INT32_T i = 0; i < level; i++)
        printf("%*s", INDENT_WIDTH, "");
}
