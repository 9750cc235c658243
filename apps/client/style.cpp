#include "style.h"

namespace client {

namespace {

bool color_output = false;
bool color_errors = false;

constexpr std::string_view BOLD = "\033[1m";
constexpr std::string_view RED = "\033[31m";
constexpr std::string_view CYAN = "\033[36m";
constexpr std::string_view RESET = "\033[0m";

std::string colored(std::string_view color, std::string_view text) {
    return std::string(color).append(text).append(RESET);
}

std::string mark(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const bool marked = text.starts_with("3D") || text.starts_with("4K");
        const std::size_t size = marked ? 2 : 1;
        result += marked ? colored(CYAN, text.substr(0, size)) : std::string(text.substr(0, size));
        text.remove_prefix(size);
    }
    return result;
}

} // namespace

void use_colors(bool on_output, bool on_errors) {
    color_output = on_output;
    color_errors = on_errors;
}

std::string paint(STYLE_T style, std::string_view text) {
    if (!color_output || text.empty() || style == STYLE_T::PLAIN)
        return std::string(text);
    if (style == STYLE_T::MARKS)
        return mark(text);
    return colored(style == STYLE_T::FAILURE ? RED : BOLD, text);
}

std::string paint_error(std::string_view text) {
    return color_errors ? colored(RED, text) : std::string(text);
}

} // namespace client
