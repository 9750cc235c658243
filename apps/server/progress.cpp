#include "progress.h"

namespace server {

void PROGRESS_T::show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    if (status.status != SYSRUN_STATUS_PARSING)
        return;
    bar_.show({status.total_movies - status.left_movies, status.total_movies, status.parseok_movies,
               status.parseerr_movies});
}

} // namespace server
