#include "hex.h"

#include <array>
#include <cstdio>

namespace client {

namespace {

constexpr std::size_t LINE_LENGTH = 16; // bytes
constexpr std::string_view DIGITS = "0123456789abcdef";
constexpr int NO_DIGIT = -1;

int value_of(char digit) {
    const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    const std::size_t at = DIGITS.find(lower);
    return at == std::string_view::npos ? NO_DIGIT : static_cast<int>(at);
}

void append_byte(std::string &text, char byte) {
    text += DIGITS[static_cast<unsigned char>(byte) >> 4U];
    text += DIGITS[static_cast<unsigned char>(byte) & 0xFU];
}

std::string dump_line(std::size_t offset, std::string_view bytes) {
    std::array<char, sizeof "00000000"> place{};
    snprintf(place.data(), place.size(), "%06zx", offset & 0xFFFFFFFFU);
    std::string line = place.data();
    for (std::size_t i = 0; i < LINE_LENGTH; i++) {
        line += i == LINE_LENGTH / 2 ? "  " : " ";
        if (i < bytes.size())
            append_byte(line, bytes[i]);
        else
            line += "  ";
    }
    line += "  ";
    for (const char byte : bytes)
        line += byte >= ' ' && byte <= '~' ? byte : '.';
    return line + "\n";
}

} // namespace

std::string hex_of(std::string_view bytes) {
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char byte : bytes)
        append_byte(text, byte);
    return text;
}

std::optional<std::string> bytes_of_hex(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i++) {
        if (std::string_view(" \t\r\n:").find(digits[i]) != std::string_view::npos)
            continue;
        const int high = value_of(digits[i]);
        const int low = i + 1 < digits.size() ? value_of(digits[i + 1]) : NO_DIGIT;
        if (high == NO_DIGIT || low == NO_DIGIT)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
        i++;
    }
    return bytes;
}

std::string hex_dump(std::string_view bytes) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += LINE_LENGTH)
        text += dump_line(at, bytes.substr(at, LINE_LENGTH));
    return text;
}

} // namespace client
