// The server's options: the command line's, for the rest those of a configuration file, for the rest
// defaults.
#ifndef TAVISYS_SERVER_OPTIONS_H
#define TAVISYS_SERVER_OPTIONS_H

#include <algorithm>
#include <optional>
#include <string>
#include <thread>

#include "access.h"

namespace server {

// What the program ends with, as its help tells.
constexpr int EXIT_SERVED = 0;
constexpr int EXIT_FAILED = 1;       // it can't serve now
constexpr int EXIT_USAGE = 2;        // options or configuration are wrong
constexpr int EXIT_SHORTCOMINGS = 1; // of --check: it would serve, but something is left out
constexpr int EXIT_CANNOT_SERVE = 2; // of --check

inline unsigned processors() {
    return std::max(1U, std::thread::hardware_concurrency());
}

struct OPTIONS_T {
    std::string library;
    std::string name = "影柜";
    std::string allowed = ACCESS_T::DEFAULT;
    unsigned threads = 2 * processors();
    std::string log_level;
    std::string metrics; // the file, "" for none

    std::string config; // the file that was read, "" for none
    bool check = false;
};

// Fills the options. Returns the status to exit with at once: after the help, the version or an error, which
// have been printed.
std::optional<int> read_options(int argc, char **argv, OPTIONS_T *options);

} // namespace server

#endif
