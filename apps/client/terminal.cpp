#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "error.h"
#include "messages.h"
#include "table.h"
#include "text.h"

namespace client {

namespace {

// Of a terminal that doesn't know its own
constexpr int USUAL_WIDTH = 80;
constexpr int USUAL_ROWS = 24;

volatile std::sig_atomic_t interrupted = 0;

void note_interrupt(int /*signal*/) {
    interrupted = 1;
}

} // namespace

int terminal_width() {
    if (isatty(STDOUT_FILENO) == 0)
        return UNLIMITED;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return USUAL_WIDTH;
    return size.ws_col;
}

int terminal_rows() {
    if (isatty(STDOUT_FILENO) == 0)
        return NO_ROWS;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0)
        return USUAL_ROWS;
    return size.ws_row;
}

int write_all(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return errno;
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

void write_output(std::string_view text) {
    const int failure = write_all(STDOUT_FILENO, text);
    if (failure == 0)
        return;
    throw CLIENT_ERROR_T(EXIT_FAILED,
                         failure == EPIPE ? "" : fill(messages::WRITE_FAILED, {std::strerror(failure)}));
}

void write_error(std::string_view line) {
    write_all(STDERR_FILENO, std::string(line) + "\n");
}

INTERRUPT_GUARD_T::INTERRUPT_GUARD_T() {
    struct sigaction action {};
    sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == SIG_IGN) // a shell's background job: interrupts are meant for somebody else
        return;
    action = {};
    action.sa_handler = note_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
}

INTERRUPT_GUARD_T::~INTERRUPT_GUARD_T() {
    struct sigaction action {};
    sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == note_interrupt)
        std::signal(SIGINT, SIG_DFL);
}

void INTERRUPT_GUARD_T::wait(int milliseconds) {
    const timespec pause{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
    if (interrupted == 0)
        nanosleep(&pause, nullptr); // cut short by the interrupt
    if (interrupted != 0)
        throw CLIENT_ERROR_T(EXIT_INTERRUPTED, "");
}

LIBRARY_SILENCE_T::LIBRARY_SILENCE_T() : output(stdout), nowhere(std::fopen("/dev/null", "we")) {
    if (nowhere != nullptr)
        stdout = nowhere;
}

LIBRARY_SILENCE_T::~LIBRARY_SILENCE_T() {
    stdout = output;
    if (nowhere != nullptr)
        std::fclose(nowhere);
}

void end_by_interrupt() {
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
    std::_Exit(EXIT_INTERRUPTED); // the signal is blocked
}

} // namespace client
