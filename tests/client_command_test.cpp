// The built client against a server inside the test: what it asks, what it shows, how it ends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "harness.h"
#include "tavisys_comm.h"

using harness::wire;

namespace {

using ARGUMENTS_T = std::vector<std::string>;

// ---- The server

struct ANSWER_T {
    RTSTATUS result = 0;
    std::string body;
};

struct REQUEST_T {
    INT32_T type;
    std::string body;
    bool operator==(const REQUEST_T &) const = default;
};
std::ostream &operator<<(std::ostream &to, const REQUEST_T &request) {
    return to << request.type << ' ' << testing::PrintToString(request.body);
}

// Answers on port 40001 for as long as it lives.
class SERVER_T {
public:
    using ANSWERER_T = std::function<ANSWER_T(const REQUEST_T &)>;

    explicit SERVER_T(ANSWERER_T answerer) : answerer_(std::move(answerer)) {
        the_server = this;
        listener_ = svr_open_tavisys_msg_channel();
        EXPECT_LE(0, listener_);
        thread_ = std::thread([this] { serve(); });
    }
    ~SERVER_T() {
        stopping_ = true;
        close_tavisys_msg_channel(agent_open_tavisys_msg_channel()); // wakes the thread
        thread_.join();
        close_tavisys_msg_channel(listener_);
    }
    SERVER_T(const SERVER_T &) = delete;
    SERVER_T &operator=(const SERVER_T &) = delete;

    std::vector<REQUEST_T> take_requests() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(requests_, {});
    }

private:
    void serve() {
        while (!stopping_) {
            const INT32_T sock = monitor_tavisys_msg_channel(listener_);
            deal_data_from_tavisys_msg_channel(sock, handle);
            close_tavisys_msg_channel(sock);
        }
    }

    static RTSTATUS handle(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
        const REQUEST_T request{type, std::string(static_cast<char *>(body), static_cast<size_t>(length))};
        {
            const std::lock_guard<std::mutex> lock(the_server->mutex_);
            the_server->requests_.push_back(request);
        }
        const ANSWER_T answer = the_server->answerer_(request);
        *reply = calloc(1, answer.body.size() + 1);
        memcpy(*reply, answer.body.data(), answer.body.size());
        *replylen = static_cast<INT32_T>(answer.body.size());
        return answer.result;
    }

    static SERVER_T *the_server;
    ANSWERER_T answerer_;
    INT32_T listener_ = -1;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
    std::mutex mutex_;
    std::vector<REQUEST_T> requests_;
};
SERVER_T *SERVER_T::the_server = nullptr;

const std::string FAREWELL = wire(8, "TV1993-0015", "霸王别姬", 81, 20230101, 19930101, "m.jpg", "b.jpg",
                                  "BWBJ", 1, 8, 3, 1, 3, 13, 2, 1, 4, 2, 1, 2, 0, "sda", 1);
const std::string ODD = wire(9, nullptr, "a\033[2J\nb\xFF", 0, 0, 20231399, nullptr, nullptr, nullptr, 7, 99,
                             0, 0, 1, 77, 0, nullptr, 2);
const std::string DETAILS =
    wire("霸王别姬", 1993, 1, 2, "2D", "b.jpg", 1, "导演", 1, "陈凯歌", 1, "主演", 2, "张国荣", "巩俐", 0, 1,
         "时长", "171分钟", 1, nullptr, "霸王与虞姬\n", 1, 1, 5, 1, "霸王别姬", "v.mkv");

// A cabinet of two movies; its filter lists are the same for every category.
ANSWER_T answer(const REQUEST_T &request) {
    static const std::map<std::string, std::string> FILTERS{
        {wire(TP_FILTER_TYPE_KIND), wire(4, 1, "全部", 3, "剧情", 13, "历史", 14, nullptr)},
        {wire(TP_FILTER_TYPE_AREA), wire(2, 1, "全部", 4, "香港")},
        {wire(TP_FILTER_TYPE_YEAR), wire(2, 8, "1993", 1993, "2001")},
        {wire(TP_FILTER_TYPE_DIMENSION), wire(3, 1, "全部", 2, "2D", 3, "3D")},
    };
    static const std::map<INT32_T, std::string> ANSWERS{
        {TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, wire("1.2.3", "影柜", nullptr)},
        {TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, wire(4, 30, 28, 2, 0)},
        {TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, wire(2, 28)},
        {TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, wire(2, 1, "电影", 16, 2, "电视剧", 4)},
        {TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, wire(1, 24, 1, 2, 2, 2, FAREWELL, ODD)},
        {TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, DETAILS},
        {TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, std::string("3d1219c7\0", 9)},
    };
    const bool filter = request.type == TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST;
    return {0, filter ? FILTERS.at(request.body.substr(0, 4)) : ANSWERS.at(request.type)};
}

SERVER_T::ANSWERER_T always(ANSWER_T fixed) {
    return [fixed = std::move(fixed)](const REQUEST_T &) { return fixed; };
}

// ---- The client

std::string read_to_end(int file) {
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t got = read(file, block.data(), block.size()); got > 0;
         got = read(file, block.data(), block.size()))
        text.append(block.data(), static_cast<size_t>(got));
    close(file);
    return text;
}

struct CLIENT_T {
    pid_t pid;
    int errors; // the reading end of its standard error
};

// Starts the client with that standard output, which it takes over.
CLIENT_T start(const ARGUMENTS_T &arguments, int output) {
    std::array<int, 2> errors{};
    EXPECT_EQ(0, pipe2(errors.data(), O_CLOEXEC));
    std::vector<char *> argv{const_cast<char *>("tavisys")};
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    // A test run in the background ignores interrupts, and its children would, too.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    posix_spawnattr_setsigdefault(&attributes, &interrupt);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    EXPECT_EQ(0, posix_spawn(&pid, TAVISYS_CLIENT, &actions, &attributes, argv.data(), environ));
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(output);
    close(errors[1]);
    return {pid, errors[0]};
}

struct RUN_T {
    int status; // exit status, or the negated signal that ended it
    std::string output;
    std::string errors;
};

RUN_T finish(const CLIENT_T &client, std::string output) {
    std::string errors = read_to_end(client.errors);
    int status = 0;
    EXPECT_EQ(client.pid, waitpid(client.pid, &status, 0));
    return {WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status), std::move(output),
            std::move(errors)};
}

RUN_T run(const ARGUMENTS_T &arguments) {
    std::array<int, 2> output{};
    EXPECT_EQ(0, pipe2(output.data(), O_CLOEXEC));
    const CLIENT_T client = start(arguments, output[1]);
    return finish(client, read_to_end(output[0]));
}

// A terminal of that width: what is written to its client's end is read, unchanged, from the other.
struct TERMINAL_T {
    int screen;
    int client;
};
TERMINAL_T open_terminal(unsigned short width) {
    const int screen = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(0, grantpt(screen));
    EXPECT_EQ(0, unlockpt(screen));
    const int client = open(ptsname(screen), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode{};
    tcgetattr(client, &mode);
    cfmakeraw(&mode);
    tcsetattr(client, TCSANOW, &mode);
    const winsize size{24, width, 0, 0};
    EXPECT_EQ(0, ioctl(client, TIOCSWINSZ, &size));
    return {screen, client};
}

RUN_T run_on_terminal(const ARGUMENTS_T &arguments, unsigned short width) {
    const TERMINAL_T terminal = open_terminal(width);
    const CLIENT_T client = start(arguments, terminal.client);
    return finish(client, read_to_end(terminal.screen));
}

void expect_output(const ARGUMENTS_T &arguments, const std::string &want) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const RUN_T got = run(arguments);
    EXPECT_EQ(0, got.status);
    EXPECT_EQ(want, got.output);
    EXPECT_EQ("", got.errors);
}

void expect_failure(const ARGUMENTS_T &arguments, int status, const std::string &message) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const RUN_T got = run(arguments);
    EXPECT_EQ(status, got.status);
    EXPECT_EQ("", got.output);
    EXPECT_NE(std::string::npos, got.errors.find(message)) << got.errors;
}

} // namespace

TEST(ClientCommand, EachShowsItsAnswerAligned) {
    const SERVER_T server{answer};
    expect_output({"version"}, "软件版本  1.2.3\n设备名称  影柜\n设备编号  -\n");
    expect_output({"info"}, "硬盘数  2\n影片数  28\n");
    expect_output({"status"}, "状态      运行中\n已找到    30\n已解析    28\n解析失败  2\n待解析    0\n");
    expect_output({"uuid"}, "3d1219c7\n");
    expect_output({"categories"}, "编号  分类    影片数\n   1  电影        16\n   2  电视剧       4\n");
    expect_output({"filters", "电影", "year"}, "编号  年代\n   8  1993\n1993  2001\n");
    expect_output({"movie", "0", "8"}, "片名    霸王别姬\n年代    1993\n维度    2D\n导演    陈凯歌\n"
                                       "主演    张国荣、巩俐\n类型    -\n时长    171分钟\n"
                                       "简介    霸王与虞姬␊\n海报    b.jpg\n视频数  1\n\n"
                                       "编号  集数  名称      文件\n"
                                       "   5     1  霸王别姬  v.mkv\n");
}

TEST(ClientCommand, MoviesAreShownWithNamesForIdsAndSignsForControls) {
    const SERVER_T server{answer};
    expect_output({"movies"},
                  "编号  片名      分类  类型        地区  年代  维度  评分  上架        上映\n"
                  "   8  霸王别姬  电影  剧情、历史  香港  1993  2D     8.1  2023-01-01  1993-01-01\n"
                  "   9  a␛[2J␊b\uFFFD  7     -           -     99    77       -  -           20231399\n"
                  "第1页,共1页,2部影片\n");
}

TEST(ClientCommand, NamesBecomeIdsWithOneRequestForEachList) {
    struct CASE_T {
        ARGUMENTS_T arguments;
        std::vector<REQUEST_T> want;
    };
    const REQUEST_T categories{1003, ""};
    const auto list = [](INT32_T type, INT32_T cid) { return REQUEST_T{1005, wire(type, cid)}; };
    const auto page = [](auto... ids) { return REQUEST_T{1006, wire(ids...)}; };
    const CASE_T cases[] = {
        {{"movies", "--json"}, {page(0, 0, 0, 0, 0, 1, 24, 0)}},
        {{"movies", "--json", "--category", "全部", "--year", "0", "--kind", "全部", "--order", "publish"},
         {page(0, 0, 0, 0, 0, 1, 24, 1)}},
        {{"movies", "--json", "--category=1", "--kind=3", "--area=4", "--dimension=2"},
         {page(1, 3, 4, 0, 2, 1, 24, 0)}},
        {{"movies", "--json", "--category", "电影", "--kind", "历史", "--area", "香港", "--year", "1993",
          "--dimension", "3d", "--page", "7", "--size", "1000", "--order", "score"},
         {categories, list(1, 1), list(2, 1), list(3, 1), list(4, 1), page(1, 13, 4, 8, 3, 7, 1000, 2)}},
        // A year's name comes before its id.
        {{"movies", "--json", "--year", "8"}, {list(3, 0), page(0, 0, 0, 8, 0, 1, 24, 0)}},
        {{"movies", "--json", "--year=2001"}, {list(3, 0), page(0, 0, 0, 1993, 0, 1, 24, 0)}},
        // The lists that resolve a name also name the ids of the page.
        {{"movies", "--category", "电影", "--kind", "剧情"},
         {categories, list(1, 1), page(1, 3, 0, 0, 0, 1, 24, 0), list(2, 1), list(3, 1), list(4, 1)}},
        {{"movie", "电视剧", "8"}, {categories, {1007, wire(2, 8)}}},
        {{"filters", "全部", "area"}, {list(2, 0)}},
    };
    SERVER_T server{answer};
    for (const CASE_T &c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        EXPECT_EQ(0, run(c.arguments).status);
        EXPECT_EQ(c.want, server.take_requests());
    }
}

TEST(ClientCommand, AnUnknownNameIsAnsweredWithThoseThatExist) {
    const SERVER_T server{[](const REQUEST_T &request) -> ANSWER_T {
        std::string years = wire(40);
        for (int year = 2000; year < 2040; year++)
            years += wire(year - 1999, std::to_string(year).c_str());
        return request.type == 1005 ? ANSWER_T{0, years} : answer(request);
    }};
    expect_failure({"movies", "--category", "\033电影"}, 1, "没有名为“␛电影”的分类,可用的有: 电影、电视剧\n");
    expect_failure({"movies", "--year", "1994"}, 1, "2010、2011 等40个,用 tavisys filters 0 year 查看全部\n");
}

TEST(ClientCommand, JsonHasTheFieldsOfTheRecords) {
    const SERVER_T server{answer};
    const auto document = [](const ARGUMENTS_T &arguments) {
        return nlohmann::json::parse(run(arguments).output);
    };
    EXPECT_EQ(R"({"version": "1.2.3", "name": "影柜", "devid": null})"_json, document({"version", "--json"}));
    EXPECT_EQ(R"({"hdnum": 2, "movnum": 28})"_json, document({"info", "--json"}));
    const auto status = R"({"status": 4, "total_movies": 30, "parseok_movies": 28, "parseerr_movies": 2,
                            "left_movies": 0})"_json;
    EXPECT_EQ(status, document({"status", "--json"}));
    EXPECT_EQ(status, document({"status", "--watch", "--json"}));
    EXPECT_EQ(R"({"uuid": "3d1219c7"})"_json, document({"uuid", "--json"}));
    EXPECT_EQ(
        R"({"list": [{"id": 1, "name": "电影", "movies": 16}, {"id": 2, "name": "电视剧", "movies": 4}]})"_json,
        document({"categories", "--json"}));
    EXPECT_EQ(R"({"list": [{"id": 8, "name": "1993"}, {"id": 1993, "name": "2001"}]})"_json,
              document({"filters", "1", "year", "--json"}));
    const nlohmann::json page = document({"movies", "--json"});
    EXPECT_EQ(2, page["pageinfo"]["totalmovies"]);
    EXPECT_EQ(R"([1, 3, 13])"_json, page["list"][0]["kind_ids"]);
    EXPECT_EQ("a\033[2J\nb\uFFFD", page["list"][1]["movname"]);
    EXPECT_EQ(
        R"({"name": "霸王别姬", "year": 1993, "dimension_info": {"id": 2, "name": "2D"}, "poster": "b.jpg",
                  "director_info": {"desc": "导演", "list": ["陈凯歌"]},
                  "actor_info": {"desc": "主演", "list": ["张国荣", "巩俐"]}, "kind_info": null,
                  "duration_info": {"desc": "时长", "value": "171分钟"},
                  "summary_info": {"desc": null, "value": "霸王与虞姬\n"}, "videos": 1,
                  "video_list": [{"id": 5, "seqno": 1, "name": "霸王别姬", "mp4": "v.mkv"}]})"_json,
        document({"movie", "1", "8", "--json"}));
}

TEST(ClientCommand, BadUsageIsToldInChineseBeforeAnythingIsAsked) {
    SERVER_T server{answer};
    expect_failure({}, 2, "缺少命令\n");
    expect_failure({"moives"}, 2, "没有“moives”这个命令\n");
    expect_failure({"version", "--color"}, 2, "不认识的选项: --color\n用 tavisys version --help");
    expect_failure({"movie", "1", "2", "3"}, 2, "多余的参数: 3\n");
    expect_failure({"movie", "1"}, 2, "缺少参数: 影片编号\n");
    expect_failure({"movie", "1", "-1"}, 2, "影片编号: 应为0到2147483647的整数,而不是“-1”\n");
    expect_failure({"filters", "1", "actor"}, 2, "属性: 应为kind、area、year、dimension之一");
    expect_failure({"movies", "--page", "0"}, 2, "--page: 应为1到2147483647的整数,而不是“0”\n");
    expect_failure({"movies", "--size", "1001"}, 2, "--size: 应为1到1000的整数");
    expect_failure({"movies", "--size", "24x"}, 2, "--size: 应为1到1000的整数");
    expect_failure({"movies", "--page"}, 2, "选项 --page 的值缺失或多余\n");
    expect_failure({"movies", "--json=1"}, 2, "选项 --json 的值缺失或多余\n");
    expect_failure({"movies", "--order", "best"}, 2, "--order: 应为put、publish、score、name之一");
    expect_failure({"movies", "--kind", "99999999999"}, 2, "编号不能大于2147483647");
    EXPECT_EQ(std::vector<REQUEST_T>{}, server.take_requests());
}

TEST(ClientCommand, HelpIsInChinese) {
    for (const ARGUMENTS_T &arguments : {ARGUMENTS_T{"--help"}, {"movies", "-h"}, {"movie", "--help"}}) {
        const RUN_T got = run(arguments);
        EXPECT_EQ(0, got.status);
        EXPECT_EQ(
            0U, got.output.find(arguments[0] == "movies" ? "按条件分页列出影片\n用法: tavisys movies" : ""));
        for (const char *english : {"Usage", "Option", "OPTIONS", "REQUIRED", "Print", "TEXT", "INT"})
            EXPECT_EQ(std::string::npos, got.output.find(english)) << got.output;
    }
}

TEST(ClientCommand, ANoIsToldFromNobodyThereAndFromAnswersThatMakeNoSense) {
    const ARGUMENTS_T commands[] = {
        {"version"},    {"info"},   {"status"},          {"status", "--watch"},   {"uuid"},
        {"categories"}, {"movies"}, {"movie", "1", "1"}, {"filters", "1", "kind"}};
    for (const ARGUMENTS_T &arguments : commands)
        expect_failure(arguments, 1, "无法连接影柜服务器(127.0.0.1:40001),请确认 tavisys-server 正在运行\n");
    struct CASE_T {
        ANSWER_T answer;
        const char *want;
    };
    const CASE_T cases[] = {
        {{TAVISYS_RESULT_UNKNOWN_TYPE, ""}, "影柜服务器拒绝了请求: 不支持这种查询(结果-101)\n"},
        {{TAVISYS_RESULT_NO_SUCH_MOVIE, ""}, "影柜服务器拒绝了请求: 该分类下没有这个编号的影片(结果-103)\n"},
        {{20, wire(1)}, "影柜服务器拒绝了请求(结果20)\n"},
        {{-1, ""}, "影柜服务器拒绝了请求,或其回答无法解读(结果-1)\n"},
        {{0, "abc"}, "无法解读"},
        {{0, wire(INT32_MAX)}, "无法解读"},
        {{-TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH, ""}, "影柜服务器的回答无法解读"},
    };
    for (const CASE_T &c : cases) {
        const SERVER_T server{always(c.answer)};
        for (const ARGUMENTS_T &arguments : commands)
            expect_failure(arguments, 1, c.want);
    }
}

TEST(ClientCommand, IdsStandWhereTheirListsAreNotToBeHad) {
    const SERVER_T server{[](const REQUEST_T &request) {
        return request.type == 1006 ? ANSWER_T{0, wire(1, 24, 1, 1, 1, 1, FAREWELL)} : ANSWER_T{-104, ""};
    }};
    expect_output({"movies"},
                  "编号  片名      分类  类型      地区  年代  维度  评分  上架        上映\n"
                  "   8  霸王别姬  1     1、3、13  1、4  8     1、2   8.1  2023-01-01  1993-01-01\n"
                  "第1页,共1页,1部影片\n");
}

TEST(ClientCommand, AnEmptyPageIsNoError) {
    const SERVER_T server{always({0, wire(3, 24, 2, 28, 0, 0)})};
    expect_output({"movies", "--page", "3"}, "这一页没有影片\n第3页,共2页,28部影片\n");
}

TEST(ClientCommand, TablesAreCutToTheTerminalTheyAreOn) {
    const SERVER_T server{answer};
    EXPECT_EQ("编号  片名    分类  类型    地区  年代  维度  评分  上架        上映\n"
              "   8  霸王…   电影  剧情…   香港  1993  2D     8.1  2023-01-01  1993-01-01\n"
              "   9  a␛[2J…  7     -       -     99    77       -  -           20231399\n"
              "第1页,共1页,2部影片\n",
              run_on_terminal({"movies"}, 72).output);
}

TEST(ClientWatch, ShowsEachChangeUntilTheScanIsDone) {
    const std::vector<std::string> phases{wire(1, 5, 0, 0, 5), wire(2, 10, 4, 1, 5), wire(2, 10, 4, 1, 5),
                                          wire(3, 10, 9, 1, 0)};
    std::atomic<size_t> asked = 0;
    const SERVER_T server{[&](const REQUEST_T &) { return ANSWER_T{0, phases[asked++ % phases.size()]}; }};
    expect_output({"status", "--watch"},
                  "正在查找影片: 已找到5部\n正在解析: 5/10 (50%),失败1部\n解析完成: 9部影片,失败1部\n");
    const RUN_T drawn = run_on_terminal({"status", "--watch"}, 20);
    EXPECT_EQ(0, drawn.status);
    EXPECT_EQ("\r正在查找影片: 已找…\033[K\r正在解析: 5/10 (50…\033[K\r解析完成: 9部影片,…\033[K\n",
              drawn.output);
    EXPECT_EQ(8U, asked);
}

TEST(ClientWatch, AServerThatGoesAwayEndsIt) {
    const TERMINAL_T terminal = open_terminal(80);
    CLIENT_T client{};
    {
        const SERVER_T server{always({0, wire(2, 10, 4, 1, 5)})};
        client = start({"status", "--watch"}, terminal.client);
        char first = 0;
        EXPECT_EQ(1, read(terminal.screen, &first, 1)); // it has begun
    }
    const RUN_T got = finish(client, read_to_end(terminal.screen));
    EXPECT_EQ(1, got.status);
    EXPECT_EQ("正在解析: 5/10 (50%),失败1部\033[K\n", got.output);
    EXPECT_NE("", got.errors);
}

TEST(ClientWatch, AnInterruptEndsTheLineAndTheProgram) {
    const SERVER_T server{always({0, wire(2, 10, 4, 1, 5)})};
    const TERMINAL_T terminal = open_terminal(80);
    const CLIENT_T client = start({"status", "--watch"}, terminal.client);
    char first = 0;
    EXPECT_EQ(1, read(terminal.screen, &first, 1));
    EXPECT_EQ(0, kill(client.pid, SIGINT));
    const RUN_T got = finish(client, read_to_end(terminal.screen));
    EXPECT_EQ(-SIGINT, got.status);
    EXPECT_EQ("正在解析: 5/10 (50%),失败1部\033[K\n", got.output);
    EXPECT_EQ("", got.errors);
}

TEST(ClientOutput, AFullDiskAndAReaderThatHasGoneAreFailures) {
    const SERVER_T server{answer};
    for (const ARGUMENTS_T &arguments : {ARGUMENTS_T{"movies"}, {"status", "--watch"}, {"--help"}}) {
        const RUN_T full = finish(start(arguments, open("/dev/full", O_WRONLY | O_CLOEXEC)), "");
        EXPECT_EQ(1, full.status);
        EXPECT_EQ(0U, full.errors.find("写标准输出失败"));
        std::array<int, 2> output{};
        ASSERT_EQ(0, pipe2(output.data(), O_CLOEXEC));
        close(output[0]);
        const RUN_T gone = finish(start(arguments, output[1]), "");
        EXPECT_EQ(1, gone.status);
        EXPECT_EQ("", gone.errors);
    }
}
