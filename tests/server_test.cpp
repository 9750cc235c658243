// tavisys-server as its clients see it: what it answers, what it leaves out, how it rescans and ends.
#include "server_harness.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

using namespace harness;
namespace fs = std::filesystem;

namespace {

using PAGE_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif

PAGE_REQUEST_T page_request(INT32_T cid, INT32_T pagenum, INT32_T pagesize, INT32_T orderby = 0) {
    return {cid, 0, 0, 0, 0, pagenum, pagesize, orderby};
}

std::map<std::string, INT32_T> filter_ids(INT32_T cid, INT32_T type) {
    std::map<std::string, INT32_T> ids;
    TP_TAVISYS_FILTER_INFORMATION_LIST_T *list = nullptr;
    EXPECT_EQ(0, tavisysapi_get_movie_filter_information_list(cid, type, &list));
    for_each(list, [&](const auto &value) { ids[value.name] = value.id; });
    delete_tavisys_filter_information_list(&list);
    return ids;
}

std::vector<std::string> names_of(const PAGE_REQUEST_T &request) {
    std::vector<std::string> names;
    const PAGE_PTR page = ask_for_page(request);
    for_each(page->list, [&](const auto &movie) { names.emplace_back(movie.movname); });
    return names;
}

std::map<std::string, INT32_T> ids_by_name() {
    std::map<std::string, INT32_T> ids;
    const PAGE_PTR page = ask_for_page(page_request(0, 1, 100));
    for_each(page->list, [&](const auto &movie) { ids[movie.movname] = movie.movid; });
    return ids;
}

INT32_T total_of(PAGE_REQUEST_T request) {
    return ask_for_page(request)->pageinfo.totalmovies;
}

// Reads every page of a category; each movie must come once.
std::set<INT32_T> read_all_pages(INT32_T cid, INT32_T pagesize, INT32_T orderby) {
    std::set<INT32_T> ids;
    INT32_T pages = 1;
    for (INT32_T pagenum = 1; pagenum <= pages; pagenum++) {
        const PAGE_PTR page = ask_for_page(page_request(cid, pagenum, pagesize, orderby));
        pages = page->pageinfo.totalpages;
        INT32_T index = (pagenum - 1) * pagesize;
        for_each(page->list, [&](const auto &movie) {
            EXPECT_TRUE(ids.insert(movie.movid).second) << movie.movcode << " came twice";
            EXPECT_EQ(++index, movie.index);
        });
    }
    return ids;
}

std::map<std::string, std::pair<INT32_T, INT32_T>> categories() {
    std::map<std::string, std::pair<INT32_T, INT32_T>> result;
    TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list = nullptr;
    EXPECT_EQ(0, tavisysapi_get_category_information_list(&list));
    for_each(list, [&](const auto &category) { result[category.name] = {category.id, category.movies}; });
    delete_tavisys_category_information_list(&list);
    return result;
}

} // namespace

TEST(Server, ServesTheSampleLibrary) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY, {"--name", "客厅影柜"});
    const auto status = ask_for_status();
    EXPECT_EQ(SYSRUN_STATUS_RUNNING, status.status);
    EXPECT_EQ(30, status.total_movies);
    EXPECT_EQ(28, status.parseok_movies);
    EXPECT_EQ(2, status.parseerr_movies);
    EXPECT_EQ(0, status.left_movies);
    EXPECT_NE(std::string::npos, server->log().find("sda2/TV1994-0017/metadata.xml: 影片属于禁止的类型"));
    EXPECT_NE(std::string::npos, server->log().find("sdb1/TV1953-0004/metadata.xml: "));

    const auto found = categories();
    EXPECT_EQ(6U, found.size());
    INT32_T sum = 0;
    for (const auto &[name, category] : found) {
        EXPECT_EQ(category.second, static_cast<INT32_T>(read_all_pages(category.first, 3, 0).size())) << name;
        sum += category.second;
    }
    EXPECT_EQ(28, sum);

    TP_TAVISYS_VERSION_INFORMATION_T *version = nullptr;
    ASSERT_EQ(0, tavisysapi_get_software_version_information(&version));
    INT8_T uuid[37] = "";
    EXPECT_EQ(0, tavisysapi_get_uuid_infomation(uuid, sizeof uuid));
    EXPECT_STREQ("客厅影柜", version->name);
    EXPECT_STREQ(uuid, version->devid);
    EXPECT_EQ(36U, strlen(uuid));
    delete_tavisys_version_information(&version);

    TP_TAVISYS_SYSTEM_INFORMATION_T *system = nullptr;
    ASSERT_EQ(0, tavisysapi_get_system_information(&system));
    EXPECT_EQ(2, system->hdnum);
    EXPECT_EQ(28, system->movnum);
    delete_tavisys_system_information(&system);
}

TEST(Server, TellsEverythingAboutAMovie) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
    const INT32_T cid = categories()["电视剧"].first;
    const PAGE_PTR page = ask_for_page(page_request(cid, 1, 10, TP_ORDER_BY_PUBLISH_TIME));
    const auto &movie = *page->list->info;
    EXPECT_STREQ("神探夏洛克", movie.movname);
    EXPECT_STREQ("sda/sda2/TV2010-0025/posters/b.jpg", movie.bposter);

    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *detail = nullptr;
    TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T request{cid, movie.movid};
    ASSERT_EQ(0, tavisysapi_get_movie_detail_information(&request, &detail));
    EXPECT_STREQ("神探夏洛克", detail->name);
    EXPECT_EQ(2010, detail->year);
    EXPECT_STREQ("2D", detail->dimension_info->name);
    EXPECT_STREQ("主演", detail->actor_info->desc);
    EXPECT_EQ(3, detail->videos);
    EXPECT_STREQ("sda/sda2/TV2010-0025/videos/TV2010-0025_E01.mkv", detail->video_list->info->mp4);
    for_each(detail->kind_info->list, [](const auto &kind) { EXPECT_STRNE("全部", kind.name); });
    release_tavisys_detail_movie_information(&detail);

    request.cid = categories()["电影"].first; // not its category
    EXPECT_EQ(TAVISYS_RESULT_NO_SUCH_MOVIE, tavisysapi_get_movie_detail_information(&request, &detail));
}

TEST(Server, RefusesWhatItCannotAnswerAndGoesOn) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
    const auto filter = [](INT32_T type) {
        return bytes_of(
            TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T{static_cast<TP_FILTER_TYPE_E>(type), 0});
    };
    const auto page = [](PAGE_REQUEST_T request) { return bytes_of(request); };
    const auto place = [](const char *disk, const char *partition) {
        TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T request{};
        memcpy(request.hddevname, disk, strlen(disk));
        memcpy(request.ptdevname, partition, strlen(partition));
        return bytes_of(request);
    };
    const std::string codes = request_of_codes("sda", "", {"TV1993-0015"});
    struct REFUSAL_T {
        const char *what;
        INT32_T type;
        std::string body;
        INT32_T result;
    };
    const REFUSAL_T refusals[] = {
        {"a type that nobody knows", 999, "", TAVISYS_RESULT_UNKNOWN_TYPE},
        {"a negative type", -1, "", TAVISYS_RESULT_UNKNOWN_TYPE},
        {"a type without a reply body", 1010, "", TAVISYS_RESULT_UNKNOWN_TYPE},
        {"a body where there is none", 1000, "x", TAVISYS_RESULT_BAD_REQUEST},
        {"no body where there is one", 1006, "", TAVISYS_RESULT_BAD_REQUEST},
        {"a body cut short", 1007, "1234567", TAVISYS_RESULT_BAD_REQUEST},
        {"a body too long", 1005, "123456789", TAVISYS_RESULT_BAD_REQUEST},
        {"filter type 0", 1005, filter(0), TAVISYS_RESULT_BAD_REQUEST},
        {"filter type 5", 1005, filter(5), TAVISYS_RESULT_BAD_REQUEST},
        {"a negative filter type", 1005, filter(-1), TAVISYS_RESULT_BAD_REQUEST},
        {"kinds by another type", 1004, filter(2), TAVISYS_RESULT_BAD_REQUEST},
        {"page 0", 1006, page(page_request(0, 0, 10)), TAVISYS_RESULT_BAD_REQUEST},
        {"a negative page", 1006, page(page_request(0, -1, 10)), TAVISYS_RESULT_BAD_REQUEST},
        {"a page of none", 1006, page(page_request(0, 1, 0)), TAVISYS_RESULT_BAD_REQUEST},
        {"a page of 1001", 1006, page(page_request(0, 1, 1001)), TAVISYS_RESULT_BAD_REQUEST},
        {"no such order", 1006, page(page_request(0, 1, 10, 4)), TAVISYS_RESULT_BAD_REQUEST},
        {"a negative order", 1006, page(page_request(0, 1, 10, -1)), TAVISYS_RESULT_BAD_REQUEST},
        {"a movie that isn't there", 1007,
         bytes_of(TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T{0, -7}), TAVISYS_RESULT_NO_SUCH_MOVIE},
        {"a disk that isn't there", 3001, place("sdz", ""), TAVISYS_RESULT_NO_SUCH_POSITION},
        {"a partition that isn't there", 3002, place("sda", "sdb1"), TAVISYS_RESULT_NO_SUCH_POSITION},
        {"a name without an end", 3003, place("sda", "sda1sda1sda1sda1"), TAVISYS_RESULT_NO_SUCH_POSITION},
        {"a place cut short", 3003, place("sda", "sda1").substr(1), TAVISYS_RESULT_BAD_REQUEST},
        {"no codes", 3005, "", TAVISYS_RESULT_BAD_REQUEST},
        {"a request for nothing", 3005, std::string(4, '\0'), TAVISYS_RESULT_BAD_REQUEST},
        {"more than codes", 3005, codes + "x", TAVISYS_RESULT_BAD_REQUEST},
        {"less than codes", 3005, codes.substr(0, codes.size() - 1), TAVISYS_RESULT_BAD_REQUEST},
    };
    size_t refused = 0;
    for (const REFUSAL_T &refusal : refusals) {
        SCOPED_TRACE(refusal.what);
        const RAW_REPLY_T reply = exchange(refusal.type, refusal.body);
        EXPECT_EQ(refusal.type, reply.head.type);
        ASSERT_EQ(refusal.result, reply.head.result);
        EXPECT_EQ(0, reply.head.length);
        EXPECT_TRUE(server->wait_for("请求未能回应", ++refused));
    }
    EXPECT_EQ(28, total_of(page_request(0, 1, 1)));
}

TEST(Server, SendsAnEmptyPageAsOne) {
    const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
    const PAGE_REQUEST_T requests[] = {
        page_request(0, 4, 10),       page_request(0, 2147483647, 1000), page_request(77, 1, 10),
        {0, 9999, 0, 0, 0, 1, 10, 0}, {0, 0, 0, -5, 0, 1, 10, 3},
    };
    for (const PAGE_REQUEST_T &request : requests) {
        const PAGE_PTR page = ask_for_page(request);
        EXPECT_EQ(nullptr, page->list);
        EXPECT_EQ(0, page->pageinfo.replymovies);
        EXPECT_EQ(request.pagenum, page->pageinfo.pagenum);
    }
    EXPECT_EQ(3, ask_for_page(requests[0])->pageinfo.totalpages);
    EXPECT_TRUE(filter_ids(77, TP_FILTER_TYPE_KIND).empty());
}

TEST(Server, FiltersAndSortsPages) {
    const FOLDER_T library;
    const MOVIE_DOCUMENT_T movies[] = {
        {"C1", "丙", "7.5", "2D", "电影", {"剧情", "爱情"}, {"中国", "香港"}, "2020-03-01", "1999-12-31"},
        {"C2", "甲", "9.0", "3D", "电影", {"剧情"}, {"美国"}, "2020-01-01", "2001-05-05"},
        {"C3", "乙", "9.0", "2D", "电影", {"科幻"}, {"中国"}, "2020-02-01", "1999-01-01"},
        {"C4", "丁", "x", "2D", "电视剧", {"剧情"}, {"中国"}, "2019-01-01", "1990-01-01"},
    };
    for (const MOVIE_DOCUMENT_T &movie : movies)
        write_document(library.path(), "sda/sda1", movie);
    const auto server = SERVER_PROCESS_T::serving(library.path());
    const INT32_T film = categories()["电影"].first;
    const auto kinds = filter_ids(film, TP_FILTER_TYPE_KIND);
    const auto areas = filter_ids(film, TP_FILTER_TYPE_AREA);
    const auto years = filter_ids(film, TP_FILTER_TYPE_YEAR);
    const auto dimensions = filter_ids(film, TP_FILTER_TYPE_DIMENSION);
    EXPECT_EQ(0U, kinds.count("电视剧"));
    ASSERT_EQ(5U, kinds.size()); // 全部 剧情 爱情 科幻 3D
    ASSERT_EQ(3U, years.size());

    using NAMES_T = std::vector<std::string>;
    EXPECT_EQ((NAMES_T{"丙", "乙", "甲"}), names_of(page_request(film, 1, 10, TP_ORDER_BY_PUT_TIME)));
    EXPECT_EQ((NAMES_T{"甲", "丙", "乙"}), names_of(page_request(film, 1, 10, TP_ORDER_BY_PUBLISH_TIME)));
    EXPECT_EQ((NAMES_T{"甲", "乙", "丙"}), names_of(page_request(film, 1, 10, TP_ORDER_BY_SCORE)));
    EXPECT_EQ((NAMES_T{"丁", "丙", "乙", "甲"}), names_of(page_request(0, 1, 10, TP_ORDER_BY_NAME)));

    const INT32_T all = kinds.at("全部");
    EXPECT_EQ(3, total_of({film, all, areas.at("全部"), years.at("全部"), dimensions.at("全部"), 1, 1, 0}));
    EXPECT_EQ(2, total_of({film, kinds.at("剧情"), 0, 0, 0, 1, 1, 0}));
    EXPECT_EQ(3, total_of({0, kinds.at("剧情"), 0, 0, 0, 1, 1, 0}));
    EXPECT_EQ(1, total_of({film, kinds.at("3D"), 0, 0, 0, 1, 1, 0}));
    EXPECT_EQ(2, total_of({film, 0, areas.at("中国"), years.at("1999"), 0, 1, 1, 0}));
    EXPECT_EQ(1, total_of({film, kinds.at("爱情"), areas.at("香港"), years.at("1999"), dimensions.at("2D"), 1,
                           1, 0}));
    EXPECT_EQ(0, total_of({film, kinds.at("爱情"), 0, 0, dimensions.at("3D"), 1, 1, 0}));
}

TEST(Server, LeavesOutWhatItCannotReadAndSaysWhy) {
    const FOLDER_T library;
    const fs::path partition = library.path() / "sda" / "sda1";
    const MOVIE_DOCUMENT_T good;
    write_document(library.path(), "sda/sda1", good);
    write_document(library.path(), "sda/sda2", good); // on another partition it is another movie
    write_file(partition / "again" / "metadata.xml", good.text());
    write_file(partition / "large" / "metadata.xml", good.text() + std::string(4 * 1024 * 1024, ' '));
    write_file(partition / "empty" / "metadata.xml", "");
    fs::create_directories(partition / "folder" / "metadata.xml");
    fs::create_directories(partition / "link");
    fs::create_symlink(partition / good.code / "metadata.xml", partition / "link" / "metadata.xml");
    fs::create_directories(partition / "pipe");
    ASSERT_EQ(0, mkfifo((partition / "pipe" / "metadata.xml").c_str(), 0600));
    write_file(partition / "ignored" / "other.xml", "no document");
    write_file(library.path() / "sda" / "metadata.xml", "not on a partition");
    fs::create_directory_symlink(partition, library.path() / "sda" / "sda9");

    const auto server = SERVER_PROCESS_T::serving(library.path());
    const auto status = ask_for_status();
    EXPECT_EQ(8, status.total_movies);
    EXPECT_EQ(2, status.parseok_movies);
    EXPECT_EQ(6, status.parseerr_movies);
    EXPECT_EQ(2, total_of(page_request(0, 1, 1)));
    const std::string log = server->log();
    for (const char *line : {"large/metadata.xml: 超过4 MiB", "folder/metadata.xml: 不是普通文件",
                             "link/metadata.xml: 是符号链接", "pipe/metadata.xml: 不是普通文件",
                             "again/metadata.xml: 同一分区上已有相同影片编码的影片",
                             "empty/metadata.xml: 是空文件", "/sda: 其中的metadata.xml不属于任何分区"})
        EXPECT_NE(std::string::npos, log.find(line)) << line << "\n" << log;
}

TEST(Server, ARescanSeesWhatHasChangedAndKeepsTheIdsOfTheRest) {
    const FOLDER_T library;
    const fs::path kept = write_document(library.path(), "sda/sda1", {"C1", "一"});
    const fs::path changed = write_document(library.path(), "sda/sda1", {"C2", "二"});
    const fs::path removed = write_document(library.path(), "sda/sda1", {"C3", "三"});
    for (const fs::path &document : {kept, changed, removed}) // folders that are relied on
        fs::last_write_time(document.parent_path(), fs::file_time_type::clock::now() - std::chrono::hours(1));
    const auto server = SERVER_PROCESS_T::serving(library.path());
    auto before = ids_by_name();
    ASSERT_EQ(3U, before.size());

    write_file(changed, MOVIE_DOCUMENT_T{"C2", "贰", "1.0"}.text());
    fs::remove(removed);
    write_document(library.path(), "sdb/sdb1", {"C4", "四"});
    write_document(library.path(), "sda/sda1/C1", {"C5", "五"});
    fs::create_hard_link(kept, library.path() / "backup.xml"); // neither is a change of what is in it
    fs::permissions(kept, fs::perms::owner_read);
    server->signal(SIGHUP);
    ASSERT_TRUE(server->wait_for_scans(2));
    auto after = ids_by_name();
    EXPECT_EQ(4U, after.size());
    EXPECT_EQ(before["一"], after["一"]);
    EXPECT_EQ(1U, after.count("贰"));
    EXPECT_EQ(1U, after.count("四"));
    EXPECT_EQ(1U, after.count("五"));
}

// The movies that are left of many are moved together by the second scan, and shown there by the third.
TEST(Server, WhatIsLeftOfALibraryKeepsItsIds) {
    const FOLDER_T library;
    std::vector<fs::path> documents;
    for (int i = 0; i < 400; i++) {
        const std::string number = std::to_string(i);
        documents.push_back(write_document(library.path(), "sda/sda1", {"C" + number, number}));
    }
    const auto server = SERVER_PROCESS_T::serving(library.path());
    size_t scans = 1;
    const auto scan_without = [&](auto is_to_go) {
        for (size_t i = 0; i < documents.size(); i++)
            if (is_to_go(i))
                fs::remove(documents[i]);
        server->signal(SIGHUP);
        return server->wait_for_scans(++scans);
    };
    ASSERT_TRUE(scan_without([](size_t i) { return i % 8 != 0; }));
    auto left = ids_by_name();
    EXPECT_EQ(50U, left.size());
    for (const size_t last : {size_t{0}, size_t{8}}) {
        ASSERT_TRUE(scan_without([&](size_t i) { return i == last; }));
        left.erase(std::to_string(last));
        EXPECT_EQ(left, ids_by_name());
    }
}

TEST(Server, ManyRescansDropNoRequestAndDontGrow) {
    const FOLDER_T library;
    fs::copy(SAMPLE_LIBRARY, library.path(), fs::copy_options::recursive);
    std::vector<fs::path> documents;
    for (const auto &entry : fs::recursive_directory_iterator(library.path()))
        if (entry.path().filename() == "metadata.xml")
            documents.push_back(entry.path());
    const auto server = SERVER_PROCESS_T::serving(library.path(), {"--log-level", "NOTICE"});

    std::atomic<bool> stop = false;
    std::atomic<int> asked = 0;
    std::thread client([&] {
        for (; !stop; asked++)
            EXPECT_EQ(28, total_of(page_request(0, 1, 100))); // never a half-filled catalogue
    });
    constexpr size_t RESCANS = 100;
    long early = 0;
    for (size_t scan = 1; scan <= RESCANS; scan++) {
        for (const fs::path &document : documents) // as if each had been written anew
            fs::last_write_time(document, fs::file_time_type::clock::now());
        server->signal(SIGHUP);
        ASSERT_TRUE(server->wait_for_scans(scan + 1));
        if (scan == RESCANS / 10)
            early = server->resident_kib();
    }
    stop = true;
    client.join();
    EXPECT_GT(asked, 0);
    if (!SANITIZED) { // the sanitizers keep freed memory back; they see leaks themselves
        EXPECT_LT(server->resident_kib(), early + early / 10);
    }
}

TEST(Server, AnswersWhatHasConnectedBeforeItEnds) {
    for (const int number : {SIGTERM, SIGINT}) {
        const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY, {"--threads", "2"});
        std::vector<int> clients;
        for (int i = 0; i < 100; i++) {
            clients.push_back(connect_to_server());
            send_request(clients.back(), TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO,
                         bytes_of(page_request(0, 1, 1000)));
        }
        const int silent = connect_to_server();
        const auto begun = std::chrono::steady_clock::now();
        server->signal(number);
        for (const int client : clients)
            EXPECT_GT(receive_reply(client).body.size(), 1000U);
        EXPECT_EQ(0, server->wait_for_end());
        // It ends within a second; a machine that is busy with other tests gets some more.
        EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(SANITIZED ? 5 : 2));
        close_tavisys_msg_channel(silent);
    }
}

TEST(Server, SaysInOneLineWhyItCannotStart) {
    const FOLDER_T folder;
    write_file(folder.path() / "file", "");
    const auto fails = [](const std::vector<std::string> &arguments, int status, const char *text) {
        SERVER_PROCESS_T server(arguments);
        EXPECT_EQ(status, server.wait_for_end()) << text;
        EXPECT_TRUE(server.wait_for(text)) << server.log();
        const std::string log = server.log();
        EXPECT_EQ(1, std::count(log.begin(), log.end(), '\n')) << log;
    };
    fails({"--library", (folder.path() / "missing").string()}, 1, "无法打开影片库目录");
    fails({"--library", (folder.path() / "file").string()}, 1, "不是目录");
    fails({}, 2, "--library");
    fails({"--library", folder.path().string(), "--threads", "0"}, 2, "--threads");
    fails({"--library", folder.path().string(), "--threads", "many"}, 2, "--threads");
    fails({"--library", folder.path().string(), "--log-level", "LOUD"}, 2, "--log-level");
    fails({"--library", folder.path().string(), "--name", ""}, 2, "--name");
    for (const char *range :
         {"", "10.0.0.0/33", "10.0.0.0/", "10.0.0/8", "10.0.0.0/8,", "10.0.0.0/-1", "::1"})
        fails({"--library", folder.path().string(), "--allow", range}, 2, "--allow");
    fails({"--library", folder.path().string(), "--nonsense"}, 2, "--nonsense");

    const auto server = SERVER_PROCESS_T::serving(folder.path()); // without a document it serves, too
    EXPECT_TRUE(categories().empty());
    EXPECT_TRUE(filter_ids(0, TP_FILTER_TYPE_YEAR).empty());
    EXPECT_EQ(0, total_of(page_request(0, 1, 10)));
    fails({"--library", folder.path().string()}, 1, "40001");
}
