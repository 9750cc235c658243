// The text-headed channel against peers that answer in its framing, and against hostile ones.
#include <gtest/gtest.h>
#include <thread>

#include "harness.h"
#include "peer.h"
#include "support_memory.h"
#include "tavisys_comm.h"

using namespace harness;
using namespace std::string_literals;

namespace {

LOG_LINE_T line(const std::string &text, int level = 80,
                const char *function = "exchange_data_in_net_communication_channel") {
    return {"comm/tavisys_comm.c", function, level, text};
}
LOG_LINE_T parse_line(RTSTATUS count, const std::string &text) {
    return line(std::to_string(count) + ". invalid message head: " + text + "\n", 80, "parse_header_file");
}

// One exchange of type 1000. Returns its result; a body that it hands out goes to *body, with its NUL.
RTSTATUS exchange(int sock, std::string *body, INT32_T timeout = 1) {
    PVOID reply = body;
    INT32_T length = -77;
    const RTSTATUS result =
        exchange_data_in_net_communication_channel(sock, 1000, "ask", 3, &reply, &length, timeout);
    EXPECT_EQ(result == 0, reply != body);
    EXPECT_EQ(result == 0, length != -77);
    if (result == 0 && reply != nullptr)
        *body = as_string(reply, length + 1);
    safe_free(result == 0 ? reply : nullptr);
    return result;
}

using NetChannel = LEAK_CHECKED_T;

} // namespace

TEST_F(NetChannel, AHeadSplitsIntoThreeNumbersOrNotAtAll) {
    const struct {
        const char *text;
        RTSTATUS want;
        TP_MESSAGE_HEAD head;
    } CASES[] = {
        {"0001|0002|00000003|x", 0, {1, 2, 3}},
        {"9999|-001|-0000005|", 0, {9999, -1, -5}},
        {"1|2x| 99999999", 2, {}},
        {"1|2x| 9999999", 0, {1, 2, 9999999}},
        {"0001|0002", 2, {}},
        {"", -1, {}},
        {"|0002|00000003|", -1, {}}, // as an empty head
        {"00001|0002|00000003|", -1, {}},
        {"0001|00002|00000003|", 1, {}},
        {"0001|0002|000000003|", 2, {}},
        {"abcd|0002|00000003|", 3, {}},
        {"0001|0002|eight ch|", 3, {}},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.text);
        const BODY_T text(c.text + "\0"s);
        TP_MESSAGE_HEAD head{};
        EXPECT_EQ(c.want, parse_header_file(text.data(), &head));
        EXPECT_EQ(0, memcmp(&c.head, &head, sizeof head));
        const std::vector log = {parse_line(c.want, c.text)};
        EXPECT_EQ(c.want == 0 ? std::vector<LOG_LINE_T>() : log, take_log());
    }
    TP_MESSAGE_HEAD head{};
    EXPECT_EQ(-1, parse_header_file(nullptr, &head));
    EXPECT_EQ(-1, parse_header_file("0001|0002|00000003|", nullptr));
    EXPECT_TRUE(take_log().empty());
}

TEST_F(NetChannel, SendsNineteenCharactersAndTheBody) {
    const struct {
        TP_MESSAGE_HEAD head;
        INT32_T want;
        std::string sent;
        const char *body = "the body has so many bytes";
    } CASES[] = {
        {{1000, -1, 26}, 45, "1000|-001|00000026|the body has so many bytes"},
        {{5, 0, 0}, 19, "0005|0000|00000000|"},
        {{5, 0, 3}, 19, "0005|0000|00000003|", nullptr},
        {{10010, 0, 3}, 22, "10010|0000|00000003the"}, // a type that doesn't fit is cut all the same
        {{5, 0, -1}, -1, "0005|0000|-0000001|"},
        {{5, 0, INT32_MAX - 18}, -1, ""},
    };
    for (const auto &c : CASES) {
        const PAIR_T pair;
        EXPECT_EQ(-1, send_data_to_net_communication_channel(pair.ours(), nullptr, 0, c.body));
        EXPECT_EQ(c.want, send_data_to_net_communication_channel(pair.ours(), &c.head, 0, c.body));
        shutdown(pair.ours(), SHUT_WR);
        EXPECT_EQ(c.sent, hear(pair.peer(), 100));
    }
}

TEST_F(NetChannel, TheReplyDecidesTheResultOfAnExchange) {
    const auto received = [](int count) { return line("接收大小" + std::to_string(count), 40); };
    const struct {
        const char *reply;
        bool falls_silent; // else the peer closes
        RTSTATUS want;
        std::string body;
        std::vector<LOG_LINE_T> log;
    } CASES[] = {
        {"1000|0000|00000005|hello", true, 0, "hello\0"s, {received(24)}},
        {"1000|0000|00000000|", true, 0, "", {received(19)}},
        {"1000|0000|00000005|he", false, 0, "he\0\0\0\0"s, {received(21)}}, // ends early, and is handed over
        {"1000|0000|00000005|he", true, 0, "he\0\0\0\0"s, {received(21)}},
        {"1000|0000|00000003|", false, 0, "\0\0\0\0"s, {received(19)}},
        {"1000|0000|00000003|", true, -1, "", {}},
        {"1000|0003|00000002|ab", true, 3, "", {received(21), line("出错, 接收结果(3)")}},
        {"1000|-101|00000000|", true, -101, "", {received(19), line("出错, 接收结果(-101)")}},
        {"1001|0003|00000000|", true, -8, "", {line("发送的消息类型1000与接收的消息类型1001不匹配")}},
        {"", false, -1, "", {line("接收的长度(0)与约定大小(19)不匹配")}},
        {"", true, -1, "", {}},
        {"1000|0000|00000000", true, -1, "", {line("接收的长度(18)与约定大小(19)不匹配")}},
        {"1000|0000|-0000001|", true, -1, "", {line("创建失败!")}},
        {"1000|0000|99999999|hello", false, -1, "", {}},
        {"abcd|efgh|ijklmnop|",
         true,
         -1,
         "",
         {parse_line(3, "abcd|efgh|ijklmnop|"), line("解析头文件出错!")}},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.reply);
        const PAIR_T pair;
        say(pair.peer(), c.reply);
        if (!c.falls_silent)
            shutdown(pair.peer(), SHUT_WR);
        forget_allocations();
        std::string body;
        expect_seconds(0, 4, c.reply, [&] { EXPECT_EQ(c.want, exchange(pair.ours(), &body)); });
        EXPECT_EQ(c.body, body);
        EXPECT_GE(MEBIBYTE, largest_allocation()); // whatever the head claims
        EXPECT_EQ(c.log, take_log());
    }
    const PAIR_T pair;
    expect_seconds(1, 4, "a head has a second, whatever a body has",
                   [&] { EXPECT_EQ(-1, exchange(pair.ours(), nullptr, 5)); });
    say(pair.peer(), "1000|0000|00000002|ab"); // which nobody wants
    EXPECT_EQ(0,
              exchange_data_in_net_communication_channel(pair.ours(), 1000, nullptr, 0, nullptr, nullptr, 1));
    EXPECT_EQ(std::vector{received(21)}, take_log());
    EXPECT_EQ(-1, exchange(-1, nullptr));
    EXPECT_EQ(std::vector{line("error, send data lens : -1\n")}, take_log());
}

TEST_F(NetChannel, APeerAnswersOverTheLoopbackAndMemoryMayRunShort) {
    const std::string text(3 * MEBIBYTE + 5, 'b');
    const INT32_T listener = create_tcp_server_socket(0);
    EXPECT_LT(1, fail_each_allocation([&] {
                  std::thread peer([&] {
                      const INT32_T sock = create_tcp_accept_socket(listener);
                      const TP_MESSAGE_HEAD head{1000, 0, static_cast<INT32_T>(text.size())};
                      EXPECT_EQ("1000|0000|00000003|ask", hear(sock, 22));
                      send_data_to_net_communication_channel(sock, &head, 19, text.c_str());
                      close_tcp_socket(sock);
                  });
                  INT32_T sock = -1;
                  EXPECT_EQ(0, create_tcp_client_socket("127.0.0.1", port_of(listener), &sock));
                  std::string body;
                  const bool is_done = exchange(sock, &body) == 0;
                  EXPECT_TRUE(body == (is_done ? text + '\0' : ""));
                  EXPECT_EQ(is_done ? line("接收大小3145752", 40) : line("创建失败!"), take_log().at(0));
                  close_tcp_socket(sock);
                  peer.join();
                  return is_done;
              }));
    close_tcp_socket(listener);
}
