// Standard output and standard error, and what is at their other end.
#ifndef TAVISYS_CLIENT_TERMINAL_H
#define TAVISYS_CLIENT_TERMINAL_H

#include <string>
#include <string_view>

namespace client {

// Columns of the terminal that standard output is; UNLIMITED when it is a file or a pipe.
int terminal_width();

// Writes all of it to standard output, at once. Throws a CLIENT_ERROR_T when that fails; without a message
// when the reader of a pipe has gone, who knows it best.
void write_output(std::string_view text);

// Writes a line to standard error, whose failure has nobody to be told to.
void write_error(std::string_view line);

// While it lives, an interrupt (Ctrl-C) is noted instead of ending the program; a second one ends it.
class INTERRUPT_GUARD_T {
public:
    INTERRUPT_GUARD_T();
    ~INTERRUPT_GUARD_T();
    INTERRUPT_GUARD_T(const INTERRUPT_GUARD_T &) = delete;
    INTERRUPT_GUARD_T &operator=(const INTERRUPT_GUARD_T &) = delete;

    // Waits so many milliseconds. Throws a CLIENT_ERROR_T of EXIT_INTERRUPTED at once when interrupted.
    static void wait(int milliseconds);
};

// Ends the program as an interrupt ends one that doesn't handle it, so that the shell stops a script, too.
[[noreturn]] void end_by_interrupt();

} // namespace client

#endif
