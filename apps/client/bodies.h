// What the body of a message says, for whoever looks at a single one: one row for each type that servers
// answer.
#ifndef TAVISYS_CLIENT_BODIES_H
#define TAVISYS_CLIENT_BODIES_H

#include <optional>
#include <span>
#include <string>

#include "tavisystype.h"

namespace client {

struct LOOK_T {
    bool json;
    int width; // of the terminal
};

struct DECODED_T {
    std::string text; // the document, or the text for people
    INT32_T used;     // bytes of the body that it was made of
};

// Nothing for a body that is cut short or malformed. A pointer to none of these is never NULL.
using DECODE_BODY_T = std::optional<DECODED_T> (*)(const std::string &body, const LOOK_T &look);

struct MESSAGE_T {
    INT32_T type;
    const char *word; // how the command line calls it
    DECODE_BODY_T request;
    DECODE_BODY_T reply;
};

std::span<const MESSAGE_T> all_messages();

// The message of that word or number; NULL for one that servers don't answer.
const MESSAGE_T *find_message(const std::string &word_or_number);
const MESSAGE_T *find_message(INT32_T type);

} // namespace client

#endif
