// Makes the allocations of one call fail, anywhere in the process: in the library, the C and C++ runtime and
// libxml2. Preloaded by allocation_failure_test.py, so that its malloc() stands before all others, also
// before a sanitizer's, to which it passes on what it doesn't refuse. It receives the library's log lines,
// too.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <zlog.h>

namespace {

// At hand before anything is bound: a sanitizer's start asks for memory.
#define AT_HAND thread_local __attribute__((tls_model("initial-exec")))
AT_HAND bool t_armed;
AT_HAND bool t_watched; // this thread has been armed: what it frees may be one of the blocks

int s_until_failure = 0;
bool s_is_lasting = false; // the shortage
bool s_has_failed = false;
constexpr size_t MOST_BLOCKS = 1 << 14;
void *s_blocks[MOST_BLOCKS]; // allocated while armed and not freed since
size_t s_count = 0;
char s_warnings[4096]; // no memory may be taken where the library logs
size_t s_warned = 0;

bool is_refused() {
    if (!t_armed || s_until_failure == 0 || --s_until_failure != 0)
        return false;
    s_until_failure = s_is_lasting ? 1 : 0;
    s_has_failed = true;
    errno = ENOMEM;
    return true;
}

void *watched(void *block, bool watch = t_armed) {
    if (watch && block != nullptr && s_count < MOST_BLOCKS)
        s_blocks[s_count++] = block;
    return block;
}

// Whether it was one of the blocks. The latest are looked at first: they tend to go first.
bool forget(const void *block) {
    for (size_t i = t_watched && block != nullptr ? s_count : 0; i-- > 0;) {
        if (s_blocks[i] != block)
            continue;
        s_blocks[i] = s_blocks[--s_count];
        return true;
    }
    return false;
}

} // namespace

extern "C" {

// ---- For the test

void begin_shortage(int nth, int is_lasting) {
    s_until_failure = nth;
    s_is_lasting = is_lasting != 0;
    s_has_failed = false;
    s_count = s_warned = 0;
    s_warnings[0] = '\0';
}
int has_allocation_failed() {
    return s_has_failed ? 1 : 0;
}
int live_blocks() {
    return static_cast<int>(s_count);
}
const char *warnings() {
    return s_warnings;
}

struct CALL_T {
    long (*function)(long, long, long, long, long, long, long, long);
    const long *arguments;
    long result;
};
// Calls any function of up to eight integers and pointers.
void make_plain_call(CALL_T *call) {
    const long *a = call->arguments;
    call->result = call->function(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
}
// The only part of a test whose allocations count.
void *make_call(void *call) {
    t_armed = t_watched = true;
    make_plain_call(static_cast<CALL_T *>(call));
    t_armed = false;
    return nullptr;
}
void make_call_in_new_thread(CALL_T *call) {
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, make_call, call) != 0 || pthread_join(thread, nullptr) != 0)
        abort();
}

// ---- In place of others

// What stands behind: a sanitizer's, where there is one, or the C library's.
__attribute__((weak)) void *__interceptor_malloc(size_t size);
__attribute__((weak)) void *__interceptor_calloc(size_t count, size_t size);
__attribute__((weak)) void *__interceptor_realloc(void *block, size_t size);
__attribute__((weak)) void __interceptor_free(void *block);
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void __libc_free(void *block);

void *malloc(size_t size) {
    const auto behind = __interceptor_malloc != nullptr ? __interceptor_malloc : __libc_malloc;
    return is_refused() ? nullptr : watched(behind(size));
}

void *calloc(size_t count, size_t size) {
    const auto behind = __interceptor_calloc != nullptr ? __interceptor_calloc : __libc_calloc;
    return is_refused() ? nullptr : watched(behind(count, size));
}

void *realloc(void *block, size_t size) {
    if (is_refused())
        return nullptr;
    const auto behind = __interceptor_realloc != nullptr ? __interceptor_realloc : __libc_realloc;
    const bool was_watched = forget(block);
    void *grown = behind(block, size);
    watched(grown == nullptr ? block : grown, was_watched || t_armed);
    return grown;
}

void free(void *block) {
    const auto behind = __interceptor_free != nullptr ? __interceptor_free : __libc_free;
    forget(block);
    behind(block);
}

// Calls malloc() in the C library, but not in a sanitizer.
char *strdup(const char *string) {
    const size_t size = strlen(string) + 1;
    void *copy = malloc(size);
    return copy == nullptr ? nullptr : static_cast<char *>(memcpy(copy, string, size));
}

void dzlog(const char *, size_t, const char *, size_t, long, int level, const char *format, ...) {
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start() stands above
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    line[strcspn(line, "\n")] = '\0';
    if (level >= ZLOG_LEVEL_WARN)
        s_warned += static_cast<size_t>(
            snprintf(s_warnings + s_warned, sizeof s_warnings - s_warned, "WARN %s\n", line));
}
}
