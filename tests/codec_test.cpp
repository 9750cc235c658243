// The message bodies. What the engine gives all record families is looked at over a table of some that have
// every kind of field: the bytes on the wire, the way back, every cut, every hostile count. The bytes of the
// others are in docs/protocol.md. Behind that stands what a family has of its
// own: the fields of its record, its lists, its owners, its log lines.
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <type_traits>

#include "codec_basic_movinfo.h"
#include "codec_category_info.h"
#include "codec_detail_movinfo.h"
#include "codec_filter_info.h"
#include "codec_kind_info.h"
#include "codec_player_status_info.h"
#include "codec_sysinfo.h"
#include "codec_sysrun_status_info.h"
#include "codec_version_info.h"
#include "codec_video_info.h"
#include "harness.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using MOVIES_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_VIDEO_INFORMATION_LIST_T;
using DETAIL_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;
using CATEGORIES_T = TP_TAVISYS_CATEGORY_INFORMATION_LIST_T;
constexpr auto encode_page = encode_tavisys_basic_movie_ext_information_to_message;
constexpr auto category_node = create_tavisys_category_information_list_node_ex;

// A body's family with the types taken off.
struct FAMILY_T {
    const char *name;
    std::string wire; // one body, written by hand
    RTSTATUS (*encode)(const void *, PVOID *, INT32_T *);
    INT32_T (*decode)(const void *, INT32_T, void **);
    void (*release)(void **);
};

template <auto ENCODE, auto DECODE, auto RELEASE>
FAMILY_T family(const char *name, const std::string &wire) {
    return {
        name, wire,
        [](const void *record, PVOID *body, INT32_T *length) { return ENCODE(ANY_T{record}, body, length); },
        [](const void *body, INT32_T length, void **out) { return DECODE(body, length, ANY_T{out}); },
        [](void **record) {
            RELEASE(ANY_T{record});
            *record = nullptr; // a list's delete leaves the pointer
        }};
}

const std::string VIDEOS = wire(2, 31, 1, nullptr, "/a.mp4", 32, 2, "下", "/b.mp4");
const std::string MOVIE = wire(1001, "TV-1", "霸王别姬", 93, 20170101, 19930102, "/n", "/b", "BWBJ", 6, 1993,
                               3, 11, 12, 13, 0, 0, 1, -1, "SN", 4);
const std::string EMPTY_MOVIE =
    wire(0, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, 0, nullptr, 0);
const FAMILY_T STATUS =
    family<encode_tavisys_sysrun_status_information_to_message,
           decode_tavisys_sysrun_status_information_from_message, delete_tavisys_sysrun_status_information>(
        "status", "\x03\0\0\0\x0a\0\0\0\x07\0\0\0\x01\0\0\0\x02\0\0\0"s);
const FAMILY_T PLAYER =
    family<encode_tavisys_player_status_information_to_message,
           decode_tavisys_player_status_information_from_message, delete_tavisys_player_status_information>(
        "player", wire(1, "a.ts", "/盘/", -1, 2, 3, 4, 5, 6, 7, 8));
const FAMILY_T MOVIES =
    family<encode_tavisys_basic_movie_information_list_to_message,
           decode_tavisys_basic_movie_information_list_from_message,
           delete_tavisys_basic_movie_information_list>("movies", wire(2, MOVIE, EMPTY_MOVIE));
const FAMILY_T PAGE =
    family<encode_tavisys_basic_movie_ext_information_to_message,
           decode_tavisys_basic_movie_ext_information_from_message,
           delete_tavisys_basic_movie_ext_information>("page", wire(1, 20, 3, 42, 2, 2, MOVIE, EMPTY_MOVIE));
const FAMILY_T DETAIL =
    family<encode_tavisys_detail_movie_information_to_message,
           decode_tavisys_detail_movie_information_from_message, release_tavisys_detail_movie_information>(
        "detail", wire("霸王别姬", 1993, 1, 3, "2D", nullptr, 1, "导演", 1, "陈凯歌", 0, 1, "类型", 1, "剧情",
                       0, 1, "简介", "戏", 40, VIDEOS));

class Record : public LEAK_CHECKED_T, public testing::WithParamInterface<FAMILY_T> {};
using Codec = LEAK_CHECKED_T;

// Decodes from an exact block; a failure has to leave the out-argument alone.
INT32_T decode(const FAMILY_T &family, const std::string &bytes, void **out) {
    const BODY_T body(bytes);
    INT8_T mark = 0;
    void *decoded = &mark;
    const INT32_T used = family.decode(body.data(), body.length(), &decoded);
    EXPECT_EQ(used < 0, decoded == &mark);
    *out = decoded == &mark ? nullptr : decoded;
    return used;
}
template <class RECORD>
RECORD *decoded(const FAMILY_T &family) {
    void *record = nullptr;
    decode(family, family.wire, &record);
    return static_cast<RECORD *>(record);
}

// The bytes of a record, or none when it is refused, which has to leave both out-arguments alone.
template <class RECORD>
std::string encoded(RTSTATUS (*encode)(const RECORD *, PVOID *, INT32_T *), const RECORD *record) {
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    const RTSTATUS result = encode(record, &body, &length);
    EXPECT_EQ(body == &mark ? -1 : 0, result);
    EXPECT_EQ(body == &mark, length == 77);
    std::string bytes = body == &mark ? "" : std::string(ANY_T{body}, static_cast<size_t>(length));
    safe_free(body == &mark ? nullptr : body);
    return bytes;
}

template <class NODE>
std::vector<NODE *> nodes_of(NODE *list) {
    std::vector<NODE *> nodes;
    for (; list != nullptr; list = static_cast<NODE *>(list->next))
        nodes.push_back(list);
    return nodes;
}

MOVIES_T *movie_node(const INT8_T *movcode, const INT8_T *movname) {
    MOVIES_T *node =
        create_tavisys_basic_movie_information_list_node(create_tavisys_basic_movie_information());
    node->info->movcode = safe_strdup(movcode);
    node->info->movname = safe_strdup(movname);
    return node;
}

// The bytes of a list of a record, a node without one and a record.
template <class NODE>
std::string list_with_a_hole(RTSTATUS (*encode)(const NODE *, PVOID *, INT32_T *)) {
    std::remove_pointer_t<decltype(NODE::info)> record{};
    NODE last{nullptr, &record};
    NODE hole{&last, nullptr};
    const NODE list{&hole, &record};
    return encoded(encode, &list);
}

constexpr auto PAGE_CALL = "encode_tavisys_basic_movie_ext_information_to_message";
constexpr auto LIST_CALL = "encode_tavisys_basic_movie_information_list_to_buffer";
LOG_LINE_T line(const char *function, int level, const std::string &text) {
    return {"codec/codec_basic_movinfo.c", function, level, text};
}

} // namespace

TEST_P(Record, DecodesFromItsWireBytesAndEncodesToThem) {
    for (const std::string &unread : {""s, "x"s, "more bytes"s}) {
        void *record = nullptr;
        ASSERT_EQ(static_cast<INT32_T>(GetParam().wire.size()),
                  decode(GetParam(), GetParam().wire + unread, &record));
        EXPECT_EQ(GetParam().wire, encoded<void>(GetParam().encode, record));
        GetParam().release(&record);
    }
}

TEST_P(Record, EveryCutIsRefused) {
    void *record = nullptr;
    for (size_t cut = 0; cut < GetParam().wire.size(); cut++) {
        forget_allocations();
        EXPECT_EQ(-1, decode(GetParam(), GetParam().wire.substr(0, cut), &record)) << cut;
        EXPECT_TRUE(cut >= 4 || bytes_allocated() == 0) << "nothing is made of what can't be a record";
    }
    EXPECT_EQ(-1, GetParam().decode("", INT_MIN, &record));
}

// Every integer of the body in turn, be it a value, a length, a flag or a count, becomes a hostile one.
TEST_P(Record, HostileNumbersNeverCostMoreMemoryThanTheBodyHasBytes) {
    constexpr size_t MEMORY_PER_BYTE = 8; // at most, for a record and its node
    const std::string &good = GetParam().wire;
    for (INT32_T hostile : {INT_MAX, INT_MAX - 3, INT_MIN, -1, -2, 0, 1, 2, 3, 0x10000, 0x40000000}) {
        for (size_t at = 0; at + 4 <= good.size(); at++) {
            SCOPED_TRACE(std::to_string(hostile) + " at " + std::to_string(at));
            void *record = nullptr;
            forget_allocations();
            const INT32_T used = decode(GetParam(), std::string(good).replace(at, 4, wire(hostile)), &record);
            EXPECT_LE(bytes_allocated(), MEMORY_PER_BYTE * good.size());
            EXPECT_LE(used, static_cast<INT32_T>(good.size()));
            if (used >= 0)
                GetParam().release(&record);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Codec, Record, testing::Values(STATUS, PLAYER, MOVIES, PAGE, DETAIL),
                         [](const auto &family) { return std::string(family.param.name); });

// The round trip tells the order on the wire; that each item belongs to the field of its name is seen here.
TEST_F(Codec, TheFieldsOfStatusRecordsHoldWhatTravelled) {
    auto *status = decoded<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T>(STATUS);
    EXPECT_EQ(STATUS.wire, wire(status->status, status->total_movies, status->parseok_movies,
                                status->parseerr_movies, status->left_movies));
    delete_tavisys_sysrun_status_information(&status);

    auto *player = decoded<TP_TAVISYS_PLAYER_STATUS_INFORMATION_T>(PLAYER);
    EXPECT_EQ(PLAYER.wire,
              wire(player->status, player->filename, player->filepath, static_cast<INT32_T>(player->playtime),
                   player->duration, player->mute, player->volume, player->movid, player->videoid,
                   player->seqno, player->category_id));
    EXPECT_EQ(0xFFFFFFFFU, player->playtime); // unsigned fields pass through
    delete_tavisys_player_status_information(&player);
}

TEST_F(Codec, TheFieldsOfAPageAndItsMoviesHoldWhatTravelled) {
    auto *page = decoded<PAGE_T>(PAGE);
    const TP_PAGE_INFORMATION &numbers = page->pageinfo;
    auto *m = page->list->info;
    const std::string first =
        wire(numbers.pagenum, numbers.pagesize, numbers.totalpages, numbers.totalmovies, numbers.replymovies,
             2, m->movid, m->movcode, m->movname, static_cast<INT32_T>(m->score), m->puttime, m->pubtime,
             m->nposter, m->bposter, m->acronym, m->category_id, m->year_id, m->kind_ids->num,
             m->kind_ids->ids[0], m->kind_ids->ids[1], m->kind_ids->ids[2], 0, 0, m->resolution_ids->num,
             m->resolution_ids->ids[0], m->hdsn, m->index);
    EXPECT_EQ(PAGE.wire.substr(0, first.size()), first);
    EXPECT_EQ(nullptr, m->area_ids);
    EXPECT_EQ(nullptr, m->dimension_ids);
    m->totalvideo = m->duration = 99; // these two don't travel in this form
    EXPECT_EQ(PAGE.wire, encoded(encode_page, page));
    delete_tavisys_basic_movie_ext_information(&page);
}

TEST_F(Codec, TheFieldsOfADetailRecordHoldWhatTravelled) {
    auto *info = decoded<DETAIL_T>(DETAIL);
    const auto people = [](const TP_MOVIE_FILTER_KVP_INFORMATION_T *list) {
        return wire(1, list->desc, 1, list->list->info->name);
    };
    const auto video = [](const TP_TAVISYS_VIDEO_INFORMATION_T *of) {
        return wire(of->id, of->seqno, of->name, of->mp4);
    };
    const VIDEOS_T *second = ANY_T{info->video_list->next};
    EXPECT_EQ(DETAIL.wire,
              wire(info->name, info->year, 1, info->dimension_info->id, info->dimension_info->name,
                   info->poster, people(info->director_info), 0, people(info->kind_info), 0, 1,
                   info->summary_info->desc, info->summary_info->value, info->videos, 2,
                   video(info->video_list->info), video(second->info)));
    EXPECT_EQ(nullptr, info->actor_info);
    EXPECT_EQ(nullptr, info->duration_info);
    release_tavisys_detail_movie_information(&info);
}

TEST_F(Codec, ListingsPrintTheFields) {
    INT8_T name[] = "电影";
    const TP_TAVISYS_SYSTEM_INFORMATION_T system{2, 36000};
    const TP_TAVISYS_VERSION_INFORMATION_T version{name, nullptr, name};
    TP_TAVISYS_CATEGORY_INFORMATION_T category{1, name, 120};
    CATEGORIES_T last{nullptr, &category};
    const CATEGORIES_T list{&last, nullptr};
    testing::internal::CaptureStdout();
    show_tavisys_system_information(&system);
    show_tavisys_version_information(&version);
    show_tavisys_category_information_list(&list);
    EXPECT_EQ("系统共有2个硬盘,36000部影片\n影柜系统版本号: 电影\n影柜设备名称: (null)\n影柜设备编码: 电影\n"
              "影片分类信息: \n\t分类编号: 1, 分类名称: 电影, 分类下的影片数: 120\n",
              testing::internal::GetCapturedStdout());
}

TEST_F(Codec, NodesAreAppendedInOrderAndDeletedWithTheirRecords) {
    CATEGORIES_T *list = nullptr;
    const std::vector<CATEGORIES_T *> nodes = {category_node(1, "一", 1),
                                               create_tavisys_category_information_list_node(nullptr),
                                               category_node(3, "三", 3)};
    for (auto *node : nodes)
        add_node_to_tavisys_category_information_list(&list, node);
    EXPECT_EQ(nodes, nodes_of(list));
    delete_tavisys_category_information_list(&list);
    EXPECT_EQ(nodes.front(), list) << "the head pointer stays";

    CATEGORIES_T *node = category_node(1, "一", 1);
    delete_tavisys_category_information_list_node(&node);
    EXPECT_EQ(nullptr, node);
    delete_tavisys_category_information_list_node(&node); // nothing to delete
    delete_tavisys_category_information_list(&node);
}

TEST_F(Codec, ANodeWithoutARecordIsSkippedOrRefusedAsItsFamilyHasIt) {
    EXPECT_EQ("", list_with_a_hole(encode_tavisys_category_information_list_to_message));
    EXPECT_EQ("", list_with_a_hole(encode_tavisys_kind_information_list_to_message));
    EXPECT_EQ("", list_with_a_hole(encode_tavisys_filter_information_list_to_message));
    EXPECT_EQ(wire(2, 0, 0, nullptr, nullptr, 0, 0, nullptr, nullptr),
              list_with_a_hole(encode_tavisys_video_information_list_to_message));
    EXPECT_EQ(wire(2, EMPTY_MOVIE, EMPTY_MOVIE),
              list_with_a_hole(encode_tavisys_basic_movie_information_list_to_message));
}

TEST_F(Codec, CountsDecideHowMuchIsRead) {
    constexpr INT32_T MANY = 100000; // an append that walked the list would make this run for minutes
    constexpr size_t ROOM = 12;      // of a category without a name: its zeros are a record
    const struct {
        INT32_T count;
        size_t records;
        size_t room;
    } CASES[] = {{0, 0, 100},         {-1, 0, 100},          {INT_MIN, 0, 100},
                 {3, 3, 3 * ROOM},    {9, 0, 9 * ROOM - 1},  {MANY, 0, 100},
                 {INT_MAX, 0, 65536}, {1 << 30, 0, 1 << 20}, {MANY, MANY, MANY * ROOM}};
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.count);
        const BODY_T body(wire(c.count, std::string(c.room, '\0')));
        CATEGORIES_T *list = nullptr;
        forget_allocations();
        const auto used =
            decode_tavisys_category_information_list_from_message(body.data(), body.length(), &list);
        const bool is_refused = c.count > 0 && c.records == 0;
        EXPECT_EQ(is_refused ? -1 : static_cast<INT32_T>(4 + c.records * ROOM), used);
        EXPECT_EQ(c.records, nodes_of(list).size());
        EXPECT_LE(bytes_allocated(), c.records * 200); // nothing is built from a count that can't be met
        delete_tavisys_category_information_list(&list);
    }
}

TEST_F(Codec, NamedValuesAreMadeWithACopyOfANameOnly) {
    EXPECT_EQ(nullptr, category_node(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_kind_information_list_node_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_filter_information_list_node_ex(5, nullptr));

    INT8_T name[] = "喜剧";
    auto *kind = create_tavisys_kind_information_list_node_ex(5, name, 7);
    name[0] = '\0'; // the record holds a copy
    EXPECT_EQ(wire(5, "喜剧", 7), wire(kind->info->id, kind->info->name, kind->info->movies));
    delete_tavisys_kind_information_list_node(&kind);
}

TEST_F(Codec, EachFailureOfThePageEncoderIsLogged) {
    PAGE_T *page = create_tavisys_basic_movie_ext_information();
    const auto failure = [page] {
        EXPECT_EQ("", encoded(encode_page, page));
        return take_log();
    };
    EXPECT_EQ(-1, encode_page(nullptr, nullptr, nullptr));
    EXPECT_EQ(std::vector{line(PAGE_CALL, 80, "参数获取出错! info((nil)) msgdata((nil)) msglen((nil))")},
              take_log());

    std::vector<LOG_LINE_T> log = failure();
    ASSERT_EQ(2U, log.size());
    EXPECT_EQ(0U, log[0].text.find("参数获取出错! list((nil)) message(0x"));
    EXPECT_EQ(line(LIST_CALL, 80, log[0].text), log[0]);
    EXPECT_EQ(line(PAGE_CALL, 80, "出错.."), log[1]);

    page->list = movie_node("TV-1", "霸王别姬");
    fail_nth_allocation(1);
    EXPECT_EQ(std::vector{line(PAGE_CALL, 80, "创建内存失败..")}, failure());

    page->list->info->area_ids = create_tavisys_basic_movie_ids_information(1);
    page->list->info->area_ids->num = -1;
    EXPECT_EQ((std::vector{line(LIST_CALL, 80, "failed to encode_tavisys_basic_movie_information_to_buffer"),
                           line(PAGE_CALL, 80, "出错..")}),
              failure());
    page->list->info->area_ids->num = -100; // outweighs all the rest: 108 bytes less 400
    EXPECT_EQ(std::vector{line(PAGE_CALL, 80, "出错,获取的长度(-292)小于0")}, failure());
    delete_tavisys_basic_movie_ext_information(&page);
}

TEST_F(Codec, AMovieWhoseCodeIsInTheListIsDroppedWithALine) {
    const auto add = add_touchscreen_node_to_tavisys_basic_movie_information_list;
    MOVIES_T *list = nullptr;
    add(&list, create_tavisys_basic_movie_information_list_node(nullptr));
    add(&list, movie_node("tv-1", "一"));
    add(&list, movie_node("TV-2", "二"));
    add(&list, create_tavisys_basic_movie_information_list_node(nullptr));
    EXPECT_EQ(4U, nodes_of(list).size());
    EXPECT_TRUE(take_log().empty());

    const long before = live_allocations();
    MOVIES_T *node = movie_node("TV-1", "另一");
    node->next = movie_node("TV-3", "chained behind the duplicate");
    add(&list, node);
    EXPECT_EQ(std::vector{line("add_touchscreen_node_to_tavisys_basic_movie_information_list", 40,
                               "查找到相同 (另一)movcode(TV-1) 无需加入列表..")},
              take_log());
    EXPECT_EQ(before, live_allocations());
    add(&list, movie_node(nullptr, nullptr));
    add(&list, movie_node(nullptr, nullptr)); // a second movie without a code
    EXPECT_EQ(1U, take_log().size());
    EXPECT_EQ(5U, nodes_of(list).size());
    delete_tavisys_basic_movie_information_list(&list);
}

TEST_F(Codec, VideosAreEncodedIntoTheRoomThatIsThereAndNoFurther) {
    INT8_T path[] = "/a.mp4";
    TP_TAVISYS_VIDEO_INFORMATION_T video{};
    video.mp4 = path;
    VIDEOS_T last{nullptr, &video};
    const VIDEOS_T list{&last, nullptr};
    const auto length = static_cast<INT32_T>(wire(1, 0, 0, nullptr, path).size());
    INT32_T number = 0;
    EXPECT_EQ(length, calc_encode_video_information_list_length(&list, &number));
    EXPECT_EQ(1, number);
    EXPECT_EQ(0, calc_encode_video_information_list_length(nullptr, &number));
    EXPECT_EQ(0, number);
    for (INT32_T room = -1; room < length + 3; room++) {
        const BODY_T body(std::string(static_cast<size_t>(std::max(room, 0)), 'x'));
        EXPECT_EQ(room < length ? -1 : length,
                  encode_tavisys_video_information_list_to_buffer(&list, body.data(), room));
    }
}

TEST_F(Codec, AbsentPartsOfADetailRecordAreLoneFlagsButItsVideoListMustBeThere) {
    const auto encode = encode_tavisys_detail_movie_information_to_message;
    VIDEOS_T no_video{};
    DETAIL_T info{};
    EXPECT_EQ("", encoded(encode, &info));
    info.video_list = &no_video;
    EXPECT_EQ(wire(nullptr, 0, 0, nullptr, 0, 0, 0, 0, 0, 0, 0), encoded(encode, &info));
    TP_MOVIE_FILTER_KVP_INFORMATION_T no_list{};
    info.director_info = &no_list;
    EXPECT_EQ("", encoded(encode, &info));
}

TEST_F(Codec, DeletingADetailRecordLeavesTheLabelsOfItsListsAndReleasingDoesNot) {
    const long live = live_allocations();
    for (bool whole : {false, true}) {
        auto *info = decoded<DETAIL_T>(DETAIL);
        INT8_T *labels[] = {info->director_info->desc, info->kind_info->desc};
        (whole ? release_tavisys_detail_movie_information : delete_tavisys_detail_movie_information)(&info);
        EXPECT_EQ(nullptr, info);
        EXPECT_EQ(live + (whole ? 0 : 2), live_allocations());
        for (INT8_T *label : labels)
            safe_free(whole ? nullptr : label);
    }
}
