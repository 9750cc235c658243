#include "settings.h"

#include <unistd.h>

#include <cstdlib>
#include <span>
#include <string_view>

#include "language.h"
#include "style.h"

namespace client {

namespace {

// The last value of an option among the words, as `--name value` or `--name=value`.
std::string_view last_value(std::span<const char *const> words, std::string_view name) {
    std::string_view value;
    for (std::size_t i = 0; i < words.size() && words[i] != std::string_view("--"); i++) {
        const std::string_view word = words[i];
        if (word == name && i + 1 < words.size())
            value = words[++i];
        else if (word.starts_with(name) && word.substr(name.size()).starts_with('='))
            value = word.substr(name.size() + 1);
    }
    return value;
}

bool is_set(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool has_colors(int file) {
    const char *terminal = std::getenv("TERM");
    const bool dumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return isatty(file) == 1 && !is_set("NO_COLOR") && !dumb;
}

bool wants_colors(std::string_view when, int file) {
    return when == "always" || (when != "never" && has_colors(file));
}

} // namespace

void apply_settings(int argc, const char *const *argv) {
    const std::span<const char *const> words(argv, static_cast<std::size_t>(argc));
    use_language(language_of_word(last_value(words, "--lang")).value_or(language_of_locale()));
    const std::string_view when = last_value(words, "--color");
    use_colors(wants_colors(when, STDOUT_FILENO), wants_colors(when, STDERR_FILENO));
}

} // namespace client
