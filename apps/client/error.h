// The one way in which a command ends without having done its work.
#ifndef TAVISYS_CLIENT_ERROR_H
#define TAVISYS_CLIENT_ERROR_H

#include <stdexcept>
#include <string>

namespace client {

enum EXIT_STATUS_E {
    EXIT_DONE = 0,         // the answer is on standard output
    EXIT_FAILED = 1,       // the server said no or can't be reached, or the answer can't be written
    EXIT_BAD_USAGE = 2,    // the command line asks for nothing that can be done
    EXIT_INTERRUPTED = 130 // the user pressed Ctrl-C; main() hands the signal on
};

// Carries the exit status and what to tell the user; an empty message tells nothing.
struct CLIENT_ERROR_T : std::runtime_error {
    CLIENT_ERROR_T(EXIT_STATUS_E exit_status, const std::string &message)
        : std::runtime_error(message), status(exit_status) {}

    EXIT_STATUS_E status;
};

// Nobody is there, or whoever was has gone: it may be worth trying again.
struct SERVER_AWAY_T : CLIENT_ERROR_T {
    explicit SERVER_AWAY_T(const std::string &message) : CLIENT_ERROR_T(EXIT_FAILED, message) {}
};

} // namespace client

#endif
