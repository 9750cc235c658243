#include "client_harness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <map>

#include "harness.h"
#include "tavisys_comm.h"

namespace harness {

std::vector<REQUEST_T> requests;
const std::string FAREWELL = wire(8, "TV1993-0015", "霸王别姬", 81, 20230101, 19930101, "m.jpg", "b.jpg",
                                  "BWBJ", 1, 8, 3, 1, 3, 13, 2, 1, 4, 2, 1, 2, 0, "sda", 1);
const std::string RECORD = wire(8);
const std::string RECORD_TAIL = wire("霸王别姬", nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 0) +
                                wire(0, 0, 0, 0, 0, nullptr, 0, 1, 5, 1, "v", "v.mkv", nullptr);

namespace {

// The server's thread has it for as long as the server lives.
ANSWERER_T answerer;

RTSTATUS handle(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    requests.emplace_back(type, std::string(static_cast<char *>(body), static_cast<size_t>(length)));
    const auto [result, answer] = answerer(requests.back());
    *reply = calloc(1, answer.size() + 1);
    memcpy(*reply, answer.data(), answer.size());
    *replylen = static_cast<INT32_T>(answer.size());
    return result;
}

const std::string ODD = wire(9, nullptr, "a\033[2J\nb\xFF", 0, 0, 20231399, nullptr, nullptr, nullptr, 7, 99,
                             0, 0, 1, 77, 0, nullptr, 2);
const std::string DETAILS =
    wire("霸王别姬", 1993, 1, 2, "2D", "b.jpg", 1, "导演", 1, "陈凯歌", 1, "主演", 2, "张国荣", "巩俐", 0, 1,
         "时长", "171分钟", 1, nullptr, "霸王与虞姬\n", 1, 1, 5, 1, "霸王别姬", "v.mkv");
const std::string DISKS =
    wire(2, "sda", "S1", 2, 1, "sda1", "u-1", "/mnt", 2, "sda2", nullptr, nullptr) + wire("sdb", nullptr, 0);

} // namespace

SERVER_T::SERVER_T(ANSWERER_T answers) : listener_(svr_open_tavisys_msg_channel()) {
    answerer = std::move(answers);
    requests.clear();
    EXPECT_LE(0, listener_);
    thread_ = std::thread([this] {
        while (!stopping_) {
            const INT32_T sock = monitor_tavisys_msg_channel(listener_);
            deal_data_from_tavisys_msg_channel(sock, handle);
            close_tavisys_msg_channel(sock);
        }
    });
}

SERVER_T::~SERVER_T() {
    stopping_ = true;
    close_tavisys_msg_channel(agent_open_tavisys_msg_channel()); // wakes the thread
    thread_.join();
    close_tavisys_msg_channel(listener_);
}

ANSWER_T answer(const REQUEST_T &request) {
    static const std::map<REQUEST_T, std::string> ANSWERS{
        {{1000, ""}, wire("1.2.3", "影柜", nullptr)},
        {{1001, ""}, wire(4, 30, 28, 2, 0)},
        {{1002, ""}, wire(2, 28)},
        {{1003, ""}, wire(2, 1, "电影", 16, 2, "电视剧", 4)},
        {{1005, wire(1)}, wire(4, 1, "全部", 3, "剧情", 13, "历史", 14, nullptr)},
        {{1005, wire(2)}, wire(2, 1, "全部", 4, "香港")},
        {{1005, wire(3)}, wire(2, 8, "1993", 1993, "2001")},
        {{1005, wire(4)}, wire(3, 1, "全部", 2, "2D", 3, "3D")},
        {{1006, ""}, wire(1, 24, 1, 2, 2, 2, FAREWELL, ODD)},
        {{1007, ""}, DETAILS},
        {{1008, ""}, "sda/sda1/posters/\033.jpg"},
        {{3000, ""}, DISKS},
        {{3002, ""}, wire(513)},
        {{3003, ""}, wire(2, RECORD, nullptr, RECORD_TAIL, RECORD, "a/b", RECORD_TAIL)},
        {{5006, ""}, wire(1, 24, 1, 2, 2, 2, FAREWELL, 3, 171, ODD, 0, 0)},
        {{3004, ""}, std::string("3d1219c7\0", 9)}};
    return {0, ANSWERS.at({request.first, request.first == 1005 ? request.second.substr(0, 4) : ""})};
}

ANSWERER_T always(const ANSWER_T &fixed) {
    return [fixed](const REQUEST_T &) { return fixed; };
}

std::string read_to_end(int file) {
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t got = 0; (got = read(file, block.data(), block.size())) > 0;)
        text.append(block.data(), static_cast<size_t>(got));
    close(file);
    return text;
}

std::string read_until(int file, const std::string &end) {
    std::string text;
    for (char c = 0; !text.ends_with(end) && read(file, &c, 1) == 1;)
        text += c;
    return text;
}

CLIENT_T start(const std::string &arguments, int output, const std::string &environment) {
    const std::string command = "exec env " + environment + " \"$0\" " + arguments;
    std::array<int, 2> errors{};
    EXPECT_EQ(0, pipe2(errors.data(), O_CLOEXEC));
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(output, STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        signal(SIGINT, SIG_DFL); // a test run in the background ignores interrupts
        execl("/bin/sh", "sh", "-c", command.c_str(), TAVISYS_CLIENT, nullptr);
        _exit(127);
    }
    close(output);
    close(errors[1]);
    return {pid, errors[0]};
}

RUN_T finish(const CLIENT_T &client, int output) {
    std::string text = read_to_end(output);
    std::string errors = read_to_end(client.errors);
    int status = 0;
    EXPECT_EQ(client.pid, waitpid(client.pid, &status, 0));
    return {WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status), std::move(text),
            std::move(errors)};
}

RUN_T run(const std::string &arguments, const std::string &environment) {
    std::array<int, 2> output{};
    EXPECT_EQ(0, pipe2(output.data(), O_CLOEXEC));
    return finish(start(arguments, output[1], environment), output[0]);
}

TERMINAL_T open_terminal(unsigned short width) {
    TERMINAL_T terminal{};
    const winsize size{24, width, 0, 0};
    EXPECT_EQ(0, openpty(&terminal.screen, &terminal.client, nullptr, nullptr, &size));
    termios mode{};
    tcgetattr(terminal.client, &mode);
    cfmakeraw(&mode);
    tcsetattr(terminal.client, TCSANOW, &mode);
    return terminal;
}

RUN_T run_on_terminal(const std::string &arguments, unsigned short width, const std::string &environment) {
    const TERMINAL_T terminal = open_terminal(width);
    return finish(start(arguments, terminal.client, environment), terminal.screen);
}

void expect_run(const std::string &arguments, int status, const std::string &want) {
    SCOPED_TRACE(arguments);
    const RUN_T got = run(arguments);
    EXPECT_EQ(status, got.status);
    EXPECT_EQ(status == 0 ? want : "", got.output);
    EXPECT_NE(std::string::npos, got.errors.find(status == 0 ? "" : want)) << got.errors;
    EXPECT_EQ(status == 0, got.errors.empty());
}

} // namespace harness
