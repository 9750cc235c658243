#include "notify.h"

#include <cinttypes>
#include <systemd/sd-daemon.h>

namespace server {

namespace {

using namespace std::chrono_literals;

constexpr auto TELL_EVERY = 1s;                           // how far a scan is
constexpr std::chrono::microseconds TIME_TO_FIND = 10min; // documents, before there is anything to count
constexpr std::chrono::microseconds TIME_TO_GO_ON = 1min;

} // namespace

void NOTIFIER_T::scan_begun() {
    told_at_ = CLOCK_T::now();
    if (!ready_) {
        sd_notifyf(0, "STATUS=查找影片文档\nEXTEND_TIMEOUT_USEC=%" PRId64, int64_t{TIME_TO_FIND.count()});
        return;
    }
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(told_at_.time_since_epoch());
    sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%" PRId64 "\nSTATUS=重新查找影片文档", int64_t{now.count()});
}

void NOTIFIER_T::scan_progress(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    const auto now = CLOCK_T::now();
    if (now - told_at_ < TELL_EVERY)
        return;
    told_at_ = now;
    sd_notifyf(0, "STATUS=扫描影片: %d/%d, 未收入%d部\nEXTEND_TIMEOUT_USEC=%" PRId64,
               status.total_movies - status.left_movies, status.total_movies, status.parseerr_movies,
               int64_t{TIME_TO_GO_ON.count()});
}

void NOTIFIER_T::scan_ended(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, bool whole) {
    ready_ = true;
    if (whole)
        sd_notifyf(0, "READY=1\nSTATUS=提供影片%d部, 未收入%d部", status.parseok_movies,
                   status.parseerr_movies);
    else
        sd_notify(0, "READY=1\nSTATUS=内存不足, 扫描未完成");
}

void NOTIFIER_T::stopping() {
    sd_notify(0, "STOPPING=1\nSTATUS=正在结束");
}

std::chrono::milliseconds NOTIFIER_T::alive_every() {
    uint64_t limit = 0;
    if (sd_watchdog_enabled(0, &limit) <= 0)
        return 0ms;
    return std::max(1ms, std::chrono::milliseconds(limit / 1000 / 2));
}

void NOTIFIER_T::alive() {
    sd_notify(0, "WATCHDOG=1");
}

} // namespace server
