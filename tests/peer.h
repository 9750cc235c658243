// What the tests of the channels and the agent calls share: peers that speak raw bytes.
#ifndef TAVISYS_TESTS_PEER_H
#define TAVISYS_TESTS_PEER_H

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "harness.h"
#include "support_socket.h"
#include "tavisys_comm.h"

namespace harness {

constexpr INT32_T HEAD = sizeof(TRLV_MESSAGE_HEAD);
constexpr INT32_T MEBIBYTE = 1024 * 1024;

class PAIR_T {
public:
    explicit PAIR_T(int type = SOCK_STREAM) { EXPECT_EQ(0, socketpair(AF_UNIX, type, 0, ends_)); }
    PAIR_T(const PAIR_T &) = delete;
    PAIR_T &operator=(const PAIR_T &) = delete;
    ~PAIR_T() {
        close(ends_[0]);
        close(ends_[1]);
    }
    int ours() const { return ends_[0]; }
    int peer() const { return ends_[1]; }

private:
    int ends_[2] = {-1, -1};
};

inline void say(int sock, const std::string &bytes) {
    send_data_to_tcp_socket(sock, bytes.data(), static_cast<INT32_T>(bytes.size()));
}

inline std::string hear(int sock, size_t length) {
    std::string bytes(length, '\0');
    const INT32_T count = receive_data_from_tcp_socket(sock, bytes.data(), static_cast<INT32_T>(length), 5);
    return bytes.substr(0, static_cast<size_t>(std::max(count, 0)));
}

// Sends one byte every 200 ms until the other side hangs up.
inline void trickle(int sock, const std::string &bytes) {
    pollfd entry{sock, POLLIN, 0};
    for (size_t i = 0; i < bytes.size() && poll(&entry, 1, 200) == 0; i++)
        say(sock, bytes.substr(i, 1));
}

inline void expect_seconds(double least, double most, const char *what, const std::function<void()> &call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(least - 0.01, took) << what;
    EXPECT_GT(most, took) << what;
}

inline std::string as_string(const void *body, INT32_T length) {
    return body == nullptr ? "" : std::string(static_cast<const char *>(body), static_cast<size_t>(length));
}

inline INT32_T port_of(INT32_T sock) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    EXPECT_EQ(0, getsockname(sock, reinterpret_cast<sockaddr *>(&address), &size));
    return ntohs(address.sin_port);
}

inline std::string message(INT32_T type, INT32_T result, const std::string &body) {
    return wire(type, result, static_cast<INT32_T>(body.size()), body);
}

} // namespace harness

#endif
