// Lists, optional parts and owners: what a family does beyond the bytes of its records.
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <type_traits>

#include "codec_basic_movinfo.h"
#include "codec_category_info.h"
#include "codec_dbdata_movinfo.h"
#include "codec_detail_movinfo.h"
#include "codec_filter_info.h"
#include "codec_kind_info.h"
#include "codec_video_info.h"
#include "harness.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using MOVIES_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T;
using DETAIL_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;

// The calls of one list family; not all have a codec of their own.
template <bool NODES_MAY_BE_EMPTY, auto CREATE_CALL, auto DELETE_CALL, auto CREATE_NODE_CALL, auto ADD_CALL,
          auto DELETE_NODE_CALL, auto DELETE_LIST_CALL, auto ENCODE_CALL = nullptr,
          auto DECODE_CALL = nullptr>
struct FAMILY_T {
    using NODE = std::remove_pointer_t<decltype(CREATE_NODE_CALL(nullptr))>;
    static constexpr bool SKIPS = NODES_MAY_BE_EMPTY;
    static constexpr auto CREATE = CREATE_CALL;
    static constexpr auto DELETE = DELETE_CALL;
    static constexpr auto CREATE_NODE = CREATE_NODE_CALL;
    static constexpr auto ADD = ADD_CALL;
    static constexpr auto DELETE_NODE = DELETE_NODE_CALL;
    static constexpr auto DELETE_LIST = DELETE_LIST_CALL;
    static constexpr auto ENCODE = ENCODE_CALL;
    static constexpr auto DECODE = DECODE_CALL;
};
// The calls of a family are named after its record.
#define LIST_CALLS(record)                                                                                   \
    create_##record, delete_##record, create_##record##_list_node, add_node_to_##record##_list,              \
        delete_##record##_list_node, delete_##record##_list
using CATEGORY_T = FAMILY_T<false, LIST_CALLS(tavisys_category_information),
                            encode_tavisys_category_information_list_to_message,
                            decode_tavisys_category_information_list_from_message>;
using KIND_T =
    FAMILY_T<false, LIST_CALLS(tavisys_kind_information), encode_tavisys_kind_information_list_to_message,
             decode_tavisys_kind_information_from_message>;
using FILTER_T =
    FAMILY_T<false, LIST_CALLS(tavisys_filter_information), encode_tavisys_filter_information_list_to_message,
             decode_tavisys_filter_information_list_from_message>;
using VIDEO_T =
    FAMILY_T<true, LIST_CALLS(tavisys_video_information), encode_tavisys_video_information_list_to_message,
             decode_tavisys_video_information_list_from_buffer>;
using MOVIE_T = FAMILY_T<true, LIST_CALLS(tavisys_basic_movie_information),
                         encode_tavisys_basic_movie_information_list_to_message,
                         decode_tavisys_basic_movie_information_list_from_message>;
using VALUE_T = FAMILY_T<true, LIST_CALLS(movie_filter_information)>;
using TRANSFER_VALUE_T = FAMILY_T<true, LIST_CALLS(tp_tavisys_dbdata_filter_information)>;
using TRANSFER_PERSON_T = FAMILY_T<true, LIST_CALLS(tp_tavisys_dbdata_person_information)>;
using TRANSFER_YEAR_T = FAMILY_T<true, LIST_CALLS(tp_tavisys_dbdata_year_information)>;
using TRANSFER_VIDEO_T = FAMILY_T<true, LIST_CALLS(tp_tavisys_dbdata_video_information)>;
using TRANSFER_MOVIE_T = FAMILY_T<true, LIST_CALLS(tp_tavisys_dbdata_movie_information)>;

template <class FAMILY>
typename FAMILY::NODE *new_node() {
    return FAMILY::CREATE_NODE(FAMILY::CREATE());
}

template <class NODE>
size_t size_of(const NODE *list) {
    size_t count = 0;
    for (; list != nullptr; list = static_cast<const NODE *>(list->next))
        count++;
    return count;
}

template <class FAMILY>
class List : public LEAK_CHECKED_T {};
template <class FAMILY>
class CodedList : public LEAK_CHECKED_T {};
using CODED_FAMILIES_T = testing::Types<CATEGORY_T, KIND_T, FILTER_T, VIDEO_T, MOVIE_T>;
using FAMILIES_T = testing::Types<CATEGORY_T, KIND_T, FILTER_T, VIDEO_T, MOVIE_T, VALUE_T, TRANSFER_VALUE_T,
                                  TRANSFER_PERSON_T, TRANSFER_YEAR_T, TRANSFER_VIDEO_T, TRANSFER_MOVIE_T>;
TYPED_TEST_SUITE(List, FAMILIES_T, );
TYPED_TEST_SUITE(CodedList, CODED_FAMILIES_T, );
using Codec = LEAK_CHECKED_T;

MOVIES_T *movie_node(const INT8_T *movcode, const INT8_T *movname) {
    MOVIES_T *node = new_node<MOVIE_T>();
    node->info->movcode = safe_strdup(movcode);
    node->info->movname = safe_strdup(movname);
    return node;
}

LOG_LINE_T page_line(const std::string &text) {
    return {"codec/codec_basic_movinfo.c", "encode_tavisys_basic_movie_ext_information_to_message", 80, text};
}
LOG_LINE_T list_line(const std::string &text) {
    return {"codec/codec_basic_movinfo.c", "encode_tavisys_basic_movie_information_list_to_buffer", 80, text};
}

DETAIL_T *new_detail() {
    DETAIL_T *info = create_tavisys_detail_movie_information();
    info->video_list = create_tavisys_video_information_list_node(nullptr);
    return info;
}

} // namespace

TYPED_TEST(List, NodesAreAppendedInOrderAndDeletedWithTheirRecords) {
    using FAMILY = TypeParam;
    typename FAMILY::NODE *list = nullptr;
    typename FAMILY::NODE *nodes[] = {new_node<FAMILY>(), FAMILY::CREATE_NODE(nullptr), new_node<FAMILY>()};
    for (auto *node : nodes)
        FAMILY::ADD(&list, node);
    FAMILY::ADD(&list, nullptr);
    FAMILY::ADD(nullptr, nodes[0]);
    EXPECT_EQ(nodes[0], list);
    EXPECT_EQ(nodes[1], list->next);
    EXPECT_EQ(nodes[2], nodes[1]->next);
    EXPECT_EQ(nullptr, nodes[2]->next);
    FAMILY::DELETE_LIST(&list);
    EXPECT_EQ(nodes[0], list) << "the head pointer stays";
}

TYPED_TEST(List, DeletesClearTheirPointerAndTakeNull) {
    using FAMILY = TypeParam;
    auto *info = FAMILY::CREATE();
    auto *node = new_node<FAMILY>();
    for (int round = 0; round < 2; round++) { // the second finds nothing to delete
        FAMILY::DELETE(&info);
        EXPECT_EQ(nullptr, info);
        FAMILY::DELETE_NODE(&node);
        EXPECT_EQ(nullptr, node);
    }
    FAMILY::DELETE(nullptr);
    FAMILY::DELETE_NODE(nullptr);
    FAMILY::DELETE_LIST(&node);
    FAMILY::DELETE_LIST(nullptr);
}

TYPED_TEST(List, ANodeThatCannotBeMadeIsSaidAndLeavesTheRecord) {
    using FAMILY = TypeParam;
    auto *info = FAMILY::CREATE();
    testing::internal::CaptureStdout();
    fail_nth_allocation(1);
    EXPECT_EQ(nullptr, FAMILY::CREATE_NODE(info));
    EXPECT_TRUE(an_allocation_failed());
    EXPECT_EQ("分配16字节的内存出错,错误原因: Cannot allocate memory\n",
              testing::internal::GetCapturedStdout());
    FAMILY::DELETE(&info);
}

TYPED_TEST(CodedList, ANodeWithoutARecordIsSkippedOrRefused) {
    using FAMILY = TypeParam;
    typename FAMILY::NODE *list = nullptr;
    for (auto *node : {new_node<FAMILY>(), FAMILY::CREATE_NODE(nullptr), new_node<FAMILY>()})
        FAMILY::ADD(&list, node);
    PVOID body = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(FAMILY::SKIPS ? 0 : -1, FAMILY::ENCODE(list, &body, &length));
    EXPECT_EQ(FAMILY::SKIPS, body != nullptr);
    FAMILY::DELETE_LIST(&list);
    list = nullptr;
    EXPECT_EQ(FAMILY::SKIPS ? length : -1, FAMILY::DECODE(body, length, &list));
    EXPECT_EQ(FAMILY::SKIPS ? 2U : 0U, size_of(list));
    FAMILY::DELETE_LIST(&list);
    safe_free(body);
}

TYPED_TEST(CodedList, CountsDecideHowMuchIsRead) {
    using FAMILY = TypeParam;
    constexpr INT32_T MANY = 100000; // an append that walked the list would make this run for minutes
    const struct {
        INT32_T count;
        size_t records;
        size_t room; // an empty record is zeros in every family, at most 68 of them
    } CASES[] = {{0, 0, 100},    {-1, 0, 100},        {INT_MIN, 0, 100},     {3, 3, 204},
                 {MANY, 0, 100}, {INT_MAX, 0, 65536}, {1 << 30, 0, 1 << 20}, {MANY, MANY, MANY * size_t{68}}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.count);
        const BODY_T body(wire(c.count, std::string(c.room, '\0')));
        const bool is_refused = c.count > 0 && c.records == 0;
        typename FAMILY::NODE *list = nullptr;
        forget_allocations();
        const INT32_T used = FAMILY::DECODE(body.data(), body.length(), &list);
        EXPECT_EQ(is_refused, used < 0);
        EXPECT_TRUE(c.count > 0 || used == 4);
        EXPECT_EQ(c.records, size_of(list));
        EXPECT_LE(bytes_allocated(), c.records * 200); // nothing is built from a count that can't be met
        FAMILY::DELETE_LIST(&list);
    }
}

TEST_F(Codec, NamedValuesAreMadeWithANameOnly) {
    EXPECT_EQ(nullptr, create_tavisys_category_information_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_kind_information_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_filter_information_ex(5, nullptr));
    EXPECT_EQ(nullptr, create_tavisys_category_information_list_node_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_kind_information_list_node_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_filter_information_list_node_ex(5, nullptr));

    testing::internal::CaptureStdout(); // for what the node creators say
    for (int nth : {1, 2, 3}) {
        fail_nth_allocation(nth);
        EXPECT_EQ(nullptr, create_tavisys_category_information_list_node_ex(5, "喜剧", 1));
        fail_nth_allocation(nth);
        EXPECT_EQ(nullptr, create_tavisys_filter_information_list_node_ex(5, "喜剧"));
    }
    testing::internal::GetCapturedStdout();

    INT8_T name[] = "喜剧";
    auto *kind = create_tavisys_kind_information_list_node_ex(5, name, 7);
    name[0] = '\0'; // the record holds a copy
    EXPECT_EQ(wire(5, "喜剧", 7), wire(kind->info->id, kind->info->name, kind->info->movies));
    delete_tavisys_kind_information_list_node(&kind);
}

TEST_F(Codec, CategoriesAreListedALineEach) {
    auto *list = create_tavisys_category_information_list_node_ex(1, "电影", 120);
    add_node_to_tavisys_category_information_list(&list, CATEGORY_T::CREATE_NODE(nullptr));
    add_node_to_tavisys_category_information_list(&list, new_node<CATEGORY_T>());
    testing::internal::CaptureStdout();
    show_tavisys_category_information_list(list);
    show_tavisys_category_information_list(nullptr);
    EXPECT_EQ("影片分类信息: \n\t分类编号: 1, 分类名称: 电影, 分类下的影片数: 120\n"
              "\t分类编号: 0, 分类名称: (null), 分类下的影片数: 0\n影片分类信息: \n",
              testing::internal::GetCapturedStdout());
    delete_tavisys_category_information_list(&list);
}

TEST_F(Codec, IdsRecordsAreMadeForAPositiveNumber) {
    for (INT32_T number : {0, -1, INT_MIN})
        EXPECT_EQ(nullptr, create_tavisys_basic_movie_ids_information(number));
    for (int nth : {1, 2}) {
        fail_nth_allocation(nth);
        EXPECT_EQ(nullptr, create_tavisys_basic_movie_ids_information(3));
    }
    BASIC_MOVIE_IDS_T *ids = create_tavisys_basic_movie_ids_information(3);
    EXPECT_EQ(wire(3, 0, 0, 0), wire(ids->num, ids->ids[0], ids->ids[1], ids->ids[2]));
    for (int round = 0; round < 2; round++) {
        delete_tavisys_basic_movie_ids_information(&ids);
        EXPECT_EQ(nullptr, ids);
    }
    delete_tavisys_basic_movie_ids_information(nullptr);
}

TEST_F(Codec, AnEmptyPageIsANodeWithoutARecord) {
    PAGE_T *page = create_tavisys_basic_movie_ext_information();
    page->pageinfo = {9, 20, 3, 42, 0};
    page->list = MOVIE_T::CREATE_NODE(nullptr);
    PVOID body = nullptr;
    INT32_T length = 0;
    ASSERT_EQ(0, encode_tavisys_basic_movie_ext_information_to_message(page, &body, &length));
    delete_tavisys_basic_movie_ext_information(&page);
    EXPECT_EQ(wire(9, 20, 3, 42, 0, 0), std::string(static_cast<char *>(body), static_cast<size_t>(length)));
    EXPECT_EQ(24, decode_tavisys_basic_movie_ext_information_from_message(body, length, &page));
    EXPECT_EQ(nullptr, page->list);
    EXPECT_EQ(42, page->pageinfo.totalmovies);
    delete_tavisys_basic_movie_ext_information(&page);
    safe_free(body);
}

TEST_F(Codec, EachFailureOfThePageEncoderIsLogged) {
    PAGE_T *page = create_tavisys_basic_movie_ext_information();
    const auto failure = [](const PAGE_T *info) {
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(-1, encode_tavisys_basic_movie_ext_information_to_message(info, &body, &length));
        EXPECT_EQ(nullptr, body);
        return take_log();
    };
    EXPECT_EQ(-1, encode_tavisys_basic_movie_ext_information_to_message(nullptr, nullptr, nullptr));
    EXPECT_EQ(std::vector{page_line("参数获取出错! info((nil)) msgdata((nil)) msglen((nil))")}, take_log());

    std::vector<LOG_LINE_T> log = failure(page);
    ASSERT_EQ(2U, log.size());
    EXPECT_EQ(0U, log[0].text.find("参数获取出错! list((nil)) message(0x"));
    EXPECT_EQ(list_line(log[0].text), log[0]);
    EXPECT_EQ(page_line("出错.."), log[1]);

    page->list = movie_node("TV-1", "霸王别姬");
    fail_nth_allocation(1);
    EXPECT_EQ(std::vector{page_line("创建内存失败..")}, failure(page));

    page->list->info->area_ids = create_tavisys_basic_movie_ids_information(1);
    page->list->info->area_ids->num = -1;
    EXPECT_EQ((std::vector{list_line("failed to encode_tavisys_basic_movie_information_to_buffer"),
                           page_line("出错..")}),
              failure(page));
    page->list->info->area_ids->num = -100; // outweighs all the rest: 108 bytes less 400
    EXPECT_EQ(std::vector{page_line("出错,获取的长度(-292)小于0")}, failure(page));
    delete_tavisys_basic_movie_ext_information(&page);
}

TEST_F(Codec, ABodyThatNoLengthCanStateIsNotEncoded) {
    // 33 times 64 MiB: the lengths add up to more than an integer holds.
    const std::string huge(size_t{64} << 20, 'x');
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_T movie{};
    TP_TAVISYS_VIDEO_INFORMATION_T video{};
    movie.movname = video.name = const_cast<INT8_T *>(huge.c_str());
    std::vector<MOVIES_T> movies(33, MOVIES_T{nullptr, &movie});
    std::vector<VIDEO_T::NODE> videos(33, {nullptr, &video});
    for (size_t i = 0; i + 1 < movies.size(); i++) {
        movies[i].next = &movies[i + 1];
        videos[i].next = &videos[i + 1];
    }
    const PAGE_T page{{}, movies.data()};
    PVOID body = nullptr;
    INT32_T length = 77;
    forget_allocations();
    EXPECT_EQ(-1, encode_tavisys_basic_movie_ext_information_to_message(&page, &body, &length));
    EXPECT_EQ(1U, take_log().size());
    EXPECT_EQ(-1, encode_tavisys_video_information_list_to_message(videos.data(), &body, &length));
    EXPECT_EQ(-1, calc_encode_video_information_list_length(videos.data(), &length));
    EXPECT_EQ(77, length);
    EXPECT_EQ(0U, bytes_allocated());
}

TEST_F(Codec, AMovieWhoseCodeIsInTheListIsDroppedWithALine) {
    const auto add = add_touchscreen_node_to_tavisys_basic_movie_information_list;
    MOVIES_T *list = nullptr;
    add(&list, nullptr);
    add(&list, MOVIE_T::CREATE_NODE(nullptr));
    add(&list, movie_node("tv-1", "一"));
    add(&list, movie_node("TV-2", "二"));
    add(&list, MOVIE_T::CREATE_NODE(nullptr));
    EXPECT_EQ(4U, size_of(list));
    EXPECT_TRUE(take_log().empty());

    const long before = live_allocations();
    MOVIES_T *node = movie_node("TV-1", "另一");
    node->next = movie_node("TV-3", "chained behind the duplicate");
    add(nullptr, node);
    add(&list, node);
    EXPECT_EQ((std::vector<LOG_LINE_T>{{"codec/codec_basic_movinfo.c",
                                        "add_touchscreen_node_to_tavisys_basic_movie_information_list", 40,
                                        "查找到相同 (另一)movcode(TV-1) 无需加入列表.."}}),
              take_log());
    EXPECT_EQ(before, live_allocations());
    add(&list, movie_node(nullptr, nullptr));
    add(&list, movie_node(nullptr, nullptr)); // a second movie without a code
    EXPECT_EQ(1U, take_log().size());
    EXPECT_EQ(5U, size_of(list));
    delete_tavisys_basic_movie_information_list(&list);
}

TEST_F(Codec, VideosAreEncodedIntoTheRoomThatIsThereAndNoFurther) {
    VIDEO_T::NODE *list = nullptr;
    for (auto *node : {new_node<VIDEO_T>(), VIDEO_T::CREATE_NODE(nullptr), new_node<VIDEO_T>()})
        VIDEO_T::ADD(&list, node);
    ASSERT_NE(nullptr, list);
    list->info->mp4 = safe_strdup("/a.mp4");
    INT32_T number = 0;
    EXPECT_EQ(42, calc_encode_video_information_list_length(list, &number));
    EXPECT_EQ(2, number);
    EXPECT_EQ(42, calc_encode_video_information_list_length(list, nullptr));
    EXPECT_EQ(0, calc_encode_video_information_list_length(nullptr, &number));
    EXPECT_EQ(0, number);
    const auto encode = encode_tavisys_video_information_list_to_buffer;
    for (INT32_T room = -1; room < 45; room++) {
        const BODY_T body(std::string(static_cast<size_t>(std::max(room, 0)), 'x'));
        EXPECT_EQ(room < 42 ? -1 : 42, encode(list, body.data(), room)) << room;
        EXPECT_EQ(-1, encode(nullptr, body.data(), room));
        EXPECT_EQ(-1, encode(list, nullptr, room));
    }
    delete_tavisys_video_information_list(&list);
}

TEST_F(Codec, AbsentPartsOfADetailRecordAreLoneFlagsButItsVideoListMustBeThere) {
    DETAIL_T *info = new_detail();
    PVOID body = nullptr;
    INT32_T length = 0;
    ASSERT_EQ(0, encode_tavisys_detail_movie_information_to_message(info, &body, &length));
    EXPECT_EQ(wire(nullptr, 0, 0, nullptr, 0, 0, 0, 0, 0, 0, 0),
              std::string(static_cast<char *>(body), static_cast<size_t>(length)));
    safe_free(body);
    body = nullptr;
    info->director_info = create_movie_filter_kvp_information(); // there, but without a list
    EXPECT_EQ(-1, encode_tavisys_detail_movie_information_to_message(info, &body, &length));
    info->director_info->list = VALUE_T::CREATE_NODE(nullptr);
    delete_tavisys_video_information_list_node(&info->video_list);
    EXPECT_EQ(-1, encode_tavisys_detail_movie_information_to_message(info, &body, &length));
    EXPECT_EQ(nullptr, body);
    delete_tavisys_detail_movie_information(&info);
}

TEST_F(Codec, DeletingADetailRecordLeavesTheLabelsOfItsListsAndReleasingDoesNot) {
    const long live = live_allocations();
    for (bool whole : {false, true}) {
        DETAIL_T *info = new_detail();
        INT8_T *labels[] = {safe_strdup("导演"), safe_strdup("演员"), safe_strdup("类型")};
        TP_MOVIE_FILTER_KVP_INFORMATION_T *lists[3];
        for (int i = 0; i < 3; i++) {
            lists[i] = create_movie_filter_kvp_information();
            *lists[i] = {labels[i], new_node<VALUE_T>()};
        }
        info->director_info = lists[0];
        info->actor_info = lists[1];
        info->kind_info = lists[2];
        info->duration_info = create_movie_single_kvp_information();
        info->duration_info->desc = safe_strdup("片长");
        (whole ? release_tavisys_detail_movie_information : delete_tavisys_detail_movie_information)(&info);
        EXPECT_EQ(nullptr, info);
        EXPECT_EQ(live + (whole ? 0 : 3), live_allocations());
        for (INT8_T *label : labels)
            safe_free(whole ? nullptr : label);
    }
    release_tavisys_detail_movie_information(nullptr);
    delete_tavisys_detail_movie_information(nullptr);
}
