#include "zlog.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

namespace {

constexpr int SILENT = 1 << 20; // above every level

struct LEVEL_NAME_T {
    int level;
    const char *name;
};
constexpr LEVEL_NAME_T LEVEL_NAMES[] = {
    {ZLOG_LEVEL_DEBUG, "DEBUG"}, {ZLOG_LEVEL_INFO, "INFO"},   {ZLOG_LEVEL_NOTICE, "NOTICE"},
    {ZLOG_LEVEL_WARN, "WARN"},   {ZLOG_LEVEL_ERROR, "ERROR"}, {ZLOG_LEVEL_FATAL, "FATAL"},
};

std::atomic<int> s_threshold{SILENT};

const char *name_of(int level) {
    for (const LEVEL_NAME_T &entry : LEVEL_NAMES)
        if (entry.level == level)
            return entry.name;
    return "?";
}

int level_from_environment() {
    const char *wanted = getenv("TAVISYS_LOG_LEVEL");
    for (const LEVEL_NAME_T &entry : LEVEL_NAMES)
        if (wanted != nullptr && strcasecmp(wanted, entry.name) == 0)
            return entry.level;
    return ZLOG_LEVEL_INFO;
}

// Writes all of it, or as much as standard error takes: a log line is never worth a failure.
void write_whole(const char *text, size_t length) {
    while (length > 0) {
        const ssize_t written = write(STDERR_FILENO, text, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        text += written;
        length -= static_cast<size_t>(written);
    }
}

size_t clamp(int written, size_t room) {
    if (written < 0)
        return 0;
    return static_cast<size_t>(written) < room ? static_cast<size_t>(written) : room - 1;
}

} // namespace

// Weak, so that a program's own dzlog() wins with the static library as it does with the shared one.
#define STAND_IN __attribute__((weak, visibility("default")))

extern "C" {

STAND_IN int dzlog_init(const char * /*config*/, const char * /*cname*/) {
    s_threshold = level_from_environment();
    return 0;
}

STAND_IN void zlog_fini(void) {
    s_threshold = SILENT;
}

STAND_IN void dzlog(const char *file, size_t filelen, const char *func, size_t funclen, long line, int level,
                    const char *format, ...) {
    if (level < s_threshold.load(std::memory_order_relaxed))
        return;

    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);

    char text[4096]; // a longer line is cut; one write keeps it whole beside other threads'
    constexpr size_t ROOM = sizeof text - 1;
    size_t used = strftime(text, ROOM, "%Y-%m-%d %H:%M:%S", &local);
    used += clamp(snprintf(text + used, ROOM - used, ".%03ld %-6s %.*s:%ld %.*s: ", now.tv_nsec / 1000000,
                           name_of(level), static_cast<int>(filelen), file, line, static_cast<int>(funclen),
                           func),
                  ROOM - used);
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start() is the line above
    used += clamp(vsnprintf(text + used, ROOM - used, format, arguments), ROOM - used);
    va_end(arguments);
    while (used > 0 && text[used - 1] == '\n')
        used--;
    text[used++] = '\n';
    write_whole(text, used);
}
}
