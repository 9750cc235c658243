// Tells on standard error how far a scan is: a bar on a terminal, plain lines otherwise.
#ifndef TAVISYS_SERVER_PROGRESS_H
#define TAVISYS_SERVER_PROGRESS_H

#include <cstdint>

#include "codec_sysrun_status_info.h"

namespace server {

class PROGRESS_T {
public:
    PROGRESS_T();

    // Shows where the scan stands; draws only what has changed, and not more often than is readable.
    void show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);
    // Clears the bar, so that a log line finds an empty line.
    void hide();

private:
    void draw(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);

    bool terminal_;
    bool drawn_ = false;
    int percent_ = -1;
    int64_t shown_at_ms_ = 0;
};

} // namespace server

#endif
