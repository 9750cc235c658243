// The server's front door: accepts the connections of those who may ask and hands each to the workers once
// its request has arrived whole, so that a peer that is silent, trickles or stops half-way holds no thread at
// all. Such a peer is let go 2 seconds after it was accepted. Signals arrive here, too.
#ifndef TAVISYS_SERVER_INTAKE_H
#define TAVISYS_SERVER_INTAKE_H

#include <chrono>
#include <functional>
#include <list>
#include <unordered_map>

#include "access.h"
#include "workers.h"

namespace server {

// What run() calls.
struct INTAKE_CALLS_T {
    std::function<void()> reload;            // for each SIGHUP
    std::function<void()> stopping;          // once it has been told to end
    std::function<void()> tick;              // as often as `tick_period` says
    std::chrono::milliseconds tick_period{}; // 0 for never
};

class INTAKE_T {
public:
    INTAKE_T(int listener, ACCESS_T access, WORKERS_T *workers, INTAKE_CALLS_T calls);
    INTAKE_T(const INTAKE_T &) = delete;
    INTAKE_T &operator=(const INTAKE_T &) = delete;
    ~INTAKE_T();

    // False, with errno set, when the system lacks what run() needs.
    bool open();
    // Serves until SIGTERM or SIGINT, then answers what has been accepted and returns within a second.
    void run();

private:
    using CLOCK_T = std::chrono::steady_clock;

    // A connection whose request hasn't arrived yet.
    struct PENDING_T {
        int sock;
        CLOCK_T::time_point deadline;
    };
    using PENDING_LIST_T = std::list<PENDING_T>;
    enum class ARRIVAL_T { WHOLE, PARTIAL, BROKEN };

    void wait_and_handle(int timeout_ms);
    int tick_if_due();
    void accept_connections(size_t most);
    void pause_accepting();
    void resume_accepting(CLOCK_T::time_point now);
    bool make_room();
    bool may_ask(int sock);
    void admit(int sock);
    void look_at(int sock, bool ended);
    static ARRIVAL_T arrival_of(int sock);
    static void drop(int sock);
    void forget(int sock);
    void drop_expired(CLOCK_T::time_point now);
    void read_signals();
    void finish();
    bool watch(int file, bool edge_triggered) const;

    int listener_;
    const ACCESS_T access_;
    REFUSALS_T refusals_;
    WORKERS_T *workers_;
    const INTAKE_CALLS_T calls_;
    CLOCK_T::time_point next_tick_ = CLOCK_T::now();
    size_t most_connections_ = 0;
    int events_ = -1;  // epoll
    int signals_ = -1; // signalfd
    bool stop_ = false;
    bool paused_ = false; // out of descriptors, until
    CLOCK_T::time_point accept_again_{};

    PENDING_LIST_T pending_; // oldest first: all wait equally long
    std::unordered_map<int, PENDING_LIST_T::iterator> pending_by_sock_;
};

} // namespace server

#endif
