#include "language.h"

#include <cstdlib>

namespace client {

namespace {

LANGUAGE_T chosen = LANGUAGE_T::CHINESE;

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

LANGUAGE_T language() {
    return chosen;
}

void use_language(LANGUAGE_T language) {
    chosen = language;
}

std::optional<LANGUAGE_T> language_of_word(std::string_view word) {
    if (word == "zh")
        return LANGUAGE_T::CHINESE;
    if (word == "en")
        return LANGUAGE_T::ENGLISH;
    return std::nullopt;
}

LANGUAGE_T language_of_locale() {
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(variable);
        if (value == nullptr || *value == '\0')
            continue;
        const std::string_view locale = value;
        const bool english = locale.starts_with("en") && (locale.size() == 2 || !is_letter(locale[2]));
        return english ? LANGUAGE_T::ENGLISH : LANGUAGE_T::CHINESE;
    }
    return LANGUAGE_T::CHINESE;
}

} // namespace client
