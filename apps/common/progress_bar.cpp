#include "common/progress_bar.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace common {

namespace {

constexpr int BAR_WIDTH = 40;
constexpr int64_t REDRAW_MS = 100;
constexpr int64_t PLAIN_LINE_MS = 2000;

int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

PROGRESS_BAR_T::PROGRESS_BAR_T(const char *title, ELSEWHERE_T elsewhere, const char *failed)
    : title_(title), failed_(failed), terminal_(isatty(STDERR_FILENO) == 1),
      silent_(!terminal_ && elsewhere == ELSEWHERE_T::NOTHING) {}

void PROGRESS_BAR_T::show(const PROGRESS_T &progress) {
    if (silent_ || progress.total < 1)
        return;
    const int percent = static_cast<int>(int64_t{progress.done} * 100 / progress.total);
    const bool finished = progress.done == progress.total;
    const int64_t now = now_ms();
    if (!finished && (percent == percent_ || now - shown_at_ms_ < (terminal_ ? REDRAW_MS : PLAIN_LINE_MS)))
        return;
    percent_ = percent;
    shown_at_ms_ = now;
    draw(progress);
    if (finished) {
        if (terminal_)
            fputc('\n', stderr);
        drawn_ = false;
        percent_ = -1;
    }
}

void PROGRESS_BAR_T::draw(const PROGRESS_T &progress) {
    if (!terminal_) {
        fprintf(stderr, "%s: %d/%d (成功%d, 失败%d)\n", title_, progress.done, progress.total,
                progress.succeeded, progress.failed);
        return;
    }
    const int filled = percent_ * BAR_WIDTH / 100;
    const std::string bar = std::string(static_cast<size_t>(filled), '#') +
                            std::string(static_cast<size_t>(BAR_WIDTH - filled), '.');
    fprintf(stderr, "\r\033[K%s [%s] %3d%% %d/%d %s%d", title_, bar.c_str(), percent_, progress.done,
            progress.total, failed_, progress.failed);
    drawn_ = true;
}

void PROGRESS_BAR_T::hide() {
    if (drawn_)
        fputs("\r\033[K", stderr);
    drawn_ = false;
}

} // namespace common
