// The language in which the program speaks: one for the whole process, chosen before anything is shown.
// Names that come from the server stay as they are.
#ifndef TAVISYS_CLIENT_LANGUAGE_H
#define TAVISYS_CLIENT_LANGUAGE_H

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace client {

enum class LANGUAGE_T { CHINESE, ENGLISH };

LANGUAGE_T language();
void use_language(LANGUAGE_T language);

// What --lang calls so, "zh" or "en".
std::optional<LANGUAGE_T> language_of_word(std::string_view word);

// By the first of LC_ALL, LC_MESSAGES and LANG that isn't empty; where that isn't English, Chinese.
LANGUAGE_T language_of_locale();

// A text in each language. One that is missing or has other slots for fill() doesn't compile.
class TEXT_T {
public:
    constexpr TEXT_T(const char *chinese, const char *english) : chinese_(chinese), english_(english) {
        if (*chinese == '\0' || *english == '\0' || slots(chinese) != slots(english))
            throw std::logic_error("a text without its translation");
    }

    const char *get() const { return language() == LANGUAGE_T::ENGLISH ? english_ : chinese_; }
    operator std::string() const { return get(); }

private:
    // A bit for each of {0} to {9}.
    static constexpr unsigned slots(std::string_view text) {
        unsigned found = 0;
        for (std::size_t i = 0; i + 2 < text.size(); i++) {
            if (text[i] == '{' && text[i + 2] == '}')
                found |= 1U << (text[i + 1] - '0');
        }
        return found;
    }

    const char *chinese_;
    const char *english_;
};

} // namespace client

#endif
