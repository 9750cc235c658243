// The agent calls against a server in the test that hears one request and says canned bytes. The program
// links the shared library and has a dzlog() of its own, which thereby receives the library's lines.
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <thread>

#include "harness.h"
#include "support_socket.h"
#include "tavisys_agent_api.h"
#include "tavisys_comm.h"

using namespace harness;
using namespace std::string_literals;

namespace {

constexpr INT32_T HEAD = sizeof(TRLV_MESSAGE_HEAD);

auto open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// Makes the call while a server answers its request with the reply; the call closes its connection, whatever
// comes of it.
void serve(const std::string &request, const std::string &reply, const std::function<void()> &call) {
    const auto descriptors = open_descriptors();
    const INT32_T listener = svr_open_tavisys_msg_channel();
    std::thread server([&] {
        const INT32_T sock = monitor_tavisys_msg_channel(listener);
        const BODY_T heard(request);
        receive_data_from_tcp_socket(sock, heard.data(), heard.length(), 5);
        EXPECT_EQ(request, std::string(heard.data(), request.size()));
        send_data_to_tcp_socket(sock, reply.data(), static_cast<INT32_T>(reply.size()));
        close_tavisys_msg_channel(sock);
    });
    call();
    server.join();
    close_tavisys_msg_channel(listener);
    EXPECT_EQ(descriptors, open_descriptors());
}

std::string message(INT32_T type, INT32_T result, const std::string &body) {
    return wire(type, result, static_cast<INT32_T>(body.size()), body);
}

// A call with its types taken off.
struct CALL_T {
    RTSTATUS (*call)(void **);
    void (*release)(void **);
    INT32_T type;
    std::string request;
    std::string reply;
    RTSTATUS done = 0;       // what a good reply gives
    RTSTATUS malformed = -1; // what a reply that doesn't decode gives
};

template <auto FUNCTION, auto RELEASE>
CALL_T call(INT32_T type, const std::string &request, const std::string &reply) {
    return {[](void **out) { return FUNCTION(ANY_T{out}); }, [](void **out) { RELEASE(ANY_T{out}); }, type,
            request, reply};
}

RTSTATUS get_filters(TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    return tavisysapi_get_movie_filter_information_list(9, TP_FILTER_TYPE_YEAR, list);
}
RTSTATUS get_page(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T page{1, 2, 3, 4, 5, 6, 7, 8};
    return tavisysapi_get_movie_basic_ext_information(&page, info);
}
template <auto FUNCTION>
RTSTATUS get_detail(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T movie{6, 1001};
    return FUNCTION(&movie, info);
}

std::vector<CALL_T> calls() {
    const std::string movie = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 0, 0, 0, 0, 1, 0);
    std::vector<CALL_T> calls = {
        call<tavisysapi_get_software_version_information, delete_tavisys_version_information>(
            1000, "", wire("1.0", nullptr, "")),
        call<tavisysapi_get_system_running_status, delete_tavisys_sysrun_status_information>(
            1001, "", wire(2, 10, 8, 1, 1)),
        call<tavisysapi_get_system_information, delete_tavisys_system_information>(1002, "", wire(2, 30)),
        call<tavisysapi_get_category_information_list, delete_tavisys_category_information_list>(
            1003, "", wire(1, 6, "电影", 12)),
        call<get_filters, delete_tavisys_filter_information_list>(1005, wire(3, 9), wire(1, 5, "1993")),
        call<get_page, delete_tavisys_basic_movie_ext_information>(1006, wire(1, 2, 3, 4, 5, 6, 7, 8),
                                                                   wire(1, 20, 0, 0, 0, 0)),
        call<get_detail<tavisysapi_get_movie_detail_information>, release_tavisys_detail_movie_information>(
            1007, wire(6, 1001), movie),
        call<get_detail<touch_screenapi_get_movie_detail_information>,
             release_tavisys_detail_movie_information>(1007, wire(6, 1001), movie)};
    calls[0].malformed = 0; // the caller tests the record
    calls[1].done = 20;     // the decoder's own result
    return calls;
}

} // namespace

TEST(Agent, AsksAndHandsOutTheDecodedReply) {
    for (const CALL_T &c : calls()) {
        SCOPED_TRACE(c.type);
        void *out = nullptr;
        serve(message(c.type, 0, c.request), message(c.type, 0, c.reply + "bytes behind the record"),
              [&] { EXPECT_EQ(c.done, c.call(&out)); });
        ASSERT_NE(nullptr, out);
        c.release(&out);
    }
}

TEST(Agent, FailuresOfTheExchangeAndEveryCutOfAReplyLeaveTheResultAlone) {
    INT8_T mark = 0;
    void *out = &mark;
    for (const CALL_T &c : calls()) {
        SCOPED_TRACE(c.type);
        const auto fails = [&](RTSTATUS want, const std::string &reply) {
            serve(message(c.type, 0, c.request), reply, [&] { EXPECT_EQ(want, c.call(&out)); });
            EXPECT_EQ(&mark, out);
        };
        EXPECT_EQ(-1, c.call(&out)) << "without a server";
        fails(2, message(c.type, 2, c.reply));
        fails(-5, message(c.type, 0, c.reply).substr(0, HEAD + 3));
        take_log();
        fails(-103, message(c.type, -103, ""));
        EXPECT_EQ((std::vector<LOG_LINE_T>{{"comm/tavisys_comm.c", "exchange_data_in_tavisys_msg_channel", 80,
                                            "出错, 接受结果(-103)"}}),
                  take_log()); // the shared library's line arrives in this program's dzlog()
        for (size_t cut = 0; cut < c.reply.size(); cut++)
            fails(c.malformed, message(c.type, 0, c.reply.substr(0, cut)));
    }
}

TEST(Agent, AUuidIsCopiedWithItsTerminatorOrNotAtAll) {
    const std::string whole = "0f8fad5b-d9cb-469f-a165-70867728950e\0"s;
    const struct {
        const char *what;
        std::string body;
        INT32_T room;
        RTSTATUS want;
        RTSTATUS result = 0;
    } CASES[] = {{"exactly fitting", whole, 37, 0},
                 {"too long by one", whole, 36, -1},
                 {"no terminator", "ab", 37, -1},
                 {"no body", "", 37, -1},
                 {"an empty uuid", "\0"s, 37, 0},
                 {"bytes behind", "ab\0cd"s, 37, 0},
                 {"too long, though it ends", "ab\0cd"s, 3, -1},
                 {"the server says no", whole, 37, 2, 2}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const auto length = static_cast<size_t>(c.room);
        const BODY_T room(std::string(length, '?'));
        serve(message(3004, 0, ""), message(3004, c.result, c.body),
              [&] { EXPECT_EQ(c.want, tavisysapi_get_uuid_infomation(room.data(), c.room)); });
        const std::string want = c.want == 0 ? c.body.substr(0, c.body.find('\0') + 1) : "";
        EXPECT_EQ(want + std::string(length - want.size(), '?'), std::string(room.data(), length));
    }
}

TEST(Agent, AnyNumberOfThreadsMayAskAndAnswerAtOnce) {
    constexpr int THREADS = 4;
    constexpr int QUESTIONS = 25;
    const INT32_T listener = svr_open_tavisys_msg_channel();
    const auto handler = [](INT32_T, PVOID, INT32_T, PVOID *reply, INT32_T *length) {
        const TP_TAVISYS_SYSTEM_INFORMATION_T info{2, 30};
        return encode_tavisys_system_information_to_message(&info, reply, length);
    };
    std::thread threads[2 * THREADS];
    for (int i = 0; i < THREADS; i++) {
        threads[i] = std::thread([&] {
            for (int n = 0; n < QUESTIONS; n++) {
                const INT32_T sock = monitor_tavisys_msg_channel(listener);
                EXPECT_EQ(20, deal_data_from_tavisys_msg_channel(sock, handler));
                close_tavisys_msg_channel(sock);
            }
        });
        threads[THREADS + i] = std::thread([] {
            for (int n = 0; n < QUESTIONS; n++) {
                TP_TAVISYS_SYSTEM_INFORMATION_T *info = nullptr;
                ASSERT_EQ(0, tavisysapi_get_system_information(&info));
                EXPECT_EQ(30, info->movnum);
                delete_tavisys_system_information(&info);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    close_tavisys_msg_channel(listener);
}
