// The record families of the catalogue. What attribute.h gives all of them is looked at in the areas;
// behind that stands what a family has of its own.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

#include "dbdata_movie.h"
#include "harness.h"

using namespace harness;
using IDS_T = std::vector<INT32_T>;
using NODE_T = DBDATA_AREA_INFORMATION_LIST_T;

namespace {

constexpr auto add = add_node_to_dbdata_area_information_list;
constexpr auto delete_list = delete_dbdata_area_information_list;
constexpr auto category_node = create_dbdata_category_information_list_node_ex;
constexpr auto prune_categories = delete_node_from_dbdata_category_information_list_by_harddisk_serialno;

NODE_T *node_of(const std::string &name) {
    return create_dbdata_area_information_list_node_ex(name.c_str(), nullptr);
}
NODE_T *list_of(const std::string &names) { // of one letter each
    NODE_T *list = nullptr;
    for (const char name : names)
        EXPECT_EQ(0, add(&list, node_of({name})));
    return list;
}
std::string names_in(const NODE_T *list) {
    std::string names;
    for (; list != nullptr; list = static_cast<NODE_T *>(list->next))
        names += list->info != nullptr ? list->info->name : "-";
    return names;
}

template <class RECORD>
INT32_T id_of(RECORD *fresh, void (*release)(RECORD **)) {
    const INT32_T id = fresh->id;
    release(&fresh);
    return id;
}
INT32_T kind_id(INT32_T category, const std::string &name) {
    return id_of(create_dbdata_kind_information(category, name.c_str()), delete_dbdata_kind_information);
}

using AttributeRegistry = LEAK_CHECKED_T;

} // namespace

TEST_F(AttributeRegistry, AListHoldsEachKeyOnceAndANodeWithoutARecordAtItsHeadAlone) {
    NODE_T *list = nullptr;
    NODE_T *again = node_of("a");
    NODE_T *empty = create_dbdata_area_information_list_node(nullptr, nullptr);
    EXPECT_EQ(0, add(&list, create_dbdata_area_information_list_node(nullptr, nullptr)));
    for (const char *name : {"c", "a", "b"})
        EXPECT_EQ(0, add(&list, node_of(name)));
    EXPECT_EQ(1, add(&list, again));
    EXPECT_EQ(0, add(&list, empty));
    EXPECT_EQ(0, add(&list, nullptr));
    EXPECT_EQ(0, add(nullptr, empty));
    EXPECT_EQ("-cab", names_in(list));
    EXPECT_EQ(list->next, found_node_from_dbdata_area_information_list_by_name(list, "c"));
    EXPECT_EQ(nullptr, found_node_from_dbdata_area_information_list_by_name(list, "d"));
    for (NODE_T *node : {again, empty}) // they stayed the caller's
        delete_dbdata_area_information_list_node(&node);
    delete_list(&list);
    EXPECT_NE(nullptr, list); // not cleared
}

TEST_F(AttributeRegistry, DeletingByKeyTakesTheOneNodeFromAnyPlace) {
    const std::pair<const char *, const char *> CASES[] = {
        {"c", "ab"}, {"a", "cb"}, {"b", "ca"}, {"d", "cab"}};
    for (const auto &[name, left] : CASES) {
        NODE_T *list = list_of("cab");
        delete_node_from_dbdata_area_information_list_by_name(&list, name);
        EXPECT_EQ(left, names_in(list));
        delete_list(&list);
    }
}

TEST_F(AttributeRegistry, PruningTakesTheFirstValueWithoutMoviesWhateverTheDisk) {
    const auto prune = delete_node_from_dbdata_area_information_list_by_harddisk_serialno;
    NODE_T *list = list_of("abc");
    list->movlist = list; // any pointer: movies
    prune(&list, nullptr);
    EXPECT_EQ("abc", names_in(list));
    for (const char *left : {"ac", "a", "a"}) {
        prune(&list, "any");
        EXPECT_EQ(left, names_in(list));
    }
    delete_list(&list);
}

TEST_F(AttributeRegistry, ARecordLivesUntilItsLastReferenceGoes) {
    NODE_T *node = node_of("a");
    auto *const record = duplicate_dbdata_area_information(node->info);
    NODE_T *second = create_dbdata_area_information_list_node(record, nullptr); // takes the reference over
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

TEST(AttributeRegistryDeathTest, AFreshProcessNumbersKeysAsItMeetsThem) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exit_as_told = [] {
        const auto year = [](INT32_T key) {
            return id_of(create_dbdata_year_information(key), delete_dbdata_year_information);
        };
        bool fine = IDS_T{year(0), year(-1), year(0)} == IDS_T{1, 2, 1};
        // The first kind of a new category gets 1; all others are numbered in the category met first.
        fine &= IDS_T{kind_id(1, "A"), kind_id(2, "B"), kind_id(2, "C"), kind_id(1, "C"),
                      kind_id(2, "B"), kind_id(3, "Z"), kind_id(3, "Z"), kind_id(2, "A")} ==
                IDS_T{1, 1, 2, 2, 3, 1, 4, 1};
        exit(fine ? 0 : 1);
    };
    EXPECT_EXIT(exit_as_told(), testing::ExitedWithCode(0), "");
}

TEST_F(AttributeRegistry, ThreadsGetOneIdPerKeyAndLeaveNoGaps) {
    kind_id(1, "首");
    const INT32_T before = kind_id(1, "次");
    std::vector<IDS_T> seen(8, IDS_T(5000));
    std::latch all(8);
    std::vector<std::thread> threads(seen.size());
    for (size_t t = 0; auto &mine : seen) {
        threads[t] = std::thread([&all, &mine, begin = t * 37] { // every thread begins elsewhere
            all.arrive_and_wait();
            for (size_t i = begin; i < begin + mine.size(); i++)
                mine[i % mine.size()] = kind_id(1, "并发" + std::to_string(i % mine.size()));
        });
        t++;
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const IDS_T &others : seen)
        EXPECT_EQ(seen[0], others);
    EXPECT_EQ(seen[0][0], kind_id(1, "并发0")); // no record of it lives, the id does
    std::sort(seen[0].begin(), seen[0].end());
    EXPECT_EQ(before + 1, seen[0].front());
    EXPECT_EQ(before + 5000, seen[0].back());
    EXPECT_EQ(seen[0].end(), std::adjacent_find(seen[0].begin(), seen[0].end()));
}

TEST_F(AttributeRegistry, CategoriesHaveFixedIdsAndCaptions) {
    const std::string none = "未知 未知 未知 未知 未知", film = "导演 主演 类型 时长 简介";
    const std::pair<INT32_T, std::string> CAPTIONS[] = {{-1, none},
                                                        {0, none},
                                                        {1, film},
                                                        {2, film},
                                                        {3, "作曲 演唱 类型 时长 简介"},
                                                        {4, "导演 主持人 类型 时长 简介"},
                                                        {5, film},
                                                        {6, "作曲 歌手 曲风 时长 简介"},
                                                        {7, none}};
    for (const auto &[id, want] : CAPTIONS)
        EXPECT_EQ(want, std::string(get_director_desc_by_cid(id)) + ' ' + get_actor_desc_by_cid(id) + ' ' +
                            get_kind_desc_by_cid(id) + ' ' + get_duration_desc_by_cid(id) + ' ' +
                            get_descript_desc_by_cid(id));
    for (INT32_T id = 1; const char *name : {"电影", "电视剧", "音乐", "综艺", "兴趣爱好", "醇音乐"})
        EXPECT_EQ(id++, id_of(create_dbdata_category_information(name), delete_dbdata_category_information));
    EXPECT_EQ(1, id_of(create_dbdata_category_information("纪录片"), delete_dbdata_category_information));
}

TEST_F(AttributeRegistry, PruningCategoriesTakesAKindOffEachUntilOneIsEmpty) {
    const auto kind = [](const INT8_T *name) {
        return create_dbdata_kind_information_list_node_ex(1, name, nullptr);
    };
    auto *list = category_node("电影", kind("甲")), *third = category_node("综艺", kind("丁"));
    add_node_to_dbdata_kind_information_list(&list->kindlist, kind("乙"));
    for (auto *node : {category_node("音乐", kind("丙")), third})
        add_node_to_dbdata_category_information_list(&list, node);
    EXPECT_EQ(third, found_node_from_dbdata_category_information_list_by_id(list, 4));
    testing::internal::CaptureStdout();
    prune_categories(&list, nullptr); // takes nothing
    prune_categories(&list, "any");
    show_dbdata_category_information_list(list, 1); // behind the one that went, kinds are left
    EXPECT_EQ("分类名称: 电影. 该节点被引用了1次\n类型名称: 乙. 该节点被引用了1次\n"
              "分类名称: 综艺. 该节点被引用了1次\n类型名称: 丁. 该节点被引用了1次\n",
              testing::internal::GetCapturedStdout());
    prune_categories(&list, "any");
    prune_categories(&list, "any");
    EXPECT_EQ(nullptr, list);
}
