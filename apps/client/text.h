// Text on a terminal: how wide it is, how it is cut, and what of it must not get there as it is.
// What servers send is data that anyone may have written: it may hold invalid UTF-8, line breaks, and
// sequences that would steer the terminal.
#ifndef TAVISYS_CLIENT_TEXT_H
#define TAVISYS_CLIENT_TEXT_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "language.h"

namespace client {

// A record's string, which may be missing.
inline std::string text_of(const char *value) {
    return value == nullptr ? "" : value;
}

constexpr char32_t REPLACEMENT = 0xFFFD; // stands for what is no character

struct CODE_POINT_T {
    char32_t value;   // REPLACEMENT for invalid bytes
    std::size_t size; // bytes taken
};

// The first code point of a text that isn't empty. Of invalid bytes it takes as many as could have begun
// one character, as web browsers do.
CODE_POINT_T first_code_point(std::string_view text);

void append_code_point(std::string &text, char32_t value);

// A control character, or one that turns or breaks the line around it: it moves more than itself.
bool is_control(char32_t value);

// Columns on a terminal: 0, 1 or 2 for a code point.
int display_width(char32_t value);
int display_width(std::string_view text);

// The text as it may be written to a terminal: valid UTF-8 with a visible sign for each control character
// (␊ for a line break, ␛ for an escape).
std::string printable(std::string_view text);

// The text, which is printable, within so many columns: a longer one ends in "…".
std::string cut_to_width(std::string_view text, int width);

// The text, which is printable, in lines of so many columns, broken at blanks and between wide characters.
std::vector<std::string> wrap_to_width(std::string_view text, int width);

// A message with {0}, {1}, ... replaced by the printable arguments.
std::string fill(std::string_view message, std::initializer_list<std::string> arguments);
inline std::string fill(const TEXT_T &message, std::initializer_list<std::string> arguments) {
    return fill(std::string_view(message.get()), arguments);
}

} // namespace client

#endif
