// Looking again and again, until the user has seen enough.
#ifndef TAVISYS_CLIENT_WATCH_H
#define TAVISYS_CLIENT_WATCH_H

#include <cstdint>

#include "command.h"

namespace client {

constexpr int FOR_EVER = 0;

// Tells how long a server that has answered once may be away. One that never did is told at once.
class PATIENCE_T {
public:
    explicit PATIENCE_T(int longest_ms) : longest_ms_(longest_ms) {}
    void answered();
    // Called where the SERVER_AWAY_T is caught, which it rethrows when patience is over.
    void bear();

private:
    int longest_ms_;
    bool has_answered_ = false;
    std::int64_t away_since_ms_ = 0; // 0 while it answers
};

// Runs the command every arguments.watch milliseconds and shows what has come: in the same place of a
// terminal, else one block behind the other, documents of --json in a line each. A server that goes away is
// told and asked again. Ends with a CLIENT_ERROR_T, that of the interrupt among them.
[[noreturn]] void watch(const PARSED_T &parsed);

} // namespace client

#endif
