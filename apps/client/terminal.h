// Standard output and standard error, and what is at their other end.
#ifndef TAVISYS_CLIENT_TERMINAL_H
#define TAVISYS_CLIENT_TERMINAL_H

#include <cstdio>
#include <string>
#include <string_view>

namespace client {

// Columns of the terminal that standard output is; UNLIMITED when it is a file or a pipe.
int terminal_width();

// Its rows; NO_ROWS when standard output is a file or a pipe.
constexpr int NO_ROWS = 0;
int terminal_rows();

// Writes all of it to a file. 0, or the errno of the write that failed.
int write_all(int file, std::string_view text);

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

    // Waits so many milliseconds, 0 for none. Throws a CLIENT_ERROR_T of EXIT_INTERRUPTED at once when
    // interrupted.
    static void wait(int milliseconds);
};

// While it lives, what the library tells on the standard output of stdio goes nowhere: standard output is for
// the answer, which write_output() writes past stdio.
class LIBRARY_SILENCE_T {
public:
    LIBRARY_SILENCE_T();
    ~LIBRARY_SILENCE_T();
    LIBRARY_SILENCE_T(const LIBRARY_SILENCE_T &) = delete;
    LIBRARY_SILENCE_T &operator=(const LIBRARY_SILENCE_T &) = delete;

private:
    std::FILE *output;
    std::FILE *nowhere;
};

// Ends the program as an interrupt ends one that doesn't handle it, so that the shell stops a script, too.
[[noreturn]] void end_by_interrupt();

} // namespace client

#endif
