#include "command.h"

#include "messages.h"

namespace client {

namespace {

constexpr COMMAND_T COMMANDS[] = {
    {"version", messages::HELP_VERSION, nullptr, run_version},
    {"info", messages::HELP_INFO, declare_watch, run_info},
    {"status", messages::HELP_STATUS, declare_status, run_status, true},
    {"uuid", messages::HELP_UUID, nullptr, run_uuid},
    {"categories", messages::HELP_CATEGORIES, declare_watch, run_categories},
    {"filters", messages::HELP_FILTERS, declare_filters, run_filters},
    {"movies", messages::HELP_MOVIES, declare_movies, run_movies},
    {"touch", messages::HELP_TOUCH, declare_movies, run_touch},
    {"movie", messages::HELP_MOVIE, declare_movie, run_movie},
    {"poster", messages::HELP_POSTER, nullptr, run_poster},
    {"name", messages::HELP_NAME, declare_name, run_name},
    {"disks", messages::HELP_DISKS, declare_disks, run_disks},
    {"count", messages::HELP_COUNT, declare_count, run_count},
    {"fetch", messages::HELP_FETCH, declare_fetch, run_fetch},
    {"decode", messages::HELP_DECODE, declare_decode, run_decode},
    {"raw", messages::HELP_RAW, declare_raw, run_raw},
};

} // namespace

std::span<const COMMAND_T> all_commands() {
    return COMMANDS;
}

} // namespace client
