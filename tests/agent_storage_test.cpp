// The agent calls about posters and partitions, whose requests and replies are of their own kind, against
// a server in the test that says canned bytes.
#include <gtest/gtest.h>
#include <poll.h>

#include "harness.h"
#include "peer.h"
#include "tavisys_agent_api.h"

using namespace harness;
using namespace std::string_literals;

namespace {

const INT8_T *const HERE = "127.0.0.1";
const std::string DISK(15, 'd'); // the longest name
const std::string REQUEST = std::string(128, '\0') + DISK + "\0sda1"s + std::string(12, '\0');

INT8_T s_poster;
INT32_T s_count;
RTSTATUS get_count(const INT8_T *ipaddr, const INT8_T *disk, const INT8_T *partition) {
    return tavisysapi_get_movies_from_server(ipaddr, disk, partition, &s_count);
}
TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *s_movies;
RTSTATUS get_movies(const INT8_T *ipaddr, const INT8_T *disk, const INT8_T *partition) {
    return tavisysapi_get_movie_metadata_from_server(ipaddr, disk, partition, &s_movies);
}

} // namespace

TEST(AgentStorage, AsksAboutAPartitionWithAClearedRequest) {
    const struct {
        INT32_T type;
        RTSTATUS (*call)(const INT8_T *, const INT8_T *, const INT8_T *);
        std::string reply; // malformed with every byte that is taken off
        RTSTATUS want;
    } CASES[] = {{3002, get_count, "\1\2\0\0"s, 0}, {3003, get_movies, wire(0), 4}};
    for (const auto &c : CASES) {
        const auto ask = [&](const std::string &reply, RTSTATUS want) {
            s_count = -77;
            EXPECT_EQ(message(c.type, 0, REQUEST),
                      serve(reply, [&] { EXPECT_EQ(want, c.call(HERE, DISK.c_str(), "sda1")) << c.type; }));
        };
        for (const auto &[reply, want] : {std::pair{message(c.type, 2, c.reply), 2},
                                          {message(c.type + 1, 0, c.reply), -8},
                                          {""s, -4},
                                          {message(c.type, 0, ""), -1},
                                          {message(c.type, 0, c.reply.substr(1)), -1}}) {
            ask(reply, want);
            EXPECT_EQ(-77, s_count);
        }
        ask(message(c.type, 0, c.reply), c.want);
        EXPECT_EQ(c.type == 3002 ? 513 : -77, s_count);
        EXPECT_EQ(-1, c.call(HERE, DISK.c_str(), "sda1")); // no server
    }
}

TEST(AgentStorage, ANameThatIsTooLongIsJudgedByTheCountAloneAfterItHasConnected) {
    const INT32_T listener = svr_open_tavisys_msg_channel();
    const std::string sixteen(16, 'd');
    const INT8_T *const none = nullptr;
    const INT8_T *const long_name = sixteen.c_str();
    for (const RTSTATUS refused :
         {get_movies(HERE, long_name, "sda1"), get_movies(HERE, "sda", long_name), get_movies(HERE, none, ""),
          get_movies(HERE, "sda", none), get_movies(none, "sda", "sda1"), get_count(none, "sda", "sda1"),
          get_count(HERE, none, "sda1"), get_count(HERE, "sda", none),
          tavisysapi_get_movies_from_server(HERE, "sda", "sda1", nullptr),
          tavisysapi_get_movie_metadata_from_server(HERE, "sda", "sda1", nullptr),
          tavisysapi_random_get_movie_poster(nullptr, 10)})
        EXPECT_EQ(-1, refused);
    pollfd connected{listener, POLLIN, 0};
    EXPECT_EQ(0, poll(&connected, 1, 0)); // none of them has
    EXPECT_EQ(-1, get_count(HERE, "sda", long_name));
    const INT32_T sock = monitor_tavisys_msg_channel(listener);
    EXPECT_EQ("", hear(sock, 1)); // and it has closed the connection
    close_tavisys_msg_channel(sock);
    close_tavisys_msg_channel(listener);
}

TEST(AgentStorage, APosterNeedsAByteToSpareAndIsFollowedByZeros) {
    const struct {
        std::string reply;
        INT32_T length;
        RTSTATUS want;
        std::string buffer; // one byte more than its length says
    } CASES[] = {{"path", 4, -3, "?????"},
                 {"path", 5, 0, "path\0\0"s},
                 {"path", 7, 0, "path\0\0\0\0"s},
                 {"", 1, -2, "??"},
                 {"", -1, -2, ""},
                 {"p", -1, -3, ""}};
    for (const auto &c : CASES) {
        const BODY_T room(std::string(c.buffer.size(), '?'));
        EXPECT_EQ(message(1008, 0, ""), serve(message(1008, 0, c.reply), [&] {
                      EXPECT_EQ(c.want, tavisysapi_random_get_movie_poster(room.data(), c.length));
                  }));
        EXPECT_EQ(c.buffer, as_string(room.data(), room.length()));
    }
    serve(message(1008, 5, "path"), [] { EXPECT_EQ(5, tavisysapi_random_get_movie_poster(&s_poster, 9)); });
}
