// Tells on standard error how far a scan is: a bar on a terminal, plain lines otherwise.
#ifndef TAVISYS_SERVER_PROGRESS_H
#define TAVISYS_SERVER_PROGRESS_H

#include "codec_sysrun_status_info.h"
#include "common/progress_bar.h"

namespace server {

class PROGRESS_T {
public:
    // Shows where the scan stands.
    void show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);
    // Clears the bar, so that a log line finds an empty line.
    void hide() { bar_.hide(); }

private:
    common::PROGRESS_BAR_T bar_{"扫描影片", common::ELSEWHERE_T::PLAIN_LINES};
};

} // namespace server

#endif
