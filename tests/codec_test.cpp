// The message bodies. What the engine gives all record families is tried on some that have every kind of
// field; the bytes of the others are in docs/protocol.md. Behind that stands what a family has of its own:
// the fields of its record, its lists, its owners, its log lines.
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
#include "record_family.h"

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

const std::string VIDEOS = wire(2, 31, 1, nullptr, "/a.mp4", 32, 2, "下", "/b.mp4");
const std::string MOVIE = wire(1001, "TV-1", "霸王别姬", 93, 20170101, 19930102, "/n", "/b", "BWBJ", 6, 1993,
                               3, 11, 12, 13, 0, 0, 1, -1, "SN", 4);
const std::string EMPTY_MOVIE =
    wire(0, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, 0, nullptr, 0);
using Codec = LEAK_CHECKED_T;

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

const std::vector<FAMILY_T> harness::FAMILIES = {
    family<encode_tavisys_sysrun_status_information_to_message,
           decode_tavisys_sysrun_status_information_from_message, delete_tavisys_sysrun_status_information>(
        "status", "\x03\0\0\0\x0a\0\0\0\x07\0\0\0\x01\0\0\0\x02\0\0\0"s),
    family<encode_tavisys_player_status_information_to_message,
           decode_tavisys_player_status_information_from_message, delete_tavisys_player_status_information>(
        "player", wire(1, "a.ts", "/盘/", -1, 2, 3, 4, 5, 6, 7, 8)),
    family<encode_tavisys_basic_movie_information_list_to_message,
           decode_tavisys_basic_movie_information_list_from_message,
           delete_tavisys_basic_movie_information_list>("basic_movies", wire(2, MOVIE, EMPTY_MOVIE)),
    family<encode_page, decode_tavisys_basic_movie_ext_information_from_message,
           delete_tavisys_basic_movie_ext_information>("page", wire(1, 20, 3, 42, 2, 2, MOVIE, EMPTY_MOVIE)),
    family<encode_tavisys_detail_movie_information_to_message,
           decode_tavisys_detail_movie_information_from_message, release_tavisys_detail_movie_information>(
        "detail", wire("霸王别姬", 1993, 1, 3, "2D", nullptr, 1, "导演", 1, "陈凯歌", 0, 1, "类型", 1, "剧情",
                       0, 1, "简介", "戏", 40, VIDEOS))};

// The round trip tells the order on the wire; that each item belongs to the field of its name is seen here.
TEST_F(Codec, TheFieldsOfStatusRecordsHoldWhatTravelled) {
    auto *status = decoded<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T>("status");
    EXPECT_EQ(family_of("status").wire, wire(status->status, status->total_movies, status->parseok_movies,
                                             status->parseerr_movies, status->left_movies));
    delete_tavisys_sysrun_status_information(&status);

    auto *player = decoded<TP_TAVISYS_PLAYER_STATUS_INFORMATION_T>("player");
    EXPECT_EQ(family_of("player").wire,
              wire(player->status, player->filename, player->filepath, static_cast<INT32_T>(player->playtime),
                   player->duration, player->mute, player->volume, player->movid, player->videoid,
                   player->seqno, player->category_id));
    EXPECT_EQ(0xFFFFFFFFU, player->playtime); // unsigned fields pass through
    delete_tavisys_player_status_information(&player);
}

TEST_F(Codec, TheFieldsOfAPageAndItsMoviesHoldWhatTravelled) {
    auto *page = decoded<PAGE_T>("page");
    const TP_PAGE_INFORMATION &numbers = page->pageinfo;
    auto *m = page->list->info;
    const std::string first =
        wire(numbers.pagenum, numbers.pagesize, numbers.totalpages, numbers.totalmovies, numbers.replymovies,
             2, m->movid, m->movcode, m->movname, static_cast<INT32_T>(m->score), m->puttime, m->pubtime,
             m->nposter, m->bposter, m->acronym, m->category_id, m->year_id, m->kind_ids->num,
             m->kind_ids->ids[0], m->kind_ids->ids[1], m->kind_ids->ids[2], 0, 0, m->resolution_ids->num,
             m->resolution_ids->ids[0], m->hdsn, m->index);
    EXPECT_EQ(family_of("page").wire.substr(0, first.size()), first);
    EXPECT_EQ(nullptr, m->area_ids);
    EXPECT_EQ(nullptr, m->dimension_ids);
    m->totalvideo = m->duration = 99; // these two don't travel in this form
    EXPECT_EQ(family_of("page").wire, encoded(encode_page, page));
    delete_tavisys_basic_movie_ext_information(&page);
}

TEST_F(Codec, TheFieldsOfADetailRecordHoldWhatTravelled) {
    auto *info = decoded<DETAIL_T>("detail");
    const auto people = [](const TP_MOVIE_FILTER_KVP_INFORMATION_T *list) {
        return wire(1, list->desc, 1, list->list->info->name);
    };
    const auto video = [](const TP_TAVISYS_VIDEO_INFORMATION_T *of) {
        return wire(of->id, of->seqno, of->name, of->mp4);
    };
    const VIDEOS_T *second = ANY_T{info->video_list->next};
    EXPECT_EQ(family_of("detail").wire,
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
    const std::string said = said_by([&] {
        show_tavisys_system_information(&system);
        show_tavisys_version_information(&version);
        show_tavisys_category_information_list(&list);
    });
    EXPECT_EQ("系统共有2个硬盘,36000部影片\n影柜系统版本号: 电影\n影柜设备名称: (null)\n影柜设备编码: 电影\n"
              "影片分类信息: \n\t分类编号: 1, 分类名称: 电影, 分类下的影片数: 120\n",
              said);
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
        EXPECT_EQ(c.records == 0, list == nullptr) << "the head pointer stays";
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
    EXPECT_EQ(nullptr, kind);
    delete_tavisys_kind_information_list_node(&kind); // nothing to delete
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

    EXPECT_EQ((std::vector{line(LIST_CALL, 80, "参数获取出错! list((nil)) message(0x)"),
                           line(PAGE_CALL, 80, "出错..")}),
              failure());

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
        auto *info = decoded<DETAIL_T>("detail");
        INT8_T *labels[] = {info->director_info->desc, info->kind_info->desc};
        (whole ? release_tavisys_detail_movie_information : delete_tavisys_detail_movie_information)(&info);
        EXPECT_EQ(nullptr, info);
        EXPECT_EQ(live + (whole ? 0 : 2), live_allocations());
        for (INT8_T *label : labels)
            safe_free(whole ? nullptr : label);
    }
}
