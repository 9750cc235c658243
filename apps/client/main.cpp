// tavisys: asks the movie cabinet's server of this machine, one command a call.
#include <csignal>
#include <cstring>
#include <exception>

#include "command.h"
#include "complete.h"
#include "error.h"
#include "messages.h"
#include "settings.h"
#include "style.h"
#include "terminal.h"
#include "watch.h"

namespace {

using namespace client;

void run(int argc, const char *const *argv) {
    const PARSED_T parsed = parse_command_line(argc, argv);
    if (parsed.command == nullptr)
        return write_output(parsed.text);
    if (parsed.arguments.watch != 0 && !parsed.command->watches_itself)
        watch(parsed);
    write_output(parsed.command->run(parsed.arguments, terminal_width()));
}

EXIT_STATUS_E run_and_report(int argc, const char *const *argv) {
    try {
        run(argc, argv);
        return EXIT_DONE;
    } catch (const CLIENT_ERROR_T &error) {
        if (error.what()[0] != '\0')
            write_error(paint_error(error.what()));
        return error.status;
    } catch (const std::exception &) { // only memory is left to fail
        write_error(messages::NO_MEMORY.get());
        return EXIT_FAILED;
    }
}

} // namespace

int main(int argc, char **argv) {
    // A reader that has gone is seen as a failing write, and a server that has gone as a failing request.
    std::signal(SIGPIPE, SIG_IGN);
    apply_settings(argc, argv);
    if (argc > 1 && std::strcmp(argv[1], COMPLETION_WORD) == 0) {
        complete(argc - 2, argv + 2);
        return EXIT_DONE;
    }
    const EXIT_STATUS_E status = run_and_report(argc, argv);
    if (status == EXIT_INTERRUPTED)
        end_by_interrupt();
    return status;
}
