// What the server tells the service manager that has started it, see sd_notify(3). Without one nothing
// happens.
#ifndef TAVISYS_SERVER_NOTIFY_H
#define TAVISYS_SERVER_NOTIFY_H

#include <chrono>

#include "scan_events.h"

namespace server {

// The server listens from its start on, but is ready when the first scan has ended: what is ordered after it
// shall find the whole catalogue, not a part that it can't tell from the whole. While the scan goes on the
// time that the manager waits is extended.
class NOTIFIER_T {
public:
    // Called by the scanner.
    void scan_begun();
    void scan_progress(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);
    void scan_ended(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, bool whole);

    static void stopping();
    // The manager's watchdog: alive() is to be called that often; 0 for never.
    static std::chrono::milliseconds alive_every();
    static void alive();

private:
    using CLOCK_T = std::chrono::steady_clock;
    bool ready_ = false; // has been
    CLOCK_T::time_point told_at_{};
};

} // namespace server

#endif
