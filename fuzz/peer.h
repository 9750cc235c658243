// A peer that has sent all that it will ever send: what the channels receive from an input, without a wait.
#ifndef TAVISYS_FUZZ_PEER_H
#define TAVISYS_FUZZ_PEER_H

#include <algorithm>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

#include "fuzz.h"

namespace fuzz {

class PEER_T {
public:
    // The bytes lie in the socket's buffer, which takes more than the longest input.
    explicit PEER_T(std::string_view sends) {
        int ends[2] = {-1, -1};
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "no sockets");
        ours_ = ends[0];
        theirs_ = ends[1];
        const auto length = static_cast<ssize_t>(sends.size());
        require(send(theirs_, sends.data(), sends.size(), MSG_DONTWAIT) == length, "input too long");
        shutdown(theirs_, SHUT_WR);
    }
    PEER_T(const PEER_T &) = delete;
    PEER_T &operator=(const PEER_T &) = delete;
    ~PEER_T() {
        close(ours_);
        close(theirs_);
    }

    int socket() const { return ours_; }

    // What was sent to the peer since the last call.
    std::string received() const {
        std::string bytes;
        char buffer[4096];
        ssize_t count = 0;
        while ((count = recv(theirs_, buffer, sizeof buffer, MSG_DONTWAIT)) > 0)
            bytes.append(buffer, static_cast<size_t>(count));
        return bytes;
    }

private:
    int ours_ = -1;
    int theirs_ = -1;
};

constexpr size_t LONGEST_INPUT = size_t{32} * 1024;

// What a claimed length is believed before its bytes come.
constexpr size_t FIRST_ROOM = size_t{1024} * 1024;

// The most that receiving allocates for bytes that came behind a head with that length: the first room, and
// for every further one, which is twice as large, the bytes that filled the one before.
inline void require_receiver_memory(int64_t claimed, size_t came) {
    const size_t believed = claimed < 0 ? 0 : std::min(static_cast<size_t>(claimed), FIRST_ROOM);
    require(bytes_allocated() <= believed + 4 * came + 64, "memory out of proportion to the bytes that came");
}

} // namespace fuzz

#endif
