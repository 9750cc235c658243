#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>

#include "dbdata_movie.h"
#include "harness.h"

using namespace harness;
using IDS_T = std::vector<INT32_T>;
using KEYS_T = std::vector<size_t>;

namespace {

// The operations of a record family, so that one test serves all of them.
template <class LIST_NODE, auto CREATE_EX, auto DUPLICATE, auto RELEASE, auto NODE_WITH, auto ADD, auto FIND,
          auto REMOVE, auto DELETE_NODE, auto DELETE_LIST>
struct FAMILY_T {
    using NODE = LIST_NODE;
    static constexpr bool BY_YEAR = std::is_same_v<NODE, DBDATA_YEAR_INFORMATION_LIST_T>;
    using KEY = std::conditional_t<BY_YEAR, INT32_T, const INT8_T *>;
    static KEY key(size_t number) {
        if constexpr (BY_YEAR) {
            return static_cast<INT32_T>(number) * 1000 - 1;
        } else {
            return &"甲\0乙\0丙\0丁"[number * 4];
        }
    }
    static NODE *create_ex(KEY key) { // with whatever the family wants beside the key
        if constexpr (std::is_invocable_v<decltype(CREATE_EX), INT32_T, KEY, PVOID>) {
            return CREATE_EX(7, key, nullptr);
        } else if constexpr (std::is_invocable_v<decltype(CREATE_EX), KEY, PVOID>) {
            return CREATE_EX(key, nullptr);
        } else {
            return CREATE_EX(key, "姓名", nullptr);
        }
    }
    static NODE *find(NODE *list, KEY key) {
        if constexpr (std::is_invocable_v<decltype(FIND), NODE **, KEY>) {
            return FIND(&list, key);
        } else {
            return FIND(list, key);
        }
    }
    static constexpr auto duplicate = DUPLICATE;
    static constexpr auto release = RELEASE;
    static constexpr auto node = NODE_WITH;
    static constexpr auto add = ADD;
    static constexpr auto remove = REMOVE;
    static constexpr auto delete_node = DELETE_NODE;
    static constexpr auto delete_list = DELETE_LIST;

    static NODE *list_of(const KEYS_T &keys) {
        NODE *list = nullptr;
        for (const size_t number : keys) {
            EXPECT_EQ(0, add(&list, create_ex(key(number))));
        }
        return list;
    }
    static KEYS_T keys_in(NODE *list) {
        KEYS_T keys;
        for (NODE *at = list; at != nullptr; at = static_cast<NODE *>(at->next)) {
            for (size_t number = 0; number < 4; number++) {
                if (find(at, key(number)) == at) {
                    keys.push_back(number);
                }
            }
        }
        return keys;
    }
};
// The names of a family's functions.
#define FUNCTIONS_OF(word, key)                                                                              \
    create_dbdata_##word##_information_list_node_ex, duplicate_dbdata_##word##_information,                  \
        delete_dbdata_##word##_information, create_dbdata_##word##_information_list_node,                    \
        add_node_to_dbdata_##word##_information_list,                                                        \
        found_node_from_dbdata_##word##_information_list_by_##key,                                           \
        delete_node_from_dbdata_##word##_information_list_by_##key,                                          \
        delete_dbdata_##word##_information_list_node, delete_dbdata_##word##_information_list
using RESOLUTION = FAMILY_T<DBDATA_RESOLUTION_INFORMATION_LIST_T, FUNCTIONS_OF(resolution, resolution)>;
using DIMENSION = FAMILY_T<DBDATA_DIMENSION_INFORMATION_LIST_T, FUNCTIONS_OF(dimension, dimension)>;
using AREA = FAMILY_T<DBDATA_AREA_INFORMATION_LIST_T, FUNCTIONS_OF(area, name)>;
using YEAR = FAMILY_T<DBDATA_YEAR_INFORMATION_LIST_T, FUNCTIONS_OF(year, year)>;
using KIND = FAMILY_T<DBDATA_KIND_INFORMATION_LIST_T, FUNCTIONS_OF(kind, name)>;
using CATEGORY = FAMILY_T<DBDATA_CATEGORY_INFORMATION_LIST_T, FUNCTIONS_OF(category, name)>;
using ACTOR = FAMILY_T<DBDATA_ACTOR_INFORMATION_LIST_T, FUNCTIONS_OF(actor, code)>;
using DIRECTOR = FAMILY_T<DBDATA_DIRECTOR_INFORMATION_LIST_T, FUNCTIONS_OF(director, code)>;

template <class NODE>
INT32_T id_of(NODE *fresh, void (*delete_node)(NODE **)) {
    const INT32_T id = fresh->info->id;
    delete_node(&fresh);
    return id;
}
template <class FAMILY>
INT32_T id_of(typename FAMILY::KEY key) {
    return id_of(FAMILY::create_ex(key), FAMILY::delete_node);
}
INT32_T kind_id(INT32_T category, const INT8_T *key) {
    return id_of(create_dbdata_kind_information_list_node_ex(category, key, nullptr), KIND::delete_node);
}

template <class FAMILY>
class CatalogueFamily : public testing::Test {
protected:
    long live_before_ = live_allocations();
    void TearDown() override { EXPECT_EQ(live_before_, live_allocations()); }
};
using FAMILIES_T = testing::Types<RESOLUTION, DIMENSION, AREA, YEAR, KIND, CATEGORY, ACTOR, DIRECTOR>;
TYPED_TEST_SUITE(CatalogueFamily, FAMILIES_T);

} // namespace

TYPED_TEST(CatalogueFamily, AListHoldsEachKeyOnceInTheOrderOfInsertion) {
    auto *list = TypeParam::list_of({2, 0, 1});
    auto *duplicate = TypeParam::create_ex(TypeParam::key(0));
    EXPECT_EQ(1, TypeParam::add(&list, duplicate));
    TypeParam::delete_node(&duplicate); // the rejected node stayed the caller's
    EXPECT_EQ(nullptr, duplicate);
    EXPECT_EQ((KEYS_T{2, 0, 1}), TypeParam::keys_in(list));
    EXPECT_EQ(nullptr, TypeParam::find(list, TypeParam::key(3)));
    TypeParam::delete_list(&list);
    EXPECT_NE(nullptr, list); // not cleared
}

TYPED_TEST(CatalogueFamily, DeletingByKeyTakesTheOneNodeFromAnyPlace) {
    const std::pair<size_t, KEYS_T> CASES[] = {{2, {0, 1}}, {0, {2, 1}}, {1, {2, 0}}, {3, {2, 0, 1}}};
    for (const auto &[key, left] : CASES) {
        auto *list = TypeParam::list_of({2, 0, 1});
        TypeParam::remove(&list, TypeParam::key(key));
        EXPECT_EQ(left, TypeParam::keys_in(list));
        TypeParam::delete_list(&list);
    }
}

TYPED_TEST(CatalogueFamily, ARecordLivesUntilItsLastReferenceGoes) {
    auto *node = TypeParam::create_ex(TypeParam::key(0));
    auto *const record = TypeParam::duplicate(node->info);
    auto *second = TypeParam::node(record, nullptr); // takes the reference over
    EXPECT_EQ(2, record->count);
    TypeParam::delete_node(&node);
    EXPECT_EQ(1, record->count);
    TypeParam::duplicate(record);
    TypeParam::release(&second->info);
    EXPECT_EQ(record, second->info);
    TypeParam::release(&second->info);
    EXPECT_EQ(nullptr, second->info);
    TypeParam::delete_node(&second);
}

TYPED_TEST(CatalogueFamily, ANodeWithoutARecordMayHeadAListAndNothingElse) {
    auto *list = TypeParam::node(nullptr, nullptr);
    auto *empty = TypeParam::node(nullptr, nullptr);
    typename TypeParam::NODE *none = nullptr;
    EXPECT_EQ(0, TypeParam::add(&none, list));
    EXPECT_EQ(list, none);
    EXPECT_EQ(0, TypeParam::add(&list, TypeParam::create_ex(TypeParam::key(1))));
    EXPECT_EQ(0, TypeParam::add(&list, empty));
    EXPECT_EQ(0, TypeParam::add(&list, nullptr));
    EXPECT_EQ(0, TypeParam::add(nullptr, empty));
    EXPECT_EQ((KEYS_T{1}), TypeParam::keys_in(list));
    TypeParam::delete_node(&empty);
    TypeParam::delete_list(&list);
}

TYPED_TEST(CatalogueFamily, ShortMemoryLosesNothingAndOnlyTheNodeTells) {
    for (int nth = 1;; nth++) {
        testing::internal::CaptureStdout();
        fail_nth_allocation(nth);
        auto *node = TypeParam::create_ex(TypeParam::key(0));
        const bool failed = an_allocation_failed();
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(failed, node == nullptr);
        TypeParam::delete_node(&node);
        if (!failed) {
            break;
        }
        EXPECT_TRUE(printed.empty() || printed == "分配24字节的内存出错,错误原因: Cannot allocate memory\n");
    }
}

TEST(AttributeRegistryDeathTest, AFreshProcessNumbersKeysAsItMeetsThem) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exit_as_told = [] {
        bool fine = IDS_T{id_of<AREA>("美国"), id_of<AREA>(""), id_of<AREA>("美国")} == IDS_T{1, 2, 1};
        fine &=
            IDS_T{id_of<RESOLUTION>("4K"), id_of<RESOLUTION>("BD"), id_of<DIMENSION>("4K")} == IDS_T{1, 2, 1};
        fine &= IDS_T{id_of<YEAR>(0), id_of<YEAR>(-1), id_of<YEAR>(0)} == IDS_T{1, 2, 1};
        // The first kind of a new category gets 1; all others are numbered in the category met first.
        fine &= IDS_T{kind_id(1, "A"), kind_id(2, "B"), kind_id(2, "C"), kind_id(1, "C"),
                      kind_id(2, "B"), kind_id(3, "Z"), kind_id(3, "Z"), kind_id(2, "A")} ==
                IDS_T{1, 1, 2, 2, 3, 1, 4, 1};
        exit(fine ? 0 : 1);
    };
    EXPECT_EXIT(exit_as_told(), testing::ExitedWithCode(0), "");
}

TEST(AttributeRegistry, CategoriesHaveFixedIdsAndCaptions) {
    const char *const NAMES[] = {"电影", "电视剧", "音乐", "综艺", "兴趣爱好", "醇音乐"};
    for (INT32_T i = 0; i < 6; i++) {
        EXPECT_EQ(i + 1, id_of<CATEGORY>(NAMES[i]));
    }
    EXPECT_EQ(1, id_of<CATEGORY>("纪录片"));
    auto *list = create_dbdata_category_information_list_node_ex("综艺", nullptr);
    EXPECT_EQ(list, found_node_from_dbdata_category_information_list_by_id(list, 4));
    EXPECT_EQ(nullptr, found_node_from_dbdata_category_information_list_by_id(list, 1));
    delete_dbdata_category_information_list(&list);

    const std::pair<INT32_T, std::string> CAPTIONS[] = {
        {-1, "未知 未知 未知 未知 未知"}, {0, "未知 未知 未知 未知 未知"}, {1, "导演 主演 类型 时长 简介"},
        {2, "导演 主演 类型 时长 简介"},  {3, "作曲 演唱 类型 时长 简介"}, {4, "导演 主持人 类型 时长 简介"},
        {5, "导演 主演 类型 时长 简介"},  {6, "作曲 歌手 曲风 时长 简介"}, {7, "未知 未知 未知 未知 未知"},
    };
    for (const auto &[cid, want] : CAPTIONS) {
        EXPECT_EQ(want, std::string(get_director_desc_by_cid(cid)) + ' ' + get_actor_desc_by_cid(cid) + ' ' +
                            get_kind_desc_by_cid(cid) + ' ' + get_duration_desc_by_cid(cid) + ' ' +
                            get_descript_desc_by_cid(cid));
    }
}

template <class FAMILY>
void expect_pruned_one_by_one(void (*prune)(typename FAMILY::NODE **, const INT8_T *)) {
    auto *list = FAMILY::list_of({0, 1, 2});
    list->movlist = list; // any pointer: movies
    prune(&list, nullptr);
    EXPECT_EQ((KEYS_T{0, 1, 2}), FAMILY::keys_in(list));
    for (const KEYS_T &left : {KEYS_T{0, 2}, KEYS_T{0}, KEYS_T{0}}) {
        prune(&list, "any");
        EXPECT_EQ(left, FAMILY::keys_in(list));
    }
    FAMILY::delete_list(&list);
}

TEST(AttributeRegistry, PruningTakesTheFirstValueWithoutMoviesWhateverTheDisk) {
    expect_pruned_one_by_one<RESOLUTION>(
        delete_node_from_dbdata_resolution_information_list_by_harddisk_serialno);
    expect_pruned_one_by_one<DIMENSION>(
        delete_node_from_dbdata_dimension_information_list_by_harddisk_serialno);
    expect_pruned_one_by_one<AREA>(delete_node_from_dbdata_area_information_list_by_harddisk_serialno);
    expect_pruned_one_by_one<YEAR>(delete_node_from_dbdata_year_information_list_by_harddisk_serialno);
    expect_pruned_one_by_one<KIND>(delete_node_from_dbdata_kind_information_list_by_harddisk_serialno);
}

TEST(AttributeRegistry, PruningCategoriesTakesAKindOffEachUntilOneIsEmpty) {
    auto *list = CATEGORY::list_of({0, 1, 2});
    auto *third = CATEGORY::find(list, CATEGORY::key(2));
    list->kindlist = KIND::list_of({0, 1});
    CATEGORY::find(list, CATEGORY::key(1))->kindlist = KIND::list_of({2});
    third->kindlist = KIND::list_of({3});
    delete_node_from_dbdata_category_information_list_by_harddisk_serialno(&list, nullptr);
    EXPECT_EQ((KEYS_T{0, 1, 2}), CATEGORY::keys_in(list));
    delete_node_from_dbdata_category_information_list_by_harddisk_serialno(&list, "any");
    EXPECT_EQ((KEYS_T{0, 2}), CATEGORY::keys_in(list));
    EXPECT_EQ((KEYS_T{1}), KIND::keys_in(list->kindlist));
    EXPECT_EQ((KEYS_T{3}), KIND::keys_in(third->kindlist)); // behind the one that went
    delete_node_from_dbdata_category_information_list_by_harddisk_serialno(&list, "any");
    delete_node_from_dbdata_category_information_list_by_harddisk_serialno(&list, "any");
    EXPECT_EQ(nullptr, list);
}

template <class FAMILY, class SHOW>
void show_list_of_two(SHOW show) {
    auto *list = FAMILY::list_of({0, 2});
    FAMILY::duplicate(list->info);
    show(list, 1);
    list->info->count--;
    FAMILY::delete_list(&list);
}

TEST(AttributeRegistry, ListingsNameTheKeyAndItsReferences) {
    auto *kinds = KIND::list_of({1});
    auto *category = CATEGORY::list_of({0});
    category->kindlist = kinds;
    testing::internal::CaptureStdout();
    show_list_of_two<RESOLUTION>(show_dbdata_resolution_information_list);
    show_list_of_two<DIMENSION>(show_dbdata_dimension_information_list);
    show_list_of_two<AREA>(show_dbdata_area_information_list);
    show_list_of_two<YEAR>(show_dbdata_publish_year_information_list);
    show_dbdata_category_information_list(category, 1);
    EXPECT_EQ("分辨率: 甲. 该节点被引用了2次\n分辨率: 丙. 该节点被引用了1次\n"
              "维度: 甲. 该节点被引用了2次\n维度: 丙. 该节点被引用了1次\n"
              "影片拍摄地: 甲. 该节点被引用了2次\n影片拍摄地: 丙. 该节点被引用了1次\n"
              "影片发布年份: -1. 该节点被引用了2次\n影片发布年份: 1999. 该节点被引用了1次\n"
              "分类名称: 甲. 该节点被引用了1次\n类型名称: 乙. 该节点被引用了1次\n",
              testing::internal::GetCapturedStdout());
    CATEGORY::delete_list(&category); // the kinds are not the category's
    KIND::delete_list(&kinds);
}

TEST(AttributeRegistry, ThreadsGetOneIdPerKeyAndLeaveNoGaps) {
    constexpr INT32_T KEYS = 300;
    using IDS_OF_FAMILIES_T = std::array<IDS_T, 3>;
    kind_id(1, "首");
    const INT32_T before[] = {id_of<AREA>("首"), id_of<YEAR>(100000), kind_id(1, "次")};
    std::vector<IDS_OF_FAMILIES_T> seen(8, {IDS_T(KEYS), IDS_T(KEYS), IDS_T(KEYS)});
    std::vector<std::thread> threads(seen.size());
    for (size_t t = 0; t < threads.size(); t++) {
        threads[t] = std::thread([&mine = seen[t], t] {
            for (size_t i = 0; i < KEYS; i++) {
                const size_t key = (i + t * 37) % KEYS; // every thread begins elsewhere
                const std::string name = "并发" + std::to_string(key);
                mine[0][key] = id_of<AREA>(name.c_str());
                mine[1][key] = id_of<YEAR>(100001 + static_cast<INT32_T>(key));
                mine[2][key] = kind_id(1, name.c_str());
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (size_t family = 0; family < 3; family++) {
        IDS_T ids = seen[0][family];
        for (const IDS_OF_FAMILIES_T &others : seen) {
            EXPECT_EQ(ids, others[family]);
        }
        std::sort(ids.begin(), ids.end());
        for (INT32_T i = 0; i < KEYS; i++) {
            ASSERT_EQ(before[family] + 1 + i, ids[static_cast<size_t>(i)]);
        }
    }
    EXPECT_EQ(seen[0][0][0], id_of<AREA>("并发0")); // no record of it lives, the id does
}
