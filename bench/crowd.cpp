#include "crowd.h"

#include <cerrno>
#include <cstring>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tavisys.h"

namespace bench {

namespace {

using namespace std::chrono_literals;

constexpr int TICK_MS = 100;
constexpr auto LIFE = 3s;      // of a peer that doesn't read
constexpr auto LONGEST = 15s;  // after which the server should have let go of any peer
constexpr size_t SIP = 1024;   // bytes
constexpr size_t EVENTS = 256; // at a time

template <class RECORD>
std::string bytes_of(const RECORD &record) {
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

std::string head_of(INT32_T type, INT32_T length) {
    return bytes_of(TRLV_MESSAGE_HEAD{type, 0, length});
}

std::string page_request(INT32_T size) {
    return request_of(
        TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO,
        bytes_of(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T{0, 0, 0, 0, 0, 1, size, 0}));
}

void close_with_reset(int sock) {
    const linger at_once{1, 0};
    setsockopt(sock, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close(sock);
}

} // namespace

std::string request_of(int type, const std::string &body) {
    return head_of(type, static_cast<INT32_T>(body.size())) + body;
}

std::string exchange(const std::string &request) {
    const int sock = agent_open_tavisys_msg_channel();
    send(sock, request.data(), request.size(), MSG_NOSIGNAL);
    std::string reply;
    char buffer[4096];
    for (ssize_t count = 0; (count = recv(sock, buffer, sizeof buffer, 0)) > 0;)
        reply.append(buffer, static_cast<size_t>(count));
    close(sock);
    return reply;
}

const std::vector<CROWD_T::KIND_T> CROWD_T::KINDS = {
    {"silent", 60, &CROWD_T::silent},
    {"half a head", 60, &CROWD_T::half_head},
    {"a head without its body", 60, &CROWD_T::head_alone},
    {"a request byte by byte", 80, &CROWD_T::trickling},
    {"reset at any byte", 240, &CROWD_T::reset},
    {"half-closed at any byte", 140, &CROWD_T::half_closed},
    {"a negative length", 60, &CROWD_T::negative_length},
    {"a huge length", 60, &CROWD_T::huge_length},
    {"1 MiB promised, 40 KiB sent", 5, &CROWD_T::empty_promise},
    {"an unknown type", 60, &CROWD_T::unknown_type},
    {"a body of another length", 50, &CROWD_T::wrong_length},
    {"random bytes", 70, &CROWD_T::random_bytes},
    {"two requests at once", 20, &CROWD_T::two_requests},
    {"never reads a large page", 10, &CROWD_T::never_reading},
    {"sips a large page", 5, &CROWD_T::sipping},
    {"a right request", 20, &CROWD_T::honest},
};

CROWD_T::CROWD_T(FAILURES_T *failures)
    : failures_(failures), page_(page_request(3)), large_page_(page_request(1000)),
      unknown_(request_of(999, "body")),
      wrong_(request_of(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, "1234567")), page_reply_(exchange(page_)),
      unknown_reply_(exchange(unknown_)), wrong_reply_(exchange(wrong_)), times_(KINDS.size()),
      begun_(KINDS.size()), events_(epoll_create1(EPOLL_CLOEXEC)) {}

CROWD_T::~CROWD_T() {
    close(events_);
}

CROWD_T::PLAN_T CROWD_T::silent() {
    return {};
}

CROWD_T::PLAN_T CROWD_T::half_head() {
    return {page_.substr(0, 1 + below(sizeof(TRLV_MESSAGE_HEAD) - 1))};
}

CROWD_T::PLAN_T CROWD_T::head_alone() {
    return {page_.substr(0, sizeof(TRLV_MESSAGE_HEAD))};
}

CROWD_T::PLAN_T CROWD_T::trickling() {
    return {page_, NEXT_T::TRICKLE};
}

CROWD_T::PLAN_T CROWD_T::reset() {
    return {page_.substr(0, below(page_.size() + 1)), NEXT_T::RESET, END_T::ANY};
}

CROWD_T::PLAN_T CROWD_T::half_closed() {
    const size_t length = below(page_.size() + 1);
    if (length < page_.size())
        return {page_.substr(0, length), NEXT_T::HALF_CLOSE};
    return {page_, NEXT_T::HALF_CLOSE, END_T::ANSWERED, &page_reply_};
}

CROWD_T::PLAN_T CROWD_T::negative_length() {
    constexpr INT32_T LENGTHS[] = {-1, -12, -0x7fffffff, -0x7fffffff - 1};
    return {head_of(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, LENGTHS[below(4)]) + "body"};
}

CROWD_T::PLAN_T CROWD_T::huge_length() {
    constexpr INT32_T LENGTHS[] = {0x7fffffff, 0x7ffffff0, 0x1000000, 1024 * 1024 + 1};
    return {head_of(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, LENGTHS[below(4)]) + "body"};
}

CROWD_T::PLAN_T CROWD_T::empty_promise() {
    return {head_of(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, 1024 * 1024) +
            std::string(size_t{40} * 1024, 'x')};
}

CROWD_T::PLAN_T CROWD_T::unknown_type() {
    return {unknown_, NEXT_T::WAIT, END_T::ANSWERED, &unknown_reply_};
}

CROWD_T::PLAN_T CROWD_T::wrong_length() {
    return {wrong_, NEXT_T::WAIT, END_T::ANSWERED, &wrong_reply_};
}

CROWD_T::PLAN_T CROWD_T::random_bytes() {
    std::string bytes(1 + below(64), '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(below(256));
    return {bytes, NEXT_T::WAIT, END_T::ANY};
}

// The first is answered; what lies behind it is never read.
CROWD_T::PLAN_T CROWD_T::two_requests() {
    return {page_ + page_, NEXT_T::WAIT, END_T::ANSWERED, &page_reply_};
}

CROWD_T::PLAN_T CROWD_T::never_reading() {
    return {large_page_, NEXT_T::NEVER_READ, END_T::ANY};
}

CROWD_T::PLAN_T CROWD_T::sipping() {
    return {large_page_, NEXT_T::SIP, END_T::ANY};
}

CROWD_T::PLAN_T CROWD_T::honest() {
    return {page_, NEXT_T::WAIT, END_T::ANSWERED, &page_reply_};
}

size_t CROWD_T::some_kind() {
    size_t draw = below(1000);
    size_t kind = 0;
    while (draw >= KINDS[kind].share)
        draw -= KINDS[kind++].share;
    return kind;
}

void CROWD_T::begin() {
    const size_t kind = some_kind();
    begun_[kind]++;
    const int sock = agent_open_tavisys_msg_channel();
    if (sock < 0)
        return failures_->add(std::string("a peer can't connect: ") + strerror(errno));
    PEER_T peer{sock, kind, (this->*KINDS[kind].plan)(), CLOCK_T::now(), 0, ""};
    peer.sent = peer.plan.next == NEXT_T::TRICKLE ? 1 : peer.plan.bytes.size();
    send(sock, peer.plan.bytes.data(), peer.sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (peer.plan.next == NEXT_T::RESET)
        return close_with_reset(sock);
    if (peer.plan.next == NEXT_T::HALF_CLOSE)
        shutdown(sock, SHUT_WR);
    const bool reads = peer.plan.next != NEXT_T::NEVER_READ && peer.plan.next != NEXT_T::SIP;
    const auto at = peers_.insert(peers_.end(), std::move(peer));
    epoll_event event{};
    event.events = reads ? static_cast<uint32_t>(EPOLLIN) : 0U;
    event.data.fd = sock;
    peer_of_[sock] = at;
    epoll_ctl(events_, EPOLL_CTL_ADD, sock, &event);
}

// Reads what is there, as it comes or a sip of it; ends the peer at the stream's end.
void CROWD_T::hear(PEERS_T::iterator peer) {
    char buffer[16 * 1024];
    const size_t most = peer->plan.next == NEXT_T::SIP ? SIP : sizeof buffer;
    const ssize_t count = recv(peer->sock, buffer, most, MSG_DONTWAIT);
    if (count > 0 && peer->plan.end == END_T::ANSWERED)
        peer->received.append(buffer, static_cast<size_t>(count));
    else if (count > 0 && peer->plan.end == END_T::CLOSED)
        failures_->add(std::string(KINDS[peer->kind].name) + ": answered");
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
        end(peer, true);
}

void CROWD_T::end(PEERS_T::iterator peer, bool by_server) {
    const auto took = CLOCK_T::now() - peer->begun;
    if (by_server)
        times_[peer->kind].add(took);
    if (peer->plan.end == END_T::ANSWERED && peer->received != *peer->plan.reply)
        failures_->add(std::string(KINDS[peer->kind].name) + ": " + std::to_string(peer->received.size()) +
                       " bytes of reply instead of " + std::to_string(peer->plan.reply->size()));
    peer_of_.erase(peer->sock);
    close_with_reset(peer->sock);
    peers_.erase(peer);
}

void CROWD_T::tick(CLOCK_T::time_point now) {
    for (auto peer = peers_.begin(); peer != peers_.end();) {
        const auto here = peer++;
        PEER_T &that = *here;
        const bool is_reader = that.plan.next != NEXT_T::NEVER_READ && that.plan.next != NEXT_T::SIP;
        if (now - that.begun > (is_reader ? CLOCK_T::duration(LONGEST) : CLOCK_T::duration(LIFE))) {
            if (is_reader)
                failures_->add(std::string(KINDS[that.kind].name) + ": not let go");
            end(here, false);
        } else if (that.plan.next == NEXT_T::TRICKLE && that.sent < that.plan.bytes.size()) {
            send(that.sock, that.plan.bytes.data() + that.sent++, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
        } else if (that.plan.next == NEXT_T::SIP) {
            hear(here);
        }
    }
}

void CROWD_T::run(size_t connections, size_t at_once, const std::function<void()> &each_second) {
    auto next_tick = CLOCK_T::now();
    auto next_second = next_tick + 1s;
    size_t made = 0;
    while (made < connections || !peers_.empty()) {
        for (; made < connections && peers_.size() < at_once && CLOCK_T::now() < next_tick; made++)
            begin();
        epoll_event events[EVENTS];
        const int count = epoll_wait(events_, events, EVENTS, made < connections ? 1 : TICK_MS);
        for (int i = 0; i < count; i++)
            if (const auto found = peer_of_.find(events[i].data.fd); found != peer_of_.end())
                hear(found->second);
        const auto now = CLOCK_T::now();
        if (now >= next_tick) {
            tick(now);
            next_tick = now + std::chrono::milliseconds(TICK_MS);
        }
        if (now >= next_second) {
            each_second();
            next_second = now + 1s;
        }
    }
}

void CROWD_T::report() const {
    printf("\n%-30s %10s %13s %9s %9s\n", "peers", "number", "ended by it", "p50 s", "most s");
    for (size_t kind = 0; kind < KINDS.size(); kind++)
        printf("%-30s %10zu %13llu %9.3f %9.3f\n", KINDS[kind].name, begun_[kind],
               static_cast<unsigned long long>(times_[kind].count()), times_[kind].ms_of(500) / 1000,
               times_[kind].longest_ms() / 1000);
}

} // namespace bench
