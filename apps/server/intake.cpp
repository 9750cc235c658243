#include "intake.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "log.h"
#include "metrics.h"
#include "support_codec.h"
#include "system_error_text.h"
#include "tavisys_comm.h"

namespace server {

namespace {

using namespace std::chrono_literals;

constexpr auto REQUEST_TIME = 2s;          // in which a request has to arrive whole
constexpr auto PAUSE_OF_ACCEPT = 100ms;    // when the system is out of descriptors
constexpr auto GRACE_FOR_REQUESTS = 300ms; // at the end, for requests that are on their way
constexpr auto GRACE_FOR_REPLIES = 700ms;  // at the end, for peers that are slow to take their replies
constexpr int TICK_MS = 50;
constexpr int HEAD_LENGTH = sizeof(TRLV_MESSAGE_HEAD);
constexpr INT32_T LARGEST_REQUEST = 1024 * 1024; // bytes of body
// A longer request is handed over when so much of it has arrived: more may not fit into the socket's
// buffer, and a peer that has sent that much is a peer that sends.
constexpr INT32_T ENOUGH_OF_REQUEST = 32 * 1024;
constexpr size_t ACCEPTS_AT_ONCE = 64;
constexpr size_t EVENTS_AT_ONCE = 64;
constexpr rlim_t DESCRIPTORS_KEPT = 64; // for everything that isn't a connection
constexpr rlim_t MOST_DESCRIPTORS = 65536;

// As many connections as there are descriptors for.
size_t raise_descriptor_limit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) < 0)
        return 256;
    limit.rlim_cur = std::min(limit.rlim_max, MOST_DESCRIPTORS);
    setrlimit(RLIMIT_NOFILE, &limit);
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur > 2 * DESCRIPTORS_KEPT ? limit.rlim_cur - DESCRIPTORS_KEPT : limit.rlim_cur / 2;
}

sigset_t watched_signals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGHUP);
    return set;
}

} // namespace

INTAKE_T::INTAKE_T(int listener, ACCESS_T access, WORKERS_T *workers, INTAKE_CALLS_T calls)
    : listener_(listener), access_(std::move(access)), workers_(workers), calls_(std::move(calls)) {}

INTAKE_T::~INTAKE_T() {
    for (const PENDING_T &pending : pending_)
        close_tavisys_msg_channel(pending.sock);
    for (const int file : {events_, signals_, listener_})
        if (file >= 0)
            close(file);
}

bool INTAKE_T::watch(int file, bool edge_triggered) const {
    epoll_event event{};
    event.events = EPOLLIN | EPOLLRDHUP | (edge_triggered ? static_cast<uint32_t>(EPOLLET) : 0U);
    event.data.fd = file;
    return epoll_ctl(events_, EPOLL_CTL_ADD, file, &event) == 0;
}

bool INTAKE_T::open() {
    const sigset_t set = watched_signals();
    most_connections_ = raise_descriptor_limit();
    const int flags = fcntl(listener_, F_GETFL);
    if (flags < 0 || fcntl(listener_, F_SETFL, flags | O_NONBLOCK) < 0)
        return false;
    events_ = epoll_create1(EPOLL_CLOEXEC);
    signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    return events_ >= 0 && signals_ >= 0 && watch(listener_, false) && watch(signals_, false);
}

// Returns the milliseconds until the next tick, -1 for never.
int INTAKE_T::tick_if_due() {
    if (calls_.tick_period == 0ms)
        return -1;
    const auto now = CLOCK_T::now();
    if (now >= next_tick_) {
        calls_.tick();
        next_tick_ = now + calls_.tick_period;
    }
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(next_tick_ - now).count());
}

void INTAKE_T::run() {
    while (!stop_) {
        const int until_tick = tick_if_due();
        const bool looked_after = !pending_.empty() || workers_->busy() || paused_;
        wait_and_handle(looked_after ? TICK_MS : until_tick);
    }
    calls_.stopping();
    finish();
}

void INTAKE_T::wait_and_handle(int timeout_ms) {
    epoll_event events[EVENTS_AT_ONCE];
    const int count = epoll_wait(events_, events, EVENTS_AT_ONCE, timeout_ms);
    for (int i = 0; i < count; i++) {
        const int file = events[i].data.fd;
        if (file == signals_)
            read_signals();
        else if (file == listener_)
            accept_connections(ACCEPTS_AT_ONCE);
        else if (pending_by_sock_.count(file) > 0)
            look_at(file, (events[i].events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0);
    }
    const auto now = CLOCK_T::now();
    drop_expired(now);
    metrics.pending.set(pending_.size());
    resume_accepting(now);
    workers_->relieve();
}

void INTAKE_T::read_signals() {
    signalfd_siginfo info{};
    while (read(signals_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo == SIGHUP)
            calls_.reload();
        else
            stop_ = true;
    }
}

// Makes room for one more connection by letting go the one that has kept its request back longest.
bool INTAKE_T::make_room() {
    if (pending_.empty())
        return false;
    const int oldest = pending_.front().sock;
    forget(oldest);
    drop(oldest);
    return true;
}

// Accepts what waits at the door, up to the given number.
void INTAKE_T::accept_connections(size_t most) {
    for (size_t i = 0; i < most; i++) {
        if (pending_.size() + workers_->connections() >= most_connections_ && !make_room()) {
            pause_accepting();
            return;
        }
        const int sock = monitor_tavisys_msg_channel(listener_);
        if (sock >= 0) {
            metrics.accepted.add();
            if (may_ask(sock))
                admit(sock);
            continue;
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK && !make_room()) {
            SERVER_WARN("暂时无法接受连接: %s", system_error_text(errno));
            pause_accepting();
        }
        return;
    }
}

// Out of descriptors: connections wait at the door until some of those inside have ended.
void INTAKE_T::pause_accepting() {
    epoll_ctl(events_, EPOLL_CTL_DEL, listener_, nullptr);
    paused_ = true;
    accept_again_ = CLOCK_T::now() + PAUSE_OF_ACCEPT;
}

void INTAKE_T::resume_accepting(CLOCK_T::time_point now) {
    if (paused_ && now >= accept_again_)
        paused_ = !watch(listener_, false);
}

// Refuses who may not, before a byte is read.
bool INTAKE_T::may_ask(int sock) {
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    const bool known = getpeername(sock, reinterpret_cast<sockaddr *>(&peer), &size) == 0;
    if (known && access_.allows(peer.sin_addr))
        return true;
    if (known) // else it has gone already
        refusals_.count(peer.sin_addr);
    const linger at_once{1, 0}; // nothing of it stays behind in the system, either
    setsockopt(sock, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close_tavisys_msg_channel(sock);
    return false;
}

// Most requests arrive with their connection: those go to the workers at once.
void INTAKE_T::admit(int sock) {
    const ARRIVAL_T arrival = arrival_of(sock);
    if (arrival == ARRIVAL_T::WHOLE) {
        workers_->answer(sock);
        return;
    }
    // Watched by its edge: each wake brings new bytes. What came before the watch began is seen by the
    // look right after it.
    if (arrival == ARRIVAL_T::BROKEN || !watch(sock, true)) {
        drop(sock);
        return;
    }
    pending_.push_back({sock, CLOCK_T::now() + REQUEST_TIME});
    pending_by_sock_[sock] = std::prev(pending_.end());
    look_at(sock, false);
}

// `ended`: the peer sends no more, so what isn't there now never comes.
void INTAKE_T::look_at(int sock, bool ended) {
    const ARRIVAL_T arrival = arrival_of(sock);
    if (arrival == ARRIVAL_T::PARTIAL && !ended)
        return;
    forget(sock);
    if (arrival == ARRIVAL_T::WHOLE)
        workers_->answer(sock);
    else
        drop(sock);
}

INTAKE_T::ARRIVAL_T INTAKE_T::arrival_of(int sock) {
    INT8_T head[HEAD_LENGTH];
    const ssize_t peeked = recv(sock, head, sizeof head, MSG_PEEK | MSG_DONTWAIT);
    if (peeked < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? ARRIVAL_T::PARTIAL
                                                                         : ARRIVAL_T::BROKEN;
    if (peeked == 0)
        return ARRIVAL_T::BROKEN;
    if (peeked < HEAD_LENGTH)
        return ARRIVAL_T::PARTIAL;
    INT32_T type = 0;
    INT32_T length = 0;
    decode_int_data_from_buffer(head + offsetof(TRLV_MESSAGE_HEAD, type), HEAD_LENGTH, &type);
    decode_int_data_from_buffer(head + offsetof(TRLV_MESSAGE_HEAD, length), INT32_T{sizeof length}, &length);
    if (length < 0 || length > LARGEST_REQUEST) {
        SERVER_INFO("请求未能回应: 消息类型(%d), 消息体长度(%d)无效", type, length);
        return ARRIVAL_T::BROKEN;
    }
    if (length == 0)
        return ARRIVAL_T::WHOLE;
    int available = 0;
    if (ioctl(sock, FIONREAD, &available) < 0)
        return ARRIVAL_T::BROKEN;
    return available - HEAD_LENGTH >= std::min(length, ENOUGH_OF_REQUEST) ? ARRIVAL_T::WHOLE
                                                                          : ARRIVAL_T::PARTIAL;
}

// Closes a connection that has brought no request.
void INTAKE_T::drop(int sock) {
    metrics.dropped.add();
    close_tavisys_msg_channel(sock);
}

void INTAKE_T::forget(int sock) {
    const auto found = pending_by_sock_.find(sock);
    pending_.erase(found->second);
    pending_by_sock_.erase(found);
    epoll_ctl(events_, EPOLL_CTL_DEL, sock, nullptr);
}

void INTAKE_T::drop_expired(CLOCK_T::time_point now) {
    while (!pending_.empty() && pending_.front().deadline <= now)
        make_room();
}

// Takes what has already connected, then answers until nothing is left or the time is up.
void INTAKE_T::finish() {
    const auto begun = CLOCK_T::now();
    accept_connections(most_connections_);
    pause_accepting();
    paused_ = false; // for good
    close(listener_);
    listener_ = -1;
    while (!pending_.empty() || workers_->busy()) {
        wait_and_handle(TICK_MS / 5);
        const auto passed = CLOCK_T::now() - begun;
        if (passed >= GRACE_FOR_REQUESTS)
            while (make_room()) {
            }
        if (passed >= GRACE_FOR_REPLIES)
            workers_->break_all();
    }
}

} // namespace server
