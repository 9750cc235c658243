// Bytes as hexadecimal digits.
#ifndef TAVISYS_CLIENT_HEX_H
#define TAVISYS_CLIENT_HEX_H

#include <optional>
#include <string>
#include <string_view>

namespace client {

std::string hex_of(std::string_view bytes);

// The bytes that the digits stand for; blanks, line ends and colons between two bytes don't matter. Nothing
// for what are no such digits.
std::optional<std::string> bytes_of_hex(std::string_view digits);

// Lines of 16 bytes: where they are, the bytes, and those that are ASCII characters.
std::string hex_dump(std::string_view bytes);

} // namespace client

#endif
