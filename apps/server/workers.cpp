#include "workers.h"

#include <sys/socket.h>
#include <system_error>

#include "log.h"
#include "metrics.h"
#include "system_error_text.h"

namespace server {

namespace {

using namespace std::chrono_literals;

constexpr auto HELD_TOO_LONG = 100ms; // from here on a stand-in may take the thread's place
constexpr auto MAY_BE_BROKEN = 500ms; // from here on a connection may be broken for others' sake
constexpr auto IDLE = 2s;             // a stand-in that has had nothing to do for so long ends
constexpr size_t MOST_STAND_INS = 64;

} // namespace

WORKERS_T::WORKERS_T(unsigned threads, TRLV_MESSAGE_CB handler) : wanted_(threads), handler_(handler) {}

WORKERS_T::~WORKERS_T() {
    std::unique_lock lock(mutex_);
    stop_ = true;
    wake_.notify_all();
    ended_.wait(lock, [this] { return threads_ == 0; });
}

bool WORKERS_T::start() {
    const std::lock_guard lock(mutex_);
    while (threads_ < wanted_ && start_thread()) {
    }
    return threads_ > 0;
}

// With the lock held. Threads are detached: the destructor waits until the last has ended.
bool WORKERS_T::start_thread() {
    try {
        std::thread([this] { run(); }).detach();
    } catch (const std::system_error &error) {
        SERVER_WARN("无法启动更多线程(现有%zu个): %s", threads_, system_error_text(error.code().value()));
        return false;
    }
    threads_++;
    return true;
}

void WORKERS_T::answer(int sock) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(sock);
    wake_.notify_one();
}

// Waits for a connection. False when the thread is to end.
bool WORKERS_T::take(int *sock, std::list<HELD_T>::iterator *held) {
    std::unique_lock lock(mutex_);
    const auto due = [this] { return !waiting_.empty() || stop_; };
    while (!due()) {
        if (threads_ <= wanted_)
            wake_.wait(lock, due);
        else if (!wake_.wait_for(lock, IDLE, due) && threads_ > wanted_)
            break;
    }
    if (waiting_.empty()) {
        threads_--;
        ended_.notify_all();
        return false;
    }
    *sock = waiting_.front();
    waiting_.pop_front();
    *held = held_.insert(held_.end(), {*sock, CLOCK_T::now(), false});
    return true;
}

void WORKERS_T::run() {
    int sock = -1;
    std::list<HELD_T>::iterator held;
    while (take(&sock, &held)) {
        const INT32_T sent = deal_data_from_tavisys_msg_channel(sock, handler_);
        if (sent < 0)
            metrics.broken.add();
        else
            metrics.sent_bytes.add(static_cast<uint64_t>(sent));
        {
            // Before the close: its number may be another connection's the moment it is closed.
            const std::lock_guard lock(mutex_);
            held_.erase(held);
        }
        close_tavisys_msg_channel(sock);
    }
}

void WORKERS_T::break_connection(HELD_T *held) {
    if (!held->broken)
        shutdown(held->sock, SHUT_RDWR);
    held->broken = true;
}

void WORKERS_T::relieve() {
    const std::lock_guard lock(mutex_);
    const auto now = CLOCK_T::now();
    size_t needed = waiting_.size();
    size_t held_long = 0;
    for (const HELD_T &held : held_)
        held_long += now - held.since >= HELD_TOO_LONG ? 1 : 0;
    const size_t most = wanted_ + std::min(held_long, MOST_STAND_INS);
    while (needed > 0 && threads_ < most && start_thread())
        needed--;
    if (threads_ < wanted_ + MOST_STAND_INS)
        return;
    for (HELD_T &held : held_) {
        if (needed == 0 || now - held.since < MAY_BE_BROKEN)
            return;
        break_connection(&held);
        needed--;
    }
}

bool WORKERS_T::busy() const {
    return connections() > 0;
}

size_t WORKERS_T::connections() const {
    const std::lock_guard lock(mutex_);
    return waiting_.size() + held_.size();
}

void WORKERS_T::break_all() {
    const std::lock_guard lock(mutex_);
    for (HELD_T &held : held_)
        break_connection(&held);
    for (const int sock : waiting_)
        shutdown(sock, SHUT_RDWR);
}

} // namespace server
