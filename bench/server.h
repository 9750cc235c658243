// A tavisys-server in a process of its own, as the load generators start and watch it.
#ifndef TAVISYS_BENCH_SERVER_H
#define TAVISYS_BENCH_SERVER_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace bench {

class SERVER_T {
public:
    // `files`: how many descriptors it may have, 0 for as many as this process.
    explicit SERVER_T(std::vector<std::string> arguments, rlim_t files = 0);
    SERVER_T(const SERVER_T &) = delete;
    SERVER_T &operator=(const SERVER_T &) = delete;
    ~SERVER_T();

    // Waits until so many scans have ended. False when the server ended before.
    bool wait_for_scans(size_t times);
    size_t scans() const;
    void signal(int number) const;
    // From now on.
    void limit_files(rlim_t files) const;
    // Asks it to end. Its exit status, or 128 and the signal that ended it.
    int end();
    long resident_kib() const;
    size_t open_files() const;
    // Waits until it has no more than so many open, at most the given time; returns how many it has.
    size_t settle(size_t files, std::chrono::seconds most) const;
    std::string last_words() const;

private:
    void read_log(int file);

    pid_t process_ = -1;
    int status_ = -1;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string log_; // its end
    size_t scans_ = 0;
    bool ended_ = false;
    std::thread reader_;
};

} // namespace bench

#endif
