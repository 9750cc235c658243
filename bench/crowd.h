// Peers that misbehave, many at a time: what each kind sends, how it goes on, and how it has to end.
#ifndef TAVISYS_BENCH_CROWD_H
#define TAVISYS_BENCH_CROWD_H

#include <functional>
#include <list>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "record.h"

namespace bench {

// A whole request of the TRLV channel.
std::string request_of(int type, const std::string &body);
// Sends the bytes and returns all that comes until the other side closes.
std::string exchange(const std::string &request);

class CROWD_T {
public:
    explicit CROWD_T(FAILURES_T *failures);
    CROWD_T(const CROWD_T &) = delete;
    CROWD_T &operator=(const CROWD_T &) = delete;
    ~CROWD_T();

    // Makes so many connections, at most `at_once` of them at a time, and sees each to its end. Calls
    // each_second() meanwhile.
    void run(size_t connections, size_t at_once, const std::function<void()> &each_second);
    // How many there were of each kind, and how long the server took to end them.
    void report() const;

private:
    enum class NEXT_T { WAIT, TRICKLE, RESET, HALF_CLOSE, NEVER_READ, SIP };
    enum class END_T { CLOSED, ANSWERED, ANY };
    struct PLAN_T { // for one connection
        std::string bytes;
        NEXT_T next = NEXT_T::WAIT;
        END_T end = END_T::CLOSED;
        const std::string *reply = nullptr; // for an end with an answer
    };
    struct KIND_T {
        const char *name;
        unsigned share; // of a thousand
        PLAN_T (CROWD_T::*plan)();
    };
    struct PEER_T {
        int sock;
        size_t kind;
        PLAN_T plan;
        CLOCK_T::time_point begun;
        size_t sent;
        std::string received;
    };
    using PEERS_T = std::list<PEER_T>;

    static const std::vector<KIND_T> KINDS;

    PLAN_T silent();
    PLAN_T half_head();
    PLAN_T head_alone();
    PLAN_T trickling();
    PLAN_T reset();
    PLAN_T half_closed();
    PLAN_T negative_length();
    PLAN_T huge_length();
    PLAN_T empty_promise();
    PLAN_T unknown_type();
    PLAN_T wrong_length();
    PLAN_T random_bytes();
    PLAN_T two_requests();
    PLAN_T never_reading();
    PLAN_T sipping();
    PLAN_T honest();

    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random_); }
    size_t some_kind();
    void begin();
    void tick(CLOCK_T::time_point now);
    void hear(PEERS_T::iterator peer);
    void end(PEERS_T::iterator peer, bool by_server);

    FAILURES_T *failures_;
    std::minstd_rand random_;
    const std::string page_;       // a request
    const std::string large_page_; // one whose reply is larger than the buffers of a socket
    const std::string unknown_;
    const std::string wrong_;
    const std::string page_reply_;
    const std::string unknown_reply_;
    const std::string wrong_reply_;
    std::vector<TIMES_T> times_; // by kind, of those that the server ended
    std::vector<size_t> begun_;  // by kind
    PEERS_T peers_;
    std::unordered_map<int, PEERS_T::iterator> peer_of_; // by socket
    int events_;
};

} // namespace bench

#endif
