// The commands about the cabinet itself: version, info, status, uuid, and the name of its player.
#include <array>
#include <exception>

#include "command.h"
#include "error.h"
#include "json.h"
#include "messages.h"
#include "player_operation.h"
#include "server.h"
#include "show.h"
#include "status.h"
#include "table.h"
#include "terminal.h"
#include "text.h"
#include "watch.h"

namespace client {

namespace {

// Who waits for a scan isn't to wait for ever for a server that has died.
constexpr int LONGEST_ABSENCE = 60'000; // milliseconds

// Draws the progress: one line that is drawn again and again on a terminal, a line a change elsewhere.
class PROGRESS_T {
public:
    explicit PROGRESS_T(int terminal_columns) : width(terminal_columns) {}
    // The line is ended on every way out; a failure to do so has been told already, or nobody is there.
    ~PROGRESS_T() {
        try {
            if (!drawn.empty() && width != UNLIMITED)
                write_output("\n");
        } catch (const std::exception &) {
            return;
        }
    }
    PROGRESS_T(const PROGRESS_T &) = delete;
    PROGRESS_T &operator=(const PROGRESS_T &) = delete;

    void draw(const std::string &line) {
        if (line == drawn)
            return;
        drawn = line;
        // The last column stays free: a terminal would go on to the next line.
        const bool redrawn = width != UNLIMITED;
        write_output(redrawn ? std::string("\r").append(cut_to_width(line, width - 1)).append("\033[K")
                             : line + "\n");
    }

private:
    int width;
    std::string drawn;
};

// A line that says how far the scan is, or where there is no answer why there is none.
STATUS_T watch_status(const ARGUMENTS_T &arguments, int width) {
    const INTERRUPT_GUARD_T guard;
    PROGRESS_T progress{width};
    PATIENCE_T patience{LONGEST_ABSENCE};
    for (;;) {
        STATUS_T status;
        std::string line;
        try {
            status = fetch_status();
            patience.answered();
            line = progress_line(*status);
        } catch (const SERVER_AWAY_T &away) {
            patience.bear();
            line = away.what();
        }
        if (!arguments.json)
            progress.draw(line);
        if (status != nullptr && phase_of(*status) >= SYSRUN_STATUS_READY)
            return status;
        INTERRUPT_GUARD_T::wait(arguments.watch);
    }
}

std::string read_player_name() {
    std::array<INT8_T, 1025> name{}; // what the file may hold and the NUL, which isn't written
    if (tavisys_get_player_name(name.data(), static_cast<INT32_T>(name.size())) != 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, messages::NAME_NOT_READ);
    return name.data();
}

} // namespace

std::string run_version(const ARGUMENTS_T &arguments, int width) {
    const VERSION_T version = fetch_version();
    if (arguments.json)
        return to_json(*version);
    return show(*version, width);
}

std::string run_info(const ARGUMENTS_T &arguments, int width) {
    const INFO_T info = fetch_info();
    if (arguments.json)
        return to_json(*info);
    return show(*info, width);
}

std::string run_status(const ARGUMENTS_T &arguments, int width) {
    const STATUS_T status = arguments.watch != 0 ? watch_status(arguments, width) : fetch_status();
    if (arguments.json)
        return to_json(*status);
    if (arguments.watch != 0)
        return ""; // its last line has said it
    return show(*status, width);
}

std::string run_uuid(const ARGUMENTS_T &arguments, int /*width*/) {
    const std::string uuid = fetch_uuid();
    return arguments.json ? uuid_to_json(uuid) : printable(uuid) + "\n";
}

std::string run_name(const ARGUMENTS_T &arguments, int /*width*/) {
    if (!arguments.action.empty() && tavisys_set_player_name(arguments.player_name.c_str()) != 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, messages::NAME_NOT_SET);
    const std::string name = read_player_name();
    return arguments.json ? player_name_to_json(name) : printable(name) + "\n";
}

} // namespace client
