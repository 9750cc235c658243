#include "text.h"

#include <algorithm>
#include <iterator>

#include "width_table.h"

namespace client {

namespace {

constexpr int UNBROKEN_SHARE = 2; // a line is broken at a blank only in its second half

template <std::size_t COUNT>
bool is_among(const CODE_POINTS_T (&ranges)[COUNT], char32_t value) {
    const auto *range = std::partition_point(std::begin(ranges), std::end(ranges),
                                             [value](const CODE_POINTS_T &r) { return r.last < value; });
    return range != std::end(ranges) && range->first <= value;
}

// What a first byte says: how many bytes follow, and between which values the first of them lies, which
// rules out overlong forms, surrogates and values behind the last code point.
struct LEAD_T {
    std::size_t followers;
    unsigned char low;
    unsigned char high;
    char32_t bits;
};

LEAD_T read_lead(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF)
        return {1, 0x80, 0xBF, byte & 0x1FU};
    if (byte >= 0xE0 && byte <= 0xEF) {
        const unsigned char low = byte == 0xE0 ? 0xA0 : 0x80;
        const unsigned char high = byte == 0xED ? 0x9F : 0xBF;
        return {2, low, high, byte & 0x0FU};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        const unsigned char low = byte == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = byte == 0xF4 ? 0x8F : 0xBF;
        return {3, low, high, byte & 0x07U};
    }
    return {0, 0, 0, REPLACEMENT};
}

// The sign to show for a control character: Unicode has pictures for those of ASCII alone.
char32_t visible_sign(char32_t value) {
    constexpr char32_t PICTURES = 0x2400;
    constexpr char32_t PICTURE_OF_DELETE = 0x2421;
    if (value < 0x20)
        return PICTURES + value;
    return value == 0x7F ? PICTURE_OF_DELETE : REPLACEMENT;
}

// Bytes of the text that lie within so many columns.
std::size_t bytes_within(std::string_view text, int width) {
    std::size_t used = 0;
    int columns = 0;
    while (used < text.size()) {
        const CODE_POINT_T c = first_code_point(text.substr(used));
        columns += display_width(c.value);
        if (columns > width)
            break;
        used += c.size;
    }
    return used;
}

} // namespace

CODE_POINT_T first_code_point(std::string_view text) {
    const auto byte = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(0) < 0x80)
        return {byte(0), 1};
    const LEAD_T lead = read_lead(byte(0));
    if (lead.followers == 0)
        return {REPLACEMENT, 1};
    char32_t value = lead.bits;
    for (std::size_t index = 1; index <= lead.followers; index++) {
        const unsigned char low = index == 1 ? lead.low : 0x80;
        const unsigned char high = index == 1 ? lead.high : 0xBF;
        if (index >= text.size() || byte(index) < low || byte(index) > high)
            return {REPLACEMENT, index};
        value = value << 6 | (byte(index) & 0x3FU);
    }
    return {value, lead.followers + 1};
}

void append_code_point(std::string &text, char32_t value) {
    const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (value < 0x80) {
        add(value);
        return;
    }
    if (value < 0x800) {
        add(0xC0 | value >> 6);
    } else {
        if (value < 0x10000) {
            add(0xE0 | value >> 12);
        } else {
            add(0xF0 | value >> 18);
            add(0x80 | (value >> 12 & 0x3F));
        }
        add(0x80 | (value >> 6 & 0x3F));
    }
    add(0x80 | (value & 0x3F));
}

bool is_control(char32_t value) {
    constexpr CODE_POINTS_T CONTROLS[] = {
        {0x00, 0x1F},     {0x7F, 0x9F},     {0x61C, 0x61C},   // C0, delete and C1, Arabic letter mark
        {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}, // direction of writing, line separators
    };
    return is_among(CONTROLS, value);
}

int display_width(char32_t value) {
    if (value < 0x300) // the usual case, before any search
        return 1;
    if (is_among(ZERO_WIDTH, value)) // first: some combining marks are wide by their script
        return 0;
    return is_among(WIDE, value) ? 2 : 1;
}

int display_width(std::string_view text) {
    int width = 0;
    while (!text.empty()) {
        const CODE_POINT_T c = first_code_point(text);
        width += display_width(c.value);
        text.remove_prefix(c.size);
    }
    return width;
}

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const CODE_POINT_T c = first_code_point(text);
        append_code_point(result, is_control(c.value) ? visible_sign(c.value) : c.value);
        text.remove_prefix(c.size);
    }
    return result;
}

std::string cut_to_width(std::string_view text, int width) {
    if (bytes_within(text, width) == text.size())
        return std::string(text);
    return std::string(text.substr(0, bytes_within(text, width - 1))) + "…";
}

std::vector<std::string> wrap_to_width(std::string_view text, int width) {
    std::vector<std::string> lines;
    for (std::size_t end = bytes_within(text, width); end < text.size(); end = bytes_within(text, width)) {
        // At least one character a line, however narrow the terminal is.
        end = std::max(end, first_code_point(text).size);
        const std::size_t blank = text.substr(0, end + 1).rfind(' ');
        const bool in_a_word = end < text.size() && static_cast<unsigned char>(text[end]) < 0x80;
        if (in_a_word && blank != std::string_view::npos && blank > end / UNBROKEN_SHARE)
            end = blank;
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    if (!text.empty() || lines.empty())
        lines.emplace_back(text);
    return lines;
}

std::string fill(std::string_view message, std::initializer_list<std::string> arguments) {
    std::string result;
    while (!message.empty()) {
        const bool slot = message.size() >= 3 && message[0] == '{' && message[2] == '}';
        const auto index = slot ? static_cast<std::size_t>(message[1] - '0') : arguments.size();
        const bool filled = index < arguments.size();
        result += filled ? printable(std::data(arguments)[index]) : std::string(1, message[0]);
        message.remove_prefix(filled ? 3 : 1);
    }
    return result;
}

} // namespace client
