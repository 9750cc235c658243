// The TRLV channel over socket pairs and loopback sockets. The peers are threads that speak raw bytes;
// where one is slow on purpose it waits on its own socket, so that it ends with the call under test.
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

#include "harness.h"
#include "peer.h"
#include "support_memory.h"
#include "support_socket.h"
#include "support_trlv.h"
#include "tavisys_comm.h"

using namespace harness;
using namespace std::string_literals;

namespace {

constexpr INT32_T HEAD = sizeof(TRLV_MESSAGE_HEAD);

// One message; a body is stored for a message that has one, and for no failure.
struct RECEIVED_T {
    INT32_T result;
    TRLV_MESSAGE_HEAD head;
    std::string body;
};
RECEIVED_T receive(int sock, INT32_T timeout = 10) {
    RECEIVED_T message{};
    PVOID body = &message;
    message.result = receive_data_from_tavisys_msg_channel(sock, &message.head, HEAD, &body, timeout);
    EXPECT_EQ(message.result > HEAD, body != &message);
    if (body != &message) {
        message.body = as_string(body, message.head.length);
        safe_free(body);
    }
    return message;
}

// Answers with the request's body behind its length; says no to types below -1000, and 3 to type 3.
RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    EXPECT_EQ(nullptr, *reply);
    EXPECT_EQ(0, *replylen);
    if (type < -1000)
        return type;
    const std::string text = std::to_string(length) + ":" + as_string(body, length);
    *reply = safe_strdup(text.c_str());
    *replylen = static_cast<INT32_T>(text.size());
    return type == 3 ? 3 : 0;
}
RTSTATUS claim(INT32_T type, PVOID /*body*/, INT32_T /*length*/, PVOID * /*reply*/, INT32_T *replylen) {
    *replylen = type; // without a body
    return 0;
}

LOG_LINE_T line(const char *function, int level, const std::string &text) {
    return {"comm/tavisys_comm.c", function, level, text};
}

using Channel = LEAK_CHECKED_T;

} // namespace

TEST_F(Channel, SendsHeadAndBodyInOnePiece) {
    const PAIR_T packets(SOCK_SEQPACKET); // keeps what is sent at once together
    const TRLV_MESSAGE_HEAD head{1000, -2, 3};
    EXPECT_EQ(15, send_data_to_tavisys_msg_channel(packets.ours(), &head, HEAD, "abc"));
    const TRLV_MESSAGE_HEAD alone{1000, 0, 0};
    EXPECT_EQ(12, send_data_to_tavisys_msg_channel(packets.ours(), &alone, HEAD, nullptr));
    char bytes[32];
    ASSERT_EQ(15, recv(packets.peer(), bytes, sizeof bytes, 0));
    EXPECT_EQ("\xe8\x03\0\0\xfe\xff\xff\xff\x03\0\0\0abc"s, std::string(bytes, 15));
    EXPECT_EQ(12, recv(packets.peer(), bytes, sizeof bytes, 0));
}

TEST_F(Channel, BadArgumentsSendAndReceiveNothing) {
    const PAIR_T pair;
    say(pair.peer(), wire(1, 0, 0));
    TRLV_MESSAGE_HEAD head{1, 0, 3};
    const TRLV_MESSAGE_HEAD negative{1, 0, -1};
    const TRLV_MESSAGE_HEAD endless{1, 0, INT32_MAX - 11};
    PVOID body = nullptr;
    const int sock = pair.ours();
    const auto send = send_data_to_tavisys_msg_channel;
    const auto receive_into = receive_data_from_tavisys_msg_channel;
    const struct {
        const char *what;
        INT32_T want;
        INT32_T got;
    } CASES[] = {
        {"send, socket -1", -1, send(-1, &head, HEAD, "abc")},
        {"send, socket -2", -2, send(-2, &head, HEAD, "abc")},
        {"send, no head", -1, send(sock, nullptr, HEAD, "abc")},
        {"send, head length", -2, send(sock, &head, HEAD - 1, "abc")},
        {"send, no body", -2, send(sock, &head, HEAD, nullptr)},
        {"send, negative length", -2, send(sock, &negative, HEAD, "abc")},
        {"send, too long", -2, send(sock, &endless, HEAD, "abc")},
        {"frame, no head", -2, send_trlv_data_to_tcp_communication_channel(sock, nullptr, HEAD, "a", 1)},
        {"receive, socket -1", -1, receive_into(-1, &head, HEAD, &body, 1)},
        {"receive, socket -2", -2, receive_into(-2, &head, HEAD, &body, 1)},
        {"receive, no head", -1, receive_into(sock, nullptr, HEAD, &body, 1)},
        {"receive, head length", -2, receive_into(sock, &head, HEAD + 1, &body, 1)},
        {"receive, no room for a body", -2, receive_into(sock, &head, HEAD, nullptr, 1)},
        {"exchange, socket -1", -1, exchange_data_in_tavisys_msg_channel(-1, 1, "a", 1, &body, nullptr, 1)},
        {"exchange, socket -2", -1, exchange_data_in_tavisys_msg_channel(-2, 1, "a", 1, &body, nullptr, 1)},
    };
    for (const auto &c : CASES)
        EXPECT_EQ(c.want, c.got) << c.what;
    char byte = 0;
    EXPECT_EQ(-1, recv(pair.peer(), &byte, 1, MSG_DONTWAIT));
    EXPECT_EQ(12, receive(sock).result); // none of them has taken a byte
    EXPECT_TRUE(take_log().empty());
}

TEST_F(Channel, AMessageArrivesHoweverItIsCutUp) {
    const struct {
        size_t length;
        size_t step;
    } CASES[] = {{0, 1}, {1, 13}, {300, 1}, {3 * MEBIBYTE + 5, 65536}};
    for (const auto &c : CASES) {
        const PAIR_T pair;
        const std::string text(c.length, 'b');
        const std::string bytes = wire(1006, 0, static_cast<INT32_T>(c.length), text);
        std::thread peer([&] {
            for (size_t at = 0; at < bytes.size(); at += c.step)
                say(pair.peer(), bytes.substr(at, c.step));
        });
        const RECEIVED_T message = receive(pair.ours());
        peer.join();
        EXPECT_EQ(static_cast<INT32_T>(bytes.size()), message.result) << c.length;
        EXPECT_EQ(1006, message.head.type);
        EXPECT_TRUE(text == message.body);
    }
}

TEST_F(Channel, APeerMayCloseAtAnyByte) {
    const std::string bytes = wire(1006, 7, 5, "hello"s);
    for (size_t cut = 0; cut < bytes.size(); cut++) {
        PAIR_T pair;
        say(pair.peer(), bytes.substr(0, cut));
        pair.close_peer();
        const RECEIVED_T message = receive(pair.ours());
        EXPECT_EQ(cut < 12 ? -4 : -5, message.result) << cut;
        EXPECT_EQ(cut < 12 ? 0 : 7, message.head.result) << cut;
    }
}

TEST_F(Channel, AClaimedLengthCostsNoMemoryBeforeTheBytesArrive) {
    const struct {
        INT32_T length;
        INT32_T want;
        size_t largest;
    } CASES[] = {{INT32_MAX, -12, 0},     {INT32_MAX - 11, -12, 0}, {INT32_MAX - 12, -5, MEBIBYTE},
                 {1 << 30, -5, MEBIBYTE}, {100, -5, 100},           {-1, -12, 0},
                 {INT32_MIN, -12, 0}};
    for (const auto &c : CASES) {
        PAIR_T pair;
        say(pair.peer(), wire(1, 0, c.length, "abc"s));
        pair.close_peer();
        forget_allocations();
        EXPECT_EQ(c.want, receive(pair.ours()).result) << c.length;
        EXPECT_EQ(c.largest, largest_allocation()) << c.length;
    }
}

TEST_F(Channel, MemoryThatRunsShortInsideABodyIsAFailure) {
    const std::string bytes = wire(1, 0, 3 * MEBIBYTE, std::string(3 * MEBIBYTE, 'b'));
    bool failed = true;
    for (int nth = 1; failed; nth++) {
        const PAIR_T pair;
        std::thread peer([&] { say(pair.peer(), bytes); });
        fail_nth_allocation(nth);
        const INT32_T result = receive(pair.ours()).result;
        failed = an_allocation_failed();
        EXPECT_EQ(failed ? -3 : static_cast<INT32_T>(bytes.size()), result) << nth;
        shutdown(pair.ours(), SHUT_RDWR); // releases the peer
        peer.join();
    }
}

// All at once, for they have to be waited for.
TEST_F(Channel, ASilentOrTricklingPeerIsDroppedInTime) {
    const std::string drops(100, 'b');
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
    calls.reserve(std::size(CASES) + 2);
    for (const auto &c : CASES) {
        calls.emplace_back([&c] {
            const PAIR_T pair;
            say(pair.peer(), c.at_once);
            std::thread peer([&] { trickle(pair.peer(), c.slowly); });
            expect_seconds(1, 4, c.what,
                           [&] { EXPECT_EQ(c.want, receive(pair.ours(), 1).result) << c.what; });
            shutdown(pair.ours(), SHUT_RDWR);
            peer.join();
        });
    }
    calls.emplace_back([] {
        const PAIR_T pair;
        expect_seconds(2, 5, "a request",
                       [&] { EXPECT_EQ(-4, deal_data_from_tavisys_msg_channel(pair.ours(), answer)); });
    });
    calls.emplace_back([] { // without framing, what came in time is handed over
        const PAIR_T pair;
        say(pair.peer(), "ab");
        INT8_T buffer[8];
        EXPECT_EQ(2, receive_data_from_tcp_socket(pair.ours(), buffer, 8, 1));
        EXPECT_EQ(-1, receive_data_from_tcp_socket(pair.ours(), buffer, 8, 1));
    });
    for (std::thread &call : calls)
        call.join();
    EXPECT_TRUE(take_log().empty());
}

TEST_F(Channel, APeerThatTakesNothingIsGivenUpAfterFiveSeconds) {
    const std::string text(8 * MEBIBYTE, 'b');
    const TRLV_MESSAGE_HEAD head{1, 0, static_cast<INT32_T>(text.size())};
    std::thread senders[2];
    for (const bool is_full : {false, true}) {
        senders[is_full] = std::thread([&, is_full] {
            const PAIR_T pair;
            while (is_full && send(pair.ours(), text.data(), text.size(), MSG_DONTWAIT) > 0) {
            }
            expect_seconds(5, 15, is_full ? "head" : "body", [&] {
                EXPECT_EQ(is_full ? -6 : -7,
                          send_data_to_tavisys_msg_channel(pair.ours(), &head, HEAD, text.data()));
            });
        });
    }
    // A listener whose queue is full leaves a connect hanging.
    const INT32_T listener = create_tcp_server_socket(0);
    EXPECT_EQ(0, listen(listener, 0));
    const INT32_T port = port_of(listener);
    INT32_T queued = -1;
    EXPECT_EQ(0, create_tcp_client_socket("127.0.0.1", port, &queued));
    INT32_T sock = -5;
    expect_seconds(5, 15, "connect",
                   [&] { EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", port, &sock)); });
    EXPECT_EQ(-5, sock);
    close_tcp_socket(queued);
    close_tcp_socket(listener);
    for (std::thread &sender : senders)
        sender.join();
}

TEST_F(Channel, AnInterruptedExchangeGoesOn) {
    struct sigaction interrupt {};
    interrupt.sa_handler = [](int) {}; // without SA_RESTART: every blocking call is interrupted
    struct sigaction before {};
    sigaction(SIGALRM, &interrupt, &before);
    const itimerval storm{{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &storm, nullptr);

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
    expect_seconds(1, 4, "timeout", [&] { EXPECT_EQ(-4, receive(pair.ours(), 1).result); });

    const itimerval calm{};
    setitimer(ITIMER_REAL, &calm, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(Channel, APeerThatHasGoneRaisesNoSignal) {
    PAIR_T pair;
    say(pair.peer(), wire(1, 0, 3, "abc"s));
    pair.close_peer();
    EXPECT_EQ(-6, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    take_log();
    EXPECT_EQ(-6, exchange_data_in_tavisys_msg_channel(pair.ours(), 5, "abc", 3, nullptr, nullptr, 1));
    EXPECT_EQ(std::vector{line("exchange_data_in_tavisys_msg_channel", 80, "error, send data lens : -6\n")},
              take_log());
    EXPECT_EQ(-1, send_data_to_tcp_socket(pair.ours(), "abc", 3));
}

TEST_F(Channel, TheReplyDecidesTheResultOfAnExchange) {
    const std::string mismatch = "发送的消息类型1000与接收的消息类型1001不匹配\n";
    const std::string no_reply = ") failed to receive_data_from_tavisys_msg_channel";
    const struct {
        const char *what;
        std::string reply;
        RTSTATUS want;
        std::string log;
    } CASES[] = {
        {"a body", wire(1000, 0, 3, "abc"s), 0, ""},
        {"no body", wire(1000, 0, 0), 0, ""},
        {"bytes behind the reply", wire(1000, 0, 3, "abcdef"s), 0, ""},
        {"positive result", wire(1000, 3, 3, "abc"s), 3, "出错, 接受结果(3)"},
        {"negative result", wire(1000, -101, 0), -101, "出错, 接受结果(-101)"},
        {"another type", wire(1001, 0, 3, "abc"s), -8, mismatch},
        {"another type and a result", wire(1001, 5, 0), -8, mismatch},
        {"nothing", "", -4, "(-4" + no_reply},
        {"half a body", wire(1000, 0, 3, "ab"s), -5, "(-5" + no_reply},
        {"negative length", wire(1000, 0, -3), -12, "(-12" + no_reply},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const PAIR_T pair;
        say(pair.peer(), c.reply);
        shutdown(pair.peer(), SHUT_WR);
        INT8_T mark = 0;
        PVOID reply = &mark;
        INT32_T replylen = 77;
        EXPECT_EQ(c.want,
                  exchange_data_in_tavisys_msg_channel(pair.ours(), 1000, "ask", 3, &reply, &replylen, 5));
        EXPECT_EQ(wire(1000, 0, 3, "ask"s), hear(pair.peer(), 15));
        EXPECT_EQ(c.want == 0, reply != &mark);
        EXPECT_EQ(c.want == 0, replylen != 77);
        if (reply != &mark) {
            EXPECT_EQ(c.reply.substr(HEAD, 3), as_string(reply, replylen));
            safe_free(reply);
        }
        std::vector<LOG_LINE_T> log;
        if (!c.log.empty())
            log = {line("exchange_data_in_tavisys_msg_channel", 80, c.log)};
        EXPECT_EQ(log, take_log());
    }
    const PAIR_T pair;
    say(pair.peer(), wire(1000, 0, 3, "abc"s)); // a reply that nobody wants is dropped
    EXPECT_EQ(0, exchange_data_in_tavisys_msg_channel(pair.ours(), 1000, nullptr, 0, nullptr, nullptr, 5));
}

TEST_F(Channel, TheHandlersReplyGoesBackWithItsResult) {
    const struct {
        const char *what;
        TRLV_MESSAGE_HEAD request;
        TRLV_MESSAGE_CB handler;
        INT32_T want;
        TRLV_MESSAGE_HEAD reply;
        std::string body;
    } CASES[] = {
        {"a body", {1000, 0, 3}, answer, 17, {1000, 0, 5}, "3:abc"},
        {"no body", {1000, 0, 0}, answer, 14, {1000, 0, 2}, "0:"},
        {"the request's result is not the reply's", {1000, 9, 0}, answer, 14, {1000, 0, 2}, "0:"},
        {"a result and a body", {3, 0, 1}, answer, 15, {3, 3, 3}, "1:a"},
        {"a result and no body", {-1001, 0, 0}, answer, 12, {-1001, -1001, 0}, ""},
        {"a length without a body", {5, 0, 0}, claim, -2, {5, 0, 5}, ""},
        {"a negative length", {-5, 0, 0}, claim, -2, {-5, 0, -5}, ""},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const PAIR_T pair;
        const auto numbers = [](const TRLV_MESSAGE_HEAD &head) {
            return wire(head.type, head.result, head.length);
        };
        say(pair.peer(), numbers(c.request) + "abc"s.substr(0, static_cast<size_t>(c.request.length)));
        EXPECT_EQ(c.want, deal_data_from_tavisys_msg_channel(pair.ours(), c.handler));
        shutdown(pair.ours(), SHUT_WR);
        EXPECT_EQ(c.want < 0 ? "" : numbers(c.reply) + c.body, hear(pair.peer(), 100));

        char texts[2][128];
        snprintf(texts[0], sizeof texts[0], "影柜系统消息通道: 接收消息,消息类型(%d), 消息体长度(%d)\n",
                 c.request.type, c.request.length);
        snprintf(texts[1], sizeof texts[1],
                 "影柜系统消息通道: 回应消息,消息类型(%d), 消息体长度(%d), 消息结果(%d)\n", c.reply.type,
                 c.reply.length, c.reply.result);
        const char *function = "deal_data_from_tavisys_msg_channel";
        EXPECT_EQ((std::vector{line(function, 40, texts[0]), line(function, 40, texts[1])}), take_log());
    }
}

TEST_F(Channel, BrokenRequestsAreNotAnsweredAndNotLogged) {
    PAIR_T pair;
    testing::internal::CaptureStdout();
    EXPECT_EQ(-1, deal_data_from_tavisys_msg_channel(7, nullptr));
    EXPECT_EQ(-1, deal_data_from_tavisys_msg_channel(-2, nullptr));
    EXPECT_EQ("传入值出错，cb=(nil), sock=7\n传入值出错，cb=(nil), sock=-2\n",
              testing::internal::GetCapturedStdout());
    say(pair.peer(), wire(1, 0, 3, "ab"s));
    pair.close_peer();
    EXPECT_EQ(-5, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    EXPECT_EQ(-4, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    EXPECT_TRUE(take_log().empty());
}

TEST_F(Channel, BadAddressesAndPortsAreRefused) {
    INT32_T sock = -5;
    for (INT32_T port : {-1, 65536, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(-1, create_tcp_server_socket(port)) << port;
        EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", port, &sock)) << port;
    }
    for (const char *address : {"", "localhost", "127.0.0.1 ", "::1", "1.2.3", "256.0.0.1"})
        EXPECT_EQ(-1, create_tcp_client_socket(address, 1, &sock)) << address;
    EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", 0, &sock));
    EXPECT_EQ(-1, create_tcp_client_socket(nullptr, 1, &sock));
    EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", 1, nullptr));

    const INT32_T listener = create_tcp_server_socket(0);
    const INT32_T port = port_of(listener);
    EXPECT_EQ(-1, create_tcp_server_socket(port));
    EXPECT_EQ(EADDRINUSE, errno);
    EXPECT_EQ(0, close_tcp_socket(listener));
    EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", port, &sock)); // nobody there any more
    EXPECT_EQ(ECONNREFUSED, errno);
    EXPECT_EQ(-5, sock);
    EXPECT_EQ(-1, monitor_tavisys_msg_channel(-1));
    EXPECT_EQ(-1, close_tavisys_msg_channel(-1));
}

TEST_F(Channel, ConnectionsAreClosedOnExecSendAtOnceAndBlock) {
    const INT32_T listener = create_tcp_server_socket(0);
    INT32_T ours = -1;
    ASSERT_EQ(0, create_tcp_client_socket("127.0.0.1", port_of(listener), &ours));
    const INT32_T accepted = monitor_tavisys_msg_channel(listener);
    for (INT32_T sock : {listener, ours, accepted}) {
        EXPECT_EQ(FD_CLOEXEC, fcntl(sock, F_GETFD));
        EXPECT_EQ(0, fcntl(sock, F_GETFL) & O_NONBLOCK);
        int value = 1;
        socklen_t size = sizeof value;
        EXPECT_EQ(0, getsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &value, &size));
        EXPECT_TRUE(value != 0 || sock == listener);
    }
    EXPECT_EQ(3, send_data_to_tcp_socket(ours, "abc", 3));
    EXPECT_EQ(0, send_data_to_tcp_socket(ours, "", 0));
    EXPECT_EQ(-1, send_data_to_tcp_socket(ours, nullptr, 1));
    EXPECT_EQ(-1, send_data_to_tcp_socket(ours, "abc", -1));
    EXPECT_EQ(0, close_tavisys_msg_channel(ours));
    INT8_T buffer[8];
    EXPECT_EQ(-1, receive_data_from_tcp_socket(accepted, nullptr, 1, 1));
    EXPECT_EQ(-1, receive_data_from_tcp_socket(accepted, buffer, 0, 1));
    EXPECT_EQ(3, receive_data_from_tcp_socket(accepted, buffer, 8, 0)); // all that came before the end
    EXPECT_EQ(0, receive_data_from_tcp_socket(accepted, buffer, 8, -1));
    close_tcp_socket(accepted);
    close_tcp_socket(listener);
}
