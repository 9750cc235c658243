// The commands that ask a server about its disks, be it another one's: disks, count, fetch.
#include "command.h"
#include "error.h"
#include "fetched.h"
#include "json.h"
#include "messages.h"
#include "server.h"
#include "show.h"
#include "table.h"
#include "terminal.h"

namespace client {

namespace {

POSITION_T position_of(const ARGUMENTS_T &arguments) {
    return {find_address(arguments.server), arguments.disk, arguments.partition};
}

std::string show_fetched(const FETCHED_T &fetched, int width) {
    return lay_out_fields(
        {{messages::FOLDER, fetched.folder},
         {messages::MOVIES, std::to_string(fetched.movies)},
         {messages::WRITTEN, std::to_string(fetched.written)},
         failures_field(messages::SKIPPED, static_cast<std::int64_t>(fetched.skipped.size()))},
        width);
}

} // namespace

std::string run_disks(const ARGUMENTS_T &arguments, int width) {
    const DISKS_T disks = fetch_disks(find_address(arguments.server));
    if (arguments.json)
        return to_json(disks.get());
    return show(disks.get(), width);
}

std::string run_count(const ARGUMENTS_T &arguments, int width) {
    const INT32_T movies = fetch_movie_count(position_of(arguments));
    if (arguments.json)
        return movie_count_to_json(movies);
    return show_movie_count(movies, width);
}

// Folders are made for what the server has, not for what it has been asked for.
std::string run_fetch(const ARGUMENTS_T &arguments, int width) {
    const MOVIE_RECORDS_T records = fetch_movie_records(position_of(arguments));
    const LIBRARY_FOLDER_T folder{arguments.library, arguments.disk, arguments.partition};
    const FETCHED_T fetched = write_documents(records.get(), folder);
    std::string answer = arguments.json ? to_json(fetched) : show_fetched(fetched, width);
    if (fetched.skipped.empty())
        return answer;
    write_output(answer);
    throw CLIENT_ERROR_T(EXIT_FAILED, ""); // a line for each movie has told it
}

} // namespace client
