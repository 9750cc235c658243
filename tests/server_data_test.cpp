// The large set of movie documents, where TAVISYS_DATA names its folder: what EXPECTED.json there says
// must be what the server has, and every page must be reachable.
#include "server_harness.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

using namespace harness;
using nlohmann::json;

namespace {

std::map<std::string, TP_TAVISYS_KIND_INFORMATION_T> kinds_of(INT32_T cid) { // without their names
    std::map<std::string, TP_TAVISYS_KIND_INFORMATION_T> result;
    const RAW_REPLY_T reply =
        exchange(TAVISYS_MSGTYPE_REQUEST_KIND_LIST,
                 bytes_of(TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T{TP_FILTER_TYPE_KIND, cid}));
    TP_TAVISYS_KIND_INFORMATION_LIST_T *list = nullptr;
    EXPECT_EQ(reply.head.length,
              decode_tavisys_kind_information_from_message(reply.body.data(), reply.head.length, &list));
    for_each(list, [&](const auto &kind) { result[kind.name] = {kind.id, nullptr, kind.movies}; });
    delete_tavisys_kind_information_list(&list);
    return result;
}

INT32_T total_of(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) {
    return ask_for_page(request)->pageinfo.totalmovies;
}

// Reads a category page by page; each movie must come once, in the right order.
size_t read_category(INT32_T cid, INT32_T pagesize, INT32_T orderby) {
    std::set<std::string> seen;
    INT32_T pages = 1;
    std::string last;
    for (INT32_T pagenum = 1; pagenum <= pages; pagenum++) {
        const PAGE_PTR page = ask_for_page({cid, 0, 0, 0, 0, pagenum, pagesize, orderby});
        pages = page->pageinfo.totalpages;
        for_each(page->list, [&](const auto &movie) {
            EXPECT_TRUE(seen.insert(std::string(movie.movcode) + movie.bposter).second) << movie.movcode;
            EXPECT_EQ(cid, movie.category_id);
            if (orderby == TP_ORDER_BY_NAME) {
                EXPECT_LE(last, movie.movname);
            }
            last = movie.movname;
        });
    }
    return seen.size();
}

void expect_filters(INT32_T cid, INT32_T type, const json &expected) {
    TP_TAVISYS_FILTER_INFORMATION_LIST_T *list = nullptr;
    ASSERT_EQ(0, tavisysapi_get_movie_filter_information_list(cid, type, &list));
    size_t found = 0;
    for_each(list, [&](const auto &value) {
        if (strcmp(value.name, TAVISYS_NAME_OF_ALL) == 0)
            return;
        found++;
        TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T request{cid, 0, 0, 0, 0, 1, 1, 0};
        (type == TP_FILTER_TYPE_AREA ? request.aid : request.yid) = value.id;
        EXPECT_EQ(expected.value(value.name, -1), total_of(request)) << value.name;
    });
    EXPECT_EQ(expected.size(), found);
    delete_tavisys_filter_information_list(&list);
}

} // namespace

TEST(LargeLibrary, IsServedWholeAndExactly) {
    const char *folder = getenv("TAVISYS_DATA");
    if (folder == nullptr)
        GTEST_SKIP() << "TAVISYS_DATA names no folder of movie documents";
    std::ifstream file(std::filesystem::path(folder) / "EXPECTED.json");
    ASSERT_TRUE(file) << "no EXPECTED.json in " << folder;
    const json expected = json::parse(file);
    const json &good = expected["of_parse_ok"];
    const auto server = SERVER_PROCESS_T::serving(folder, {"--log-level", "NOTICE"});

    const auto status = ask_for_status();
    EXPECT_EQ(expected["documents"], status.total_movies);
    EXPECT_EQ(expected["parse_ok"], status.parseok_movies);
    EXPECT_EQ(expected["documents"].get<int>() - expected["parse_ok"].get<int>(), status.parseerr_movies);
    const std::string log = server->log();
    size_t rejected = 0;
    for (size_t at = 0; (at = log.find("影片属于禁止的类型", at)) != std::string::npos; at++)
        rejected++;
    EXPECT_EQ(expected["rejected_kind"], rejected);

    TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list = nullptr;
    ASSERT_EQ(0, tavisysapi_get_category_information_list(&list));
    INT32_T order = 0;
    for_each(list, [&](const auto &category) {
        SCOPED_TRACE(category.name);
        EXPECT_EQ(good["categories"][category.name], category.movies);
        EXPECT_EQ(static_cast<size_t>(category.movies), read_category(category.id, 997, order++ % 4));
        auto kinds = kinds_of(category.id);
        for (const auto &[name, count] : good["kinds"][category.name].items()) {
            EXPECT_EQ(count, kinds[name].movies) << name;
            EXPECT_EQ(count, total_of({category.id, kinds[name].id, 0, 0, 0, 1, 1, 0})) << name;
        }
    });
    delete_tavisys_category_information_list(&list);
    expect_filters(0, TP_FILTER_TYPE_AREA, good["areas"]);
    expect_filters(0, TP_FILTER_TYPE_YEAR, good["years"]);
}
