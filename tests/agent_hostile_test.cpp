// Every agent call against servers that misbehave: each ends with its stated failure in its stated time, and
// leaves neither a descriptor nor memory behind. Only the monotonic clock is asked meanwhile.
#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/syscall.h>
#include <sys/time.h>

#include "harness.h"
#include "peer.h"
#include "tavisys_agent_api.h"

using namespace harness;
using namespace std::string_literals;

namespace {

constexpr RTSTATUS HEAD_FAILED = -4, BODY_FAILED = -5, WRONG_TYPE = -8, INVALID = -12;

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
// Asks, and releases what the call hands out; a failure hands out nothing.
template <auto CALL, auto RELEASE, auto... ARGUMENTS>
RTSTATUS ask() {
    auto *out = none_of(RELEASE);
    const RTSTATUS status = in_call([&] { return CALL(ARGUMENTS..., &out); });
    EXPECT_TRUE(status >= 0 || out == nullptr);
    if (out != nullptr)
        RELEASE(&out);
    return status;
}

const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T PAGE{0, 0, 0, 0, 0, 1, 20, 0};
const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T MOVIE{6, 1001};
constexpr INT8_T HERE[] = TAVISYS_LOCAL_SERVER_ADDRESS, DISK[] = "sda", PARTITION[] = "sda1";

struct CALL_T {
    INT32_T type;
    RTSTATUS (*ask)();
    std::string reply;
    RTSTATUS done = 0;
    RTSTATUS without_body = -1;
    double seconds = 5; // that it waits
};
const std::string DETAIL = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 0, 0, 0, 0, 1, 0);
const CALL_T CALLS[] = {
    {1000, ask<tavisysapi_get_software_version_information, delete_tavisys_version_information>,
     wire("1.0", nullptr, ""), 0, 0},
    {1001, ask<tavisysapi_get_system_running_status, delete_tavisys_sysrun_status_information>,
     wire(2, 10, 8, 1, 1), 20},
    {1002, ask<tavisysapi_get_system_information, delete_tavisys_system_information>, wire(2, 30)},
    {1003, ask<tavisysapi_get_category_information_list, delete_tavisys_category_information_list>,
     wire(1, 6, "电影", 12)},
    {1005, ask<tavisysapi_get_movie_filter_information_list, delete_tavisys_filter_information_list, 9, 3>,
     wire(1, 5, "1993")},
    {1006, ask<tavisysapi_get_movie_basic_ext_information, delete_tavisys_basic_movie_ext_information, &PAGE>,
     wire(1, 20, 0, 0, 0, 0)},
    {5006,
     ask<touchscreen_get_movie_basic_ext_information, delete_tavisys_basic_movie_ext_information, &PAGE>,
     wire(1, 20, 0, 0, 0, 0)},
    {1007, ask<tavisysapi_get_movie_detail_information, release_tavisys_detail_movie_information, &MOVIE>,
     DETAIL},
    {1007,
     ask<touch_screenapi_get_movie_detail_information, release_tavisys_detail_movie_information, &MOVIE>,
     DETAIL},
    {3000, ask<tavisysapi_get_vod_harddisk_information, release_tavisys_harddisk_information_list, HERE>,
     wire(0), 4},
    {3003,
     ask<tavisysapi_get_movie_metadata_from_server, delete_tp_tavisys_dbdata_movie_information_list, HERE,
         DISK, PARTITION>,
     wire(0), 4, -1, 10},
    {3002,
     [] {
         INT32_T movies = 0;
         return in_call([&] { return tavisysapi_get_movies_from_server(HERE, DISK, PARTITION, &movies); });
     },
     wire(513)},
    {3004,
     [] {
         INT8_T uuid[37];
         return in_call([&] { return tavisysapi_get_uuid_infomation(uuid, sizeof uuid); });
     },
     "0f8fad5b\0"s},
    {1008,
     [] {
         INT8_T path[64];
         return in_call([&] { return tavisysapi_random_get_movie_poster(path, sizeof path - 1); });
     },
     "a/b.jpg", 0, -2},
};

auto open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void reset(int sock) {
    const linger at_once{1, 0};
    setsockopt(sock, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
}

enum class ENDING_T { CLOSE, RESET, HALF_CLOSE };

// What the server says to one request, how it ends the connection then, and what the call makes of it.
struct SCENE_T {
    std::string bytes;
    ENDING_T ending;
    RTSTATUS want;
};

// Every way in which the reply of a call can break off or be wrong.
std::vector<SCENE_T> scenes_of(const CALL_T &call) {
    const std::string whole = message(call.type, 0, call.reply);
    std::vector<SCENE_T> scenes;
    for (const ENDING_T ending : {ENDING_T::CLOSE, ENDING_T::RESET, ENDING_T::HALF_CLOSE}) {
        for (size_t length = 0; length < whole.size(); length++)
            scenes.push_back({whole.substr(0, length), ending, length < HEAD ? HEAD_FAILED : BODY_FAILED});
        scenes.push_back({whole, ending, call.done});
    }
    for (const INT32_T length : {-1, INT32_MIN, INT32_MAX, INT32_MAX - 11})
        scenes.push_back({wire(call.type, 0, length, call.reply), ENDING_T::CLOSE, INVALID});
    for (const INT32_T length : {INT32_MAX - 12, MEBIBYTE + 1, static_cast<INT32_T>(call.reply.size()) + 1})
        scenes.push_back({wire(call.type, 0, length, call.reply), ENDING_T::CLOSE, BODY_FAILED});
    for (const INT32_T type : {call.type + 1, -call.type, 0})
        scenes.push_back({message(type, 0, call.reply), ENDING_T::CLOSE, WRONG_TYPE});
    for (const INT32_T result : {-104, 2})
        scenes.push_back({message(call.type, result, call.reply), ENDING_T::CLOSE, result});
    scenes.push_back({message(call.type, 0, ""), ENDING_T::CLOSE, call.without_body});
    scenes.push_back({whole + "bytes behind the message", ENDING_T::CLOSE, call.done});
    return scenes;
}

void play(const SCENE_T &scene, INT32_T sock) {
    const std::string head = hear(sock, HEAD);
    hear(sock, static_cast<unsigned char>(head.at(8))); // all requests are short
    say(sock, scene.bytes);
    if (scene.ending == ENDING_T::RESET)
        reset(sock);
    if (scene.ending == ENDING_T::HALF_CLOSE) {
        shutdown(sock, SHUT_WR);
        hear(sock, 1); // until the call has closed its side
    }
    close_tavisys_msg_channel(sock);
}

using AgentHostile = LEAK_CHECKED_T;

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

int gettimeofday(timeval *now, void *) {
    timespec exact{};
    const int result = clock_gettime(CLOCK_REALTIME, &exact);
    *now = {exact.tv_sec, exact.tv_nsec / 1000};
    return result;
}

time_t time(time_t *now) {
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    return now == nullptr ? exact.tv_sec : *now = exact.tv_sec;
}
}

TEST_F(AgentHostile, AReplyThatBreaksOffOrIsWrongIsTheStatedFailure) {
    const auto descriptors = open_descriptors();
    const INT32_T listener = svr_open_tavisys_msg_channel();
    for (const CALL_T &call : CALLS) {
        const std::vector<SCENE_T> scenes = scenes_of(call);
        std::thread server([&] {
            for (const SCENE_T &scene : scenes)
                play(scene, monitor_tavisys_msg_channel(listener));
        });
        for (size_t i = 0; i < scenes.size(); i++)
            EXPECT_EQ(scenes[i].want, call.ask()) << call.type << ", scene " << i;
        server.join();
        take_log();
    }
    close_tavisys_msg_channel(listener);
    EXPECT_EQ(descriptors, open_descriptors());
    EXPECT_LT(0, s_reads);
    EXPECT_EQ(0, s_other_reads);
}

// All calls at once, so that the test waits for the longest time limit alone.
TEST_F(AgentHostile, AServerThatIsSilentOrTricklesHoldsACallForItsTimeLimitAndNoLonger) {
    constexpr size_t WAYS = 3; // silent, a byte of a head each second, a byte of a body each second
    const auto descriptors = open_descriptors();
    const INT32_T listener = svr_open_tavisys_msg_channel();
    std::atomic<size_t> left = WAYS * std::size(CALLS);
    std::atomic<size_t> bodies = 0;
    std::thread server([&] {
        std::vector<INT32_T> socks;
        for (pollfd arrived{listener, POLLIN, 0}; left > 0;) {
            if (poll(&arrived, 1, 1000) > 0) {
                socks.push_back(monitor_tavisys_msg_channel(listener));
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
                const RTSTATUS status = call.ask();
                EXPECT_TRUE(status == HEAD_FAILED || status == BODY_FAILED) << call.type << ": " << status;
                bodies += status == BODY_FAILED ? 1 : 0;
            });
            left--;
        });
    for (std::thread &client : clients)
        client.join();
    server.join();
    EXPECT_EQ(std::size(CALLS), bodies);
    close_tavisys_msg_channel(listener);
    take_log();
    EXPECT_EQ(descriptors, open_descriptors());
    EXPECT_LT(0, s_reads);
    EXPECT_EQ(0, s_other_reads);
}
