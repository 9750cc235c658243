// What the user asked for, read from the command line.
#ifndef TAVISYS_CLIENT_ARGUMENTS_H
#define TAVISYS_CLIENT_ARGUMENTS_H

#include <string>

#include "tavisystype.h"

namespace CLI {
class App;
}

namespace client {

struct COMMAND_T;

struct ARGUMENTS_T {
    bool json = false;
    // How to show the answer: main() has seen to these before the command line was read.
    std::string language;
    std::string color = "auto";
    int watch = 0;         // milliseconds from one look to the next; 0 for one look alone
    std::string attribute; // kind, area, year or dimension
    // Names or ids, as they were written; empty when they were not.
    std::string category;
    std::string kind;
    std::string area;
    std::string year;
    std::string dimension;
    INT32_T movie = 0;
    INT32_T page = 1;
    INT32_T size = 24;
    std::string order = "put";
    std::string action; // "set", or empty
    std::string player_name;
    std::string server; // IPv4 address or name; empty for this machine
    std::string disk;
    std::string partition;
    std::string library = ".";
    std::string message; // a word or a number
    std::string file;    // "-": standard input
    bool request = false;
    bool hex = false;
    std::string body; // hexadecimal digits
    bool text_head = false;
    INT32_T port = TAVISYS_MSG_CHANNEL_PORT;
};

// The options of a command, beside --help, --json, --color and --lang, which all of them have.
void declare_watch(CLI::App &app, ARGUMENTS_T &arguments);
void declare_status(CLI::App &app, ARGUMENTS_T &arguments);
void declare_filters(CLI::App &app, ARGUMENTS_T &arguments);
void declare_movies(CLI::App &app, ARGUMENTS_T &arguments);
void declare_movie(CLI::App &app, ARGUMENTS_T &arguments);
void declare_name(CLI::App &app, ARGUMENTS_T &arguments);
void declare_disks(CLI::App &app, ARGUMENTS_T &arguments);
void declare_count(CLI::App &app, ARGUMENTS_T &arguments);
void declare_fetch(CLI::App &app, ARGUMENTS_T &arguments);
void declare_decode(CLI::App &app, ARGUMENTS_T &arguments);
void declare_raw(CLI::App &app, ARGUMENTS_T &arguments);

// The TP_ORDER_BY_E that the command line calls so, which has been checked.
INT32_T order_by(const std::string &word);

// What completes the values of an option, kept with it as the description of a check of this name: choices, a
// line each, an attribute's word for the names that the server has, or one of those that follow.
constexpr const char *COMPLETION_SOURCE = "completion";
constexpr const char *SOURCE_FILES = ":files";
constexpr const char *SOURCE_FOLDERS = ":folders";
constexpr const char *SOURCE_HOSTS = ":hosts";
constexpr const char *SOURCE_DISKS = ":disks";
constexpr const char *SOURCE_PARTITIONS = ":partitions";

// All commands with their options.
void declare_commands(CLI::App &app, ARGUMENTS_T &arguments);

struct PARSED_T {
    const COMMAND_T *command; // NULL when the user asked for help or the version
    ARGUMENTS_T arguments;
    std::string text; // what to print then
};

// Throws a CLIENT_ERROR_T of EXIT_BAD_USAGE for a command line that asks for nothing that can be done.
PARSED_T parse_command_line(int argc, const char *const *argv);

} // namespace client

#endif
