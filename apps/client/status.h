// What a running status says.
#ifndef TAVISYS_CLIENT_STATUS_H
#define TAVISYS_CLIENT_STATUS_H

#include <string>

#include "codec_sysrun_status_info.h"

namespace client {

// The phase as a number: what came from the network may be none of the enumeration's values.
INT32_T phase_of(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);

std::string phase_name(INT32_T phase);

// One line that says how far the scan is.
std::string progress_line(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status);

} // namespace client

#endif
