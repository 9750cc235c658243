#include "progress.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace server {

namespace {

constexpr int BAR_WIDTH = 40;
constexpr int64_t REDRAW_MS = 100;
constexpr int64_t PLAIN_LINE_MS = 2000;

int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

PROGRESS_T::PROGRESS_T() : terminal_(isatty(STDERR_FILENO) == 1) {}

void PROGRESS_T::show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    if (status.status != SYSRUN_STATUS_PARSING || status.total_movies < 1)
        return;
    const int64_t done = int64_t{status.total_movies} - status.left_movies;
    const int percent = static_cast<int>(done * 100 / status.total_movies);
    const bool finished = status.left_movies == 0;
    const int64_t now = now_ms();
    if (!finished && (percent == percent_ || now - shown_at_ms_ < (terminal_ ? REDRAW_MS : PLAIN_LINE_MS)))
        return;
    percent_ = percent;
    shown_at_ms_ = now;
    draw(status);
    if (finished) {
        if (terminal_)
            fputc('\n', stderr);
        drawn_ = false;
        percent_ = -1;
    }
}

void PROGRESS_T::draw(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    const int done = status.total_movies - status.left_movies;
    if (!terminal_) {
        fprintf(stderr, "扫描影片: %d/%d (成功%d, 失败%d)\n", done, status.total_movies,
                status.parseok_movies, status.parseerr_movies);
        return;
    }
    const int filled = percent_ * BAR_WIDTH / 100;
    const std::string bar = std::string(static_cast<size_t>(filled), '#') +
                            std::string(static_cast<size_t>(BAR_WIDTH - filled), '.');
    fprintf(stderr, "\r\033[K扫描影片 [%s] %3d%% %d/%d 失败%d", bar.c_str(), percent_, done,
            status.total_movies, status.parseerr_movies);
    drawn_ = true;
}

void PROGRESS_T::hide() {
    if (drawn_)
        fputs("\r\033[K", stderr);
    drawn_ = false;
}

} // namespace server
