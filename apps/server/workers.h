// The threads that answer requests. Each takes a connection whose request has arrived, deals with it and
// closes it.
//
// A peer that doesn't take its reply holds its thread until the channel gives up on it, some seconds
// later. So that nobody else notices, relieve() looks after the threads: where connections wait while
// threads are held, it starts stand-ins, and once there are enough of those it breaks the connections
// that have been held longest.
#ifndef TAVISYS_SERVER_WORKERS_H
#define TAVISYS_SERVER_WORKERS_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

#include "tavisys_comm.h"

namespace server {

class WORKERS_T {
public:
    using CLOCK_T = std::chrono::steady_clock;

    WORKERS_T(unsigned threads, TRLV_MESSAGE_CB handler);
    WORKERS_T(const WORKERS_T &) = delete;
    WORKERS_T &operator=(const WORKERS_T &) = delete;
    ~WORKERS_T();

    // Starts the threads. False when not one could be started.
    bool start();
    // Hands over a connection, which is closed once it has been answered.
    void answer(int sock);
    // To be called every now and then; see above.
    void relieve();
    // Whether connections wait or are being answered.
    bool busy() const;
    // How many do.
    size_t connections() const;
    // Breaks every connection that is being answered or waits for it.
    void break_all();

private:
    // A connection that a thread is answering.
    struct HELD_T {
        int sock;
        CLOCK_T::time_point since;
        bool broken;
    };

    void run();
    bool start_thread();
    bool take(int *sock, std::list<HELD_T>::iterator *held);
    static void break_connection(HELD_T *held);

    const size_t wanted_;
    const TRLV_MESSAGE_CB handler_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable ended_;
    std::deque<int> waiting_;
    std::list<HELD_T> held_; // oldest first
    size_t threads_ = 0;
    bool stop_ = false;
};

} // namespace server

#endif
