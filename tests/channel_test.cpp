// The channels over socket pairs and loopback sockets: what costs time, memory or a line. What comes of the
// bytes of a peer is the fuzz targets', see fuzz_inputs.cpp. The peers are threads that speak raw bytes;
// where one is slow on purpose it waits on its own socket, so that it ends with the call under test.
#include <csignal>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/time.h>
#include <utility>

#include "harness.h"
#include "peer.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;

namespace {

// The result and one message, head and body; a body is stored for a message that has one, and for no failure.
std::pair<INT32_T, std::string> receive(int sock, INT32_T timeout = 10) {
    TRLV_MESSAGE_HEAD head{};
    PVOID body = nullptr;
    const INT32_T result = receive_data_from_tavisys_msg_channel(sock, &head, HEAD, &body, timeout);
    EXPECT_EQ(result > HEAD, body != nullptr);
    const std::string bytes = wire(head.type, head.result, head.length) + as_string(body, head.length);
    safe_free(body);
    return {result, bytes};
}

// What is received from a peer that says the bytes, so many at a time, and hangs up.
std::pair<INT32_T, std::string> receive_from(const std::string &bytes, size_t step = MEBIBYTE) {
    const PAIR_T pair;
    std::thread peer([&] {
        for (size_t at = 0; at < bytes.size(); at += step)
            say(pair.peer(), bytes.substr(at, step));
        shutdown(pair.peer(), SHUT_WR);
    });
    auto message = receive(pair.ours());
    shutdown(pair.ours(), SHUT_RDWR); // releases a peer that has more to say
    peer.join();
    return message;
}

// Answers with a copy of the request's body; the types 5 and -5 claim a length of that much without a body.
RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    *reply = type == 5 || type == -5 ? nullptr : safe_strdup(as_string(body, length).c_str());
    *replylen = *reply == nullptr ? type : length;
    return 0;
}

// One exchange of type 1000 over the channel with heads of text. Returns its result; a body that it hands out
// goes to *body, with its NUL.
RTSTATUS exchange_text(int sock, std::string *body, INT32_T timeout = 1) {
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

// Interrupts every blocking call of this process, after so many microseconds each time; 0: no more.
void interrupt_every(suseconds_t pause) {
    struct sigaction interrupt {}; // without SA_RESTART
    interrupt.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupt, nullptr);
    const itimerval storm{{0, pause}, {0, pause}};
    setitimer(ITIMER_REAL, &storm, nullptr);
}

constexpr auto FILE_NAME = "comm/tavisys_comm.c"; // of all lines
using Channel = LEAK_CHECKED_T;
using NetChannel = LEAK_CHECKED_T;

} // namespace

TEST_F(Channel, SendsHeadAndBodyInOnePiece) {
    const PAIR_T packets(SOCK_SEQPACKET); // keeps what is sent at once together
    const TRLV_MESSAGE_HEAD head{1000, -2, 3};
    EXPECT_EQ(15, send_data_to_tavisys_msg_channel(packets.ours(), &head, HEAD, "abc"));
    char bytes[32];
    ASSERT_EQ(15, recv(packets.peer(), bytes, sizeof bytes, 0));
    EXPECT_EQ("\xe8\x03\0\0\xfe\xff\xff\xff\x03\0\0\0abc"s, std::string(bytes, 15));
}

TEST_F(Channel, AMessageArrivesHoweverItIsCutUp) {
    const std::pair<size_t, size_t> LENGTHS_AND_STEPS[] = {{0, 1}, {300, 1}, {3 * MEBIBYTE + 5, 65536}};
    for (const auto &[length, step] : LENGTHS_AND_STEPS) {
        const std::string bytes = wire(1006, 0, static_cast<INT32_T>(length), std::string(length, 'b'));
        const auto [result, received] = receive_from(bytes, step);
        EXPECT_EQ(static_cast<INT32_T>(bytes.size()), result) << length;
        EXPECT_TRUE(bytes == received) << length;
    }
}

// All at once, for they have to be waited for.
TEST_F(Channel, ASilentOrTricklingPeerIsDroppedInTime) {
    const std::string drops(100, 'b'); // of which one falls every 200 ms
    const struct {
        const char *what;
        std::string at_once;
        std::string slowly;
        INT32_T want;
    } CASES[] = {
        {"nothing", "", "", -4},
        {"half a head", wire(1000, 0), "", -4},
        {"half a body", wire(1000, 0, 5, "he"s), "", -5},
        {"a trickled head", "", wire(1000, 0, 0), -4},
        {"a trickled body", wire(1000, 0, 100), drops, -5},
        {"a trickled body of 2 GiB", wire(1000, 0, INT32_MAX - 12, drops), drops, -5},
    };
    std::vector<std::thread> calls;
    calls.reserve(std::size(CASES));
    for (const auto &c : CASES) {
        calls.emplace_back([&c] {
            const PAIR_T pair;
            say(pair.peer(), c.at_once);
            std::thread peer([&] { trickle(pair.peer(), c.slowly); });
            expect_seconds(1, 4, c.what, [&] { EXPECT_EQ(c.want, receive(pair.ours(), 1).first) << c.what; });
            shutdown(pair.ours(), SHUT_RDWR);
            peer.join();
        });
    }
    const PAIR_T silent;
    expect_seconds(2, 5, "a request",
                   [&] { EXPECT_EQ(-4, deal_data_from_tavisys_msg_channel(silent.ours(), answer)); });
    for (std::thread &call : calls)
        call.join();
    EXPECT_EQ("", logged(FILE_NAME));
}

TEST_F(Channel, APeerThatTakesNothingIsGivenUpAfterFiveSeconds) {
    const std::string text(8 * MEBIBYTE, 'b');
    const TRLV_MESSAGE_HEAD head{1, 0, static_cast<INT32_T>(text.size())};
    const auto send_to_nobody = [&](bool is_full) {
        const PAIR_T pair;
        while (is_full && send(pair.ours(), text.data(), text.size(), MSG_DONTWAIT) > 0) {
        }
        expect_seconds(5, 15, is_full ? "head" : "body", [&] {
            EXPECT_EQ(is_full ? -6 : -7,
                      send_data_to_tavisys_msg_channel(pair.ours(), &head, HEAD, text.data()));
        });
    };
    std::thread to_full(send_to_nobody, true);
    std::thread to_empty(send_to_nobody, false);
    // A listener whose queue is full leaves a connect hanging.
    const INT32_T listener = create_tcp_server_socket(0);
    EXPECT_EQ(0, listen(listener, 0));
    INT32_T queued = -1;
    EXPECT_EQ(0, create_tcp_client_socket("127.0.0.1", port_of(listener), &queued));
    const auto connect_in_vain = [&](const char *how) {
        expect_seconds(5, 8, how, [&] {
            INT32_T sock = -5;
            EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", port_of(listener), &sock)) << how;
            EXPECT_EQ(ETIMEDOUT, errno) << how;
            EXPECT_EQ(-5, sock) << how;
        });
    };
    std::thread undisturbed(connect_in_vain, "connect"); // signals come to this thread
    interrupt_every(500000);
    connect_in_vain("interrupted connect");
    interrupt_every(0);
    undisturbed.join();
    close_tcp_socket(queued);
    close_tcp_socket(listener);
    to_full.join();
    to_empty.join();
}

TEST_F(Channel, AnInterruptedExchangeGoesOn) {
    interrupt_every(1000);

    const std::string text(4 * MEBIBYTE, 'b');
    const auto length = static_cast<INT32_T>(text.size());
    const PAIR_T pair;
    std::thread peer([&] { say(pair.peer(), hear(pair.peer(), text.size() + HEAD)); });
    PVOID reply = nullptr;
    EXPECT_EQ(0,
              exchange_data_in_tavisys_msg_channel(pair.ours(), 5, text.data(), length, &reply, nullptr, 9));
    EXPECT_TRUE(text == as_string(reply, length));
    safe_free(reply);
    peer.join();
    expect_seconds(1, 4, "timeout", [&] { EXPECT_EQ(-4, receive(pair.ours(), 1).first); });
    interrupt_every(0);
}

TEST_F(Channel, APeerThatHasGoneRaisesNoSignal) {
    const PAIR_T pair;
    say(pair.peer(), wire(1, 0, 3, "abc"s));
    shutdown(pair.peer(), SHUT_RDWR);
    EXPECT_EQ(-6, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    logged();
    EXPECT_EQ(-6, exchange_data_in_tavisys_msg_channel(pair.ours(), 5, "abc", 3, nullptr, nullptr, 1));
    EXPECT_EQ("exchange_data_in_tavisys_msg_channel 80 error, send data lens : -6\n\n", logged(FILE_NAME));
    EXPECT_EQ(-1, send_data_to_tcp_socket(pair.ours(), "abc", 3));
}

TEST_F(Channel, ExchangesAndAnswersAreLogged) {
    const std::string failed = ") failed to receive_data_from_tavisys_msg_channel\n";
    const std::pair<std::string, std::string> CASES[] = {
        {wire(1000, 0, 3, "abc"s), ""},
        {wire(1000, -101, 0), "出错, 接受结果(-101)\n"},
        {wire(1001, 5, 3, "abc"s), "发送的消息类型1000与接收的消息类型1001不匹配\n\n"},
        {wire(1000, 0, 3, "ab"s), "(-5" + failed},
    };
    for (const auto &[reply, line] : CASES) {
        const PAIR_T pair;
        say(pair.peer(), reply);
        shutdown(pair.peer(), SHUT_WR);
        exchange_data_in_tavisys_msg_channel(pair.ours(), 1000, nullptr, 0, nullptr, nullptr, 5);
        EXPECT_EQ(line.empty() ? "" : "exchange_data_in_tavisys_msg_channel 80 " + line, logged(FILE_NAME));
    }
    const PAIR_T server;
    say(server.peer(), wire(-5, 0, 0)); // the answer claims so many bytes
    EXPECT_EQ(-2, deal_data_from_tavisys_msg_channel(server.ours(), answer));
    const std::string deal = "deal_data_from_tavisys_msg_channel 40 影柜系统消息通道: ";
    EXPECT_EQ(deal + "接收消息,消息类型(-5), 消息体长度(0)\n\n" + deal +
                  "回应消息,消息类型(-5), 消息体长度(-5), 消息结果(0)\n\n",
              logged(FILE_NAME));
    say(server.peer(), wire(5, 0, 0)); // now without sending them
    EXPECT_EQ(-2, deal_data_from_tavisys_msg_channel(server.ours(), answer));
    logged();
    const PAIR_T pair;
    say(pair.peer(), wire(1, 0, 3, "ab"s)); // a broken request is not logged
    shutdown(pair.peer(), SHUT_WR);
    EXPECT_EQ(-5, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    EXPECT_EQ("", logged(FILE_NAME));
}

TEST_F(NetChannel, AHeadThatIsNoneIsLogged) {
    const std::pair<const char *, RTSTATUS> CASES[] = {
        {"9999|-001|-0000005|", 0}, {"|0002|00000003|", -1}, {"0001|00002|00000003|", 1}, {"abcd|2|3|", 3}};
    for (const auto &[text, want] : CASES) {
        TP_MESSAGE_HEAD head{};
        EXPECT_EQ(want, parse_header_file(text, &head));
        EXPECT_EQ(want == 0 ? ""
                            : "parse_header_file 80 " + std::to_string(want) +
                                  ". invalid message head: " + text + "\n\n",
                  logged(FILE_NAME));
    }
    TP_MESSAGE_HEAD head{};
    EXPECT_EQ(-1, parse_header_file(nullptr, &head));
    EXPECT_EQ(-1, parse_header_file("0001|0002|00000003|", nullptr));
    EXPECT_EQ(-1, send_data_to_net_communication_channel(0, nullptr, 0, "body"));
    head.length = INT32_MAX - 18; // and the head's own 19 bytes
    EXPECT_EQ(-1, send_data_to_net_communication_channel(0, &head, 0, "body"));
    EXPECT_EQ("", logged(FILE_NAME));
}

TEST_F(NetChannel, AReplyThatComesLateOrBadlyEndsInTimeWithALine) {
    const std::string function = "exchange_data_in_net_communication_channel ";
    const auto received = [](int count) { return "40 接收大小" + std::to_string(count) + "\n"; };
    const struct {
        const char *reply;
        bool falls_silent; // else the peer closes
        RTSTATUS want;
        std::string body;
        std::string log; // behind the name of the function
    } CASES[] = {
        {"1000|0000|00000005|hello", true, 0, "hello\0"s, received(24)},
        {"1000|0000|00000005|he", true, 0, "he\0\0\0\0"s, received(21)}, // ends early, and is handed over
        {"1000|0000|00000003|", true, -1, "", ""},
        {"1000|0003|00000000|", true, 3, "", received(19) + function + "80 出错, 接收结果(3)\n"},
        {"1001|0003|00000000|", true, -8, "", "80 发送的消息类型1000与接收的消息类型1001不匹配\n"},
        {"", false, -1, "", "80 接收的长度(0)与约定大小(19)不匹配\n"},
        {"", true, -1, "", ""},
        {"1000|0000|00000000", true, -1, "", "80 接收的长度(18)与约定大小(19)不匹配\n"},
        {"1000|0000|-0000001|", true, -1, "", "80 创建失败!\n"},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.reply);
        const PAIR_T pair;
        say(pair.peer(), c.reply);
        if (!c.falls_silent)
            shutdown(pair.peer(), SHUT_WR);
        std::string body;
        expect_seconds(0, 4, c.reply, [&] { EXPECT_EQ(c.want, exchange_text(pair.ours(), &body)); });
        EXPECT_EQ(c.body, body);
        EXPECT_EQ(c.log.empty() ? "" : function + c.log, logged(FILE_NAME));
    }
    const PAIR_T pair;
    expect_seconds(1, 4, "a head has a second, whatever a body has",
                   [&] { EXPECT_EQ(-1, exchange_text(pair.ours(), nullptr, 5)); });
    say(pair.peer(), "abcd|efgh|ijklmnop|");
    EXPECT_EQ(-1, exchange_text(pair.ours(), nullptr));
    EXPECT_EQ("parse_header_file 80 3. invalid message head: abcd|efgh|ijklmnop|\n\n" + function +
                  "80 解析头文件出错!\n",
              logged(FILE_NAME));
    EXPECT_EQ(-1, exchange_text(-1, nullptr));
    EXPECT_EQ(function + "80 error, send data lens : -1\n\n", logged(FILE_NAME));
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
                  const bool is_done = exchange_text(sock, &body) == 0;
                  EXPECT_TRUE(body == (is_done ? text + '\0' : ""));
                  EXPECT_NE(std::string::npos, logged().find(is_done ? "接收大小3145752" : "创建失败!"));
                  close_tcp_socket(sock);
                  peer.join();
                  return is_done;
              }));
    close_tcp_socket(listener);
}
