// The agent calls against a server in the test that hears one request and says canned bytes. The program
// links the shared library and has a dzlog() of its own, which thereby receives the library's lines.
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>

#include "harness.h"
#include "peer.h"
#include "tavisys_agent_api.h"

using namespace harness;
using namespace std::string_literals;

namespace {

const INT8_T *const HERE = "127.0.0.1";
const std::string DISK(15, 'd'); // the longest name
const std::string PARTITION_REQUEST = std::string(128, '\0') + DISK + "\0sda1"s + std::string(12, '\0');

auto open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

// Makes the call while a server answers its request with the reply; the call closes its connection, whatever
// comes of it.
void serve(const std::string &request, const std::string &reply, const std::function<void()> &call) {
    const auto descriptors = open_descriptors();
    EXPECT_EQ(request, harness::serve(reply, call));
    EXPECT_EQ(descriptors, open_descriptors());
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
template <auto FUNCTION>
RTSTATUS get_page(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T page{1, 2, 3, 4, 5, 6, 7, 8};
    return FUNCTION(&page, info);
}
template <auto FUNCTION>
RTSTATUS get_detail(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T movie{6, 1001};
    return FUNCTION(&movie, info);
}
RTSTATUS get_disks(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    return tavisysapi_get_vod_harddisk_information(HERE, list);
}
RTSTATUS get_movies(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    return tavisysapi_get_movie_metadata_from_server(HERE, DISK.c_str(), "sda1", list);
}

std::vector<CALL_T> calls() {
    const std::string page = wire(1, 2, 3, 4, 5, 6, 7, 8);
    const std::string page_reply =
        wire(1, 20, 0, 0, 1, 1, 7, "M1", "片", 0, 0, 0, "", "", "", 1, 1, 0, 0, 0) + wire(0, nullptr, 1);
    const std::string detail = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 0, 0, 0, 0, 1, 0);
    const std::string movie =
        wire(1, "M1", "片", "", "", "", 0, 0, 0, 0, 0, 0, 0, 0) + wire(1, 2, 3, 4, 0, "", 0, 0);
    std::vector<CALL_T> calls = {
        call<tavisysapi_get_software_version_information, delete_tavisys_version_information>(
            1000, "", wire("1.0", nullptr, "")),
        call<tavisysapi_get_system_running_status, delete_tavisys_sysrun_status_information>(
            1001, "", wire(2, 10, 8, 1, 1)),
        call<tavisysapi_get_system_information, delete_tavisys_system_information>(1002, "", wire(2, 30)),
        call<tavisysapi_get_category_information_list, delete_tavisys_category_information_list>(
            1003, "", wire(1, 6, "电影", 12)),
        call<get_filters, delete_tavisys_filter_information_list>(1005, wire(3, 9), wire(1, 5, "1993")),
        call<get_page<tavisysapi_get_movie_basic_ext_information>,
             delete_tavisys_basic_movie_ext_information>(1006, page, page_reply),
        call<get_page<touchscreen_get_movie_basic_ext_information>,
             delete_tavisys_basic_movie_ext_information>(5006, page, page_reply + wire(1, 90)),
        call<get_detail<tavisysapi_get_movie_detail_information>, release_tavisys_detail_movie_information>(
            1007, wire(6, 1001), detail),
        call<get_detail<touch_screenapi_get_movie_detail_information>,
             release_tavisys_detail_movie_information>(1007, wire(6, 1001), detail),
        call<get_disks, release_tavisys_harddisk_information_list>(3000, "", wire(1, "sda", "SN", 0)),
        call<get_movies, delete_tp_tavisys_dbdata_movie_information_list>(3003, PARTITION_REQUEST,
                                                                          wire(1, movie))};
    calls[0].malformed = 0;                // the caller tests the record
    for (const size_t own : {1U, 9U, 10U}) // the decoder's own result: the bytes of the reply
        calls[own].done = static_cast<RTSTATUS>(calls[own].reply.size());
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
        fails(-4, "");
        fails(-5, message(c.type, 0, c.reply).substr(0, HEAD + 3));
        fails(-8, message(c.type + 1, 0, c.reply));
        take_log();
        fails(-103, message(c.type, -103, ""));
        EXPECT_EQ((std::vector<LOG_LINE_T>{{"comm/tavisys_comm.c", "exchange_data_in_tavisys_msg_channel", 80,
                                            "出错, 接受结果(-103)"}}),
                  take_log()); // the shared library's line arrives in this program's dzlog()
        for (size_t cut = 0; cut < c.reply.size(); cut++)
            fails(c.malformed, message(c.type, 0, c.reply.substr(0, cut)));
    }
}

TEST(Agent, TheNumberOfAPartitionsMoviesIsTheRepliesFirstInteger) {
    const std::pair<std::string, RTSTATUS> CASES[] = {{message(3002, 0, "\1\2\0\0\0"s), 0},
                                                      {message(3002, 0, "\1\2\0"s), -1},
                                                      {message(3002, 0, ""), -1},
                                                      {message(3002, 2, "\1\2\0\0"s), 2},
                                                      {"", -4}};
    for (const auto &[reply, want] : CASES) {
        INT32_T movies = -77;
        serve(message(3002, 0, PARTITION_REQUEST), reply, [&movies, want = want] {
            EXPECT_EQ(want, tavisysapi_get_movies_from_server(HERE, DISK.c_str(), "sda1", &movies));
        });
        EXPECT_EQ(want == 0 ? 513 : -77, movies);
    }
}

TEST(Agent, WhatIsMissingOrTooLongIsRefusedBeforeOrAfterItHasConnected) {
    const INT32_T listener = svr_open_tavisys_msg_channel();
    for (const CALL_T &c : calls())
        EXPECT_EQ(-1, c.call(nullptr)) << c.type;
    const std::string sixteen(16, 'd');
    const INT8_T *const none = nullptr;
    const INT8_T *const long_name = sixteen.c_str();
    const auto count = tavisysapi_get_movies_from_server;
    const auto movies = tavisysapi_get_movie_metadata_from_server;
    INT32_T number = 0;
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list = nullptr;
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = nullptr;
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks = nullptr;
    for (const RTSTATUS refused :
         {movies(HERE, long_name, "sda1", &list), movies(HERE, "sda", long_name, &list),
          movies(HERE, none, "", &list), movies(HERE, "sda", none, &list), movies(none, "sda", "sda1", &list),
          count(none, "sda", "sda1", &number), count(HERE, none, "sda1", &number),
          count(HERE, "sda", none, &number), count(HERE, "sda", "sda1", nullptr),
          tavisysapi_get_vod_harddisk_information(none, &disks),
          tavisysapi_get_movie_basic_ext_information(nullptr, &page),
          touchscreen_get_movie_basic_ext_information(nullptr, &page),
          tavisysapi_random_get_movie_poster(nullptr, 10), tavisysapi_get_uuid_infomation(nullptr, 37)})
        EXPECT_EQ(-1, refused);
    pollfd connected{listener, POLLIN, 0};
    EXPECT_EQ(0, poll(&connected, 1, 0)); // none of them has
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *detail = nullptr;
    for (const auto &[want, result] :
         {std::pair{-1, count(HERE, "sda", long_name, &number)},
          {-2, tavisysapi_get_movie_detail_information(nullptr, &detail)},
          {-2, touch_screenapi_get_movie_detail_information(nullptr, &detail)}}) {
        EXPECT_EQ(want, result);
        ASSERT_EQ(1, poll(&connected, 1, 5000));
        const INT32_T sock = monitor_tavisys_msg_channel(listener);
        EXPECT_EQ("", hear(sock, 1)); // these have, and have closed the connection
        close_tavisys_msg_channel(sock);
    }
    close_tavisys_msg_channel(listener);
}

TEST(Agent, UuidsAndPostersAreCopiedWholeOrNotAtAll) {
    const std::string uuid = "0f8fad5b-d9cb-469f-a165-70867728950e\0"s;
    const struct {
        const char *what;
        RTSTATUS (*call)(INT8_T *, INT32_T);
        std::string body;
        INT32_T length; // of the buffer, as the call is told
        RTSTATUS want;
        std::string written;
        RTSTATUS result = 0;
    } CASES[] = {{"exactly fitting", tavisysapi_get_uuid_infomation, uuid, 37, 0, uuid},
                 {"too long by one", tavisysapi_get_uuid_infomation, uuid, 36, -1, ""},
                 {"no terminator", tavisysapi_get_uuid_infomation, "ab", 37, -1, ""},
                 {"no body", tavisysapi_get_uuid_infomation, "", 37, -1, ""},
                 {"an empty uuid", tavisysapi_get_uuid_infomation, "\0"s, 37, 0, "\0"s},
                 {"bytes behind", tavisysapi_get_uuid_infomation, "ab\0cd"s, 37, 0, "ab\0"s},
                 {"too long, though it ends", tavisysapi_get_uuid_infomation, "ab\0cd"s, 3, -1, ""},
                 {"the server says no", tavisysapi_get_uuid_infomation, uuid, 37, 2, "", 2},
                 // A poster needs a byte to spare. It is followed by zeros, one byte further than said.
                 {"no byte to spare", tavisysapi_random_get_movie_poster, "path", 4, -3, ""},
                 {"a byte to spare", tavisysapi_random_get_movie_poster, "path", 5, 0, "path\0\0"s},
                 {"more than a byte", tavisysapi_random_get_movie_poster, "path", 7, 0, "path\0\0\0\0"s},
                 {"no poster", tavisysapi_random_get_movie_poster, "", 1, -2, ""},
                 {"neither poster nor room", tavisysapi_random_get_movie_poster, "", -1, -2, ""},
                 {"no room", tavisysapi_random_get_movie_poster, "p", -1, -3, ""},
                 {"the server says no", tavisysapi_random_get_movie_poster, "path", 9, 5, "", 5}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const bool is_uuid = c.call == tavisysapi_get_uuid_infomation;
        const INT32_T type = is_uuid ? 3004 : 1008;
        const BODY_T room(std::string(static_cast<size_t>(c.length + (is_uuid ? 0 : 1)), '?'));
        serve(message(type, 0, ""), message(type, c.result, c.body),
              [&] { EXPECT_EQ(c.want, c.call(room.data(), c.length)); });
        std::string want(static_cast<size_t>(room.length()), '?');
        EXPECT_EQ(want.replace(0, c.written.size(), c.written), as_string(room.data(), room.length()));
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
