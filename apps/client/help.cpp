#include "help.h"

#include <algorithm>

#include "messages.h"
#include "text.h"

namespace client {

namespace {

constexpr int TERM_WIDTH = 26; // of the column of options and commands

std::string help_line(const std::string &term, const std::string &description) {
    const int padding = std::max(TERM_WIDTH - display_width(term), 1);
    return "  " + term + std::string(static_cast<std::size_t>(padding), ' ') + description + "\n";
}

} // namespace

HELP_FORMATTER_T::HELP_FORMATTER_T() {
    label("Positionals", messages::HELP_ARGUMENTS);
}

std::string HELP_FORMATTER_T::make_usage(const CLI::App *app, std::string name) const {
    std::string usage = std::string(messages::HELP_USAGE) + ": " + name;
    if (app->get_parent() == nullptr)
        return usage + " " + messages::HELP_COMMANDS.get() + " [" + messages::HELP_OPTIONS.get() + "]\n";
    for (const CLI::Option *option : app->get_options()) {
        if (!option->get_positional())
            continue;
        const std::string argument = option->get_name(true);
        usage += option->get_required() ? " " + argument : " [" + argument + "]";
    }
    return usage + " [" + messages::HELP_OPTIONS.get() + "]\n";
}

std::string HELP_FORMATTER_T::make_option(const CLI::Option *option, bool is_positional) const {
    std::string term = option->get_name(is_positional, !is_positional);
    if (!is_positional && !option->get_option_text().empty())
        term += " " + option->get_option_text();
    std::string description = option->get_description();
    if (!option->get_default_str().empty())
        description += fill(messages::HELP_DEFAULT, {option->get_default_str()});
    return help_line(term, description);
}

std::string HELP_FORMATTER_T::make_subcommand(const CLI::App *command) const {
    return help_line(command->get_name(), command->get_description());
}

} // namespace client
