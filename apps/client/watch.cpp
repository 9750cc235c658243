#include "watch.h"

#include <array>
#include <chrono>
#include <ctime>
#include <string_view>

#include "error.h"
#include "messages.h"
#include "style.h"
#include "table.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

std::int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string time_of_day() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, sizeof "23:59:59"> text{};
    std::strftime(text.data(), text.size(), "%H:%M:%S", &local);
    return text.data();
}

// "0.5" for 500.
std::string seconds(int milliseconds) {
    std::string text =
        std::to_string(milliseconds / 1000) + "." + std::to_string(milliseconds % 1000 + 1000).substr(1);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// Line breaks and what indents the lines are all that a document has outside of its strings, and none inside.
std::string in_one_line(std::string_view document) {
    std::string line;
    bool indents = false;
    for (const char c : document) {
        indents = c == '\n' || (indents && c == ' ');
        if (!indents)
            line += c;
    }
    return line + "\n";
}

// The lines as a terminal of so many rows shows them from its first one: each in a row of its own, the rest
// of the screen empty.
std::string on_screen(std::string_view lines, int rows) {
    constexpr std::string_view HOME_WITHOUT_WRAPPING = "\033[H\033[?7l";
    constexpr std::string_view NEXT_ROW = "\033[K\n";
    constexpr std::string_view CLEAR_THE_REST = "\033[J\033[?7h";
    std::string screen{HOME_WITHOUT_WRAPPING};
    for (int row = 1; row < rows && !lines.empty(); row++) { // the last one is for the cursor
        const std::size_t end = lines.find('\n');
        screen.append(lines.substr(0, end)).append(NEXT_ROW);
        lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    }
    return screen.append(CLEAR_THE_REST);
}

class VIEW_T {
public:
    explicit VIEW_T(const ARGUMENTS_T &arguments)
        : json_(arguments.json), interval_(arguments.watch), rows_(json_ ? NO_ROWS : terminal_rows()) {}

    void show(const std::string &answer) {
        away_ = false;
        answer_ = answer;
        const std::string heading = fill(messages::WATCHING, {time_of_day(), seconds(interval_)});
        if (json_)
            write_output(in_one_line(answer));
        else if (rows_ != NO_ROWS)
            draw(paint(STYLE_T::HEADING, heading));
        else
            write_output((first_ ? "" : "\n") + heading + "\n\n" + answer);
        first_ = false;
    }

    // The last answer stays below.
    void show_absence(const std::string &message) {
        if (rows_ != NO_ROWS)
            draw(paint(STYLE_T::FAILURE, time_of_day() + "  " + message));
        else if (!away_)
            write_error(paint_error(message));
        away_ = true;
    }

private:
    void draw(const std::string &heading) {
        rows_ = terminal_rows(); // its user may have resized it
        constexpr const char *CLEAR = "\033[2J";
        write_output((first_ ? CLEAR : "") + on_screen(heading + "\n\n" + answer_, rows_));
    }

    bool json_;
    int interval_;
    int rows_;
    bool first_ = true;
    bool away_ = false;
    std::string answer_;
};

} // namespace

void PATIENCE_T::answered() {
    has_answered_ = true;
    away_since_ms_ = 0;
}

void PATIENCE_T::bear() {
    if (away_since_ms_ == 0)
        away_since_ms_ = now_ms();
    if (!has_answered_ || (longest_ms_ != FOR_EVER && now_ms() - away_since_ms_ >= longest_ms_))
        throw;
}

// An interrupt ends the program as usual while the server is asked; in between it isn't to break a drawing.
void watch(const PARSED_T &parsed) {
    VIEW_T view{parsed.arguments};
    PATIENCE_T patience{FOR_EVER};
    for (;;) {
        std::string answer;
        std::string absence;
        try {
            answer = parsed.command->run(parsed.arguments, terminal_width());
            patience.answered();
        } catch (const SERVER_AWAY_T &away) {
            patience.bear();
            absence = away.what();
        }
        const INTERRUPT_GUARD_T guard;
        if (absence.empty())
            view.show(answer);
        else
            view.show_absence(absence);
        INTERRUPT_GUARD_T::wait(parsed.arguments.watch);
    }
}

} // namespace client
