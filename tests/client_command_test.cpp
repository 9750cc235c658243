// The built client against a server inside the test: what it asks, what it shows, how it ends.
#include "client_harness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "harness.h"
#include "tp_trlv.h"

using namespace harness;

TEST(ClientCommand, EachShowsItsAnswerAlignedOrAsJsonWithTheFieldsOfTheRecords) {
    const SERVER_T server{answer};
    const struct {
        std::string arguments, text;
        const char *json;
    } cases[] = {
        {"version", "软件版本  1.2.3\n设备名称  影柜\n设备编号  -\n",
         R"({"version": "1.2.3", "name": "影柜", "devid": null})"},
        {"info", "硬盘数  2\n影片数  28\n", R"({"hdnum": 2, "movnum": 28})"},
        {"status", "状态      运行中\n已找到    30\n已解析    28\n解析失败  2\n待解析    0\n",
         R"({"status": 4, "total_movies": 30, "parseok_movies": 28, "parseerr_movies": 2, "left_movies": 0})"},
        {"uuid", "3d1219c7\n", R"({"uuid": "3d1219c7"})"},
        {"categories", "编号  分类    影片数\n   1  电影        16\n   2  电视剧       4\n",
         R"({"list": [{"id": 1, "name": "电影", "movies": 16}, {"id": 2, "name": "电视剧", "movies": 4}]})"},
        {"poster", "sda/sda1/posters/␛.jpg\n", R"({"poster": "sda/sda1/posters/\u001b.jpg"})"},
        {"disks",
         "硬盘  序列号  序号  分区  UUID  挂载点\nsda   S1         1  sda1  u-1   /mnt\n"
         "sda   S1         2  sda2  -     -\nsdb   -          -  -     -     -\n",
         R"({"list": [{"devname": "sda", "serialno": "S1", "list": [
                {"seqno": 1, "devname": "sda1", "uuid": "u-1", "mntp": "/mnt"},
                {"seqno": 2, "devname": "sda2", "uuid": null, "mntp": null}]},
             {"devname": "sdb", "serialno": null, "list": []}]})"},
        {"count sda sda1", "影片数  513\n", R"({"movies": 513})"},
        {"filters 电影 year", "编号  年代\n   8  1993\n1993  2001\n",
         R"({"list": [{"id": 8, "name": "1993"}, {"id": 1993, "name": "2001"}]})"},
        {"movie 0 8",
         "片名    霸王别姬\n年代    1993\n维度    2D\n导演    陈凯歌\n主演    张国荣、巩俐\n类型    -\n"
         "时长    171分钟\n简介    霸王与虞姬␊\n海报    b.jpg\n视频数  1\n\n"
         "编号  集数  名称      文件\n   5     1  霸王别姬  v.mkv\n",
         R"({"name": "霸王别姬", "year": 1993, "dimension_info": {"id": 2, "name": "2D"}, "poster": "b.jpg",
             "director_info": {"desc": "导演", "list": ["陈凯歌"]},
             "actor_info": {"desc": "主演", "list": ["张国荣", "巩俐"]}, "kind_info": null,
             "duration_info": {"desc": "时长", "value": "171分钟"},
             "summary_info": {"desc": null, "value": "霸王与虞姬\n"}, "videos": 1,
             "video_list": [{"id": 5, "seqno": 1, "name": "霸王别姬", "mp4": "v.mkv"}]})"}};
    for (const auto &c : cases) {
        expect_run(c.arguments, 0, c.text);
        EXPECT_EQ(nlohmann::json::parse(c.json), nlohmann::json::parse(run(c.arguments + " --json").output));
    }
}

TEST(ClientCommand, MoviesAreShownWithNamesForIdsAndSignsForControlsCutToTheTerminal) {
    const SERVER_T server{answer};
    expect_run("movies", 0,
               "编号  片名      分类  类型        地区  年代  维度  评分  上架        上映\n"
               "   8  霸王别姬  电影  剧情、历史  香港  1993  2D     8.1  2023-01-01  1993-01-01\n"
               "   9  a␛[2J␊b\uFFFD  7     -           -     99    77       -  -           20231399\n"
               "第1页,共1页,2部影片\n");
    EXPECT_EQ("编号  片名    分类  类型    地区  年代  维度  评分  上架        上映\n"
              "   8  霸王…   电影  剧情…   香港  1993  2D     8.1  2023-01-01  1993-01-01\n"
              "   9  a␛[2J…  7     -       -     99    77       -  -           20231399\n"
              "第1页,共1页,2部影片\n",
              run_on_terminal("movies", 72).output);
    expect_run(
        "touch --order score", 0,
        "编号  片名      分类  类型        地区  年代  维度  评分  上架        上映        视频数     时长\n"
        "   8  霸王别姬  电影  剧情、历史  香港  1993  2D     8.1  2023-01-01  1993-01-01       3  171分钟\n"
        "   9  a␛[2J␊b\uFFFD  7     -           -     99    77       -  -           20231399         0       "
        " -\n"
        "第1页,共1页,2部影片\n");
    EXPECT_EQ(171, nlohmann::json::parse(run("touch --json").output)["list"][0]["duration"]);
    const auto page = nlohmann::json::parse(run("movies --json").output);
    EXPECT_EQ(2, page["pageinfo"]["totalmovies"]);
    EXPECT_FALSE(page["list"][0].contains("duration"));
    EXPECT_EQ(R"([1, 3, 13])"_json, page["list"][0]["kind_ids"]);
    EXPECT_EQ("a\033[2J\nb\uFFFD", page["list"][1]["movname"]);
}

TEST(ClientCommand, FetchedMoviesBecomeDocumentsAndThoseThatCannotAreTold) {
    std::string folder = (std::filesystem::temp_directory_path() / "tavisys-test-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(folder.data()));
    const std::string command = "fetch sda sda1 --out " + folder;
    const std::string place = folder + "/sda/sda1";
    const std::string missing = "跳过影片“”(编号8): 没有影片编码\n";
    auto server = std::make_unique<SERVER_T>(answer);
    const RUN_T got = run(command);
    EXPECT_EQ(1, got.status);
    EXPECT_EQ("目录    " + place + "\n影片数  2\n已写入  1\n已跳过  1\n", got.output);
    EXPECT_EQ(missing, got.errors);
    EXPECT_EQ(std::string(128, '\0') + "sda" + std::string(13, '\0') + "sda1" + std::string(12, '\0'),
              requests.back().second);
    EXPECT_TRUE(std::filesystem::exists(place + "/a%2Fb/metadata.xml"));
    const TERMINAL_T terminal = open_terminal(80);
    const std::string json = run(command + " --json 2>" + ttyname(terminal.client)).output;
    close(terminal.client);
    EXPECT_EQ((nlohmann::json{{"folder", place},
                              {"movies", 2},
                              {"written", 1},
                              {"skipped", {{{"mid", 8}, {"movcode", nullptr}, {"reason", "没有影片编码"}}}}}),
              nlohmann::json::parse(json));
    const std::string half(20, '#');
    EXPECT_EQ(missing + "\r\033[K写入影片 [" + half + std::string(20, '.') +
                  "]  50% 1/2 失败1\r\033[K写入影片 [" + half + half + "] 100% 2/2 失败1\n",
              read_to_end(terminal.screen));
    server.reset();
    server = std::make_unique<SERVER_T>(always({0, wire(1, RECORD, "c", RECORD_TAIL)}));
    expect_run(command, 0, "目录    " + place + "\n影片数  1\n已写入  1\n已跳过  0\n");
    std::filesystem::remove_all(folder);
}

TEST(ClientCommand, SingleMessagesAreShownAsTheyCameAndAsTheyAreDecoded) {
    const SERVER_T server{[](const REQUEST_T &request) {
        return request.first == 1002 ? ANSWER_T{0, wire(2, 28, 7)} : ANSWER_T{-103, ""};
    }};
    const RUN_T raw = run("raw info --body '0a:0B 0c'");
    EXPECT_EQ("消息类型  1002 info\n结果      0\n长度      12\n\n"
              "000000 02 00 00 00 1c 00 00 00  07 00 00 00              ............\n\n"
              "硬盘数  2\n影片数  28\n",
              raw.output);
    EXPECT_EQ("末尾有4个字节不属于任何字段\n", raw.errors);
    EXPECT_EQ("\n\v\f", requests.back().second);
    const RUN_T refused = run("raw -7 --json");
    EXPECT_EQ(1, refused.status);
    EXPECT_EQ(R"({"type": -7, "result": -103, "length": 0, "body": "", "decoded": null})"_json,
              nlohmann::json::parse(refused.output));
    expect_run("decode 3005 - --request --hex <<E\n1f000000 ffffffff 00000000 ffffffff 02000000\n"
               "05000000 0100000061 00000000\nE",
               0, "deviceid   -\nhddevname  -\nptdevname  -\nlist       a\n");
    expect_run("decode info - --hex <<E\n0200\nE", 1, "这2个字节不是 info 回应的消息体");
    expect_run("decode info - --hex <<E\n020\nE", 1, "- 的内容不是十六进制文本");
    expect_run("decode info /", 1, "无法读取 / (Is a directory)");
}

TEST(ClientCommand, IdsStandWhereTheirListsAreNotToBeHad) {
    const SERVER_T server{[](const REQUEST_T &request) {
        return request.first == 1006 ? ANSWER_T{0, wire(1, 24, 1, 1, 1, 1, FAREWELL)} : ANSWER_T{-104, ""};
    }};
    expect_run("movies", 0,
               "编号  片名      分类  类型      地区  年代  维度  评分  上架        上映\n"
               "   8  霸王别姬  1     1、3、13  1、4  8     1、2   8.1  2023-01-01  1993-01-01\n"
               "第1页,共1页,1部影片\n");
}

TEST(ClientCommand, AnEmptyPageIsNoError) {
    const SERVER_T server{always({0, wire(3, 24, 2, 28, 0, 0)})};
    expect_run("movies --page 3", 0, "这一页没有影片\n第3页,共2页,28部影片\n");
}

TEST(ClientCommand, NamesBecomeIdsWithOneRequestForEachList) {
    const REQUEST_T categories{1003, ""};
    const auto list = [](INT32_T type, INT32_T cid) { return REQUEST_T{1005, wire(type, cid)}; };
    const auto page = [](auto... ids) { return REQUEST_T{1006, wire(ids...)}; };
    const std::pair<const char *, std::vector<REQUEST_T>> cases[] = {
        {"movies --json", {page(0, 0, 0, 0, 0, 1, 24, 0)}},
        {"movies --json --category 全部 --year 0 --kind 全部 --order publish",
         {page(0, 0, 0, 0, 0, 1, 24, 1)}},
        {"movies --json --category=1 --kind=3 --area=4 --dimension=2", {page(1, 3, 4, 0, 2, 1, 24, 0)}},
        {"movies --json --category 电影 --kind 历史 --area 香港 --year 1993 --dimension 3d --page 7 --size "
         "1000 "
         "--order score",
         {categories, list(1, 1), list(2, 1), list(3, 1), list(4, 1), page(1, 13, 4, 8, 3, 7, 1000, 2)}},
        // A year's name comes before its id.
        {"movies --json --year 8", {list(3, 0), page(0, 0, 0, 8, 0, 1, 24, 0)}},
        {"movies --json --year=2001", {list(3, 0), page(0, 0, 0, 1993, 0, 1, 24, 0)}},
        // The lists that resolve a name also name the ids of the page.
        {"movies --category 电影 --kind 剧情",
         {categories, list(1, 1), page(1, 3, 0, 0, 0, 1, 24, 0), list(2, 1), list(3, 1), list(4, 1)}},
        {"movie 电视剧 08", {categories, {1007, wire(2, 8)}}},
        {"filters 全部 area", {list(2, 0)}}};
    for (const auto &[arguments, want] : cases) {
        auto server = std::make_unique<SERVER_T>(answer);
        EXPECT_EQ(0, run(arguments).status) << arguments;
        server.reset();
        EXPECT_EQ(want, requests) << arguments;
    }
}

TEST(ClientCommand, AnUnknownNameIsAnsweredWithThoseThatExist) {
    const SERVER_T server{[](const REQUEST_T &request) {
        std::string years = wire(40);
        for (int year = 2000; year < 2040; year++)
            years += wire(year - 1999, std::to_string(year).c_str());
        return request.first == 1005 ? ANSWER_T{0, years} : answer(request);
    }};
    expect_run("movies --category '\033电影'", 1, "没有名为“␛电影”的分类,可用的有: 电影、电视剧\n");
    expect_run("movies --year 1994", 1, "2010、2011 等40个,用 tavisys filters 0 year 查看全部\n");
}

TEST(ClientCommand, BadUsageIsToldInChineseBeforeAnythingIsAsked) {
    auto server = std::make_unique<SERVER_T>(answer);
    expect_run("", 2, "缺少命令\n");
    expect_run("moives", 2, "没有“moives”这个命令\n");
    expect_run("version --colour", 2, "不认识的选项: --colour\n用 tavisys version --help");
    expect_run("movie 1 2 3", 2, "多余的参数: 3\n");
    expect_run("movie 1", 2, "缺少参数: 影片编号\n");
    expect_run("movie 1 -1", 2, "影片编号: 应为0到2147483647的整数,而不是“-1”\n");
    expect_run("filters 1 actor", 2, "属性: 应为kind、area、year、dimension之一");
    for (const char *size : {"0", "1001", "24x"})
        expect_run(std::string("movies --size ") + size, 2, "--size: 应为1到1000的整数");
    expect_run("movies --page", 2, "选项 --page 的值缺失或多余\n");
    expect_run("movies --json=1", 2, "选项 --json 的值缺失或多余\n");
    expect_run("movies --order best", 2, "--order: 应为put、publish、score、name之一");
    for (const char *host : {"127.1", "::1", "''", "a/b"})
        expect_run(std::string("disks --server ") + host, 2,
                   "--server: 应为IPv4地址(如192.168.1.10)或主机名");
    for (const char *elsewhere : {"movies --server 127.0.0.1", "info --server"})
        expect_run(elsewhere, 2,
                   "这个命令只能查询本机的影柜,能查询其他影柜的命令有 disks、count、fetch 和 raw\n");
    for (const char *names : {"'' sda1", "sda sda4567890123456"})
        expect_run(std::string("count ") + names, 2, "应为1到15个字节的设备名");
    for (const char *names : {"sda ..", ". sda1", "/sda sda1", "sda a/b"})
        expect_run(std::string("fetch ") + names, 2, "将用作目录名");
    expect_run("movies --kind 99999999999", 2, "编号不能大于2147483647");
    expect_run("decode 1010 -", 2, "应为version、status、");
    expect_run("raw versions", 2, "应为-2147483648到2147483647的整数");
    expect_run("raw version --body 012", 2, "--body: 应为十六进制文本");
    expect_run("raw 10010 --text", 2, "文本消息头放不下");
    server.reset();
    EXPECT_TRUE(requests.empty());
}

TEST(ClientCommand, HelpIsInChinese) {
    for (const char *arguments : {"--help", "movies -h"}) {
        const RUN_T got = run(arguments);
        EXPECT_EQ(0, got.status);
        EXPECT_NE(std::string::npos, got.output.find("用法: tavisys"));
        for (const char *english : {"Usage", "Option", "OPTIONS", "REQUIRED", "Print", "TEXT", "INT"})
            EXPECT_EQ(std::string::npos, got.output.find(english)) << got.output;
    }
}

TEST(ClientCommand, ANoIsToldFromNobodyThereAndFromAnswersThatMakeNoSense) {
    const char *const commands[] = {"version",        "info",       "status", "status --watch",
                                    "uuid",           "categories", "movies", "movie 1 1",
                                    "filters 1 kind", "touch",      "disks",  "fetch sda sda1"};
    for (const char *arguments : {"poster", "count sda sda1"})
        expect_run(arguments, 1, "无法连接影柜服务器(127.0.0.1:40001)");
    expect_run("disks --server 127.0.0.2", 1, "无法连接影柜服务器(127.0.0.2:40001)");
    for (const char *arguments : commands)
        expect_run(arguments, 1, "无法连接影柜服务器(127.0.0.1:40001),请确认 tavisys-server 正在运行\n");
    const std::pair<ANSWER_T, const char *> cases[] = {
        {{-101, ""}, "影柜服务器拒绝了请求: 不支持这种查询(结果-101)\n"},
        {{-103, ""}, "影柜服务器拒绝了请求: 该分类下没有这个编号的影片(结果-103)\n"},
        {{-105, ""}, "影柜服务器拒绝了请求: 没有这个硬盘或分区(结果-105)\n"},
        {{20, wire(1)}, "影柜服务器拒绝了请求(结果20)\n"},
        {{-1, ""}, "影柜服务器拒绝了请求,或其回答无法解读(结果-1)\n"},
        {{0, "abc"}, "无法解读"},
        {{0, wire(INT32_MAX)}, "无法解读"},
        {{-TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH, ""}, "影柜服务器的回答无法解读"}};
    for (const auto &[fixed, message] : cases) {
        const SERVER_T server{always(fixed)};
        for (const char *arguments : commands)
            expect_run(arguments, 1, message);
    }
    const SERVER_T server{always({0, ""})};
    expect_run("poster", 1, "影柜服务器目前没有海报\n");
    expect_run("count sda sda1", 1, "无法解读");
}

TEST(ClientWatch, ShowsEachChangeUntilTheScanIsDone) {
    const SERVER_T server{[](const REQUEST_T &) {
        const std::string phases[] = {wire(1, 5, 0, 0, 5), wire(2, 10, 4, 1, 5), wire(2, 10, 4, 1, 5),
                                      wire(3, 10, 9, 1, 0)};
        return ANSWER_T{0, phases[(requests.size() - 1) % 4]};
    }};
    expect_run("status --watch", 0,
               "正在查找影片: 已找到5部\n正在解析: 5/10 (50%),失败1部\n解析完成: 9部影片,失败1部\n");
    EXPECT_EQ("\r正在查找影片: 已找…\033[K\r正在解析: 5/10 (50…\033[K\r解析完成: 9部影片,…\033[K\n",
              run_on_terminal("status --watch", 20).output);
    EXPECT_EQ(9, nlohmann::json::parse(run("status --watch --json").output)["parseok_movies"]);
}

TEST(ClientWatch, OutlivesAServerThatGoesAwayAndAnInterruptEndsTheLineAndTheProgram) {
    for (const bool interrupted : {false, true}) {
        auto server = std::make_unique<SERVER_T>(always({0, wire(2, 10, 4, 1, 5)}));
        const TERMINAL_T terminal = open_terminal(40);
        const CLIENT_T client = start("status --watch", terminal.client);
        EXPECT_EQ("\r正在解析: 5/10 (50%),失败1部\033[K", read_until(terminal.screen, "\033[K"));
        if (interrupted) {
            kill(client.pid, SIGINT);
        } else {
            server.reset();
            EXPECT_EQ("\r无法连接影柜服务器(127.0.0.1:40001),请…\033[K",
                      read_until(terminal.screen, "\033[K"));
            server = std::make_unique<SERVER_T>(always({0, wire(4, 10, 9, 1, 0)}));
        }
        const RUN_T got = finish(client, terminal.screen);
        EXPECT_EQ(interrupted ? -SIGINT : 0, got.status);
        EXPECT_EQ(interrupted ? "\n" : "\r运行中: 9部影片,失败1部\033[K\n", got.output);
        EXPECT_EQ("", got.errors);
    }
}

TEST(ClientOutput, AFullDiskAndAReaderThatHasGoneAreFailures) {
    const SERVER_T server{answer};
    for (const char *arguments : {"movies", "status --watch", "--help"}) {
        const RUN_T full = finish(start(arguments, open("/dev/full", O_WRONLY | O_CLOEXEC)), -1);
        EXPECT_EQ(1, full.status);
        EXPECT_EQ(0U, full.errors.find("写标准输出失败"));
        std::array<int, 2> output{};
        ASSERT_EQ(0, pipe2(output.data(), O_CLOEXEC));
        close(output[0]);
        const RUN_T gone = finish(start(arguments, output[1]), -1);
        EXPECT_EQ(1, gone.status);
        EXPECT_EQ("", gone.errors);
    }
}
