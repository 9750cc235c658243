// The commands: one row of COMMANDS each. A new command is a row, its declaration of options (in
// arguments.cpp) and the function that runs it.
#ifndef TAVISYS_CLIENT_COMMAND_H
#define TAVISYS_CLIENT_COMMAND_H

#include <span>
#include <string>

#include "arguments.h"
#include "language.h"

namespace client {

struct COMMAND_T {
    const char *name;
    TEXT_T help;
    void (*declare)(CLI::App &app, ARGUMENTS_T &arguments); // NULL: it has no options of its own
    // Asks the server and returns what to write to standard output, laid out for a terminal of that width
    // (UNLIMITED for none). Throws a CLIENT_ERROR_T.
    std::string (*run)(const ARGUMENTS_T &arguments, int width);
    bool watches_itself = false; // has its own way of looking again; for the others watch() runs it again
};

std::span<const COMMAND_T> all_commands();

// The cabinet
std::string run_version(const ARGUMENTS_T &arguments, int width);
std::string run_info(const ARGUMENTS_T &arguments, int width);
std::string run_status(const ARGUMENTS_T &arguments, int width);
std::string run_uuid(const ARGUMENTS_T &arguments, int width);
std::string run_name(const ARGUMENTS_T &arguments, int width);

// Its movies
std::string run_categories(const ARGUMENTS_T &arguments, int width);
std::string run_filters(const ARGUMENTS_T &arguments, int width);
std::string run_movies(const ARGUMENTS_T &arguments, int width);
std::string run_touch(const ARGUMENTS_T &arguments, int width);
std::string run_movie(const ARGUMENTS_T &arguments, int width);
std::string run_poster(const ARGUMENTS_T &arguments, int width);

// Single messages
std::string run_decode(const ARGUMENTS_T &arguments, int width);
std::string run_raw(const ARGUMENTS_T &arguments, int width);

// A server's disks, be it another one's
std::string run_disks(const ARGUMENTS_T &arguments, int width);
std::string run_count(const ARGUMENTS_T &arguments, int width);
std::string run_fetch(const ARGUMENTS_T &arguments, int width);

} // namespace client

#endif
