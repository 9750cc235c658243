#include "harness.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <regex>
#include <utility>
#include <zlog.h>

namespace {

std::mutex s_mutex;
std::vector<std::pair<std::string, std::string>> s_lines; // with the file

std::string without_addresses(const std::string &text) {
    static const std::regex ADDRESS("0x[0-9a-f]+");
    return std::regex_replace(text, ADDRESS, "0x");
}

} // namespace

std::string harness::logged(const std::string &file) {
    const std::lock_guard lock(s_mutex);
    std::string lines;
    for (const auto &[name, line] : s_lines) {
        EXPECT_TRUE(file.empty() || file == name) << name;
        lines += line;
    }
    s_lines.clear();
    return lines;
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
    const std::string line =
        std::string(func, funclen) + " " + std::to_string(level) + " " + without_addresses(text) + "\n";
    const std::lock_guard lock(s_mutex);
    s_lines.emplace_back(std::string(file, filelen), line);
}
