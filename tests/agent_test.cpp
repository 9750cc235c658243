// The agent calls against a server in the test that hears one request and says canned bytes. The program
// links the shared library and has a dzlog() of its own, which thereby receives the library's lines.
#include <gtest/gtest.h>
#include <poll.h>
#include <thread>

#include "harness.h"
#include "peer.h"
#include "tavisys_agent_api.h"
#include "tavisys_comm.h"

using namespace harness;
using namespace std::string_literals;

namespace {

constexpr size_t HEAD = sizeof(TRLV_MESSAGE_HEAD);

// A call with its types taken off.
struct CALL_T {
    const char *name;
    RTSTATUS (*call)(void **);
    void (*release)(void **);
    INT32_T type;
    std::string request;
    std::string reply;
    RTSTATUS done = 0;       // what a good reply gives
    RTSTATUS malformed = -1; // what a reply that doesn't decode gives
};

template <auto FUNCTION, auto RELEASE, class RECORD>
CALL_T erase(const char *name, INT32_T type, const std::string &request, const std::string &reply,
             void (*)(RECORD **)) {
    return {name,
            [](void **out) { return FUNCTION(reinterpret_cast<RECORD **>(out)); },
            [](void **out) { RELEASE(reinterpret_cast<RECORD **>(out)); },
            type,
            request,
            reply};
}
template <auto FUNCTION, auto RELEASE>
CALL_T call(const char *name, INT32_T type, const std::string &request, const std::string &reply) {
    return erase<FUNCTION, RELEASE>(name, type, request, reply, RELEASE);
}

RTSTATUS get_filters(TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    return tavisysapi_get_movie_filter_information_list(9, TP_FILTER_TYPE_YEAR, list);
}
RTSTATUS get_page(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T page{1, 2, 3, 4, 5, 6, 7, 8};
    return tavisysapi_get_movie_basic_ext_information(&page, info);
}
RTSTATUS get_touch_page(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T page{1, 2, 3, 4, 5, 6, 7, 8};
    return touchscreen_get_movie_basic_ext_information(&page, info);
}
RTSTATUS get_disks(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    return tavisysapi_get_vod_harddisk_information("127.0.0.1", list);
}
constexpr TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T MOVIE{6, 1001};
RTSTATUS get_detail(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return tavisysapi_get_movie_detail_information(&MOVIE, info);
}
RTSTATUS get_touch_detail(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return touch_screenapi_get_movie_detail_information(&MOVIE, info);
}

std::vector<CALL_T> calls() {
    const std::string movie = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 0, 0, 0, 0, 1, 0);
    std::vector<CALL_T> calls = {
        call<tavisysapi_get_software_version_information, delete_tavisys_version_information>(
            "version", 1000, "", wire("1.0", nullptr, "")),
        call<tavisysapi_get_system_running_status, delete_tavisys_sysrun_status_information>(
            "status", 1001, "", wire(2, 10, 8, 1, 1)),
        call<tavisysapi_get_system_information, delete_tavisys_system_information>("system", 1002, "",
                                                                                   wire(2, 30)),
        call<tavisysapi_get_category_information_list, delete_tavisys_category_information_list>(
            "categories", 1003, "", wire(1, 6, "电影", 12)),
        call<get_filters, delete_tavisys_filter_information_list>("filters", 1005, wire(3, 9),
                                                                  wire(1, 5, "1993")),
        call<get_page, delete_tavisys_basic_movie_ext_information>("page", 1006, wire(1, 2, 3, 4, 5, 6, 7, 8),
                                                                   wire(1, 20, 0, 0, 0, 0)),
        call<get_detail, release_tavisys_detail_movie_information>("detail", 1007, wire(6, 1001), movie),
        call<get_touch_detail, release_tavisys_detail_movie_information>("touch detail", 1007, wire(6, 1001),
                                                                         movie),
        call<get_touch_page, delete_tavisys_basic_movie_ext_information>(
            "touch page", 5006, wire(1, 2, 3, 4, 5, 6, 7, 8), wire(1, 20, 0, 0, 0, 0)),
        call<get_disks, release_tavisys_harddisk_information_list>(
            "disks", 3000, "", wire(1, "sda", "S", 1, 3, "sda1", "U", "/mnt"))};
    calls[0].malformed = 0; // the caller tests the record
    calls[1].done = 20;     // the decoder's own result
    calls.back().done = 45; // likewise
    return calls;
}

// Makes the call with a result pointer that only a decoded reply may change.
bool leaves_result_alone(const CALL_T &c, const std::string &reply, RTSTATUS want) {
    INT8_T mark = 0;
    void *out = &mark;
    serve(reply, [&] { EXPECT_EQ(want, c.call(&out)); });
    return out == &mark;
}

} // namespace

TEST(Agent, AsksAndHandsOutTheDecodedReply) {
    for (const CALL_T &c : calls()) {
        for (const std::string &rest : {""s, "bytes behind the record"s}) {
            SCOPED_TRACE(c.name);
            void *out = nullptr;
            const std::string request =
                serve(message(c.type, 0, c.reply + rest), [&] { EXPECT_EQ(c.done, c.call(&out)); });
            EXPECT_EQ(message(c.type, 0, c.request), request);
            ASSERT_NE(nullptr, out);
            c.release(&out);
        }
    }
}

TEST(Agent, FailuresOfTheExchangeComeThroughAndLeaveTheResultAlone) {
    for (const CALL_T &c : calls()) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(leaves_result_alone(c, message(c.type, 2, c.reply), 2));
        EXPECT_TRUE(leaves_result_alone(c, message(c.type, -103, ""), -103));
        EXPECT_TRUE(leaves_result_alone(c, message(c.type + 1, 0, c.reply), -8));
        EXPECT_TRUE(leaves_result_alone(c, "", -4));
        EXPECT_TRUE(leaves_result_alone(c, message(c.type, 0, c.reply).substr(0, HEAD + 3), -5));
        EXPECT_TRUE(leaves_result_alone(c, wire(c.type, 0, -1), -12));
    }
}

TEST(Agent, EveryCutOfAReplyIsMalformed) {
    for (const CALL_T &c : calls()) {
        SCOPED_TRACE(c.name);
        for (size_t cut = 0; cut < c.reply.size(); cut++)
            EXPECT_TRUE(leaves_result_alone(c, message(c.type, 0, c.reply.substr(0, cut)), c.malformed));
    }
}

TEST(Agent, WithoutAServerEveryCallFails) {
    INT8_T uuid[37];
    EXPECT_EQ(-1, tavisysapi_get_uuid_infomation(uuid, sizeof uuid));
    for (const CALL_T &c : calls()) {
        void *out = nullptr;
        EXPECT_EQ(-1, c.call(&out)) << c.name;
    }
}

TEST(Agent, BadArgumentsAreRefusedBeforeAConnectionIsMade) {
    const INT32_T listener = svr_open_tavisys_msg_channel();
    EXPECT_EQ(-1, svr_open_tavisys_msg_channel()) << "one server has the port";
    EXPECT_EQ(-1, tavisysapi_get_uuid_infomation(nullptr, 37));
    for (const CALL_T &c : calls())
        EXPECT_EQ(-1, c.call(nullptr)) << c.name;
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = nullptr;
    EXPECT_EQ(-1, tavisysapi_get_movie_basic_ext_information(nullptr, &page));
    EXPECT_EQ(-1, touchscreen_get_movie_basic_ext_information(nullptr, &page));
    pollfd entry{listener, POLLIN, 0};
    EXPECT_EQ(0, poll(&entry, 1, 0));

    // A detail call without a request connects: there is only no body to send. Its log line, which the
    // shared library writes, arrives in this program's dzlog().
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *info = nullptr;
    take_log();
    EXPECT_EQ(-2, tavisysapi_get_movie_detail_information(nullptr, &info));
    EXPECT_EQ((std::vector<LOG_LINE_T>{{"comm/tavisys_comm.c", "exchange_data_in_tavisys_msg_channel", 80,
                                        "error, send data lens : -2\n"}}),
              take_log());
    close_tavisys_msg_channel(listener);
}

TEST(Agent, AUuidIsCopiedWithItsTerminatorOrNotAtAll) {
    const std::string uuid = "0f8fad5b-d9cb-469f-a165-70867728950e";
    const std::string whole = uuid + '\0';
    const struct {
        const char *what;
        std::string body;
        INT32_T room;
        RTSTATUS want;
    } CASES[] = {{"exactly fitting", whole, 37, 0},
                 {"room to spare", "u\0"s, 37, 0},
                 {"too long by one", whole, 36, -1},
                 {"no terminator", uuid, 37, -1},
                 {"no body", "", 37, -1},
                 {"an empty uuid", "\0"s, 37, 0},
                 {"bytes behind", "ab\0cd"s, 37, 0},
                 {"no room", whole, 0, -1},
                 {"negative room", whole, -1, -1},
                 {"too long, though it ends", "ab\0cd"s, 3, -1}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const BODY_T room(std::string(static_cast<size_t>(std::max(c.room, 0)), '?'));
        const std::string request = serve(message(3004, 0, c.body), [&] {
            EXPECT_EQ(c.want, tavisysapi_get_uuid_infomation(room.data(), c.room));
        });
        EXPECT_EQ(message(3004, 0, ""), request);
        const std::string want = c.want == 0 ? c.body.substr(0, c.body.find('\0') + 1) : "";
        const auto length = static_cast<size_t>(room.length());
        EXPECT_EQ(want + std::string(length - want.size(), '?'), std::string(room.data(), length));
    }
    INT8_T untouched[37] = "?";
    serve(message(3004, 2, whole), [&] { EXPECT_EQ(2, tavisysapi_get_uuid_infomation(untouched, 37)); });
    serve(message(1000, 0, whole), [&] { EXPECT_EQ(-8, tavisysapi_get_uuid_infomation(untouched, 37)); });
    EXPECT_STREQ("?", untouched);
}

TEST(Agent, AnyNumberOfThreadsMayAskAndAnswerAtOnce) {
    constexpr int THREADS = 4;
    constexpr int QUESTIONS = 25;
    const INT32_T listener = svr_open_tavisys_msg_channel();
    const auto handler = [](INT32_T, PVOID, INT32_T, PVOID *reply, INT32_T *length) {
        TP_TAVISYS_SYSTEM_INFORMATION_T *info = create_tavisys_system_information(2, 30);
        encode_tavisys_system_information_to_message(info, reply, length);
        delete_tavisys_system_information(&info);
        return 0;
    };
    const auto answer = [&] {
        for (int n = 0; n < QUESTIONS; n++) {
            const INT32_T sock = monitor_tavisys_msg_channel(listener);
            EXPECT_EQ(20, deal_data_from_tavisys_msg_channel(sock, handler));
            close_tavisys_msg_channel(sock);
        }
    };
    const auto ask = [] {
        for (int n = 0; n < QUESTIONS; n++) {
            TP_TAVISYS_SYSTEM_INFORMATION_T *info = nullptr;
            ASSERT_EQ(0, tavisysapi_get_system_information(&info));
            EXPECT_EQ(30, info->movnum);
            delete_tavisys_system_information(&info);
        }
    };
    std::thread threads[2 * THREADS];
    for (int i = 0; i < THREADS; i++) {
        threads[i] = std::thread(answer);
        threads[THREADS + i] = std::thread(ask);
    }
    for (std::thread &thread : threads)
        thread.join();
    close_tavisys_msg_channel(listener);
}
