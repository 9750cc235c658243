// The TRLV channel over socket pairs and loopback sockets. The peers are threads that speak raw bytes;
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

// Answers with the request's body behind its length; says no to types below -1000, and 3 to type 3. The
// types 5 and -5 claim a length of that much without a body.
RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    if (type < -1000)
        return type;
    const std::string text = std::to_string(length) + ":" + as_string(body, length);
    *reply = type == 5 || type == -5 ? nullptr : safe_strdup(text.c_str());
    *replylen = *reply == nullptr ? type : static_cast<INT32_T>(text.size());
    return type == 3 ? 3 : 0;
}

constexpr auto DEAL = "deal_data_from_tavisys_msg_channel";
constexpr auto EXCHANGE = "exchange_data_in_tavisys_msg_channel";
LOG_LINE_T line(const char *function, int level, const std::string &text) {
    return {"comm/tavisys_comm.c", function, level, text};
}

using Channel = LEAK_CHECKED_T;

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
    const std::pair<size_t, size_t> LENGTHS_AND_STEPS[] = {
        {0, 1}, {1, 13}, {300, 1}, {3 * MEBIBYTE + 5, 65536}};
    for (const auto &[length, step] : LENGTHS_AND_STEPS) {
        const std::string bytes = wire(1006, 0, static_cast<INT32_T>(length), std::string(length, 'b'));
        const auto [result, received] = receive_from(bytes, step);
        EXPECT_EQ(static_cast<INT32_T>(bytes.size()), result) << length;
        EXPECT_TRUE(bytes == received) << length;
    }
}

TEST_F(Channel, APeerMayCloseAtAnyByte) {
    const std::string bytes = wire(1006, 7, 5, "hello"s);
    for (size_t cut = 0; cut < bytes.size(); cut++) {
        const auto [result, received] = receive_from(bytes.substr(0, cut));
        EXPECT_EQ(cut < 12 ? -4 : -5, result) << cut;
        EXPECT_EQ(cut < 12 ? wire(0, 0, 0) : wire(1006, 7, 5), received) << cut;
    }
}

TEST_F(Channel, AClaimedLengthCostsNoMemoryBeforeTheBytesArrive) {
    const auto claim = [](INT32_T length) {
        forget_allocations();
        return receive_from(wire(1, 0, length, "abc"s)).first;
    };
    for (const INT32_T length : {INT32_MAX, INT32_MAX - 11, -1, INT32_MIN}) { // more than a result can say
        EXPECT_EQ(-12, claim(length)) << length;
        EXPECT_EQ(0U, largest_allocation()) << length;
    }
    for (const INT32_T length : {INT32_MAX - 12, 1 << 30, 100}) {
        EXPECT_EQ(-5, claim(length)) << length;
        EXPECT_EQ(static_cast<size_t>(std::min(length, MEBIBYTE)), largest_allocation()) << length;
    }
}

TEST_F(Channel, MemoryThatRunsShortInsideABodyIsAFailure) {
    const std::string bytes = wire(1, 0, 3 * MEBIBYTE, std::string(3 * MEBIBYTE, 'b'));
    EXPECT_LT(1, fail_each_allocation([&] {
                  const INT32_T result = receive_from(bytes).first;
                  EXPECT_TRUE(result == -3 || result == static_cast<INT32_T>(bytes.size())) << result;
                  return result > 0;
              }));
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
    EXPECT_TRUE(take_log().empty());
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
    expect_seconds(5, 15, "connect", [&] {
        INT32_T sock = -5;
        EXPECT_EQ(-1, create_tcp_client_socket("127.0.0.1", port_of(listener), &sock));
        EXPECT_EQ(-5, sock);
    });
    close_tcp_socket(queued);
    close_tcp_socket(listener);
    to_full.join();
    to_empty.join();
}

TEST_F(Channel, AnInterruptedExchangeGoesOn) {
    struct sigaction interrupt {}; // without SA_RESTART: every blocking call is interrupted
    interrupt.sa_handler = [](int) {};
    sigaction(SIGALRM, &interrupt, nullptr);
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
    expect_seconds(1, 4, "timeout", [&] { EXPECT_EQ(-4, receive(pair.ours(), 1).first); });

    const itimerval calm{};
    setitimer(ITIMER_REAL, &calm, nullptr);
}

TEST_F(Channel, APeerThatHasGoneRaisesNoSignal) {
    const PAIR_T pair;
    say(pair.peer(), wire(1, 0, 3, "abc"s));
    shutdown(pair.peer(), SHUT_RDWR);
    EXPECT_EQ(-6, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    take_log();
    EXPECT_EQ(-6, exchange_data_in_tavisys_msg_channel(pair.ours(), 5, "abc", 3, nullptr, nullptr, 1));
    EXPECT_EQ(std::vector{line(EXCHANGE, 80, "error, send data lens : -6\n")}, take_log());
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
        {"no body", wire(1000, 0, 0), 0, ""},
        {"bytes behind the reply", wire(1000, 0, 3, "abcdef"s), 0, ""},
        {"a result and a body", wire(1000, 3, 3, "abc"s), 3, "出错, 接受结果(3)"},
        {"a negative result", wire(1000, -101, 0), -101, "出错, 接受结果(-101)"},
        {"another type and a result", wire(1001, 5, 3, "abc"s), -8, mismatch},
        {"nothing", "", -4, "(-4" + no_reply},
        {"half a body", wire(1000, 0, 3, "ab"s), -5, "(-5" + no_reply},
        {"negative length", wire(1000, 0, -3), -12, "(-12" + no_reply},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const PAIR_T pair;
        say(pair.peer(), c.reply);
        shutdown(pair.peer(), SHUT_WR);
        PVOID reply = nullptr;
        INT32_T replylen = 77;
        EXPECT_EQ(c.want,
                  exchange_data_in_tavisys_msg_channel(pair.ours(), 1000, "ask", 3, &reply, &replylen, 5));
        EXPECT_EQ(wire(1000, 0, 3, "ask"s), hear(pair.peer(), 15));
        EXPECT_EQ(c.want == 0 ? c.reply.substr(HEAD, 3) : "", as_string(reply, replylen));
        EXPECT_EQ(c.want == 0, replylen != 77);
        safe_free(reply);
        EXPECT_EQ(c.log.empty() ? std::vector<LOG_LINE_T>{} : std::vector{line(EXCHANGE, 80, c.log)},
                  take_log());
    }
    const PAIR_T pair;
    say(pair.peer(), wire(1000, 0, 3, "abc"s)); // a reply that nobody wants is dropped
    EXPECT_EQ(0, exchange_data_in_tavisys_msg_channel(pair.ours(), 1000, nullptr, 0, nullptr, nullptr, 5));
}

TEST_F(Channel, TheHandlersReplyGoesBackWithItsResult) {
    const struct {
        const char *what;
        std::string request;
        std::string reply;
    } CASES[] = {
        {"a body", wire(1000, 0, 3, "abc"s), wire(1000, 0, 5, "3:abc"s)},
        {"the request's result is not the reply's", wire(1000, 9, 0), wire(1000, 0, 2, "0:"s)},
        {"a result and a body", wire(3, 0, 1, "a"s), wire(3, 3, 3, "1:a"s)},
        {"a result and no body", wire(-1001, 0, 0), wire(-1001, -1001, 0)},
        {"a length without a body", wire(5, 0, 0), ""},
        {"a negative length", wire(-5, 0, 0), ""},
    };
    std::vector<LOG_LINE_T> log;
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const PAIR_T pair;
        say(pair.peer(), c.request);
        EXPECT_EQ(c.reply.empty() ? -2 : static_cast<INT32_T>(c.reply.size()),
                  deal_data_from_tavisys_msg_channel(pair.ours(), answer));
        shutdown(pair.ours(), SHUT_WR);
        EXPECT_EQ(c.reply, hear(pair.peer(), 100));
        log = take_log();
    }
    EXPECT_EQ((std::vector{
                  line(DEAL, 40, "影柜系统消息通道: 接收消息,消息类型(-5), 消息体长度(0)\n"),
                  line(DEAL, 40, "影柜系统消息通道: 回应消息,消息类型(-5), 消息体长度(-5), 消息结果(0)\n")}),
              log);
    const PAIR_T pair;
    say(pair.peer(), wire(1, 0, 3, "ab"s)); // a broken request is neither answered nor logged
    shutdown(pair.peer(), SHUT_WR);
    EXPECT_EQ(-5, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
    EXPECT_TRUE(take_log().empty());
}
