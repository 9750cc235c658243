// Tells on standard error how far a task is: a bar on a terminal.
#ifndef TAVISYS_COMMON_PROGRESS_BAR_H
#define TAVISYS_COMMON_PROGRESS_BAR_H

#include <cstdint>

namespace common {

struct PROGRESS_T {
    int done;
    int total;
    int succeeded;
    int failed;
};

// What stands for the bar where standard error is no terminal.
enum class ELSEWHERE_T { PLAIN_LINES, NOTHING };

class PROGRESS_BAR_T {
public:
    // The title says what is being done, the word stands before the number of failures; they are kept as the
    // pointers that they are.
    PROGRESS_BAR_T(const char *title, ELSEWHERE_T elsewhere, const char *failed = "失败");

    // Draws only what has changed, and not more often than is readable; the end is always drawn.
    void show(const PROGRESS_T &progress);
    // Clears the bar, so that another line finds an empty one.
    void hide();

private:
    void draw(const PROGRESS_T &progress);

    const char *title_;
    const char *failed_;
    bool terminal_;
    bool silent_;
    bool drawn_ = false;
    int percent_ = -1;
    int64_t shown_at_ms_ = 0;
};

} // namespace common

#endif
