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
    // The title says what is being done; it is kept as the pointer that it is.
    PROGRESS_BAR_T(const char *title, ELSEWHERE_T elsewhere);

    // Draws only what has changed, and not more often than is readable; the end is always drawn.
    void show(const PROGRESS_T &progress);
    // Clears the bar, so that another line finds an empty one.
    void hide();

private:
    void draw(const PROGRESS_T &progress);

    const char *title_;
    bool terminal_;
    bool silent_;
    bool drawn_ = false;
    int percent_ = -1;
    int64_t shown_at_ms_ = 0;
};

} // namespace common

#endif
