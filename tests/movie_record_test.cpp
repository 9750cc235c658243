#include "dbdata_movie.h"

#include <gtest/gtest.h>

#include "harness.h"
#include "support_memory.h"

using namespace harness;
using NODE_T = DBDATA_MOVIE_INFORMATION_LIST_T;
using MOVIE_T = DBDATA_MOVIE_INFORMATION_T;

namespace {

constexpr auto add = add_node_to_dbdata_movie_information_list;
constexpr auto add_single = add_single_node_to_dbdata_movie_information_list;
constexpr auto number_of = dbdata_get_number_from_dbdata_movie_information_list;
constexpr auto find_twin = found_node_from_dbdata_movie_information_list_by_movie_code;
constexpr auto find_id = found_node_from_dbdata_movie_information_list_by_mid;
constexpr auto release_list = release_dbdata_movie_information_list;

LOG_LINE_T line(const char *function, int level, const char *text) {
    return {"dbdata_movinfo/dbdata_movie.c", function, level, text};
}

MOVIE_T *movie(const INT8_T *code, const INT8_T *disk = "sda", const INT8_T *partition = "sda1") {
    MOVIE_T *made = create_dbdata_movie_information();
    made->info = create_dbdata_basic_movie_information(code, "片名", nullptr);
    made->hddevname = safe_strdup(disk);
    made->ptdevname = safe_strdup(partition);
    return made;
}

NODE_T *node_of(MOVIE_T *made) {
    return create_dbdata_movie_information_list_node(made);
}

// A movie with everything that it can own.
MOVIE_T *full_movie() {
    MOVIE_T *made = movie("M1");
    for (INT8_T **text : {&made->imdbvalue, &made->acronym, &made->summary, &made->description})
        *text = safe_strdup("文");
    made->ipaddr = safe_strdup("10.0.0.1");
    made->posters = create_dbdata_poster_information("b", "m", "s");
    made->dimension_list = create_dbdata_dimension_information_list_node_ex(0, "2D", nullptr);
    made->resolution_list = create_dbdata_resolution_information_list_node_ex(0, "BD", nullptr);
    made->category_list = create_dbdata_category_information_list_node_ex("电影", nullptr);
    made->kind_list = create_dbdata_kind_information_list_node_ex(1, "动作", nullptr);
    made->area_list = create_dbdata_area_information_list_node_ex("美国", nullptr);
    made->director_list = create_dbdata_director_information_list_node_ex("P1", "甲", nullptr);
    made->actor_list = create_dbdata_actor_information_list_node_ex("P2", "乙", nullptr);
    made->year_list = create_dbdata_year_information_list_node_ex(1999, nullptr);
    made->video_list = create_dbdata_video_information_list_node_ex(1, "片", "/v", "/m");
    return made;
}

using MovieRecord = LEAK_CHECKED_T;

} // namespace

TEST_F(MovieRecord, TitlesAndPostersAreCopiedWhole) {
    auto *posters = create_dbdata_poster_information("b", "m", "s");
    auto *tv = create_dbdata_tv_poster_information("tb", "tm", "ts");
    EXPECT_STREQ("b", posters->relative_big_path);
    EXPECT_STREQ("m", posters->relative_middle_path);
    EXPECT_STREQ("m", posters->relative_small_path); // not the small one
    EXPECT_EQ(nullptr, posters->tv_big);
    EXPECT_EQ("tbtmts", std::string(tv->tv_big) + tv->tv_middle + tv->tv_small);
    EXPECT_EQ(nullptr, tv->relative_small_path);
    for (auto *info : {posters, tv})
        delete_dbdata_poster_information(&info);
    EXPECT_EQ(nullptr, create_dbdata_basic_movie_information(nullptr, "片名", "Title"));
    EXPECT_EQ(nullptr, create_dbdata_basic_movie_information("M1", nullptr, "Title"));
    EXPECT_EQ(nullptr, create_dbdata_poster_information("b", "m", nullptr));
    EXPECT_EQ(nullptr, create_dbdata_tv_poster_information("b", "m", nullptr));
}

TEST_F(MovieRecord, TheLastDeleteLeavesYearsTextsPlaceAndRecordToTheCaller) {
    MOVIE_T *made = full_movie();
    MOVIE_T *kept = duplicate_dbdata_movie_information(made);
    delete_dbdata_movie_information(&made);
    ASSERT_EQ(kept, made); // one reference is left
    EXPECT_STREQ("M1", made->info->movie_code);
    delete_dbdata_movie_information(&made);
    EXPECT_EQ(nullptr, made);
    EXPECT_EQ(nullptr, kept->info);
    EXPECT_EQ(1999, kept->year_list->info->year);
    delete_dbdata_year_information_list(&kept->year_list);
    for (INT8_T *left : {kept->description, kept->ipaddr, kept->hddevname, kept->ptdevname})
        safe_free(left);
    safe_free(kept);
}

TEST_F(MovieRecord, TheLastReleaseFreesAllAnEarlierOneCountsDown) {
    MOVIE_T *made = full_movie();
    NODE_T *list = node_of(duplicate_dbdata_movie_information(made));
    list->next = node_of(full_movie());
    release_list(&list);
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(1, made->count);
    EXPECT_STREQ("M1", made->info->movie_code);
    release_dbdata_movie_information(&made); // the fixture sees that nothing is left
    EXPECT_EQ(nullptr, made);
    release_dbdata_movie_information(&made);
    release_list(&list);
}

TEST_F(MovieRecord, AMovieIsADuplicateOnlyOnItsOwnPartition) {
    const struct {
        const char *code, *disk, *partition, *log; // log: of a duplicate
    } CASES[] = {{"M1", "A", "A1", nullptr},
                 {"M1", "B", "A1", nullptr},
                 {"M1", "A", "A2", nullptr},
                 {"M2", "A", "A1", nullptr},
                 {"M1", nullptr, nullptr, nullptr},
                 {"M1", "A", "A1", "查找重复影片:硬盘(A)分区(A1)影片编码(M1)"},
                 {"M1", nullptr, nullptr, "查找重复影片:硬盘((null))分区((null))影片编码(M1)"}};
    NODE_T *list = nullptr;
    for (const auto &c : CASES) {
        NODE_T *node = node_of(movie(c.code, c.disk, c.partition));
        std::vector<LOG_LINE_T> want;
        if (c.log != nullptr) {
            want = {line("found_node_from_dbdata_movie_information_list_by_movie_code", 40, c.log)};
            EXPECT_EQ(1, add(&list, node));
            EXPECT_EQ(want, take_log());
            want.push_back(line("add_single_node_to_dbdata_movie_information_list", 40, "找到相同影片"));
        }
        EXPECT_EQ(c.log != nullptr ? 1 : 0, add_single(&list, node));
        EXPECT_EQ(want, take_log());
        if (c.log != nullptr)
            release_list(&node); // it stayed ours
    }
    EXPECT_EQ(5, number_of(list));
    release_list(&list);
}

TEST_F(MovieRecord, WhatHasNoCodeIsNoDuplicateAndNotCounted) {
    NODE_T *list = nullptr;
    EXPECT_EQ(0, add(&list, node_of(nullptr))); // any may be the head
    EXPECT_EQ(0, add(&list, node_of(movie("M1"))));
    for (NODE_T *node : {node_of(create_dbdata_movie_information()), node_of(nullptr)}) {
        EXPECT_EQ(0, add(&list, node)); // it stays the caller's
        EXPECT_EQ(nullptr, find_twin(list, node));
        release_list(&node);
    }
    EXPECT_EQ(1, number_of(list));
    release_list(&list);
}

TEST_F(MovieRecord, RemovalsTakeTheFirstMatchAndReleaseItsMovie) {
    const std::vector<MOVIE_T *> movies = {movie("M1", "A"), movie("M2", "B"), movie("M3", "A")};
    NODE_T *list = nullptr;
    for (MOVIE_T *made : movies)
        add(&list, node_of(duplicate_dbdata_movie_information(made)));
    EXPECT_EQ(movies[1], find_id(list, movies[1]->id)->info);
    EXPECT_EQ(nullptr, find_id(list, -1));
    delete_node_from_dbdata_movie_information_list_by_movie_code(&list, "M9");
    EXPECT_EQ(3, number_of(list));
    delete_node_from_dbdata_movie_information_list_by_movie_code(&list, "M2");
    delete_node_from_dbdata_movie_information_list_by_harddisk_devname(&list, "A");
    EXPECT_EQ(movies[2], list->info);
    EXPECT_EQ(nullptr, list->next);
    delete_dbdata_movie_information_list(&list);
    for (MOVIE_T *made : movies) {
        EXPECT_EQ(1, made->count);
        release_dbdata_movie_information(&made);
    }
}

TEST_F(MovieRecord, TheFilterComparesIdsAnd0StandsForAny) {
    MOVIE_T *made = full_movie();
    made->area_list->next = create_dbdata_area_information_list_node_ex("英国", nullptr);
    const INT32_T area = static_cast<DBDATA_AREA_INFORMATION_LIST_T *>(made->area_list->next)->info->id;
    const INT32_T year = made->year_list->info->id;
    const INT32_T dimension = made->dimension_list->info->id;
    EXPECT_EQ(0, filter_movie_by_condition(made, 0, 0, 0));
    EXPECT_EQ(0, filter_movie_by_condition(made, area, year, dimension));
    EXPECT_EQ(-1, filter_movie_by_condition(made, -1, year, dimension));
    EXPECT_EQ(-1, filter_movie_by_condition(made, area, 1999, dimension)); // no id, but the year itself
    EXPECT_EQ(-1, filter_movie_by_condition(made, area, year, -1));
    EXPECT_EQ(-1, filter_movie_by_condition(nullptr, 0, 0, 0));
    EXPECT_EQ(std::vector{line("filter_movie_by_condition", 80, "movinfo is nul!")}, take_log());
    release_dbdata_movie_information(&made);
}
