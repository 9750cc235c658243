#include "arguments.h"

#include <CLI/CLI.hpp>
#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>

#include "bodies.h"
#include "command.h"
#include "error.h"
#include "help.h"
#include "hex.h"
#include "messages.h"
#include "names.h"
#include "text.h"

namespace client {

namespace {

constexpr const char *PROGRAM_NAME = "tavisys";
constexpr INT32_T LARGEST = std::numeric_limits<INT32_T>::max();
constexpr INT32_T SMALLEST = std::numeric_limits<INT32_T>::min();
constexpr INT32_T LARGEST_PAGE_SIZE = 1000;
constexpr INT32_T LARGEST_PORT = 65535;

struct ORDER_T {
    const char *word;
    TP_ORDER_BY_E value;
};

constexpr ORDER_T ORDERS[] = {
    {"put", TP_ORDER_BY_PUT_TIME},
    {"publish", TP_ORDER_BY_PUBLISH_TIME},
    {"score", TP_ORDER_BY_SCORE},
    {"name", TP_ORDER_BY_NAME},
};

// Checks of a value: an empty text, or what is wrong with it.
auto is_in_range(INT32_T first, INT32_T last) {
    return [first, last](const std::string &value) -> std::string {
        INT32_T number = 0;
        const char *end = value.data() + value.size();
        const auto [stop, failure] = std::from_chars(value.data(), end, number);
        if (failure == std::errc{} && stop == end && number >= first && number <= last)
            return "";
        return fill(messages::NOT_IN_RANGE, {std::to_string(first), std::to_string(last), value});
    };
}

std::string in_a_row(const std::vector<std::string> &words) {
    std::string row;
    for (const std::string &word : words)
        row += (row.empty() ? "" : messages::NAME_SEPARATOR.get()) + word;
    return row;
}

auto is_one_of(const std::vector<std::string> &words) {
    return [words](const std::string &value) -> std::string {
        if (std::find(words.begin(), words.end(), value) != words.end())
            return "";
        return fill(messages::NOT_A_CHOICE, {in_a_row(words), value});
    };
}

// What is nothing but digits and dots is meant as an address.
std::string is_host(const std::string &value) {
    constexpr std::size_t LONGEST = 253; // bytes
    constexpr const char *ALLOWED = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._";
    in_addr address{};
    const bool is_name = value.size() <= LONGEST &&
                         value.find_first_not_of("0123456789.") != std::string::npos &&
                         value.find_first_not_of(ALLOWED) == std::string::npos && value.front() != '-';
    return is_name || inet_pton(AF_INET, value.c_str(), &address) == 1 ? ""
                                                                       : fill(messages::NOT_A_HOST, {value});
}

// Requests have room for so many bytes and a NUL.
std::string is_device_name(const std::string &value) {
    constexpr std::size_t LONGEST = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T::hddevname) - 1;
    if (!value.empty() && value.size() <= LONGEST)
        return "";
    return fill(messages::NOT_A_DEVICE_NAME, {std::to_string(LONGEST), value});
}

std::string is_folder_name(const std::string &value) {
    const bool leads_elsewhere = value == "." || value == ".." || value.find('/') != std::string::npos;
    return leads_elsewhere ? fill(messages::NOT_A_FOLDER_NAME, {value}) : "";
}

// The name is read back without the blanks around it, by programs that show it in one line.
std::string is_player_name(const std::string &value) {
    constexpr std::size_t LONGEST = 1023; // bytes
    if (value.size() > LONGEST)
        return fill(messages::NAME_TOO_LONG, {std::to_string(LONGEST)});
    if (value.starts_with(' ') || value.ends_with(' '))
        return messages::NAME_IN_BLANKS;
    for (std::string_view rest = value; !rest.empty();) {
        const CODE_POINT_T c = first_code_point(rest);
        const bool invalid = c.value == REPLACEMENT && !rest.starts_with("\uFFFD");
        if (invalid || is_control(c.value))
            return messages::NAME_NOT_PLAIN;
        rest.remove_prefix(c.size);
    }
    return "";
}

// See COMPLETION_SOURCE.
CLI::Option *completes_from(CLI::Option *option, const std::string &source) {
    return option->check([](const std::string &) { return std::string(); }, source, COMPLETION_SOURCE);
}

std::string lines_of(const std::vector<std::string> &choices) {
    std::string lines;
    for (const std::string &choice : choices)
        lines.append(choice).append("\n");
    return lines;
}

CLI::Option *takes_choice(CLI::Option *option, const std::vector<std::string> &choices) {
    return completes_from(option->check(is_one_of(choices)), lines_of(choices));
}

// The types of messages, as the command line calls them.
std::vector<std::string> message_words() {
    std::vector<std::string> words;
    for (const MESSAGE_T &message : all_messages())
        words.emplace_back(message.word);
    return words;
}

CLI::Option *add_argument(CLI::App &app, const TEXT_T &name, std::string &value, const TEXT_T &help) {
    return app.add_option(name, value, help)->required();
}

// Left to itself the parser takes a number behind a zero for an octal one.
CLI::Option *add_decimal(CLI::App &app, const std::string &name, INT32_T &value, const TEXT_T &help) {
    const auto without_zeros = [](std::string text) {
        const bool decimal = text.find_first_not_of("0123456789") == std::string::npos;
        return decimal ? text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1)) : text;
    };
    return app.add_option(name, value, help)->transform(without_zeros);
}

void add_number(CLI::App &app, const char *name, INT32_T &value, const TEXT_T &help, INT32_T last) {
    add_decimal(app, name, value, help)
        ->check(is_in_range(1, last))
        ->option_text(messages::VALUE_NUMBER)
        ->default_str(std::to_string(value));
}

void add_name(CLI::App &app, const ATTRIBUTE_T &attribute, std::string &value, const TEXT_T &help) {
    CLI::Option *option = app.add_option(std::string("--") + attribute.word, value, help);
    completes_from(option->option_text(messages::VALUE_NAME_OR_ID), attribute.word);
}

void add_category(CLI::App &app, ARGUMENTS_T &arguments) {
    completes_from(
        add_argument(app, messages::ARGUMENT_CATEGORY, arguments.category, messages::HELP_BY_CATEGORY),
        CATEGORY.word);
}

// Milliseconds of a text in seconds, if it is a sensible time between two looks.
std::optional<int> interval_of(const std::string &text) {
    constexpr double SHORTEST = 0.1;
    constexpr double LONGEST = 24 * 60 * 60;
    double seconds = 0;
    const char *end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (failure != std::errc{} || stop != end || !(seconds >= SHORTEST && seconds <= LONGEST))
        return std::nullopt;
    return static_cast<int>(seconds * 1000);
}

std::string is_interval(const std::string &value) {
    return interval_of(value).has_value() ? "" : fill(messages::NOT_AN_INTERVAL, {value});
}

void declare_interval(CLI::App &app, ARGUMENTS_T &arguments, const TEXT_T &help, const char *usual) {
    const auto take = [&arguments](const std::string &value) {
        arguments.watch = interval_of(value).value_or(0);
    };
    app.add_option_function<std::string>("--watch", take, help)
        ->check(is_interval)
        ->expected(0, 1)
        ->option_text("[" + std::string(messages::VALUE_SECONDS) + "]")
        ->default_str(usual);
}

void declare_host(CLI::App &app, ARGUMENTS_T &arguments) {
    CLI::Option *server = app.add_option("--server", arguments.server, messages::HELP_SERVER);
    completes_from(server->check(is_host)->option_text(messages::VALUE_HOST), SOURCE_HOSTS);
}

void declare_position(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_host(app, arguments);
    CLI::Option *disk = add_argument(app, messages::ARGUMENT_DISK, arguments.disk, messages::HELP_DISK);
    completes_from(disk->check(is_device_name), SOURCE_DISKS);
    CLI::Option *partition =
        add_argument(app, messages::ARGUMENT_PARTITION, arguments.partition, messages::HELP_PARTITION);
    completes_from(partition->check(is_device_name), SOURCE_PARTITIONS);
}

[[noreturn]] void fail_usage(const std::string &message, const CLI::App &app) {
    const bool in_command = app.get_parent() != nullptr;
    const std::string hint =
        in_command ? fill(messages::COMMAND_HINT, {app.get_name()}) : std::string(messages::USAGE_HINT);
    throw CLIENT_ERROR_T(EXIT_BAD_USAGE, message + "\n" + hint);
}

// The parser's own messages are English and begin with the name of what they are about, up to a blank or a
// colon (a flag's without its dashes); those of our own checks are whole.
std::string explain(const CLI::ParseError &error) {
    std::string message = error.what();
    const std::string subject = message.substr(0, message.find_first_of(" :"));
    if (error.get_name() == "ValidationError")
        return message.starts_with(": ") ? message.substr(2)
                                         : message; // an option that help doesn't list has no name
    if (error.get_name() == "RequiredError")
        return fill(messages::MISSING_ARGUMENT, {subject});
    if (subject.empty()) // --server without a value, where refuse_other_servers() has it
        return messages::ONLY_THIS_MACHINE;
    if (error.get_name() == "ArgumentMismatch")
        return fill(messages::BAD_OPTION_VALUE, {subject.starts_with("-") ? subject : "--" + subject});
    return messages::BAD_COMMAND_LINE;
}

void check_leftovers(const CLI::App &app) {
    std::vector<std::string> leftovers = app.remaining();
    std::erase(leftovers, "--"); // it only says that no options follow
    if (leftovers.empty())
        return;
    const bool option = leftovers.front().starts_with("-");
    const TEXT_T *message = option ? &messages::UNKNOWN_OPTION : &messages::EXTRA_ARGUMENT;
    if (!option && app.get_parent() == nullptr && app.get_subcommands().empty())
        message = &messages::UNKNOWN_COMMAND;
    fail_usage(fill(*message, {leftovers.front()}), app);
}

void declare_settings(CLI::App &app, ARGUMENTS_T &arguments) {
    CLI::Option *color = app.add_option("--color", arguments.color, messages::HELP_COLOR);
    takes_choice(color->option_text(messages::VALUE_WHEN), {"auto", "always", "never"})
        ->default_str(arguments.color);
    CLI::Option *language = app.add_option("--lang", arguments.language, messages::HELP_LANG);
    takes_choice(language->option_text(messages::VALUE_LANGUAGE), {"zh", "en"});
}

// The option is told apart from a misspelt one where it can't be had.
void refuse_other_servers(CLI::App &app, ARGUMENTS_T &arguments) {
    app.add_option("--server", arguments.server)
        ->check([](const std::string &) -> std::string { return messages::ONLY_THIS_MACHINE; })
        ->group("");
}

} // namespace

void declare_status(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_interval(app, arguments, messages::HELP_WATCH_STATUS, "0.25");
}

void declare_watch(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_interval(app, arguments, messages::HELP_WATCH, "2");
}

void declare_filters(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_watch(app, arguments);
    add_category(app, arguments);
    takes_choice(
        add_argument(app, messages::ARGUMENT_ATTRIBUTE, arguments.attribute, messages::HELP_ATTRIBUTE),
        {KIND.word, AREA.word, YEAR.word, DIMENSION.word});
}

void declare_movies(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_watch(app, arguments);
    std::vector<std::string> orders;
    std::transform(std::begin(ORDERS), std::end(ORDERS), std::back_inserter(orders),
                   [](const ORDER_T &order) { return order.word; });
    add_name(app, CATEGORY, arguments.category, messages::HELP_BY_CATEGORY);
    add_name(app, KIND, arguments.kind, messages::HELP_BY_KIND);
    add_name(app, AREA, arguments.area, messages::HELP_BY_AREA);
    add_name(app, YEAR, arguments.year, messages::HELP_BY_YEAR);
    add_name(app, DIMENSION, arguments.dimension, messages::HELP_BY_DIMENSION);
    add_number(app, "--page", arguments.page, messages::HELP_PAGE, LARGEST);
    add_number(app, "--size", arguments.size, messages::HELP_SIZE, LARGEST_PAGE_SIZE);
    CLI::Option *order = app.add_option("--order", arguments.order, messages::HELP_ORDER);
    takes_choice(order->option_text(messages::VALUE_ORDER), orders)->default_str(arguments.order);
}

void declare_movie(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_watch(app, arguments);
    add_category(app, arguments);
    add_decimal(app, messages::ARGUMENT_MOVIE_ID, arguments.movie, messages::HELP_MOVIE_ID)
        ->required()
        ->check(is_in_range(0, LARGEST));
}

void declare_name(CLI::App &app, ARGUMENTS_T &arguments) {
    takes_choice(app.add_option(messages::ARGUMENT_ACTION, arguments.action, messages::HELP_ACTION), {"set"});
    const CLI::Option *name =
        app.add_option(messages::ARGUMENT_PLAYER_NAME, arguments.player_name, messages::HELP_PLAYER_NAME)
            ->check(is_player_name);
    app.callback([name, &arguments] {
        if (!arguments.action.empty() && name->count() == 0)
            throw CLI::RequiredError(messages::ARGUMENT_PLAYER_NAME);
    });
}

void declare_disks(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_host(app, arguments);
    declare_watch(app, arguments);
}

void declare_count(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_position(app, arguments);
    declare_watch(app, arguments);
}

// The two names become folders as well.
void declare_fetch(CLI::App &app, ARGUMENTS_T &arguments) {
    declare_position(app, arguments);
    for (const TEXT_T &name : {messages::ARGUMENT_DISK, messages::ARGUMENT_PARTITION})
        app.get_option(name)->check(is_folder_name);
    CLI::Option *library = app.add_option("--out", arguments.library, messages::HELP_OUT);
    completes_from(library->option_text(messages::VALUE_FOLDER), SOURCE_FOLDERS)
        ->default_str(arguments.library);
}

void declare_decode(CLI::App &app, ARGUMENTS_T &arguments) {
    const std::vector<std::string> words = message_words();
    app.footer(fill(messages::HELP_TYPE_WORDS, {in_a_row(words)}));
    CLI::Option *type = add_argument(app, messages::ARGUMENT_TYPE, arguments.message, messages::HELP_TYPE);
    completes_from(type->check([words](const std::string &value) {
        return find_message(value) != nullptr ? "" : is_one_of(words)(value);
    }),
                   lines_of(words));
    completes_from(add_argument(app, messages::ARGUMENT_FILE, arguments.file, messages::HELP_BODY_FILE),
                   SOURCE_FILES);
    app.add_flag("--request", arguments.request, messages::HELP_REQUEST)->disable_flag_override();
    app.add_flag("--hex", arguments.hex, messages::HELP_HEX)->disable_flag_override();
}

void declare_raw(CLI::App &app, ARGUMENTS_T &arguments) {
    app.footer(fill(messages::HELP_TYPE_WORDS, {in_a_row(message_words())}));
    CLI::Option *type =
        add_argument(app, messages::ARGUMENT_TYPE, arguments.message, messages::HELP_ANY_TYPE);
    completes_from(type->check([](const std::string &value) {
        return find_message(value) != nullptr ? "" : is_in_range(SMALLEST, LARGEST)(value);
    }),
                   lines_of(message_words()));
    app.add_option("--body", arguments.body, messages::HELP_BODY)
        ->option_text(messages::VALUE_HEX)
        ->check([](const std::string &value) {
            return bytes_of_hex(value).has_value() ? "" : fill(messages::NOT_HEX, {value});
        });
    declare_host(app, arguments);
    add_number(app, "--port", arguments.port, messages::HELP_PORT, LARGEST_PORT);
    app.add_flag("--text", arguments.text_head, messages::HELP_TEXT_HEAD)->disable_flag_override();
}

void declare_commands(CLI::App &app, ARGUMENTS_T &arguments) {
    app.set_help_flag("-h,--help", messages::HELP_FLAG);
    app.formatter(std::make_shared<HELP_FORMATTER_T>());
    app.footer(messages::HELP_FOOTER);
    app.group(messages::HELP_COMMANDS);
    app.allow_extras(); // what is left over is judged here, in the user's language
    app.require_subcommand(0, 1);
    app.option_defaults()->group(messages::HELP_OPTIONS)->take_last();
    app.get_help_ptr()->group(messages::HELP_OPTIONS);
    app.set_version_flag("--version", std::string(PROGRAM_NAME) + " " + TAVISYS_VERSION,
                         messages::HELP_VERSION_FLAG);
    declare_settings(app, arguments);
    for (const COMMAND_T &command : all_commands()) {
        CLI::App *subcommand = app.add_subcommand(command.name, command.help);
        subcommand->footer("");
        subcommand->get_help_ptr()->group(messages::HELP_OPTIONS);
        if (command.declare != nullptr)
            command.declare(*subcommand, arguments);
        subcommand->add_flag("--json", arguments.json, messages::HELP_JSON)->disable_flag_override();
        declare_settings(*subcommand, arguments);
        if (subcommand->get_option_no_throw("--server") == nullptr)
            refuse_other_servers(*subcommand, arguments);
    }
}

INT32_T order_by(const std::string &word) {
    const auto *found = std::find_if(std::begin(ORDERS), std::end(ORDERS),
                                     [&word](const ORDER_T &order) { return order.word == word; });
    return found == std::end(ORDERS) ? TP_ORDER_BY_PUT_TIME : found->value;
}

PARSED_T parse_command_line(int argc, const char *const *argv) {
    PARSED_T parsed{nullptr, {}, ""};
    CLI::App app{messages::PROGRAM, PROGRAM_NAME};
    declare_commands(app, parsed.arguments);
    const auto chosen = [&app]() -> const CLI::App & {
        return app.get_subcommands().empty() ? app : *app.get_subcommands().front();
    };
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion &version) {
        parsed.text = std::string(version.what()) + "\n";
        return parsed;
    } catch (const CLI::Success &) {
        parsed.text = app.help();
        return parsed;
    } catch (const CLI::ParseError &error) {
        fail_usage(explain(error), chosen());
    }
    check_leftovers(app);
    check_leftovers(chosen());
    if (app.get_subcommands().empty())
        fail_usage(messages::NO_COMMAND, app);
    const std::span<const COMMAND_T> commands = all_commands();
    parsed.command = &*std::find_if(commands.begin(), commands.end(), [&](const COMMAND_T &command) {
        return chosen().get_name() == command.name;
    });
    return parsed;
}

} // namespace client
