// What makes the client pleasant to use: its languages and colors, other cabinets, looking again, completion,
// and documents for programs that keep their shape.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>

#include "client_harness.h"
#include "harness.h"
#include "tavisys_comm.h"

using namespace harness;
using nlohmann::json;

namespace {

std::string without_colors(const std::string &text) {
    return std::regex_replace(text, std::regex("\033\\[[0-9]*m"), "");
}

std::string without_line(int line, const std::string &text) {
    return std::regex_replace(text, std::regex("^((?:.*\n){" + std::to_string(line) + "}).*\n"), "$1");
}

std::string output_of(const std::string &command) {
    FILE *pipe = popen(command.c_str(), "r");
    std::string text;
    for (int c = 0; (c = fgetc(pipe)) != EOF;)
        text += static_cast<char>(c);
    pclose(pipe);
    return text;
}

bool has_colors(const RUN_T &run) {
    return (run.output + run.errors).find("\033[") != std::string::npos;
}

// What differs between a document and the shape that it should have; empty when nothing does. The names of
// the optional members that were null, and of the lists that were empty, are taken note of.
std::string difference(const json &shape, const json &value, const std::string &name) {
    if (shape.is_string()) {
        const bool optional = shape.get<std::string>().ends_with('?');
        const bool right = (value.is_string() && shape.get<std::string>().starts_with("string")) ||
                           (value.is_number_integer() && shape == "integer") || (optional && value.is_null());
        return right ? "" : name + " is " + value.dump();
    }
    if (shape.type() != value.type())
        return name + " is " + value.dump();
    std::string found;
    if (shape.is_array()) {
        for (const json &item : value)
            found += difference(shape[0], item, name + "[]");
        return found;
    }
    json rest = value;
    for (const auto &[key, inner] : shape.items()) {
        const std::string member = key.substr(0, key.find('?'));
        if (!rest.contains(member))
            return name + "." + member + " is missing";
        if (member == key || !rest[member].is_null())
            found += difference(inner, rest[member], name + "." + member);
        rest.erase(member);
    }
    return found + (rest.empty() ? "" : name + " has " + rest.dump());
}

} // namespace

TEST(ClientLanguage, IsThatOfTheOptionElseOfTheLocale) {
    const SERVER_T server{answer};
    const std::string chinese = "硬盘数  2\n影片数  28\n";
    const std::string english = "Disks   2\nMovies  28\n";
    const std::pair<const char *, bool> environments[] = {
        {"LC_ALL= LC_MESSAGES= LANG=", false},
        {"LC_ALL=en_US.UTF-8 LANG=zh_CN.UTF-8", true},
        {"LC_ALL= LC_MESSAGES=en LANG=zh_CN.UTF-8", true},
        {"LC_ALL= LC_MESSAGES= LANG=en.UTF-8", true},
        {"LC_ALL=POSIX LANG=en_US", false},
        {"LC_ALL=enm_GB", false},
    };
    for (const auto &[environment, want] : environments) {
        EXPECT_EQ(want ? english : chinese, run("info", environment).output) << environment;
        EXPECT_EQ(english, run("info --lang en", environment).output);
        EXPECT_EQ(chinese, run("--lang=zh info", environment).output);
    }
    EXPECT_EQ("one argument too many: 3\nsee tavisys info --help\n", run("info 3 --lang en").errors);
    EXPECT_NE(std::string::npos, run("--lang en movies -h").output.find("\nOPTIONS:\n  -h,--help "));
    EXPECT_EQ("ID  Title     Category  Kind        Area  Year  Dimension  Score  Added       Released\n"
              " 8  霸王别姬  电影      剧情, 历史  香港  1993  2D           8.1  2023-01-01  1993-01-01\n"
              "Page 1 of 1, 2 found\n",
              without_line(2, run("--lang en movies").output));
}

TEST(ClientColor, IsForTerminalsUnlessItIsAskedForOrNotWanted) {
    const SERVER_T server{answer};
    const char *const plain = "LC_ALL=C NO_COLOR= TERM=xterm";
    EXPECT_EQ("\033[1m编号\033[0m  \033[1m维度\033[0m\n   1  全部\n   2  2D\n   3  \033[36m3D\033[0m\n",
              run_on_terminal("filters 1 dimension", 80, plain).output);
    EXPECT_NE(std::string::npos,
              run("status --color always").output.find("\n\033[1m解析失败\033[0m  \033[31m2\033[0m\n"));
    EXPECT_EQ(0U, run("nothing --color=always").errors.find("\033[31m没有“nothing”这个命令"));
    for (const char *environment : {"LC_ALL=C NO_COLOR=1 TERM=xterm", "LC_ALL=C NO_COLOR= TERM=dumb"})
        EXPECT_FALSE(has_colors(run_on_terminal("movies", 80, environment))) << environment;
    EXPECT_FALSE(has_colors(run_on_terminal("movies --color never", 80, plain)));
    for (const std::string command : {"movies", "movie 1 8", "disks", "info --json"}) {
        const RUN_T piped = run(command, plain);
        EXPECT_FALSE(has_colors(piped));
        EXPECT_EQ(piped.output, without_colors(run(command + " --color always").output));
    }
    EXPECT_FALSE(has_colors(run("movies --json --color always")));
}

TEST(ClientServer, IsGivenByAddressOrName) {
    const SERVER_T server{answer};
    const std::string disks = run("disks").output;
    EXPECT_NE("", disks);
    for (const char *host : {"127.0.0.1", "localhost"})
        EXPECT_EQ(disks, run(std::string("disks --server ") + host).output) << host;
    expect_run("count sda sda1 --server nowhere.invalid", 1, "找不到主机“nowhere.invalid”");
}

TEST(ClientWatch, ShowsBlocksOrLinesAndOutlivesAServerThatGoesAway) {
    const struct {
        const char *arguments, *first, *second;
    } cases[] = {{"info --watch=0.1", "硬盘数  2\n影片数  28\n", "影片数  29\n"},
                 {"info --json --watch 0.1", R"({"hdnum": 2,"movnum": 28})", R"({"hdnum": 2,"movnum": 29})"},
                 {"movie --watch 1 8", "片名    霸王别姬\n", "片名    霸王别姬\n"}};
    for (const auto &c : cases) {
        auto server = std::make_unique<SERVER_T>(answer);
        std::array<int, 2> output{};
        ASSERT_EQ(0, pipe2(output.data(), O_CLOEXEC));
        const CLIENT_T client = start(c.arguments, output[1]);
        const std::string block = read_until(output[0], c.first);
        EXPECT_EQ(c.first[0] != '{', std::regex_search(block, std::regex("^[0-9:]{8}  每[0-9.]+秒更新")));
        server.reset();
        EXPECT_NE(std::string::npos, read_until(client.errors, "\n").find("影柜服务器"));
        server = std::make_unique<SERVER_T>([](const REQUEST_T &request) {
            return request.first == 1002 ? ANSWER_T{0, wire(2, 29)} : answer(request);
        });
        EXPECT_TRUE(read_until(output[0], c.second).ends_with(c.second));
        kill(client.pid, SIGINT);
        const RUN_T got = finish(client, output[0]);
        EXPECT_EQ(-SIGINT, got.status);
        EXPECT_EQ("", got.errors); // an absence is told once
    }
    expect_run("info --watch 0.01", 2, "--watch: 应为0.1到86400的秒数");
    expect_run("poster --watch", 2, "不认识的选项: --watch");
}

TEST(ClientWatch, DrawsInTheSamePlaceOfATerminal) {
    auto server = std::make_unique<SERVER_T>(answer);
    const TERMINAL_T terminal = open_terminal(80);
    const CLIENT_T client = start("info --watch 0.1", terminal.client);
    const std::string end = "影片数  28\033[K\n\033[J\033[?7h"; // what was below is cleared
    EXPECT_EQ(0U, read_until(terminal.screen, end).find("\033[2J\033[H\033[?7l"));
    EXPECT_EQ(0U, read_until(terminal.screen, end).find("\033[H\033[?7l"));
    server.reset();
    read_until(terminal.screen, "无法连接影柜服务器");
    EXPECT_TRUE(read_until(terminal.screen, end).ends_with(end)); // the last answer stays
    kill(client.pid, SIGINT);
    const RUN_T got = finish(client, terminal.screen);
    EXPECT_EQ(-SIGINT, got.status);
    EXPECT_EQ("", got.errors);
}

TEST(ClientCompletion, BashAndZshOfferWhatTheProgramAndTheServerKnow) {
    const SERVER_T server{answer};
    // The shells' own parts are what a user's shell has; bash splits words at "=".
    const std::string bash = std::string("bash -c 'source ") + COMPLETIONS +
                             "/tavisys.bash; COMP_WORDS=(" TAVISYS_CLIENT
                             " \"$@\"); COMP_CWORD=$#; _tavisys; "
                             "printf \"%s|\" \"${COMPREPLY[@]}\"' bash ";
    const std::string zsh = std::string("zsh -f -c '_call_program() { shift; eval \"$@\" }; "
                                        "compadd() { printf \"%s|\" ${(P)2} }; words=(" TAVISYS_CLIENT
                                        " \"$@\"); CURRENT=$#words; source ") +
                            COMPLETIONS + "/_tavisys' zsh ";
    const std::pair<const char *, const char *> cases[] = {
        {"co", "count|"},
        {"movies --k", "--kind|"},
        {"movies --kind ''", "全部|剧情|历史|"},
        {"movies --category 电影 --kind 剧", "剧情|"},
        {"movie 电", "电影|电视剧|"},
        {"filters 1 y", "year|"},
        {"touch --year 2", "2001|"},
        {"touch --area ''", "全部|香港|"},
        {"--lang en movies --dimension 3", "3D|"},
        {"movies --order ''", "put|publish|score|name|"},
        {"count sda ''", "sda1|sda2|"},
    };
    for (const std::string &shell : {bash, zsh}) {
        for (const auto &[words, want] : cases)
            EXPECT_EQ(want, output_of(shell + words)) << shell;
    }
    EXPECT_EQ("电影|电视剧|", output_of(bash + "movies --category = 电"));
    EXPECT_EQ("/dev/null|", output_of(bash + "decode info /dev/nul"));
    EXPECT_EQ("--color=always|", output_of(zsh + "movies --color=al"));
}

TEST(ClientCompletion, IsQuickAndSilentWithoutAnAnswer) {
    using clock = std::chrono::steady_clock;
    const INT32_T deaf = svr_open_tavisys_msg_channel(); // connections wait there for ever
    const auto begin = clock::now();
    const RUN_T got = run("complete -- movies --kind ''");
    EXPECT_GT(std::chrono::seconds(3), clock::now() - begin); // a second, and time for the program to start
    close_tavisys_msg_channel(deaf);
    for (const RUN_T &silent :
         {got, run("complete -- movies --kind ''"), run("complete"), run("complete x ''")}) {
        EXPECT_EQ(0, silent.status);
        EXPECT_EQ("", silent.errors);
    }
    EXPECT_EQ("", got.output);
}

TEST(ClientJson, HasTheShapesThatAreDocumented) {
    const SERVER_T server{answer};
    const std::string folder = testing::TempDir() + "tavisys-shapes";
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/body") << answer({3003, ""}).second;
    const std::map<std::string, std::string> arguments{
        {"filters", "1 kind"}, {"decode", "transfer " + folder + "/body"}, {"raw", "uuid"}, {"movie", "0 8"},
        {"count", "sda sda1"}, {"fetch", "sda sda1 --out " + folder}};
    std::ifstream file(CLIENT_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    const std::regex shape("\n`(\\w+)`[^\n]*\n\n```json\n([^`]*)```");
    std::ptrdiff_t commands = 0;
    for (std::sregex_iterator at(document.begin(), document.end(), shape), end; at != end; ++at, ++commands) {
        const std::string command = (*at)[1];
        const auto more = arguments.find(command);
        const std::string words = command + " --json " + (more == arguments.end() ? "" : more->second);
        EXPECT_EQ("", difference(json::parse((*at)[2].str()), json::parse(run(words).output), command));
    }
    const std::string help = run("--help").output;
    const std::regex row("\n  [a-z]+ ");
    EXPECT_EQ(commands,
              std::distance(std::sregex_iterator(help.begin(), help.end(), row), std::sregex_iterator()));
    std::filesystem::remove_all(folder);
}
