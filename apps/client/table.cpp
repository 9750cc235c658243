#include "table.h"

#include <algorithm>
#include <numeric>

#include "messages.h"
#include "text.h"

namespace client {

namespace {

constexpr int GAP = 2;        // blanks between two columns
constexpr int MIN_VALUE = 16; // a value gets so many columns, even where its label is too long for that

std::string shown(const std::string &cell) {
    return cell.empty() ? messages::NOTHING : printable(cell);
}

void append_blanks(std::string &line, int count) {
    line.append(static_cast<std::size_t>(std::max(count, 0)), ' ');
}

// The widest columns give way first: one cap for all of them, but none below its floor.
void shrink(std::vector<int> &widths, const std::vector<int> &floors, int width) {
    const int gaps = GAP * (static_cast<int>(widths.size()) - 1);
    int total = std::accumulate(widths.begin(), widths.end(), gaps);
    for (int cap = *std::max_element(widths.begin(), widths.end()); total > width && cap > NARROWEST; cap--) {
        for (std::size_t i = 0; i < widths.size(); i++) {
            if (widths[i] == cap && floors[i] != UNCUT && widths[i] > floors[i]) {
                widths[i]--;
                total--;
            }
        }
    }
}

// Columns keep the width that they ask for as long as the others can give way; then all do.
void fit(std::vector<int> &widths, const std::vector<COLUMN_T> &columns, int width) {
    std::vector<int> floors(columns.size());
    std::transform(columns.begin(), columns.end(), floors.begin(),
                   [](const COLUMN_T &column) { return column.narrowest; });
    shrink(widths, floors, width);
    for (int &floor : floors)
        floor = std::min(floor, NARROWEST);
    shrink(widths, floors, width);
}

// Styles come last: they have no width.
std::string lay_out_row(const std::vector<std::string> &cells, const std::vector<COLUMN_T> &columns,
                        const std::vector<int> &widths, bool heading) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); i++) {
        const std::string cell = columns[i].narrowest == UNCUT ? cells[i] : cut_to_width(cells[i], widths[i]);
        const int padding = widths[i] - display_width(cell);
        if (columns[i].align == ALIGN_T::RIGHT)
            append_blanks(line, padding);
        line += paint(heading ? STYLE_T::HEADING : columns[i].style, cell);
        if (i + 1 < cells.size()) // no blanks at the end of a line
            append_blanks(line, GAP + (columns[i].align == ALIGN_T::LEFT ? padding : 0));
    }
    return line + "\n";
}

} // namespace

FIELD_T failures_field(const std::string &label, std::int64_t count) {
    return {label, std::to_string(count), count == 0 ? STYLE_T::PLAIN : STYLE_T::FAILURE};
}

std::string lay_out_table(const TABLE_T &table, int width) {
    std::vector<std::vector<std::string>> lines(1);
    for (const COLUMN_T &column : table.columns)
        lines[0].push_back(shown(column.heading));
    for (const std::vector<std::string> &row : table.rows) {
        lines.emplace_back(row.size());
        std::transform(row.begin(), row.end(), lines.back().begin(), shown);
    }
    std::vector<int> widths(table.columns.size(), 0);
    for (const std::vector<std::string> &line : lines) {
        for (std::size_t i = 0; i < line.size(); i++)
            widths[i] = std::max(widths[i], display_width(line[i]));
    }
    if (width != UNLIMITED)
        fit(widths, table.columns, width);
    std::string result;
    for (const std::vector<std::string> &line : lines)
        result += lay_out_row(line, table.columns, widths, &line == &lines.front());
    return result;
}

std::string lay_out_fields(const std::vector<FIELD_T> &fields, int width) {
    int indent = 0;
    for (const FIELD_T &field : fields)
        indent = std::max(indent, display_width(printable(field.label)) + GAP);
    std::string result;
    for (const FIELD_T &field : fields) {
        const std::string value = shown(field.value);
        const std::string label = printable(field.label);
        const int room = width == UNLIMITED ? display_width(value) : std::max(width - indent, MIN_VALUE);
        int padding = indent - display_width(label);
        result += paint(STYLE_T::HEADING, label);
        for (const std::string &line : wrap_to_width(value, room)) {
            append_blanks(result, padding);
            result += paint(field.style, line) + "\n";
            padding = indent;
        }
    }
    return result;
}

} // namespace client
