// Tables and labelled values, aligned by the width that they have on a terminal.
#ifndef TAVISYS_CLIENT_TABLE_H
#define TAVISYS_CLIENT_TABLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "style.h"

namespace client {

constexpr int UNLIMITED = 0; // a width: nothing is cut or wrapped
constexpr int UNCUT = 0;     // a column's narrowest width: its cells are always shown whole
constexpr int NARROWEST = 6; // what cutting leaves of a column at the least: two wide characters and "…"

enum class ALIGN_T { LEFT, RIGHT };

struct COLUMN_T {
    std::string heading;
    ALIGN_T align = ALIGN_T::LEFT;
    int narrowest = UNCUT;          // cut to this width before other columns give way further
    STYLE_T style = STYLE_T::PLAIN; // of the cells
};

// Cells may hold anything, they are made printable here; an empty one is shown as "-".
struct TABLE_T {
    std::vector<COLUMN_T> columns;
    std::vector<std::vector<std::string>> rows; // each as long as columns
};

struct FIELD_T {
    std::string label;
    std::string value;
    STYLE_T style = STYLE_T::PLAIN; // of the value
};

// Stands out unless it is zero.
FIELD_T failures_field(const std::string &label, std::int64_t count);

// The table, within so many columns of the terminal as far as cutting can achieve it.
std::string lay_out_table(const TABLE_T &table, int width);

// A line for each field, label first; a value that is too long for the width goes on below itself.
std::string lay_out_fields(const std::vector<FIELD_T> &fields, int width);

} // namespace client

#endif
