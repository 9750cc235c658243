#include "complete.h"

#include <sys/time.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include <csignal>
#include <exception>
#include <map>
#include <sstream>

#include "arguments.h"
#include "error.h"
#include "names.h"
#include "server.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

constexpr int LONGEST_MS = 900; // whoever presses the key waits for it

using WORDS_T = std::vector<std::string>;

// The command line up to the word that is completed.
struct PLACE_T {
    const CLI::App *command;
    const CLI::Option *option = nullptr; // whose value is completed, be it one without dashes
    std::string prefix;                  // what of the word stands before the value: "--kind="
    std::string partial;
    std::map<std::string, std::string> values; // those before, by what completes them
};

bool takes_value(const CLI::Option *option) {
    return option != nullptr && option->get_items_expected_min() > 0;
}

// Where a value comes from, as completes_from() has said; empty for one that only the user knows.
std::string source_of(const CLI::Option &option) {
    for (int i = 0;; i++) {
        try {
            const CLI::Validator *check = const_cast<CLI::Option &>(option).get_validator(i);
            if (check->get_name() == COMPLETION_SOURCE)
                return check->get_description();
        } catch (const CLI::OptionNotFound &) {
            return "";
        }
    }
}

const CLI::Option *positional(const CLI::App &command, std::size_t index) {
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_positional() && index-- == 0)
            return option;
    }
    return nullptr;
}

const CLI::App *find_command(const CLI::App &app, const std::string &name) {
    const auto found =
        app.get_subcommands([&name](const CLI::App *command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

// Words as they were before bash split them at "=".
WORDS_T join_options(const WORDS_T &words) {
    WORDS_T joined;
    bool continues = false;
    for (const std::string &word : words) {
        const bool equals = word == "=" && !joined.empty() && joined.back().starts_with("--");
        if (equals || continues)
            joined.back() += word;
        else
            joined.push_back(word);
        continues = equals;
    }
    return joined;
}

// Reads the words before the last one and finds what the last one stands for.
class READER_T {
public:
    explicit READER_T(const CLI::App &app) : place_{&app, nullptr, "", "", {}} {}

    void pass(const std::string &word) {
        const bool has_dash = word.starts_with("-");
        const std::size_t equals = has_dash ? word.find('=') : std::string::npos;
        if (takes_value(waiting_)) {
            keep(*waiting_, word);
            waiting_ = nullptr;
        } else if (has_dash) {
            const CLI::Option *option = place_.command->get_option_no_throw(word.substr(0, equals));
            if (option != nullptr && equals != std::string::npos)
                keep(*option, word.substr(equals + 1));
            else
                waiting_ = option;
        } else if (place_.command->get_parent() == nullptr) {
            place_.command = find_command(*place_.command, word);
        } else if (const CLI::Option *option = positional(*place_.command, positionals_++)) {
            keep(*option, word);
        }
    }

    bool lost() const { return place_.command == nullptr; }

    PLACE_T stop_at(const std::string &word) {
        const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
        place_.partial = word;
        if (takes_value(waiting_)) {
            place_.option = waiting_;
        } else if (equals != std::string::npos) {
            place_.option = place_.command->get_option_no_throw(word.substr(0, equals));
            place_.prefix = word.substr(0, equals + 1);
            place_.partial = word.substr(equals + 1);
        } else if (!word.starts_with("-")) {
            place_.option = positional(*place_.command, positionals_);
        }
        return place_;
    }

private:
    void keep(const CLI::Option &option, const std::string &value) {
        place_.values[source_of(option)] = value;
    }

    PLACE_T place_;
    const CLI::Option *waiting_ = nullptr;
    std::size_t positionals_ = 0;
};

WORDS_T lines_of(const std::string &text) {
    WORDS_T lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string value_of(const PLACE_T &place, const std::string &source) {
    const auto found = place.values.find(source);
    return found == place.values.end() ? "" : found->second;
}

WORDS_T names_of(const ATTRIBUTE_T &attribute, const PLACE_T &place) {
    NAME_BOOK_T book;
    const INT32_T cid =
        attribute.type == CATEGORY_TYPE ? ALL : book.find_id(CATEGORY, ALL, value_of(place, CATEGORY.word));
    WORDS_T names;
    for (const NAMED_ID_T &item : book.list_of(attribute, cid))
        names.push_back(item.name);
    return names;
}

WORDS_T devices_of(bool partitions, const PLACE_T &place) {
    WORDS_T names;
    const DISKS_T disks = fetch_disks(find_address(value_of(place, SOURCE_HOSTS)));
    const std::string disk_of_partitions = value_of(place, SOURCE_DISKS);
    for_each_node(disks.get(), [&](const auto &disk) {
        if (!partitions)
            names.push_back(text_of(disk.info->devname));
        else if (text_of(disk.info->devname) == disk_of_partitions)
            for_each_record(disk.list,
                            [&](const auto &partition) { names.push_back(text_of(partition.devname)); });
    });
    return names;
}

WORDS_T values_of(const PLACE_T &place) {
    const std::string source = source_of(*place.option);
    for (const ATTRIBUTE_T *attribute : {&CATEGORY, &KIND, &AREA, &YEAR, &DIMENSION}) {
        if (source == attribute->word)
            return names_of(*attribute, place);
    }
    if (source == SOURCE_DISKS || source == SOURCE_PARTITIONS)
        return devices_of(source == SOURCE_PARTITIONS, place);
    return lines_of(source);
}

WORDS_T options_of(const CLI::App &command) {
    WORDS_T names;
    for (const CLI::Option *option : command.get_options()) {
        for (const std::string &name : option->get_lnames()) {
            if (!option->get_group().empty())
                names.push_back("--" + name);
        }
    }
    return names;
}

WORDS_T commands_of(const CLI::App &app) {
    WORDS_T names;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; }))
        names.push_back(command->get_name());
    return names;
}

WORDS_T candidates_at(const PLACE_T &place) {
    if (place.option != nullptr)
        return values_of(place);
    if (place.partial.starts_with("-"))
        return options_of(*place.command);
    return place.command->get_parent() == nullptr ? commands_of(*place.command) : WORDS_T{};
}

// Those that go on from what is there. What a shell or a terminal could take for more than a name is left
// out.
std::string fitting_lines(const PLACE_T &place, const WORDS_T &candidates, bool whole_words) {
    std::string lines;
    for (const std::string &candidate : candidates) {
        const bool directive =
            candidate == SOURCE_FILES || candidate == SOURCE_FOLDERS || candidate == SOURCE_HOSTS;
        const bool fits =
            directive || (candidate.starts_with(place.partial) && printable(candidate) == candidate &&
                          !candidate.starts_with(':') && !candidate.empty());
        if (fits)
            lines.append(whole_words && !directive ? place.prefix : "").append(candidate).append("\n");
    }
    return lines;
}

std::string complete_words(const WORDS_T &split) {
    const WORDS_T words = join_options(split);
    ARGUMENTS_T arguments;
    CLI::App app;
    declare_commands(app, arguments);
    READER_T reader{app};
    for (std::size_t i = 0; i + 1 < words.size() && !reader.lost(); i++)
        reader.pass(words[i]);
    if (reader.lost())
        return "";
    const PLACE_T place = reader.stop_at(words.empty() ? "" : words.back());
    return fitting_lines(place, candidates_at(place), words.size() == split.size());
}

// Time is up: nothing has been written yet.
void give_up(int /*signal*/) {
    _exit(EXIT_DONE);
}

} // namespace

void complete(int argc, const char *const *argv) {
    std::signal(SIGALRM, give_up);
    const itimerval limit{{0, 0}, {0, LONGEST_MS * 1000}};
    setitimer(ITIMER_REAL, &limit, nullptr);
    WORDS_T words(argv, argv + argc);
    if (!words.empty() && words.front() == "--")
        words.erase(words.begin());
    try {
        write_output(complete_words(words));
    } catch (const std::exception &) {
        return; // a shell has nobody to tell it to
    }
}

} // namespace client
