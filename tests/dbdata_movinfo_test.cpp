// The records of the catalogue. What attribute.h gives all attributes and persons is looked at in the areas;
// behind that stands what a family has of its own, and the ids of everything that has any.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <latch>
#include <numeric>
#include <thread>

#include "dbdata_movie.h"
#include "fake_netif.h"
#include "harness.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;
using IDS_T = std::vector<INT32_T>;
using AREAS_T = DBDATA_AREA_INFORMATION_LIST_T;
using NODE_T = DBDATA_MOVIE_INFORMATION_LIST_T;
using MOVIE_T = DBDATA_MOVIE_INFORMATION_T;

namespace {

using Attribute = LEAK_CHECKED_T;
using Movie = LEAK_CHECKED_T;
using Ids = LEAK_CHECKED_T;

constexpr auto add_area = add_node_to_dbdata_area_information_list;
constexpr auto find_area = found_node_from_dbdata_area_information_list_by_name;
constexpr auto prune_areas = delete_node_from_dbdata_area_information_list_by_harddisk_serialno;
constexpr auto delete_areas = delete_dbdata_area_information_list;
constexpr auto category_node = create_dbdata_category_information_list_node_ex;
constexpr auto prune_categories = delete_node_from_dbdata_category_information_list_by_harddisk_serialno;
constexpr auto actor_node = create_dbdata_actor_information_list_node_ex;
constexpr auto video_node = create_dbdata_video_information_list_node_ex;
constexpr auto add = add_node_to_dbdata_movie_information_list;
constexpr auto number_of = dbdata_get_number_from_dbdata_movie_information_list;
constexpr auto release_movie = release_dbdata_movie_information;
constexpr auto release_list = release_dbdata_movie_information_list;

AREAS_T *area_node(const std::string &name) {
    return create_dbdata_area_information_list_node_ex(name.c_str(), nullptr);
}
AREAS_T *list_of(const std::string &names) { // of one letter each
    AREAS_T *list = nullptr;
    for (const char name : names)
        EXPECT_EQ(0, add_area(&list, area_node({name})));
    return list;
}
std::string names_in(const AREAS_T *list) {
    std::string names;
    for (const AREAS_T *node : nodes_of(list))
        names += node->info != nullptr ? node->info->name : "-";
    return names;
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
    made->area_list = list_of("ab");
    made->director_list = create_dbdata_director_information_list_node_ex("P1", "甲", nullptr);
    made->actor_list = create_dbdata_actor_information_list_node_ex("P2", "乙", nullptr);
    made->year_list = create_dbdata_year_information_list_node_ex(1999, nullptr);
    made->video_list = video_node(1, "片", "/v", "/m");
    return made;
}

// ---- Ids

template <class RECORD>
INT32_T id_of(RECORD *fresh, void (*release)(RECORD **)) {
    const INT32_T id = fresh->id;
    release(&fresh);
    return id;
}
INT32_T kind_id(INT32_T category, const std::string &name) {
    return id_of(create_dbdata_kind_information(category, name.c_str()), delete_dbdata_kind_information);
}
INT32_T year_id(INT32_T year) {
    return id_of(create_dbdata_year_information(year), delete_dbdata_year_information);
}
INT32_T category_id(const INT8_T *name) {
    return id_of(create_dbdata_category_information(name), delete_dbdata_category_information);
}
INT32_T movie_id(INT32_T = 0) {
    return id_of(create_dbdata_movie_information(), release_movie);
}
INT32_T video_id(INT32_T = 0) {
    return id_of(create_dbdata_video_information(1, "n", "f", nullptr), delete_dbdata_video_information);
}
// Of what has one for each key.
template <auto CREATE, auto DELETE, auto... ARGUMENT>
INT32_T id_of_key(INT32_T key) {
    return id_of(CREATE(ARGUMENT..., ("并发" + std::to_string(key)).c_str()), DELETE);
}
constexpr INT32_T (*ALL_IDS[])(INT32_T key) = {
    id_of_key<create_dbdata_kind_information, delete_dbdata_kind_information, 1>,
    id_of_key<create_dbdata_area_information, delete_dbdata_area_information>,
    id_of_key<create_dbdata_dimension_information, delete_dbdata_dimension_information, 0>,
    id_of_key<create_dbdata_resolution_information, delete_dbdata_resolution_information, 0>,
    year_id,
    movie_id, // from here on one for each record
    video_id};
constexpr size_t WITH_KEY = 5;

// Whether the call, in a process that has given no id yet, is content.
void expect_in_fresh_process(bool (*call)()) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit(call() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace

TEST_F(Attribute, AListHoldsEachKeyOnceAndANodeWithoutARecordAtItsHeadAlone) {
    AREAS_T *list = nullptr;
    AREAS_T *again = area_node("a");
    AREAS_T *empty = create_dbdata_area_information_list_node(nullptr, nullptr);
    EXPECT_EQ(0, add_area(&list, create_dbdata_area_information_list_node(nullptr, nullptr)));
    for (const char *name : {"c", "a", "b"})
        EXPECT_EQ(0, add_area(&list, area_node(name)));
    EXPECT_EQ(1, add_area(&list, again));
    EXPECT_EQ(0, add_area(&list, empty));
    EXPECT_EQ(0, add_area(&list, nullptr));
    EXPECT_EQ(0, add_area(nullptr, empty));
    EXPECT_EQ("-cab", names_in(list));
    EXPECT_EQ(list->next, find_area(list, "c"));
    EXPECT_EQ(nullptr, find_area(list, "d"));
    INT8_T *&lost = find_area(list, "a")->info->name;
    safe_free(lost);
    lost = nullptr;
    EXPECT_EQ(nullptr, find_area(list, nullptr));
    for (AREAS_T *node : {again, empty}) // they stayed the caller's
        delete_dbdata_area_information_list_node(&node);
    delete_areas(&list);
    EXPECT_NE(nullptr, list); // not cleared
}

TEST_F(Attribute, DeletingByKeyAndPruningTakeOneNodeFromAnyPlace) {
    const std::pair<const char *, const char *> CASES[] = {
        {"c", "ab"}, {"a", "cb"}, {"b", "ca"}, {"d", "cab"}};
    for (const auto &[name, left] : CASES) {
        AREAS_T *list = list_of("cab");
        delete_node_from_dbdata_area_information_list_by_name(&list, name);
        EXPECT_EQ(left, names_in(list));
        delete_areas(&list);
    }
    AREAS_T *list = list_of("abc");
    list->movlist = list; // any pointer: movies
    prune_areas(&list, nullptr);
    EXPECT_EQ("abc", names_in(list));
    for (const char *left : {"ac", "a", "a"}) { // the first without movies, whatever the disk
        prune_areas(&list, "any");
        EXPECT_EQ(left, names_in(list));
    }
    delete_areas(&list);
}

TEST_F(Attribute, ARecordLivesUntilItsLastReferenceGoes) {
    AREAS_T *node = area_node("a");
    auto *const record = duplicate_dbdata_area_information(node->info);
    AREAS_T *second = create_dbdata_area_information_list_node(record, nullptr); // takes the reference over
    EXPECT_EQ(2, record->count);
    delete_dbdata_area_information_list_node(&node);
    EXPECT_EQ(1, record->count);
    duplicate_dbdata_area_information(record);
    delete_dbdata_area_information(&second->info);
    EXPECT_EQ(record, second->info);
    delete_dbdata_area_information(&second->info);
    EXPECT_EQ(nullptr, second->info);
    delete_dbdata_area_information_list_node(&second);
}

TEST_F(Attribute, CategoriesHaveFixedIdsAndCaptions) {
    const std::string none = "未知 未知 未知 未知 未知", film = "导演 主演 类型 时长 简介";
    for (INT32_T id = -1;
         const std::string &want : {none, none, film, film, "作曲 演唱 类型 时长 简介"s,
                                    "导演 主持人 类型 时长 简介"s, film, "作曲 歌手 曲风 时长 简介"s, none}) {
        EXPECT_EQ(want, std::string(get_director_desc_by_cid(id)) + ' ' + get_actor_desc_by_cid(id) + ' ' +
                            get_kind_desc_by_cid(id) + ' ' + get_duration_desc_by_cid(id) + ' ' +
                            get_descript_desc_by_cid(id));
        id++;
    }
    for (INT32_T id = 1; const char *name : {"电影", "电视剧", "音乐", "综艺", "兴趣爱好", "醇音乐"})
        EXPECT_EQ(id++, category_id(name));
    EXPECT_EQ(1, category_id("纪录片"));
}

TEST_F(Attribute, PruningCategoriesTakesAKindOffEachUntilOneIsEmpty) {
    const auto kind = [](const INT8_T *name) {
        return create_dbdata_kind_information_list_node_ex(1, name, nullptr);
    };
    auto *list = category_node("电影", kind("甲")), *third = category_node("综艺", kind("丁"));
    add_node_to_dbdata_kind_information_list(&list->kindlist, kind("乙"));
    for (auto *node : {category_node("音乐", kind("丙")), third})
        add_node_to_dbdata_category_information_list(&list, node);
    EXPECT_EQ(third, found_node_from_dbdata_category_information_list_by_id(list, 4));
    prune_categories(&list, nullptr); // takes nothing
    prune_categories(&list, "any");   // behind the one that goes, kinds are left
    EXPECT_EQ("分类名称: 电影. 该节点被引用了1次\n类型名称: 乙. 该节点被引用了1次\n"
              "分类名称: 综艺. 该节点被引用了1次\n类型名称: 丁. 该节点被引用了1次\n",
              said_by([&] { show_dbdata_category_information_list(list, 1); }));
    prune_categories(&list, "any");
    prune_categories(&list, "any");
    EXPECT_EQ(nullptr, list);
}

TEST_F(Attribute, TheCodeAloneTellsPersonsApart) {
    auto *list = actor_node("P1", "甲", nullptr);
    auto *renamed = actor_node("P1", "乙", nullptr);
    EXPECT_EQ(1, add_node_to_dbdata_actor_information_list(&list, renamed));
    EXPECT_EQ(0, add_node_to_dbdata_actor_information_list(&list, actor_node("P2", "甲", nullptr)));
    EXPECT_EQ(nullptr, found_node_from_dbdata_actor_information_list_by_code(nullptr, "P1"));
    EXPECT_EQ(
        "演员编码: P1, 演员名称: 甲. 该节点被引用了1次\n演员编码: P2, 演员名称: 甲. 该节点被引用了1次\n",
        said_by([list] { show_dbdata_actor_information_list(list, 1); }));
    for (auto *node : {renamed, list})
        delete_dbdata_actor_information_list(&node);
}

TEST(IdsDeathTest, AFreshProcessNumbersKeysAsItMeetsThem) {
    expect_in_fresh_process([] {
        // The first kind of a new category gets 1; all others are numbered in the category met first.
        return IDS_T{year_id(0), year_id(-1), year_id(0)} == IDS_T{1, 2, 1} &&
               IDS_T{kind_id(1, "A"), kind_id(2, "B"), kind_id(2, "C"), kind_id(1, "C"),
                     kind_id(2, "B"), kind_id(3, "Z"), kind_id(3, "Z"), kind_id(2, "A")} ==
                   IDS_T{1, 1, 2, 2, 3, 1, 4, 1};
    });
}

TEST(IdsDeathTest, AFreshProcessCountsUpFromTheBaseThatEth0GivesAndMoviesPrint) {
    expect_in_fresh_process([] {
        IDS_T movies, videos;
        const std::string printed = said_by([&] {
            for (const INT8_T *address : {"", "1.2.3", "10.0.0.0", "192.168.1.23", "10.0.0.9"}) {
                fake_netif::s_address = *address == '\0' ? nullptr : address;
                movies.push_back(movie_id());
                videos.push_back(video_id());
            }
        });
        const std::string none = "s_id_base :0 .. basicdata:0 \n";
        return printed == none + none + "s_id_base :1150000 .. basicdata:23 \n" &&
               videos == IDS_T{1, 2, 3, 1150004, 1150005} && movies == videos && fake_netif::s_queries == 8;
    });
}

TEST_F(Ids, ThreadsGetOneForEachKeyOrRecordAndLeaveNoGaps) {
    constexpr size_t THREADS = 8;
    constexpr INT32_T KEYS = 1000;
    std::array<std::array<IDS_T, std::size(ALL_IDS)>, THREADS> seen;
    std::array<INT32_T, std::size(ALL_IDS)> before{};
    ALL_IDS[0](KEYS); // of a category's first kinds the first alone is numbered apart
    for (size_t i = 0; i < before.size(); i++)
        before[i] = ALL_IDS[i](KEYS + 1);
    std::latch all(THREADS);
    std::vector<std::jthread> threads;
    for (size_t t = 0; t < THREADS; t++)
        threads.emplace_back([&all, &mine = seen[t], begin = static_cast<INT32_T>(t) * 37] {
            for (IDS_T &ids : mine)
                ids.resize(KEYS);
            all.arrive_and_wait();
            for (INT32_T key = begin; key < begin + KEYS; key++) // every thread begins elsewhere
                for (size_t i = 0; i < mine.size(); i++)
                    mine[i][static_cast<size_t>(key % KEYS)] = ALL_IDS[i](key % KEYS);
        });
    threads.clear(); // and joined
    for (size_t i = 0; i < std::size(ALL_IDS); i++) {
        SCOPED_TRACE(i);
        IDS_T ids = seen[0][i];
        for (size_t t = 1; t < THREADS; t++) {
            if (i < WITH_KEY)
                EXPECT_EQ(ids, seen[t][i]);
            else
                ids.insert(ids.end(), seen[t][i].begin(), seen[t][i].end());
        }
        std::sort(ids.begin(), ids.end());
        IDS_T dense(ids.size());
        std::iota(dense.begin(), dense.end(), before[i] + 1);
        EXPECT_EQ(dense, ids);
    }
}

TEST_F(Movie, ItsPartsAreCopiedWhole) {
    INT8_T name[] = "第1集";
    auto *video = create_dbdata_video_information(-3, name, "/v", "/m");
    name[0] = 'x';
    EXPECT_EQ(-3, video->seqno);
    EXPECT_EQ("第1集/v/v/m/m"s, std::string(video->name) + video->filepath + video->relative_filepath +
                                    video->mp4 + video->relative_mp4);
    delete_dbdata_video_information(&video);
    auto *posters = create_dbdata_poster_information("b", "m", "s");
    auto *tv = create_dbdata_tv_poster_information("tb", "tm", "ts");
    EXPECT_EQ("bmsbmm"s, std::string(posters->big) + posters->middle + posters->small +
                             posters->relative_big_path + posters->relative_middle_path +
                             posters->relative_small_path); // the last isn't the small one
    EXPECT_EQ(nullptr, posters->tv_big);
    EXPECT_EQ("tbtmts", std::string(tv->tv_big) + tv->tv_middle + tv->tv_small);
    EXPECT_EQ(nullptr, tv->relative_small_path);
    for (auto *info : {posters, tv})
        delete_dbdata_poster_information(&info);
    for (const void *part :
         std::initializer_list<const void *>{create_dbdata_video_information(1, nullptr, "/v", nullptr),
                                             create_dbdata_video_information(1, "n", nullptr, nullptr),
                                             create_dbdata_basic_movie_information(nullptr, "片名", "Title"),
                                             create_dbdata_basic_movie_information("M1", nullptr, "Title"),
                                             create_dbdata_poster_information("b", "m", nullptr),
                                             create_dbdata_tv_poster_information("b", "m", nullptr),
                                             create_dbdata_actor_information("P3", nullptr),
                                             create_dbdata_director_information(nullptr, "丙")})
        EXPECT_EQ(nullptr, part);
}

TEST_F(Movie, AListOfVideosTakesAnyButNoNodeWithoutOne) {
    DBDATA_VIDEO_INFORMATION_LIST_T *list = nullptr;
    auto *empty = create_dbdata_video_information_list_node(nullptr);
    for (auto *node : {video_node(1, "同", "/v", nullptr), empty, video_node(1, "同", "/v", nullptr)})
        EXPECT_EQ(0, add_node_to_dbdata_video_information_list(&list, node));
    const std::string line = "视频序号: 1, 视频名称: 同, 视频路径: /v\n";
    EXPECT_EQ(line + line, said_by([list] { show_dbdata_video_information_list(list); }));
    for (auto *node : {empty, list})
        delete_dbdata_video_information_list(&node);
}

TEST_F(Movie, TheLastDeleteLeavesYearsTextsPlaceAndRecordToTheCaller) {
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

TEST_F(Movie, TheLastReleaseFreesAllAnEarlierOneCountsDown) {
    MOVIE_T *made = full_movie();
    NODE_T *list = node_of(duplicate_dbdata_movie_information(made));
    list->next = node_of(full_movie());
    release_list(&list);
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(1, made->count);
    EXPECT_STREQ("M1", made->info->movie_code);
    release_movie(&made); // the fixture sees that nothing is left
    EXPECT_EQ(nullptr, made);
    release_movie(&made);
    release_list(&list);
}

TEST_F(Movie, AMovieIsADuplicateOnlyOnItsOwnPartition) {
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
        EXPECT_EQ(c.log != nullptr ? 1 : 0, add_single_node_to_dbdata_movie_information_list(&list, node));
        std::string want;
        if (c.log != nullptr) {
            want.append("found_node_from_dbdata_movie_information_list_by_movie_code 40 ").append(c.log);
            want.append("\nadd_single_node_to_dbdata_movie_information_list 40 找到相同影片\n");
            release_list(&node); // it stayed ours
        }
        EXPECT_EQ(want, logged("dbdata_movinfo/dbdata_movie.c"));
    }
    EXPECT_EQ(5, number_of(list));
    release_list(&list);
}

TEST_F(Movie, WhatHasNoCodeIsNoDuplicateAndNotCounted) {
    NODE_T *list = nullptr;
    EXPECT_EQ(0, add(&list, node_of(nullptr))); // any may be the head
    EXPECT_EQ(0, add(&list, node_of(movie("M1"))));
    for (NODE_T *node : {node_of(create_dbdata_movie_information()), node_of(nullptr)}) {
        EXPECT_EQ(0, add(&list, node)); // it stays the caller's
        EXPECT_EQ(nullptr, found_node_from_dbdata_movie_information_list_by_movie_code(list, node));
        release_list(&node);
    }
    EXPECT_EQ(1, number_of(list));
    release_list(&list);
}

TEST_F(Movie, RemovalsTakeTheFirstMatchAndReleaseItsMovie) {
    const std::vector<MOVIE_T *> movies = {movie("M1", "A"), movie("M2", "B"), movie("M3", "A")};
    NODE_T *list = nullptr;
    for (MOVIE_T *made : movies)
        add(&list, node_of(duplicate_dbdata_movie_information(made)));
    EXPECT_EQ(movies[1], found_node_from_dbdata_movie_information_list_by_mid(list, movies[1]->id)->info);
    EXPECT_EQ(nullptr, found_node_from_dbdata_movie_information_list_by_mid(list, -1));
    delete_node_from_dbdata_movie_information_list_by_movie_code(&list, "M9");
    EXPECT_EQ(3, number_of(list));
    delete_node_from_dbdata_movie_information_list_by_movie_code(&list, "M2");
    delete_node_from_dbdata_movie_information_list_by_harddisk_devname(&list, "A");
    EXPECT_EQ(movies[2], list->info);
    EXPECT_EQ(nullptr, list->next);
    delete_dbdata_movie_information_list(&list);
    for (MOVIE_T *made : movies) {
        EXPECT_EQ(1, made->count);
        release_movie(&made);
    }
}

TEST_F(Movie, TheFilterComparesIdsAnd0StandsForAny) {
    MOVIE_T *made = full_movie();
    const INT32_T area = static_cast<AREAS_T *>(made->area_list->next)->info->id;
    const INT32_T year = made->year_list->info->id;
    const INT32_T dimension = made->dimension_list->info->id;
    EXPECT_EQ(0, filter_movie_by_condition(made, 0, 0, 0));
    EXPECT_EQ(0, filter_movie_by_condition(made, area, year, dimension));
    EXPECT_EQ(-1, filter_movie_by_condition(made, -1, year, dimension));
    EXPECT_EQ(-1, filter_movie_by_condition(made, area, 1999, dimension)); // no id, but the year itself
    EXPECT_EQ(-1, filter_movie_by_condition(made, area, year, -1));
    EXPECT_EQ(-1, filter_movie_by_condition(nullptr, 0, 0, 0));
    EXPECT_EQ("filter_movie_by_condition 80 movinfo is nul!\n", logged("dbdata_movinfo/dbdata_movie.c"));
    release_movie(&made);
}
