// Where the scanner leaves the current snapshot and its progress, and the requests find them.
#ifndef TAVISYS_SERVER_STORE_H
#define TAVISYS_SERVER_STORE_H

#include <memory>
#include <mutex>

#include "catalogue.h"
#include "codec_sysrun_status_info.h"

namespace server {

using SNAPSHOT_PTR = std::shared_ptr<const CATALOGUE_T>;

class STORE_T {
public:
    SNAPSHOT_PTR snapshot() const {
        const std::lock_guard lock(mutex_);
        return snapshot_;
    }
    void publish(SNAPSHOT_PTR snapshot) {
        const std::lock_guard lock(mutex_);
        snapshot_.swap(snapshot); // the old one is freed behind the lock, by its last reader
    }

    TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T status() const {
        const std::lock_guard lock(mutex_);
        return status_;
    }
    void begin(TAVISYS_SYSTEM_RUNNING_STATUS_E phase, INT32_T total) {
        const std::lock_guard lock(mutex_);
        status_ = {phase, total, 0, 0, total};
    }
    void enter(TAVISYS_SYSTEM_RUNNING_STATUS_E phase) {
        const std::lock_guard lock(mutex_);
        status_.status = phase;
    }
    void count(size_t parsed, size_t failed) {
        const std::lock_guard lock(mutex_);
        status_.parseok_movies += static_cast<INT32_T>(parsed);
        status_.parseerr_movies += static_cast<INT32_T>(failed);
        status_.left_movies -= static_cast<INT32_T>(parsed + failed);
    }
    // A movie that parsed but was left out after all.
    void recount_as_failed() {
        const std::lock_guard lock(mutex_);
        status_.parseok_movies--;
        status_.parseerr_movies++;
    }

private:
    mutable std::mutex mutex_;
    SNAPSHOT_PTR snapshot_ =
        std::make_shared<const CATALOGUE_T>(std::vector<MOVIE_PTR>{}, std::span<const DISK_T>{});
    TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T status_{};
};

} // namespace server

#endif
