// The agent calls against servers in the test that hear one request and say canned bytes: what each asks,
// what it makes of a good reply, and that of every bad one it makes its stated failure in its stated time and
// leaves neither a descriptor nor memory behind. Only the monotonic clock is asked meanwhile.
#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/syscall.h>

#include "harness.h"
#include "peer.h"
#include "tavisys_agent_api.h"

using namespace harness;
using namespace std::string_literals;

namespace {

constexpr RTSTATUS HEAD_FAILED = -4, BODY_FAILED = -5, WRONG_TYPE = -8, INVALID = -12;
constexpr RTSTATUS REFUSED = 2;
constexpr RTSTATUS NO_RECORD = 999; // a success that hands out nothing

thread_local bool t_in_call = false; // here every other clock is that of the 1st of January 1970
std::atomic<int> s_reads = 0;        // of the monotonic one
std::atomic<int> s_other_reads = 0;

template <class ASK>
RTSTATUS in_call(ASK ask) {
    t_in_call = true;
    const RTSTATUS status = ask();
    t_in_call = false;
    return status;
}

template <class RECORD>
RECORD *none_of(void (*)(RECORD **)) {
    return nullptr;
}
// Asks, with a place for the record or without, and releases what the call hands out; a failure hands out
// nothing.
template <auto CALL, auto RELEASE, auto... ARGUMENTS>
RTSTATUS ask(bool has_place) {
    auto *out = none_of(RELEASE);
    const RTSTATUS status = in_call([&] { return CALL(ARGUMENTS..., has_place ? &out : nullptr); });
    EXPECT_TRUE(status >= 0 || out == nullptr);
    if (out == nullptr)
        return status < 0 || status == REFUSED ? status : NO_RECORD;
    RELEASE(&out);
    return status;
}

const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T PAGE{1, 2, 3, 4, 5, 6, 7, 8};
const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T MOVIE{6, 1001};
constexpr INT8_T HERE[] = TAVISYS_LOCAL_SERVER_ADDRESS, PARTITION[] = "sda1";
constexpr INT8_T DISK[] = "fifteen letters"; // the longest name

struct CALL_T {
    INT32_T type;
    RTSTATUS (*ask)(bool has_place);
    std::string request, reply;
    RTSTATUS done = 0;
    RTSTATUS malformed = -1; // of a reply that is cut short inside its message
    RTSTATUS without_body = -1;
    double seconds = 5; // that it waits
};
const std::string PLACE = std::string(128, '\0') + DISK + "\0sda1"s + std::string(12, '\0');
const std::string PAGE_REQUEST = wire(1, 2, 3, 4, 5, 6, 7, 8), MOVIE_REQUEST = wire(6, 1001);
const std::string PAGE_REPLY =
    wire(1, 20, 0, 0, 1, 1, 7, "M1", "片", 0, 0, 0, "", "", "", 1, 1, 0, 0, 0, 0, nullptr, 1);
const std::string DETAIL = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 0, 0, 0, 0, 1, 0);
const std::string MOVIES =
    wire(1, 1, "M1", "片", "", "", "", 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 0, "", 0, 0);
const CALL_T CALLS[] = {
    {1000, ask<tavisysapi_get_software_version_information, delete_tavisys_version_information>, "",
     wire("1.0", nullptr, ""), 0, NO_RECORD, NO_RECORD},
    {1001, ask<tavisysapi_get_system_running_status, delete_tavisys_sysrun_status_information>, "",
     wire(2, 10, 8, 1, 1), 20},
    {1002, ask<tavisysapi_get_system_information, delete_tavisys_system_information>, "", wire(2, 30)},
    {1003, ask<tavisysapi_get_category_information_list, delete_tavisys_category_information_list>, "",
     wire(1, 6, "电影", 12)},
    {1005, ask<tavisysapi_get_movie_filter_information_list, delete_tavisys_filter_information_list, 9, 3>,
     wire(3, 9), wire(1, 5, "1993")},
    {1006, ask<tavisysapi_get_movie_basic_ext_information, delete_tavisys_basic_movie_ext_information, &PAGE>,
     PAGE_REQUEST, PAGE_REPLY},
    {5006,
     ask<touchscreen_get_movie_basic_ext_information, delete_tavisys_basic_movie_ext_information, &PAGE>,
     PAGE_REQUEST, PAGE_REPLY + wire(1, 90)},
    {1007, ask<tavisysapi_get_movie_detail_information, release_tavisys_detail_movie_information, &MOVIE>,
     MOVIE_REQUEST, DETAIL},
    {1007,
     ask<touch_screenapi_get_movie_detail_information, release_tavisys_detail_movie_information, &MOVIE>,
     MOVIE_REQUEST, DETAIL},
    {3000, ask<tavisysapi_get_vod_harddisk_information, release_tavisys_harddisk_information_list, HERE>, "",
     wire(1, "sda", "SN", 0), 21},
    {3003,
     ask<tavisysapi_get_movie_metadata_from_server, delete_tp_tavisys_dbdata_movie_information_list, HERE,
         DISK, PARTITION>,
     PLACE, MOVIES, static_cast<RTSTATUS>(MOVIES.size()), -1, -1, 10},
    {3002,
     [](bool has_place) {
         INT32_T movies = -77;
         const RTSTATUS status = in_call([&] {
             return tavisysapi_get_movies_from_server(HERE, DISK, PARTITION, has_place ? &movies : nullptr);
         });
         EXPECT_EQ(status == 0 ? 513 : -77, movies);
         return status;
     },
     PLACE, wire(513)},
    {3004,
     [](bool has_place) {
         INT8_T uuid[37];
         return in_call(
             [&] { return tavisysapi_get_uuid_infomation(has_place ? uuid : nullptr, sizeof uuid); });
     },
     "", "0f8fad5b\0"s},
    {1008,
     [](bool has_place) {
         INT8_T path[64];
         return in_call(
             [&] { return tavisysapi_random_get_movie_poster(has_place ? path : nullptr, sizeof path - 1); });
     },
     "", "a/b.jpg", 0, 0, -2},
};

auto open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

enum class ENDING_T { CLOSE, RESET, HALF_CLOSE };

// What the server says to one request, how it ends the connection then, and what the call makes of it.
struct SCENE_T {
    std::string bytes;
    RTSTATUS want;
    ENDING_T ending = ENDING_T::CLOSE;
};

// A good reply, and every way in which that of the call can break off or be wrong.
std::vector<SCENE_T> scenes_of(const CALL_T &call) {
    const std::string whole = message(call.type, 0, call.reply);
    std::vector<SCENE_T> scenes = {{message(call.type, 0, ""), call.without_body},
                                   {message(call.type, 0, call.reply + "bytes behind the record"), call.done},
                                   {whole + "bytes behind the message", call.done}};
    for (size_t length = 1; length < call.reply.size(); length++)
        scenes.push_back({message(call.type, 0, call.reply.substr(0, length)), call.malformed});
    for (const ENDING_T ending : {ENDING_T::CLOSE, ENDING_T::RESET, ENDING_T::HALF_CLOSE}) {
        for (size_t length = 0; length < whole.size(); length++)
            scenes.push_back({whole.substr(0, length), length < HEAD ? HEAD_FAILED : BODY_FAILED, ending});
        scenes.push_back({whole, call.done, ending});
    }
    for (const INT32_T length : {-1, INT32_MIN, INT32_MAX, INT32_MAX - 11})
        scenes.push_back({wire(call.type, 0, length, call.reply), INVALID});
    for (const INT32_T length : {INT32_MAX - 12, MEBIBYTE + 1, static_cast<INT32_T>(call.reply.size()) + 1})
        scenes.push_back({wire(call.type, 0, length, call.reply), BODY_FAILED});
    for (const INT32_T type : {call.type + 1, -call.type, 0})
        scenes.push_back({message(type, 0, call.reply), WRONG_TYPE});
    for (const INT32_T result : {-104, REFUSED})
        scenes.push_back({message(call.type, result, call.reply), result});
    return scenes;
}

void play(const SCENE_T &scene, const std::string &request, INT32_T sock) {
    EXPECT_EQ(request, hear(sock, request.size()));
    say(sock, scene.bytes);
    const linger at_once{1, 0};
    if (scene.ending == ENDING_T::RESET)
        setsockopt(sock, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    if (scene.ending == ENDING_T::HALF_CLOSE) {
        shutdown(sock, SHUT_WR);
        hear(sock, 1); // until the call has closed its side
    }
    close_tavisys_msg_channel(sock);
}

class Agent : public LEAK_CHECKED_T {
protected:
    void SetUp() override { listener_ = svr_open_tavisys_msg_channel(); }
    void TearDown() override {
        close_tavisys_msg_channel(listener_);
        logged();
        EXPECT_EQ(descriptors_, open_descriptors());
        EXPECT_EQ(0, s_other_reads);
        LEAK_CHECKED_T::TearDown();
    }
    decltype(open_descriptors()) descriptors_ = open_descriptors();
    INT32_T listener_ = -1;
};

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *now) {
    if (t_in_call && clock != CLOCK_MONOTONIC) {
        s_other_reads++;
        *now = {};
        return 0;
    }
    s_reads += t_in_call ? 1 : 0;
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

time_t time(time_t *now) {
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    return now == nullptr ? exact.tv_sec : *now = exact.tv_sec;
}
}

TEST_F(Agent, AsksAndMakesOfEachReplyWhatIsStated) {
    for (const CALL_T &call : CALLS) {
        SCOPED_TRACE(call.type);
        const std::vector<SCENE_T> scenes = scenes_of(call);
        std::thread server([&] {
            for (const SCENE_T &scene : scenes)
                play(scene, message(call.type, 0, call.request), monitor_tavisys_msg_channel(listener_));
        });
        for (size_t i = 0; i < scenes.size(); i++)
            EXPECT_EQ(scenes[i].want, call.ask(true)) << "scene " << i;
        server.join();
        logged();
    }
    EXPECT_LT(0, s_reads);
}

// All calls at once, so that the test waits for the longest time limit alone.
TEST_F(Agent, AServerThatIsSilentOrTricklesHoldsACallForItsTimeLimitAndNoLonger) {
    constexpr size_t WAYS = 3; // silent, a byte of a head each second, a byte of a body each second
    std::atomic<size_t> left = WAYS * std::size(CALLS);
    std::atomic<size_t> bodies = 0;
    std::thread server([&] {
        std::vector<INT32_T> socks;
        for (pollfd arrived{listener_, POLLIN, 0}; left > 0;) {
            if (poll(&arrived, 1, 1000) > 0) {
                socks.push_back(monitor_tavisys_msg_channel(listener_));
                if (socks.size() % WAYS == 0)
                    say(socks.back(), hear(socks.back(), HEAD).substr(0, 4) + wire(0, MEBIBYTE));
                continue;
            }
            for (size_t i = 0; i < socks.size(); i++)
                if (i % WAYS != 0)
                    send(socks[i], "x", 1, MSG_NOSIGNAL);
        }
        for (const INT32_T sock : socks)
            close_tavisys_msg_channel(sock);
    });
    std::vector<std::thread> clients;
    for (size_t i = 0; i < WAYS * std::size(CALLS); i++)
        clients.emplace_back([&, &call = CALLS[i % std::size(CALLS)]] {
            expect_seconds(call.seconds, call.seconds + 3, "the time limit", [&] {
                const RTSTATUS status = call.ask(true);
                EXPECT_TRUE(status == HEAD_FAILED || status == BODY_FAILED) << call.type << ": " << status;
                bodies += status == BODY_FAILED ? 1 : 0;
            });
            left--;
        });
    for (std::thread &client : clients)
        client.join();
    server.join();
    EXPECT_EQ(std::size(CALLS), bodies);
}

TEST_F(Agent, WhatIsMissingOrTooLongIsRefusedBeforeOrAfterItHasConnected) {
    const INT8_T *const none = nullptr;
    const INT8_T *const long_name = "sixteen letters.";
    const auto count = tavisysapi_get_movies_from_server;
    const auto movies = tavisysapi_get_movie_metadata_from_server;
    INT32_T number = 0;
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list = nullptr;
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = nullptr;
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks = nullptr;
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *detail = nullptr;
    for (const CALL_T &call : CALLS)
        EXPECT_EQ(-1, call.ask(false)) << call.type;
    for (const RTSTATUS refused :
         {movies(HERE, long_name, "sda1", &list), movies(HERE, "sda", long_name, &list),
          movies(HERE, none, "", &list), movies(HERE, "sda", none, &list), movies(none, "sda", "sda1", &list),
          count(none, "sda", "sda1", &number), count(HERE, none, "sda1", &number),
          count(HERE, "sda", none, &number), tavisysapi_get_vod_harddisk_information(none, &disks),
          tavisysapi_get_movie_basic_ext_information(nullptr, &page),
          touchscreen_get_movie_basic_ext_information(nullptr, &page)})
        EXPECT_EQ(-1, refused);
    pollfd connected{listener_, POLLIN, 0};
    EXPECT_EQ(0, poll(&connected, 1, 0)); // none of them has
    for (const auto &[want, result] :
         {std::pair{-1, count(HERE, "sda", long_name, &number)},
          {-2, tavisysapi_get_movie_detail_information(nullptr, &detail)},
          {-2, touch_screenapi_get_movie_detail_information(nullptr, &detail)}}) {
        EXPECT_EQ(want, result);
        ASSERT_EQ(1, poll(&connected, 1, 5000));
        const INT32_T sock = monitor_tavisys_msg_channel(listener_);
        EXPECT_EQ("", hear(sock, 1)); // these have, and have closed the connection
        close_tavisys_msg_channel(sock);
    }
    close_tavisys_msg_channel(listener_); // nobody is there
    for (const CALL_T &call : CALLS)
        EXPECT_EQ(-1, call.ask(true)) << call.type;
    listener_ = svr_open_tavisys_msg_channel();
}

TEST_F(Agent, UuidsAndPostersAreCopiedWholeOrNotAtAll) {
    const std::string uuid = "0f8fad5b-d9cb-469f-a165-70867728950e\0"s;
    const struct {
        const char *what;
        RTSTATUS (*call)(INT8_T *, INT32_T);
        std::string body;
        INT32_T length; // of the buffer, as the call is told
        RTSTATUS want;
        std::string written;
    } CASES[] = {{"exactly fitting", tavisysapi_get_uuid_infomation, uuid, 37, 0, uuid},
                 {"too long by one", tavisysapi_get_uuid_infomation, uuid, 36, -1, ""},
                 {"no terminator", tavisysapi_get_uuid_infomation, "ab", 37, -1, ""},
                 {"an empty uuid", tavisysapi_get_uuid_infomation, "\0"s, 37, 0, "\0"s},
                 {"bytes behind", tavisysapi_get_uuid_infomation, "ab\0cd"s, 37, 0, "ab\0"s},
                 {"too long, though it ends", tavisysapi_get_uuid_infomation, "ab\0cd"s, 3, -1, ""},
                 // A poster needs a byte to spare. It is followed by zeros, one byte further than said.
                 {"no byte to spare", tavisysapi_random_get_movie_poster, "path", 4, -3, ""},
                 {"a byte to spare", tavisysapi_random_get_movie_poster, "path", 5, 0, "path\0\0"s},
                 {"more than a byte", tavisysapi_random_get_movie_poster, "path", 7, 0, "path\0\0\0\0"s},
                 {"neither poster nor room", tavisysapi_random_get_movie_poster, "", -1, -2, ""},
                 {"no room", tavisysapi_random_get_movie_poster, "p", -1, -3, ""}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const bool is_uuid = c.call == tavisysapi_get_uuid_infomation;
        const INT32_T type = is_uuid ? 3004 : 1008;
        const BODY_T room(std::string(static_cast<size_t>(c.length + (is_uuid ? 0 : 1)), '?'));
        std::thread server([&] {
            play({message(type, 0, c.body), 0}, message(type, 0, ""), monitor_tavisys_msg_channel(listener_));
        });
        EXPECT_EQ(c.want, c.call(room.data(), c.length));
        server.join();
        std::string want(static_cast<size_t>(room.length()), '?');
        EXPECT_EQ(want.replace(0, c.written.size(), c.written), as_string(room.data(), room.length()));
    }
}
