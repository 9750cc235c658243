#include "fuzz.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <sanitizer/allocator_interface.h>
#include <zlog.h>

namespace {

thread_local size_t s_allocated = 0;

} // namespace

void fuzz::require(bool holds, const char *what, const char *of) {
    if (holds)
        return;
    fprintf(stderr, "found: %s%s%s\n", of, *of == '\0' ? "" : ": ", what);
    abort();
}

void fuzz::forget_allocations() {
    s_allocated = 0;
}

size_t fuzz::bytes_allocated() {
    return s_allocated;
}

void fuzz::start() {
    const auto count = [](const volatile void *, size_t size) { s_allocated += size; };
    const auto ignore = [](const volatile void *) {};
    require(__sanitizer_install_malloc_and_free_hooks(count, ignore) != 0, "allocations can't be counted");
    require(freopen("/dev/null", "w", stdout) != nullptr, "/dev/null can't be opened");
    static char s_buffer[BUFSIZ]; // else the first line that is printed allocates it
    setvbuf(stdout, s_buffer, _IOFBF, sizeof s_buffer);
}

// Stands for zlog's.
void dzlog(const char *, size_t, const char *, size_t, long, int, const char *format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
}
