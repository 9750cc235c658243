// Colors, sparingly: what is looked for and what went wrong. One setting for the whole process.
#ifndef TAVISYS_CLIENT_STYLE_H
#define TAVISYS_CLIENT_STYLE_H

#include <string>
#include <string_view>

namespace client {

enum class STYLE_T {
    PLAIN,
    HEADING, // of a column, or what stands in front of a value
    MARKS,   // plain, but 3D and 4K stand out
    FAILURE
};

// Whether standard output and standard error get colors; without a call neither does.
void use_colors(bool on_output, bool on_errors);

// The text for standard output, which is printable and has got its width already.
std::string paint(STYLE_T style, std::string_view text);

// A failure for standard error.
std::string paint_error(std::string_view text);

} // namespace client

#endif
