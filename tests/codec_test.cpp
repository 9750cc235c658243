// What the families of message bodies have of their own: their lists and owners, their lines, and what they
// do without what is missing. Fields, cuts and hostile numbers are the fuzz targets', see fuzz_inputs.cpp.
#include <algorithm>
#include <climits>
#include <gtest/gtest.h>

#include "families.h"
#include "fuzz.h"
#include "harness.h"
#include "tavisys.h"

using namespace harness;
using namespace std::string_literals;

void fuzz::require(bool holds, const char *what, const char *of) {
    EXPECT_TRUE(holds) << of << ": " << what;
}

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using MOVIES_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_VIDEO_INFORMATION_LIST_T;
using DETAIL_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;
using CATEGORIES_T = TP_TAVISYS_CATEGORY_INFORMATION_LIST_T;
using IDS_T = TP_TAVISYS_MOVIE_ID_INFORMATION_T;
using HDVIDEO_T = TP_HARD_DISK_VIDEO_INFORMATION_T;
using TRANSFER_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;
using REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T;
using DISKS_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
using PARTITIONS_T = TP_TAVISYS_PARTITION_INFORMATION_LIST_T;

constexpr auto ENCODE_PAGE = encode_tavisys_basic_movie_ext_information_to_message;
constexpr auto ENCODE_TOUCH_PAGE = encode_touchscreen_basic_movie_ext_information_to_message;
constexpr auto ENCODE_IDS = encode_tavisys_movie_id_information_to_message;
constexpr auto ENCODE_TRANSFER = encode_tp_tavisys_dbdata_movie_information_list_to_message;
constexpr auto ENCODE_PACKED = encode_tp_tavisys_dbdata_movie_information_list_to_message_packed;
constexpr auto ENCODE_DISKS = encode_tavisys_harddisk_information_list_to_message;
constexpr auto DECODE_DISKS = decode_tavisys_harddisk_information_list_from_message;
constexpr auto RELEASE_DISKS = release_tavisys_harddisk_information_list;
constexpr auto NEW_DISK = create_tavisys_harddisk_information_list_node_ex;

constexpr auto FILE_NAME = "codec/codec_basic_movinfo.c"; // of all lines
using Codec = LEAK_CHECKED_T;
using Storage = LEAK_CHECKED_T;
using Transfer = LEAK_CHECKED_T;

INT32_T size_of(const std::string &body) {
    return static_cast<INT32_T>(body.size());
}

// The bytes that an encoder makes; none when it fails, which leaves its out-arguments alone.
template <class ENCODE, class... ARGUMENT>
std::string encoded(ENCODE encode, ARGUMENT... argument) {
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    const RTSTATUS result = encode(argument..., &body, &length);
    EXPECT_EQ(result == 0 ? 0 : -1, result);
    EXPECT_EQ(result != 0, body == &mark && length == 77);
    if (result != 0)
        return {};
    std::string bytes(static_cast<char *>(body), static_cast<size_t>(length));
    safe_free(body);
    return bytes;
}

MOVIES_T *movie_node(const INT8_T *movcode, const INT8_T *movname) {
    MOVIES_T *node =
        create_tavisys_basic_movie_information_list_node(create_tavisys_basic_movie_information());
    node->info->movcode = safe_strdup(movcode);
    node->info->movname = safe_strdup(movname);
    return node;
}

} // namespace

TEST_F(Codec, NullArgumentsAreRefused) {
    const std::string with_own_ways = "text answer mid_vid path uuid_and_ids movcodes touch_movies";
    for (const fuzz::FAMILY_T &family : fuzz::families()) {
        if (with_own_ways.find(family.name) != std::string::npos)
            continue;
        SCOPED_TRACE(family.name);
        INT8_T zeros[256] = {};
        PVOID body = zeros;
        INT32_T length = 77;
        void *record = zeros;
        forget_allocations();
        EXPECT_EQ(-1, family.decode(zeros, 3, &record));
        EXPECT_EQ(0U, bytes_allocated()) << "nothing is made of what can't be a record";
        EXPECT_EQ(-1, family.decode(nullptr, 100, &record));
        EXPECT_EQ(-1, family.decode(zeros, sizeof zeros, nullptr));
        EXPECT_EQ(-1, family.encode(nullptr, &body, &length));
        EXPECT_EQ(-1, family.encode(zeros, nullptr, &length));
        EXPECT_EQ(-1, family.encode(zeros, &body, nullptr));
        EXPECT_TRUE(body == zeros && length == 77 && record == zeros);
        family.release(&(record = nullptr));
    }
}

TEST_F(Codec, CountsDecideHowMuchIsRead) {
    constexpr INT32_T MANY = 100000; // an append that walked the list would make this run for minutes
    constexpr INT32_T ROOM = 12;     // of a category without a name: its zeros are a record
    const struct {
        INT32_T count, room, used;
    } CASES[] = {{0, 100, 4},
                 {-1, 100, 4},
                 {INT_MIN, 0, 4},
                 {9, 9 * ROOM - 1, -1},
                 {MANY, MANY * ROOM, 4 + MANY * ROOM}};
    for (const auto &c : CASES) {
        const BODY_T body(wire(c.count, std::string(static_cast<size_t>(c.room), '\0')));
        CATEGORIES_T *list = nullptr;
        forget_allocations();
        EXPECT_EQ(c.used,
                  decode_tavisys_category_information_list_from_message(body.data(), body.length(), &list));
        EXPECT_EQ(static_cast<size_t>(c.used > 4 ? c.count : 0), nodes_of(list).size()) << c.count;
        EXPECT_TRUE(c.used > 4 || bytes_allocated() == 0) << "built from a count that can't be met";
        delete_tavisys_category_information_list(&list);
    }
}

TEST_F(Codec, ItemsAreEncodedIntoTheRoomThatIsThere) {
    const std::string answer = wire(1, 2, "SN", "名", "M1", "3D");
    for (INT32_T room = -1; room < size_of(answer) + 3; room++) {
        const BODY_T body(std::string(static_cast<size_t>(std::max(room, 0)), 'x'));
        EXPECT_EQ(room < 13 ? -1 : 13, encode_mid_vid_argument_to_buffer("12", "345", body.data(), room));
        const INT32_T written =
            encode_basic_movie_argument_to_buffer(1, 2, "SN", "名", "M1", "3D", body.data(), room);
        EXPECT_EQ(room < size_of(answer) ? -1 : size_of(answer), written);
        EXPECT_TRUE(written < 0 || answer == std::string(body.data(), answer.size()));
    }
}

// ---- What is missing

TEST_F(Codec, ANodeWithoutARecordIsNotCounted) {
    INT32_T number = 0;
    TP_TAVISYS_VIDEO_INFORMATION_T video{};
    VIDEOS_T last{nullptr, &video};
    const VIDEOS_T videos{&last, nullptr};
    EXPECT_EQ(20, calc_encode_video_information_list_length(&videos, &number));
    EXPECT_EQ(1, number);
    EXPECT_EQ(0, calc_encode_video_information_list_length(nullptr, &number));
    EXPECT_EQ(0, number);
    MOVIES_T no_movie{};
    const PAGE_T page{{3, 20, 1, 1, 0}, &no_movie};
    EXPECT_EQ(wire(3, 20, 1, 1, 0, 0), encoded(ENCODE_PAGE, &page)); // an empty page
}

TEST_F(Codec, NothingIsMadeWithoutItsNameAndOthersHoldACopyOfIt) {
    EXPECT_EQ(nullptr, create_tavisys_category_information_list_node_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_kind_information_list_node_ex(5, nullptr, 1));
    EXPECT_EQ(nullptr, create_tavisys_filter_information_list_node_ex(5, nullptr));
    EXPECT_EQ(nullptr, create_tavisys_partition_information_ex(1, nullptr, "u", "/m"));
    EXPECT_EQ(nullptr, create_tavisys_partition_information_ex(1, "sda1", nullptr, "/m"));
    EXPECT_EQ(nullptr, create_tavisys_harddisk_information_ex(nullptr, "SN"));
    EXPECT_EQ(nullptr, create_tavisys_harddisk_information_ex("sda", nullptr));
    INT8_T name[] = "喜剧";
    auto *kind = create_tavisys_kind_information_list_node_ex(5, name, 7);
    name[0] = '\0';
    EXPECT_EQ(wire(5, "喜剧", 7), wire(kind->info->id, kind->info->name, kind->info->movies));
    delete_tavisys_kind_information_list_node(&kind);
    EXPECT_EQ(nullptr, kind);
}

// Encoders have room ready for most bodies and take memory on the way for longer ones.
TEST_F(Codec, ALongPageIsEncodedWholeOrNotAtAll) {
    constexpr INT32_T MOVIES = 2000;
    const auto create = [] {
        return create_tavisys_basic_movie_information_list_node(create_tavisys_basic_movie_information());
    };
    PAGE_T page{};
    page.list = create();
    const std::string bytes = encoded(ENCODE_PAGE, &page);
    const size_t head = wire(0, 0, 0, 0, 0, 0).size();
    std::string whole = bytes.substr(0, head - 4) + wire(MOVIES) + bytes.substr(head);
    for (INT32_T i = 1; i < MOVIES; i++) {
        whole += bytes.substr(head);
        auto *node = create();
        node->next = page.list;
        page.list = node;
    }
    EXPECT_LE(1, fail_each_allocation([&] { // the last one gives back what was too much: none is needed
                  const std::string body = encoded(ENCODE_PAGE, &page);
                  EXPECT_TRUE(body.empty() || body == whole);
                  return body == whole && !an_allocation_failed();
              }));
    delete_tavisys_basic_movie_information_list(&page.list);
}

TEST_F(Codec, EncodersAndDecodersLogUnderTheirNames) {
    const IDS_T pair{};
    BASIC_MOVIE_IDS_T areas{-1, nullptr};
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_T movie{};
    movie.area_ids = &areas;
    MOVIES_T movies{nullptr, &movie};
    const PAGE_T no_list{}, page{{}, &movies};
    const auto expect_failure = [](const std::string &body, const std::string &log) {
        EXPECT_EQ("", body);
        EXPECT_EQ(log, logged(FILE_NAME));
    };
    const std::string missing = " 80 参数获取出错! info((nil)) msgdata(0x) msglen(0x)\n";
    const std::string page_call = "encode_tavisys_basic_movie_ext_information_to_message";
    const std::string list_call = "encode_tavisys_basic_movie_information_list_to_buffer";
    const std::string ids_call = "encode_tavisys_movie_id_information_to_message";
    expect_failure(encoded(ENCODE_PAGE, nullptr), page_call + missing);
    expect_failure(encoded(ENCODE_IDS, nullptr), ids_call + missing);
    expect_failure(encoded(encode_movid_info_to_buffer, "u", 1, nullptr),
                   "encode_movid_info_to_buffer" + missing);
    expect_failure(encoded(encode_movid_info_to_buffer, nullptr, 1, &pair),
                   "encode_movid_info_to_buffer 80 参数获取出错! info(0x) msgdata(0x) msglen(0x)\n");
    expect_failure(encoded(encode_hdvideo_list_to_message, nullptr),
                   "encode_hdvideo_list_to_message" + missing);
    expect_failure(encoded(ENCODE_PAGE, &no_list),
                   list_call + " 80 参数获取出错! list((nil)) message(0x)\n" + page_call + " 80 出错..\n");
    expect_failure(encoded(ENCODE_TOUCH_PAGE, &no_list),
                   "encode_touchscreen_tavisys_basic_movie_information_list_to_buffer 80 参数获取出错! "
                   "list((nil)) message(0x)\n"
                   "encode_touchscreen_basic_movie_ext_information_to_message 80 出错..\n");
    expect_failure(encoded(ENCODE_PAGE, &page),
                   list_call + " 80 failed to encode_tavisys_basic_movie_information_to_buffer\n" +
                       page_call + " 80 出错..\n");
    fail_nth_allocation(1);
    expect_failure(encoded(ENCODE_PAGE, &page), page_call + " 80 创建内存失败..\n");
    areas.num = -100; // outweighs all the rest: 92 bytes less 400
    expect_failure(encoded(ENCODE_PAGE, &page), page_call + " 80 出错,获取的长度(-308)小于0\n");

    for (const auto &[name, body] : {std::pair{"movie_ids", wire(2, 1, 10, 2, 20)},
                                     {"uuid_and_ids", wire("uuid", 7, 2, 1, 10, 2, 20)},
                                     {"hdvideos", wire(1, "TV-1", 1, 3, "SN", "三")}}) {
        void *record = nullptr;
        fuzz::family_of(name).decode(body.data(), size_of(body), &record);
        fuzz::family_of(name).release(&record);
    }
    EXPECT_EQ("decode_tavisys_movie_id_information_to_message 40 解析的个数:2\n"
              "decode_movid_info_to_buffer 40 解析的个数:2\n"
              "decode_tavisys_videolist_information_from_buffer 40 解析的 video list 个数:1\n",
              logged(FILE_NAME));
}

// ---- Lists and owners

TEST_F(Codec, AMovieWhoseCodeIsInTheListIsDroppedWithALine) {
    const auto add = add_touchscreen_node_to_tavisys_basic_movie_information_list;
    MOVIES_T *list = nullptr;
    add(&list, create_tavisys_basic_movie_information_list_node(nullptr));
    add(&list, movie_node("tv-1", "一"));
    add(&list, movie_node("TV-2", "二"));
    add(&list, create_tavisys_basic_movie_information_list_node(nullptr));
    EXPECT_EQ(4U, nodes_of(list).size());
    EXPECT_EQ("", logged(FILE_NAME));

    const long before = live_allocations();
    MOVIES_T *node = movie_node("TV-1", "另一");
    node->next = movie_node("TV-3", "chained behind the duplicate");
    add(&list, node);
    EXPECT_EQ("add_touchscreen_node_to_tavisys_basic_movie_information_list 40 "
              "查找到相同 (另一)movcode(TV-1) 无需加入列表..\n",
              logged(FILE_NAME));
    EXPECT_EQ(before, live_allocations());
    add(&list, movie_node(nullptr, nullptr));
    add(&list, movie_node(nullptr, nullptr)); // a second movie without a code
    EXPECT_NE("", logged());
    EXPECT_EQ(5U, nodes_of(list).size());
    delete_tavisys_basic_movie_information_list(&list);
}

TEST_F(Codec, DeletingADetailRecordLeavesTheLabelsOfItsListsAndReleasingDoesNot) {
    const std::string body = wire("戏", 1993, 0, nullptr, 1, "导演", 1, "陈", 1, "主演", 0, 0, 0, 0, 0, 0);
    const long live = live_allocations();
    for (bool whole : {false, true}) {
        DETAIL_T *info = nullptr;
        decode_tavisys_detail_movie_information_from_message(body.data(), size_of(body), &info);
        INT8_T *labels[] = {info->director_info->desc, info->actor_info->desc};
        (whole ? release_tavisys_detail_movie_information : delete_tavisys_detail_movie_information)(&info);
        EXPECT_EQ(nullptr, info);
        EXPECT_EQ(live + (whole ? 0 : 2), live_allocations());
        for (INT8_T *label : labels)
            safe_free(whole ? nullptr : label);
    }
}

TEST_F(Codec, AMovieWithoutVideosFailsAWholeListOfVideos) {
    HDVIDEO_T *list = create_hard_disk_videonode("TV-1", create_video_node("SN", 1, "一"));
    add_node_to_mhard_disk_videolist(&list, create_hard_disk_videonode("TV-2", nullptr));
    EXPECT_EQ("", encoded(encode_hdvideo_list_to_message, list));
    EXPECT_EQ("encode_hdvideo_list_to_message 40 -- 影片编码个数:2 总大小为:41\n"
              "encode_video_list_to_message 40 传入的length:29\n"
              "encode_video_list_to_message 40 -- 解出来视频信息:1\n"
              "encode_video_list_to_message 80 参数获取出错! info((nil)) message(0x) length(0)\n"
              "encode_hdvideo_list_to_message 80 error ..\n",
              logged(FILE_NAME));
    INT8_T room[10];
    EXPECT_EQ(-1, encode_video_list_to_message(list->list, room, sizeof room));
    EXPECT_EQ(-1, encode_video_list_to_message(list->list, nullptr, 36));
    EXPECT_EQ(-1, encode_video_list_to_message(list->list, room, 0));
    EXPECT_EQ("encode_video_list_to_message 40 传入的length:10\n"
              "encode_video_list_to_message 40 -- 解出来视频信息:1\n"
              "encode_video_list_to_message 80 error ..\n"
              "encode_video_list_to_message 80 参数获取出错! info(0x) message((nil)) length(36)\n"
              "encode_video_list_to_message 80 参数获取出错! info(0x) message(0x) length(0)\n",
              logged(FILE_NAME));
    delete_hard_disk_videolist(&list);
}

// ---- What servers tell each other

namespace {

const std::string VIDEOS = wire(2, 31, 1, "上", "/a.ts", "/a.mp4", 32, 2, nullptr, "", nullptr);
std::string movie(const char *code) {
    return wire(7, code, "霸王别姬", "Farewell", "9.3", "BWBJ", 1, "3D", 0, 1, "电影", 2, "剧情", nullptr,
                0) +
           wire(1, "P1", "陈凯歌", 1, nullptr, "张国荣", 2, 1993, 1994, 1, 2, 3, 171) +
           wire(1, "/b", nullptr, "/s", "戏", 2, VIDEOS);
}
// Without posters and with no more in the lists than they need to be sent.
const std::string BARE_MOVIE = wire(0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, 0) +
                               wire(0, 0, 0, 0, 0, nullptr, 0, 0);

TRANSFER_T *decode_movies(const std::string &bytes) {
    TRANSFER_T *list = nullptr;
    decode_tp_tavisys_dbdata_movie_information_list_from_message(bytes.data(), size_of(bytes), &list);
    return list;
}

} // namespace

TEST_F(Transfer, SeveralMoviesOverlapUnlessTheyArePacked) {
    TRANSFER_T *list = decode_movies(wire(1, movie("TV-1")));
    for (const char *code : {"TV-22", "TV-333"}) {
        add_node_to_tp_tavisys_dbdata_movie_information_list(&list, decode_movies(wire(1, movie(code))));
        add_node_to_tp_tavisys_dbdata_movie_information_list(
            &list, create_tp_tavisys_dbdata_movie_information_list_node(nullptr));
    }
    const std::string packed = wire(3, movie("TV-1"), movie("TV-22"), movie("TV-333"));
    std::string overlapping = wire(3, movie("TV-1"));
    overlapping.replace(4 + VIDEOS.size(), std::string::npos, movie("TV-22"));
    overlapping.replace(4 + 2 * VIDEOS.size(), std::string::npos, movie("TV-333"));
    overlapping.resize(packed.size(), '\0');
    EXPECT_EQ("编码后信息长度为" + std::to_string(packed.size()) + "\n",
              said_by([&] { EXPECT_EQ(overlapping, encoded(ENCODE_TRANSFER, list)); }));
    EXPECT_EQ(nullptr, decode_movies(overlapping));
    EXPECT_EQ("", said_by([&] { EXPECT_EQ(packed, encoded(ENCODE_PACKED, list)); }));
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

TEST_F(Transfer, PersonsYearsAndVideosHaveToBeThereAndTheRestNeedNot) {
    auto *info = create_tp_tavisys_dbdata_movie_information();
    TRANSFER_T *list = create_tp_tavisys_dbdata_movie_information_list_node(info);
    const auto expect_missing = [&](INT32_T length, const std::string &pointers, const char *step) {
        EXPECT_EQ(
            "编码后信息长度为" + std::to_string(length) + "\n" + pointers +
                "[encode_tp_tavisys_dbdata_movie_information_to_buffer][] warning " + step +
                "!\n[encode_tp_tavisys_dbdata_movie_information_list_to_buffer][] warning "
                "encode_tp_tavisys_dbdata_movie_information_to_buffer!\n编码影片元数据传输信息出错(-1)\n",
            said_by([&] { EXPECT_EQ("", encoded(ENCODE_TRANSFER, list)); }));
    };
    expect_missing(76, "", "encode_tp_tavisys_dbdata_person_information_list_to_buffer");
    info->director_list = create_tp_tavisys_dbdata_person_information_list_node(nullptr);
    expect_missing(80, "", "encode_tp_tavisys_dbdata_person_information_list_to_buffer");
    info->actor_list = create_tp_tavisys_dbdata_person_information_list_node(nullptr);
    expect_missing(84, "", "encode_tp_tavisys_dbdata_year_information_list_to_buffer");
    info->year_list = create_tp_tavisys_dbdata_year_information_list_node(nullptr);
    expect_missing(88, "输入的参数无效 , list=(nil),messgae=0x\n", "encode_int_data_to_buffer");
    info->video_list = create_tp_tavisys_dbdata_video_information_list_node(nullptr);
    info->kind_list = create_tp_tavisys_dbdata_filter_information_list_node(nullptr);
    EXPECT_EQ(
        "编码后信息长度为92\n分配92字节内存空间出错.错误原因: Cannot allocate memory\n编码后信息长度为92\n"
        "计算编码影片元数据传输信息长度出错\n",
        said_by([&] {
            fail_nth_allocation(1);
            EXPECT_EQ("", encoded(ENCODE_TRANSFER, list));
            EXPECT_EQ(wire(1, BARE_MOVIE), encoded(ENCODE_TRANSFER, list));
            EXPECT_EQ("", encoded(ENCODE_TRANSFER, nullptr));
        }));
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

TEST_F(Transfer, ARequestMayBeNullAndItsLengthsAreNotTakenAtTheirWord) {
    const auto encode = encode_movinfo_request_information_to_message;
    const struct {
        std::string body;
        INT32_T result;
        std::string again; // what the record is encoded to
    } CASES[] = {{wire(0), 4, wire(0)},
                 {wire(-9, "d", "h", "p", 1, 999, "T"), 32, wire(28, "d", "h", "p", 1, 5, "T")},
                 {wire(1, "d", "h", "p", -1), 23, wire(19, "d", "h", "p", 0)},
                 {wire(15, "d", "h", "p"), -1, wire(0)}};
    for (const auto &c : CASES) {
        REQUEST_T *request = nullptr;
        EXPECT_EQ(c.result,
                  decode_movinfo_request_information_from_buffer(c.body.data(), size_of(c.body), &request));
        EXPECT_EQ(c.again, encoded(encode, request));
        delete_tp_tavisys_movieinfo_request_information(&request);
    }
}

TEST_F(Transfer, ItemsAreRefusedWithoutAPlaceAndOthersHaveTheirOwnWays) {
    INT8_T mark = 0;
    INT8_T *kept = &mark;
    PVOID body = &mark;
    INT32_T number = 77;
    IDS_T *list = nullptr;
    const VIDEOS_T videos{};
    const std::string ids = wire(13, "12", "345");
    for (const INT32_T refused :
         {decode_mid_vid_to_buffer(nullptr, 17, &kept, &kept),
          decode_mid_vid_to_buffer(ids.data(), 17, nullptr, &kept),
          decode_basic_movie_to_buffer(&mark, nullptr, &number, &number, &kept, &kept, &kept, &kept),
          decode_basic_movie_to_buffer(nullptr, &number, &number, &number, &kept, &kept, &kept, &kept),
          decode_movid_info_to_buffer(ids.data(), 17, nullptr, &number, &list),
          decode_movinfo_request_information_from_buffer(wire(0).data(), 4, nullptr),
          encode_movinfo_request_information_to_message(nullptr, nullptr, &number),
          encode_mid_vid_argument_to_buffer("12", "345", nullptr, 100),
          encode_tavisys_video_information_list_to_buffer(&videos, nullptr, 100),
          encode_mid_vid_to_buffer("12", "345", nullptr, &number),
          encode_mid_vid_to_buffer("12", "345", &body, nullptr),
          encode_basic_movie_return(1, 2, "SN", "名", "M1", "3D", nullptr, &number),
          encode_basic_movie_return(1, 2, "SN", "名", "M1", "3D", &body, nullptr),
          encode_basic_movie_return(1, 2, "SN", "名", "M1", "3D", &body, &number), // too little room, always
          encode_ffmpegc_movie_path_to_buffer("sdb1", "a/b.ts", nullptr, &number),
          encode_ffmpegc_movie_path_to_buffer("sdb1", "a/b.ts", &body, nullptr)})
        EXPECT_EQ(-1, refused);
    EXPECT_EQ(4, decode_mid_vid_to_buffer(wire(0, ids).data(), 17, &kept, &kept)); // none follow
    EXPECT_EQ(0, decode_ffmpegc_movie_path_from_buffer(nullptr, 18, &kept, &kept));
    EXPECT_TRUE(kept == &mark && body == &mark && number == 77);
    EXPECT_EQ(wire("12", nullptr), encoded(encode_mid_vid_to_buffer, "12", nullptr)); // without a length
    EXPECT_EQ(18, calc_ffmpegc_movie_path_length("sdb1", "a/b.ts"));
}

// ---- Disks and partitions

namespace {

PARTITIONS_T *new_partition(const char *name) {
    return create_tavisys_partition_information_list_node_ex(1, name, "u", nullptr);
}

std::string listing_of(const DISKS_T *list) {
    return said_by([&] { show_tp_tavisys_harddisk_information_list(list); });
}
std::string disk_line(const char *name, const char *serial) {
    return std::string("硬盘设备名: ") + name + ". 硬盘序列号: " + serial + "\n";
}
std::string line(int number, const char *name, const char *uuid = "", const char *mount = "") {
    return "\t分区序号: " + std::to_string(number) + ". 分区设备号: " + name + ". UUID: " + uuid +
           ". 分区挂载点: " + mount + "\n";
}

} // namespace

TEST_F(Storage, ANameJoinsAListOnceAndAFirstNodeAlways) {
    const auto add = add_node_to_tavisys_partition_information_list;
    PARTITIONS_T *list = nullptr;
    PARTITIONS_T *repeat = new_partition("sda1");
    PARTITIONS_T *empty = create_tavisys_partition_information_list_node(nullptr);
    EXPECT_EQ(-1, add(nullptr, repeat));
    EXPECT_EQ(-1, add(&list, nullptr));
    EXPECT_EQ(0, add(&list, new_partition("sda1")));
    EXPECT_EQ(0, add(&list, new_partition("SDA1")));
    EXPECT_EQ(1, add(&list, repeat));
    EXPECT_EQ(-1, add(&list, empty));
    DISKS_T *disks = nullptr;
    DISKS_T *same = NEW_DISK("sda", "other", nullptr);
    EXPECT_EQ(0, add_node_to_tavisys_harddisk_information_list(&disks, NEW_DISK("sda", "SN", list)));
    EXPECT_EQ(1, add_node_to_tavisys_harddisk_information_list(&disks, same));
    EXPECT_EQ(wire(1, "sda", "SN", 2, 1, "sda1", "u", nullptr, 1, "SDA1", "u", nullptr),
              encoded(ENCODE_DISKS, disks));
    for (DISKS_T **node : {&disks, &same, &same})
        RELEASE_DISKS(node);
    list = nullptr;
    EXPECT_EQ(0, add(&list, empty)); // the first
    EXPECT_EQ(0, add(&list, repeat));
    delete_tavisys_partition_information_list(&list);
}

TEST_F(Storage, DeletesLeaveSerialNumbersAndFurtherPartitions) {
    const long live = live_allocations();
    PARTITIONS_T *partitions = new_partition("sda1");
    PARTITIONS_T *further = new_partition("sda2");
    add_node_to_tavisys_partition_information_list(&partitions, further);
    DISKS_T *list = NEW_DISK("sda", "SN", partitions);
    INT8_T *serialno = list->info->serialno;
    delete_tavisys_harddisk_information_list(&list);
    EXPECT_EQ(live + 1 + 4, live_allocations()); // the serial number and one partition
    EXPECT_STREQ("SN", serialno);
    safe_free(serialno);
    delete_tavisys_partition_information_list(&further);
}

TEST_F(Storage, OfANameThatRepeatsTheFirstIsKeptAndTheRestReleased) {
    const std::pair<std::string, std::string> CASES[] = {
        {wire(-1), ""},
        {wire(1, "sda", "SN", 0), disk_line("sda", "SN")},
        {wire(1, nullptr, "", 5, 1, "b", "u", "m", 2, "a", "", "", 3, "b") +
             wire(nullptr, nullptr, 4, nullptr, "", "", 5, nullptr, "", ""),
         disk_line("(null)", "") + line(1, "b", "u", "m") + line(2, "a") + line(4, "(null)")},
        {wire(4, "sdb", "1", 1, 1, "x", "", "", "sda", "2", 0, "sdb", "3", 1, 1, "y", "", "", "sda", "4", 0),
         disk_line("sdb", "1") + line(1, "x") + disk_line("sda", "2")},
    };
    for (const auto &[body, listing] : CASES) {
        DISKS_T *list = nullptr;
        EXPECT_EQ(size_of(body), DECODE_DISKS(body.data(), size_of(body), &list));
        EXPECT_EQ(listing, listing_of(list));
        RELEASE_DISKS(&list);
    }
}

// Comparing each name with each would make this run for minutes.
TEST_F(Storage, DroppingRepeatsTakesNoTimeWhateverTheNamesAre) {
    constexpr int MANY = 50000;
    for (int kinds : {MANY, 1, 9}) {
        std::string disks = wire(MANY);
        std::string partitions = wire(1, "sda", "SN", MANY);
        for (int i = 0; i < MANY; i++) {
            const std::string name = std::to_string((MANY - i) % kinds);
            disks += wire(name.c_str(), nullptr, 0);
            partitions += wire(i, name.c_str(), nullptr, nullptr);
        }
        for (const std::string &body : {disks, partitions}) {
            DISKS_T *list = nullptr;
            EXPECT_EQ(size_of(body), DECODE_DISKS(body.data(), size_of(body), &list));
            RELEASE_DISKS(&list);
        }
    }
}

TEST_F(Codec, ListingsPrintTheFields) {
    INT8_T name[] = "电影";
    const TP_TAVISYS_SYSTEM_INFORMATION_T system{2, 36000};
    const TP_TAVISYS_VERSION_INFORMATION_T version{name, nullptr, name};
    TP_TAVISYS_CATEGORY_INFORMATION_T category{1, name, 120};
    CATEGORIES_T last{nullptr, &category};
    const CATEGORIES_T list{&last, nullptr};
    TRANSFER_T *movies = decode_movies(wire(1, movie("TV-1")));
    EXPECT_EQ("系统共有2个硬盘,36000部影片\n影柜系统版本号: 电影\n影柜设备名称: (null)\n影柜设备编码: 电影\n"
              "影片分类信息: \n\t分类编号: 1, 分类名称: 电影, 分类下的影片数: 120\n"
              "===========================影片元数据传输信息====================================\n"
              "影片编码: TV-1, 影片中文名: 霸王别姬, 影片英文名: Farewell\n"
              "影片评分: 9.3. 影片首字母缩写: BWBJ\n"
              "影片维度信息: 3D \n影片分辨率信息: \n影片分类信息: 电影 \n影片类型信息: 剧情 (null) \n"
              "影片地区信息: \n影片导演信息: (P1 陈凯歌)\n影片主演信息: ((null) 张国荣)\n"
              "影片年份信息: 1993 1994 \n"
              "影片发布时间: 2, 影片入库时间: 1, 影片上架时间: 3, 影片时长: 171\n"
              "影片海报信息:\n\t大型海报地址: /b\n\t小型海报地址: /s\n影片简介: 戏\n影片总集数: 2\n"
              "影片视频信息: \n第1集: 视频名称(上), 视频路径(/a.ts), MP4视频路径(/a.mp4)\n"
              "第2集: 视频名称((null)), 视频路径(), MP4视频路径((null))\n" +
                  std::string(75, '=') + "\n",
              said_by([&] {
                  show_tavisys_system_information(&system);
                  show_tavisys_version_information(&version);
                  show_tavisys_category_information_list(&list);
                  show_tp_tavisys_dbdata_movie_information_list(movies);
              }));
    delete_tp_tavisys_dbdata_movie_information_list(&movies);
}
