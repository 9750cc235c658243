#include "support_socket.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

#include "support/transfer.h"
#include "tp_trlv.h"

using namespace tavisys;

namespace {

constexpr INT32_T HIGHEST_PORT = 65535;
constexpr INT32_T CONNECT_TIMEOUT = 5; // seconds
constexpr INT32_T SEND_TIMEOUT = 5;    // seconds without progress

constexpr size_t FIRST_ROOM = 1024 * 1024; // what a claimed length is believed before bytes arrive

// A socket that is closed on every return that does not release it.
class SOCKET_T {
public:
    explicit SOCKET_T(int sock) : sock_(sock) {}
    SOCKET_T(const SOCKET_T &) = delete;
    SOCKET_T &operator=(const SOCKET_T &) = delete;
    ~SOCKET_T() {
        if (sock_ < 0)
            return;
        const int error = errno; // what failed before is what the caller asks for
        close(sock_);
        errno = error;
    }
    int get() const { return sock_; }
    int release() {
        const int sock = sock_;
        sock_ = -1;
        return sock;
    }

private:
    int sock_;
};

void send_without_delay(int sock) {
    const int on = 1;
    setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

// Waits until the socket is ready. Returns the events that poll tells, 0 when the time is up or poll fails.
short wait_for(int sock, short events, const DEADLINE_T &deadline) {
    pollfd entry{sock, events, 0};
    for (;;) {
        const int ready = poll(&entry, 1, deadline.wait_ms());
        if (ready > 0)
            return entry.revents;
        if (ready == 0)
            errno = ETIMEDOUT;
        if (ready == 0 || errno != EINTR)
            return 0;
    }
}

bool is_for_later(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

// The kernel's own limit for connect() and for blocking sends: without it, a connect that gives up would need
// a socket that doesn't block, poll() and a change back, for each connection.
bool limit_blocking(int sock) {
    const timeval limit{CONNECT_TIMEOUT, 0};
    return setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) == 0;
}

// Completes a connect that a signal has interrupted, or tells that its time is up.
bool finish_connect(int sock, const DEADLINE_T &deadline) {
    if (errno != EINPROGRESS && errno != EINTR)
        return false;
    const short events = wait_for(sock, POLLOUT, deadline);
    if (events == 0 || events == POLLOUT) // a connect that failed is told as an error, too
        return events != 0;
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(sock, SOL_SOCKET, SO_ERROR, &error, &size) < 0)
        return false;
    errno = error;
    return error == 0;
}

// Errors of accept() that are one connection's alone: the next one may be well. The network errors among
// them are reported there by Linux, see accept(2).
bool concerns_one_connection(int error) {
    switch (error) {
    case EINTR:
    case ECONNABORTED:
    case EPROTO:
    case ENOPROTOOPT:
    case EHOSTDOWN:
    case ENONET:
    case EHOSTUNREACH:
    case ENETDOWN:
    case ENETUNREACH:
        return true;
    default:
        return false;
    }
}

// Steps over what has been sent; returns the pieces that are left.
size_t skip_sent(iovec **pieces, size_t count, size_t sent) {
    while (count > 0 && sent >= (*pieces)->iov_len) {
        sent -= (*pieces)->iov_len;
        (*pieces)++;
        count--;
    }
    if (count > 0) {
        (*pieces)->iov_base = static_cast<INT8_T *>((*pieces)->iov_base) + sent;
        (*pieces)->iov_len -= sent;
    }
    return count;
}

} // namespace

int64_t tavisys::receive_bytes(int sock, void *buffer, size_t length, DEADLINE_T &deadline) {
    size_t received = 0;
    while (received < length) {
        const ssize_t count =
            recv(sock, static_cast<INT8_T *>(buffer) + received, length - received, MSG_DONTWAIT);
        if (count > 0) {
            received += static_cast<size_t>(count);
            deadline.count_moved(count);
            continue;
        }
        if (count == 0)
            return static_cast<int64_t>(received);
        if (errno == EINTR)
            continue;
        if (!is_for_later(errno) || wait_for(sock, POLLIN, deadline) == 0)
            break;
    }
    return received > 0 ? static_cast<int64_t>(received) : -1;
}

int64_t tavisys::receive_growing(int sock, size_t length, size_t spare, INT32_T timeout, OWNED_BODY_T *body) {
    DEADLINE_T deadline(timeout);
    OWNED_BODY_T memory;
    size_t received = 0;
    size_t room = 0;
    while (received == room && room < length) {
        room = std::min(length, std::max(FIRST_ROOM, room * 2));
        const size_t size = room + (room == length ? spare : 0);
        auto *grown = static_cast<INT8_T *>(realloc(memory.get(), size));
        if (grown == nullptr)
            return MEMORY_SHORT;
        static_cast<void>(memory.release()); // realloc has freed or kept it
        memory.reset(grown);
        const int64_t count = receive_bytes(sock, grown + received, room - received, deadline);
        if (count < 0 && received == 0)
            return RECEIVED_NOTHING;
        received += static_cast<size_t>(std::max<int64_t>(count, 0));
    }
    if (room < length)
        return RECEIVED_NOTHING;
    memset(memory.get() + received, 0, length + spare - received);
    *body = std::move(memory);
    return static_cast<int64_t>(received);
}

int64_t tavisys::send_pieces(int sock, iovec *pieces, size_t count) {
    size_t length = 0;
    for (size_t i = 0; i < count; i++)
        length += pieces[i].iov_len;

    DEADLINE_T deadline(SEND_TIMEOUT);
    size_t sent = 0;
    while (sent < length) {
        msghdr message{};
        message.msg_iov = pieces;
        message.msg_iovlen = count;
        const ssize_t now = sendmsg(sock, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (now >= 0) {
            sent += static_cast<size_t>(now);
            deadline.count_moved(now);
            count = skip_sent(&pieces, count, static_cast<size_t>(now));
            continue;
        }
        if (errno == EINTR)
            continue;
        if (!is_for_later(errno) || wait_for(sock, POLLOUT, deadline) == 0)
            break;
    }
    return static_cast<int64_t>(sent);
}

INT32_T create_tcp_server_socket(INT32_T port) {
    if (port < 0 || port > HIGHEST_PORT) {
        errno = EINVAL;
        return -1;
    }
    SOCKET_T sock(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (sock.get() < 0)
        return -1;
    const int on = 1;
    if (setsockopt(sock.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) < 0)
        return -1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    if (bind(sock.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0)
        return -1;
    if (listen(sock.get(), SOMAXCONN) < 0)
        return -1;
    send_without_delay(sock.get()); // what is accepted inherits it
    return sock.release();
}

INT32_T create_tcp_client_socket(const INT8_T *ipaddr, INT32_T port, INT32_T *sock) {
    sockaddr_in address{};
    if (ipaddr == nullptr || sock == nullptr || port < 1 || port > HIGHEST_PORT ||
        inet_pton(AF_INET, ipaddr, &address.sin_addr) != 1) {
        errno = EINVAL;
        return -1;
    }
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));

    SOCKET_T connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connection.get() < 0 || !limit_blocking(connection.get()))
        return -1;
    send_without_delay(connection.get()); // before the server waits for what is sent
    const DEADLINE_T deadline(CONNECT_TIMEOUT);
    if (connect(connection.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) < 0 &&
        !finish_connect(connection.get(), deadline))
        return -1;
    *sock = connection.release();
    return 0;
}

INT32_T create_tcp_accept_socket(INT32_T listener) {
    for (;;) {
        const int sock = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (sock >= 0)
            return sock;
        if (!concerns_one_connection(errno))
            return -1;
    }
}

RTSTATUS close_tcp_socket(INT32_T sock) {
    // On Linux the descriptor is gone also when close() is interrupted: never close twice.
    return close(sock) == 0 || errno == EINTR ? 0 : -1;
}

INT32_T send_data_to_tcp_socket(INT32_T sock, const void *data, INT32_T length) {
    if (data == nullptr || length < 0)
        return -1;
    iovec piece{const_cast<void *>(data), static_cast<size_t>(length)};
    return send_pieces(sock, &piece, 1) == length ? length : -1;
}

INT32_T receive_data_from_tcp_socket(INT32_T sock, PVOID buffer, INT32_T length, INT32_T timeout) {
    if (buffer == nullptr || length < 1)
        return -1;
    DEADLINE_T deadline(timeout);
    return static_cast<INT32_T>(receive_bytes(sock, buffer, static_cast<size_t>(length), deadline));
}

INT32_T receive_text_from_tcp_socket(INT32_T sock, INT8_T **text, INT32_T length, INT32_T timeout) {
    if (text == nullptr || length < 1)
        return -TRLV_TP_ERRCODE_INVALID_ARGS;
    OWNED_BODY_T received;
    const int64_t count = receive_growing(sock, static_cast<size_t>(length), 1, timeout, &received);
    if (count == MEMORY_SHORT)
        return -TRLV_TP_ERRCODE_MALLOC_FAIL;
    if (count == RECEIVED_NOTHING)
        return -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL;
    *text = received.release();
    return static_cast<INT32_T>(count);
}
