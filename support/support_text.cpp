#include "support_text.h"

#include <cstring>

namespace {

constexpr const INT8_T *STRIPPED = " \t\r\n";

constexpr bool is_letter_or_digit(INT8_T c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

} // namespace

INT8_T *strip_char_space_and_return_from_string(INT8_T *string) {
    if (string == nullptr)
        return nullptr;
    INT8_T *first = string + strspn(string, STRIPPED);
    INT8_T *end = first + strlen(first);
    while (end > first && strchr(STRIPPED, end[-1]) != nullptr)
        end--;
    *end = '\0';
    return first;
}

void skip_nonchar_and_nonnum_in_string(INT8_T *string) {
    if (string == nullptr)
        return;
    INT8_T *kept = string;
    for (const INT8_T *c = string; *c != '\0'; c++)
        if (is_letter_or_digit(*c))
            *kept++ = *c;
    *kept = '\0';
}
