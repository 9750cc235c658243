// The logging stand-in: what it writes, where, and from which level on.
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>
#include <zlog.h>

namespace {

void log(int level, const std::string &text) {
    dzlog("comm/a.c", 8, "deal", 4, 42, level, "%s", text.c_str());
}

// What the calls write to standard error, with the threshold that the environment names.
template <class CALLS>
std::vector<std::string> lines_of(const char *threshold, CALLS calls) {
    threshold == nullptr ? unsetenv("TAVISYS_LOG_LEVEL") : setenv("TAVISYS_LOG_LEVEL", threshold, 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, dzlog_init(nullptr, "test"));
    calls();
    zlog_fini();
    std::istringstream text(testing::internal::GetCapturedStderr());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

TEST(LoggingStandIn, WritesFromTheThresholdOnWhileItIsInitialised) {
    const std::pair<const char *, size_t> LINES_FROM[] = {{nullptr, 5}, {"", 5},      {"loud", 5},
                                                          {"DEBUG", 6}, {"fatal", 1}, {"NOTICE", 4},
                                                          {"WARN", 3},  {"ERROR", 2}, {"FATAL", 1}};
    const auto log_each_level = [] {
        for (int level : {20, 40, 60, 80, 100, 120})
            log(level, "text");
    };
    testing::internal::CaptureStderr();
    log_each_level();
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    for (const auto &[threshold, lines] : LINES_FROM)
        EXPECT_EQ(lines, lines_of(threshold, log_each_level).size());
    testing::internal::CaptureStderr();
    log_each_level();
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(LoggingStandIn, ALineTellsWhenWhereAndWhat) {
    const auto lines = lines_of(nullptr, [] {
        log(ZLOG_LEVEL_WARN, "出错, 接受结果(3)");
        log(ZLOG_LEVEL_INFO, "a line end is not doubled\n");
        log(70, std::string(10000, 'x'));
        log(ZLOG_LEVEL_INFO, "the line behind a cut one");
    });
    const char *forms[] = {
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} WARN +comm/a\.c:42 deal: 出错, 接受结果\(3\))",
        "[-0-9:. ]+ INFO .* a line end is not doubled", R"([-0-9:. ]+ \? .* deal: x+)",
        ".* deal: the line behind a cut one"};
    ASSERT_EQ(std::size(forms), lines.size());
    for (size_t i = 0; i < lines.size(); i++)
        EXPECT_TRUE(std::regex_match(lines[i], std::regex(forms[i]))) << lines[i];
    EXPECT_GT(4096U, lines[2].size());
}

TEST(LoggingStandIn, LinesOfSeveralThreadsStayWhole) {
    constexpr size_t LINES = 200;
    const auto log_lines = [](char letter) {
        for (size_t n = 0; n < LINES; n++)
            log(ZLOG_LEVEL_INFO, std::string(500, letter));
    };
    const auto lines = lines_of(nullptr, [&] {
        std::thread threads[] = {std::thread(log_lines, 'a'), std::thread(log_lines, 'b'),
                                 std::thread(log_lines, 'c'), std::thread(log_lines, 'd')};
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(4 * LINES, lines.size());
    const std::regex whole(".* deal: (a{500}|b{500}|c{500}|d{500})");
    for (const std::string &line : lines)
        ASSERT_TRUE(std::regex_match(line, whole)) << line;
}
