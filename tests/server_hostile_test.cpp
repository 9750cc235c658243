// Peers that misbehave against tavisys-server, and honest clients beside them.
#include "server_harness.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace harness;

namespace {

constexpr int PEERS_OF_A_KIND = 25; // four kinds: a hundred peers against four threads

// Connections that are closed with their object.
class PEERS_T {
public:
    PEERS_T() = default;
    PEERS_T(const PEERS_T &) = delete;
    PEERS_T &operator=(const PEERS_T &) = delete;
    ~PEERS_T() {
        for (const int sock : socks_)
            close_tavisys_msg_channel(sock);
    }
    int add(const std::string &bytes) {
        const int sock = connect_to_server();
        EXPECT_GE(sock, 0);
        send(sock, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        socks_.push_back(sock);
        return sock;
    }
    const std::vector<int> &socks() const { return socks_; }

private:
    std::vector<int> socks_;
};

std::string head_of(INT32_T type, INT32_T length) {
    return bytes_of(TRLV_MESSAGE_HEAD{type, 0, length});
}

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
    EXPECT_EQ(0, connect(sock, reinterpret_cast<const sockaddr *>(&server), sizeof server));
    return sock;
}

const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T LARGE_PAGE{0, 0, 0, 0, 0, 1, 1000, 0};

} // namespace

TEST(HostilePeers, HoldNobodyUp) {
    const FOLDER_T library;
    write_large_library(library.path());
    const auto server = SERVER_PROCESS_T::serving(library.path(), {"--threads", "4"});
    const size_t files = server->open_files();

    PEERS_T peers, trickling, greedy;
    for (int i = 0; i < PEERS_OF_A_KIND; i++) {
        peers.add("");                                        // silent
        peers.add(head_of(1006, 32).substr(0, 6));            // half a head
        trickling.add(head_of(1006, 32));                     // then its body, byte by byte
        greedy.add(head_of(1006, 32) + bytes_of(LARGE_PAGE)); // never reads its reply
    }
    std::atomic<bool> stop = false;
    std::thread trickle([&] {
        while (!stop) {
            for (const int sock : trickling.socks())
                send(sock, "x", 1, MSG_NOSIGNAL | MSG_DONTWAIT);
            poll(nullptr, 0, 100);
        }
    });
    for (int i = 0; i < 100; i++) {
        EXPECT_EQ(1000, ask_for_status().parseok_movies);
        const auto page = ask_for_page({0, 0, 0, 0, 0, 1 + i % 10, 100, i % 4});
        EXPECT_EQ(100, page->pageinfo.replymovies);
    }
    stop = true;
    trickle.join();

    // Each of them is let go in the end, be it with a reset for what was left unread.
    for (const int sock : peers.socks()) {
        char byte = 0;
        EXPECT_GE(0, recv(sock, &byte, 1, 0));
    }
    EXPECT_EQ(1000, ask_for_status().parseok_movies);
    EXPECT_LE(server->open_files(), files + PEERS_OF_A_KIND * 2);
}

TEST(HostilePeers, AClaimCostsNoMemory) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
    ask_for_status();
    const long before = server->resident_kib();
    PEERS_T peers;
    for (const INT32_T length : {0x7fffffff, 0x7ffffff0, 1024 * 1024 + 1, 1024 * 1024, -1, INT32_MIN})
        for (int i = 0; i < 10; i++)
            peers.add(head_of(1006, length) + std::string(40 * 1024, 'x'));
    for (int i = 0; i < 20; i++)
        EXPECT_EQ(28, ask_for_status().parseok_movies);
    EXPECT_LT(server->resident_kib(), before + 64 * 1024);
}

TEST(HostilePeers, MayBreakOffAtEveryByte) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
    const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T page{0, 0, 0, 0, 0, 1, 1000, 0};
    const std::string request = head_of(1006, 32) + bytes_of(page);
    const linger reset{1, 0};
    for (size_t length = 0; length <= request.size(); length++) {
        const int half_closed = connect_to_server();
        send(half_closed, request.data(), length, MSG_NOSIGNAL);
        shutdown(half_closed, SHUT_WR);
        const bool whole = length == request.size();
        EXPECT_EQ(whole ? 1006 : -1, receive_reply(half_closed).head.type);

        const int broken = connect_to_server();
        send(broken, request.data(), length, MSG_NOSIGNAL);
        setsockopt(broken, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
        close_tavisys_msg_channel(broken);
    }
    EXPECT_EQ(28, ask_for_status().parseok_movies);
}

TEST(HostilePeers, AreNoReasonNotToEnd) {
    const FOLDER_T library;
    write_large_library(library.path());
    const auto server = SERVER_PROCESS_T::serving(library.path(), {"--threads", "1"});
    PEERS_T peers;
    for (int i = 0; i < 5; i++) {
        peers.add("");
        peers.add(head_of(1006, 32) + bytes_of(LARGE_PAGE));
    }
    ask_for_status();
    server->signal(SIGTERM);
    EXPECT_EQ(0, server->wait_for_end());
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
