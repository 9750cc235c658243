#include "command.h"

#include "messages.h"

namespace client {

namespace {

constexpr COMMAND_T COMMANDS[] = {
    {"version", messages::HELP_VERSION, nullptr, run_version},
    {"info", messages::HELP_INFO, nullptr, run_info},
    {"status", messages::HELP_STATUS, declare_status, run_status},
    {"uuid", messages::HELP_UUID, nullptr, run_uuid},
    {"categories", messages::HELP_CATEGORIES, nullptr, run_categories},
    {"filters", messages::HELP_FILTERS, declare_filters, run_filters},
    {"movies", messages::HELP_MOVIES, declare_movies, run_movies},
    {"movie", messages::HELP_MOVIE, declare_movie, run_movie},
};

} // namespace

std::span<const COMMAND_T> all_commands() {
    return COMMANDS;
}

} // namespace client
