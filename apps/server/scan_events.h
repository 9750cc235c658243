// What a scan tells whoever wants to know. All of it is called by the scanner's own thread.
#ifndef TAVISYS_SERVER_SCAN_EVENTS_H
#define TAVISYS_SERVER_SCAN_EVENTS_H

#include <cstddef>
#include <functional>
#include <string>

#include "codec_sysrun_status_info.h"

namespace server {

struct SCAN_END_T {
    bool whole;              // false when memory was short: the catalogue before it goes on being served
    double seconds;          // that it took
    size_t folders_left_out; // in whole or in part
};

// Each of them may be empty.
struct SCAN_EVENTS_T {
    std::function<void()> begun;
    std::function<void(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &)> progress; // 20 times a second
    // A document or folder that can't be served, in place of a line in the log.
    std::function<void(const std::string &path, const char *reason)> left_out;
    std::function<void(const SCAN_END_T &)> ended;
};

} // namespace server

#endif
