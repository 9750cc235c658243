#include "harness.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <regex>
#include <utility>
#include <zlog.h>

namespace {

std::mutex s_mutex;
std::vector<harness::LOG_LINE_T> s_lines;

std::string without_addresses(const std::string &text) {
    static const std::regex ADDRESS("0x[0-9a-f]+");
    return std::regex_replace(text, ADDRESS, "0x");
}

} // namespace

std::vector<harness::LOG_LINE_T> harness::take_log() {
    const std::lock_guard lock(s_mutex);
    return std::exchange(s_lines, {});
}

std::string harness::said_by(const std::function<void()> &call) {
    testing::internal::CaptureStdout();
    call();
    static const std::regex LINE(R"(\]\[\d+\])");
    return without_addresses(std::regex_replace(testing::internal::GetCapturedStdout(), LINE, "][]"));
}

extern "C" void dzlog(const char *file, size_t filelen, const char *func, size_t funclen, long /*line*/,
                      int level, const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start() stands right above
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard lock(s_mutex);
    s_lines.push_back(
        {std::string(file, filelen), std::string(func, funclen), level, without_addresses(text)});
}
