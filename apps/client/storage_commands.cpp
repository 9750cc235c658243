// The commands that ask a server about its disks, be it another one's: disks, count, fetch.
#include "command.h"
#include "error.h"
#include "fetched.h"
#include "json.h"
#include "messages.h"
#include "server.h"
#include "table.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

using DISK_NODE_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;

POSITION_T position_of(const ARGUMENTS_T &arguments) {
    return {find_address(arguments.server), arguments.disk, arguments.partition};
}

// A row for each partition, and one for a disk without any.
void add_disk(TABLE_T &table, const DISK_NODE_T &disk) {
    const std::vector<std::string> own{text_of(disk.info->devname), text_of(disk.info->serialno)};
    const auto add = [&](std::vector<std::string> partition) {
        partition.insert(partition.begin(), own.begin(), own.end());
        table.rows.push_back(std::move(partition));
    };
    if (disk.list == nullptr)
        add({"", "", "", ""});
    for_each_record(disk.list, [&](const TP_TAVISYS_PARTITION_INFORMATION_T &partition) {
        add({std::to_string(partition.seqno), text_of(partition.devname), text_of(partition.uuid),
             text_of(partition.mntp)});
    });
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
    TABLE_T table{{{messages::DISK, ALIGN_T::LEFT, NARROWEST},
                   {messages::SERIAL_NUMBER, ALIGN_T::LEFT, NARROWEST},
                   {messages::NUMBER, ALIGN_T::RIGHT},
                   {messages::PARTITION, ALIGN_T::LEFT, NARROWEST},
                   {messages::UUID, ALIGN_T::LEFT, NARROWEST},
                   {messages::MOUNT_POINT, ALIGN_T::LEFT, NARROWEST}},
                  {}};
    for_each_node(disks.get(), [&table](const DISK_NODE_T &disk) { add_disk(table, disk); });
    return table.rows.empty() ? std::string(messages::NO_DISKS) : lay_out_table(table, width);
}

std::string run_count(const ARGUMENTS_T &arguments, int width) {
    const INT32_T movies = fetch_movie_count(position_of(arguments));
    if (arguments.json)
        return movie_count_to_json(movies);
    return lay_out_fields({{messages::MOVIES, std::to_string(movies)}}, width);
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
