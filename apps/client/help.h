// The help texts' layout: headings of our own, columns by display width.
#ifndef TAVISYS_CLIENT_HELP_H
#define TAVISYS_CLIENT_HELP_H

#include <CLI/CLI.hpp>

namespace client {

class HELP_FORMATTER_T : public CLI::Formatter {
public:
    HELP_FORMATTER_T();
    std::string make_usage(const CLI::App *app, std::string name) const override;
    std::string make_option(const CLI::Option *option, bool is_positional) const override;
    std::string make_subcommand(const CLI::App *command) const override;
};

} // namespace client

#endif
