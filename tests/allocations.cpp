// The library's allocations, by way of the linker's --wrap: operator new, which the test
// program and GoogleTest use, is not touched.
#include <atomic>
#include <cerrno>
#include <cstdlib>

#include "harness.h"

namespace {

std::atomic<int> s_until_failure{0};
std::atomic<bool> s_failed{false};
std::atomic<long> s_live{0};
std::atomic<size_t> s_bytes{0};

bool is_refused(size_t size) {
    s_bytes += size;
    if (s_until_failure == 0 || --s_until_failure != 0)
        return false;
    s_failed = true;
    errno = ENOMEM;
    return true;
}

template <class POINTER>
POINTER counted(POINTER pointer) {
    s_live += pointer != nullptr ? 1 : 0;
    return pointer;
}

} // namespace

void harness::fail_nth_allocation(int nth) {
    s_failed = false;
    s_until_failure = nth;
}

bool harness::an_allocation_failed() {
    s_until_failure = 0;
    return s_failed;
}

long harness::live_allocations() {
    return s_live;
}

size_t harness::bytes_allocated() {
    return s_bytes;
}

void harness::forget_allocations() {
    s_bytes = 0;
}

extern "C" {

void *__real_calloc(size_t count, size_t size);
void *__real_malloc(size_t size);
void *__real_realloc(void *pointer, size_t size);
char *__real_strdup(const char *string);
void __real_free(void *pointer);

void *__wrap_calloc(size_t count, size_t size) {
    return is_refused(count * size) ? nullptr : counted(__real_calloc(count, size));
}

void *__wrap_malloc(size_t size) {
    return is_refused(size) ? nullptr : counted(__real_malloc(size));
}

void *__wrap_realloc(void *pointer, size_t size) {
    if (is_refused(size))
        return nullptr;
    void *grown = __real_realloc(pointer, size);
    return pointer == nullptr ? counted(grown) : grown;
}

char *__wrap_strdup(const char *string) {
    return is_refused(strlen(string) + 1) ? nullptr : counted(__real_strdup(string));
}

void __wrap_free(void *pointer) {
    s_live -= pointer != nullptr ? 1 : 0;
    __real_free(pointer);
}
}
