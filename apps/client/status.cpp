#include "status.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "messages.h"
#include "text.h"

namespace client {

INT32_T phase_of(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    return static_cast<INT32_T>(status.status); // a server may send phases that this client doesn't know
}

std::string phase_name(INT32_T phase) {
    if (phase < 0 || phase >= static_cast<INT32_T>(std::size(messages::PHASES)))
        return fill(messages::PHASE_UNKNOWN, {std::to_string(phase)});
    return messages::PHASES[phase];
}

std::string progress_line(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    const INT32_T phase = phase_of(status);
    std::string name = phase_name(phase);
    const std::string total = std::to_string(status.total_movies);
    const std::string failed = std::to_string(status.parseerr_movies);
    if (phase == SYSRUN_STATUS_WAITING)
        return fill(messages::PROGRESS_WAITING, {name, total});
    if (phase >= SYSRUN_STATUS_READY)
        return fill(messages::PROGRESS_DONE, {name, std::to_string(status.parseok_movies), failed});
    if (phase != SYSRUN_STATUS_PARSING)
        return name;
    const std::int64_t done = std::int64_t{status.parseok_movies} + status.parseerr_movies;
    const std::int64_t percent = status.total_movies > 0 ? done * 100 / status.total_movies : 0;
    return fill(messages::PROGRESS_PARSING,
                {name, std::to_string(done), total, std::to_string(percent), failed});
}

} // namespace client
