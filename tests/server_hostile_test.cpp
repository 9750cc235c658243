// Peers that hang on to tavisys-server, and those that may not ask it. A crowd that misbehaves in every other
// way is what bench/hostile.cpp sends.
#include "server_harness.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

using namespace harness;

namespace {

// A thousand movies whose page is far larger than a socket's buffers.
void write_large_library(const std::filesystem::path &folder) {
    const std::string filler(900, 'x');
    for (int i = 0; i < 1000; i++) {
        MOVIE_DOCUMENT_T movie;
        movie.code = "TV" + std::to_string(10000 + i) + filler;
        movie.name = std::to_string(i) + filler;
        movie.poster = "posters/" + filler;
        write_document(folder, "sda/sda1", movie);
    }
}

int connect_from(const char *address) {
    const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in own{};
    own.sin_family = AF_INET;
    EXPECT_EQ(1, inet_pton(AF_INET, address, &own.sin_addr));
    sockaddr_in server = own;
    server.sin_port = htons(TAVISYS_MSG_CHANNEL_PORT);
    EXPECT_EQ(1, inet_pton(AF_INET, TAVISYS_LOCAL_SERVER_ADDRESS, &server.sin_addr));
    EXPECT_EQ(0, bind(sock, reinterpret_cast<const sockaddr *>(&own), sizeof own));
    // A refused peer may learn of it while it still connects.
    const int result = connect(sock, reinterpret_cast<const sockaddr *>(&server), sizeof server);
    EXPECT_TRUE(result == 0 || errno == ECONNRESET);
    return sock;
}

} // namespace

TEST(HostilePeers, AreNoReasonNotToEnd) {
    const FOLDER_T library;
    write_large_library(library.path());
    const auto server = SERVER_PROCESS_T::serving(library.path(), {"--threads", "1"});
    std::vector<int> peers;
    for (int i = 0; i < 10; i++) {
        peers.push_back(connect_to_server());
        if (i % 2 == 0) // never reads its reply; the others are silent
            send_request(
                peers.back(), TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO,
                bytes_of(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T{0, 0, 0, 0, 0, 1, 1000, 0}));
    }
    ask_for_status();
    server->signal(SIGTERM);
    EXPECT_EQ(0, server->wait_for_end());
    for (const int peer : peers)
        close_tavisys_msg_channel(peer);
}

TEST(HostilePeers, MayNotAskFromElsewhere) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY, {"--allow", "127.0.0.2,127.1.0.0/16"});
    const size_t files = server->open_files();
    const auto begun = std::chrono::steady_clock::now();
    for (int i = 0; i < 500; i++) {
        const int refused = connect_from(i % 2 == 0 ? "127.0.0.1" : "127.2.0.1");
        send_request(refused, 1001, "");
        EXPECT_EQ(-1, receive_reply(refused).head.type);
    }
    for (const char *allowed : {"127.0.0.2", "127.1.0.0", "127.1.255.255"}) {
        const int sock = connect_from(allowed);
        send_request(sock, 1001, "");
        char reply[64]; // more than there is: this waits until the server has closed its side
        EXPECT_EQ(32, recv(sock, reply, sizeof reply, MSG_WAITALL));
        close_tavisys_msg_channel(sock);
    }
    EXPECT_EQ(files, server->open_files());
    EXPECT_TRUE(server->wait_for("拒绝了1个连接, 最近一个来自127.0.0.1"));
    const std::string log = server->log();
    long lines = 0;
    for (size_t at = 0; (at = log.find("拒绝了", at)) != std::string::npos; at++)
        lines++;
    const auto took = std::chrono::steady_clock::now() - begun;
    EXPECT_LE(lines, 1 + std::chrono::duration_cast<std::chrono::seconds>(took).count());
}
