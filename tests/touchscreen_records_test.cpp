// The records of a touch screen: its pages, lists of movie ids and of videos.
#include <algorithm>

#include "codec_basic_movinfo.h"
#include "record_family.h"

using namespace harness;

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using IDS_T = TP_TAVISYS_MOVIE_ID_INFORMATION_T;
using HDVIDEO_T = TP_HARD_DISK_VIDEO_INFORMATION_T;
using Touchscreen = LEAK_CHECKED_T;

constexpr auto ENCODE_IDS = encode_tavisys_movie_id_information_to_message;
constexpr auto DECODE_IDS = decode_tavisys_movie_id_information_to_message;
constexpr auto ENCODE_TOUCH_PAGE = encode_touchscreen_basic_movie_ext_information_to_message;

std::string page(bool is_touch) {
    const std::string movie =
        wire(1001, "TV-1", "霸王别姬", 93, 1, 2, "/n", "/b", "BWBJ", 6, 1993, 1, 11, 0, 0, 0, "SN", 4) +
        (is_touch ? wire(5, 90) : wire());
    return wire(1, 20, 3, 42, 2, 2, movie, movie);
}

// The integer too many of ids is looked at below; here goes the rest.
RTSTATUS encode_ids(const IDS_T *list, PVOID *body, INT32_T *length) {
    const RTSTATUS result = ENCODE_IDS(list, body, length);
    if (result == 0)
        *length -= 4;
    return result;
}

// The log since the last call, a line each: "FUNCTION LEVEL TEXT".
std::string logged() {
    std::string lines;
    for (const LOG_LINE_T &line : take_log()) {
        EXPECT_EQ("codec/codec_basic_movinfo.c", line.file);
        lines += line.function + " " + std::to_string(line.level) + " " + line.text + "\n";
    }
    return lines;
}

} // namespace

const std::vector<FAMILY_T> harness::FAMILIES = [] {
    std::vector<FAMILY_T> all = {
        family<ENCODE_TOUCH_PAGE, decode_touchscreen_basic_movie_ext_information_from_message,
               delete_tavisys_basic_movie_ext_information>("touch_page", page(true)),
        family<encode_ids, DECODE_IDS, delete_tavisys_movie_id_information>("ids", wire(2, 1, 10, 2, 20)),
        family<encode_hdvideo_list_to_message, decode_hdvideo_list_information_from_message,
               delete_hard_disk_videolist>(
            "videos", wire(2, "TV-1", 2, 1, "SN1", "一", 2, nullptr, "", nullptr, 1, -3, "SN2", "二"))};
    all.back().tells_bytes = false;
    return all;
}();

TEST_F(Touchscreen, ItsPagesCarryTwoIntegersMoreForEachMovie) {
    auto *info = decoded<PAGE_T>("touch_page");
    EXPECT_EQ(wire(5, 90), wire(info->list->info->totalvideo, info->list->info->duration));
    EXPECT_EQ(page(false), encoded(encode_tavisys_basic_movie_ext_information_to_message, info));
    delete_tavisys_basic_movie_ext_information(&info);

    const BODY_T list(page(true).substr(20));
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *movies = nullptr;
    EXPECT_EQ(list.length(), decode_touchscreen_basic_movie_information_list_from_message(
                                 list.data(), list.length(), &movies));
    EXPECT_NE(nullptr, movies->next) << "movies of one code both stay";
    delete_tavisys_basic_movie_information_list(&movies);
}

TEST_F(Touchscreen, ABodyOfIdsIsOneIntegerLongerThanItsPairsAndZeroThere) {
    IDS_T *list = decoded<IDS_T>("ids");
    add_node_to_tavisys_movie_id_information_list(&list, create_tavisys_movie_id_information());
    EXPECT_EQ("decode_tavisys_movie_id_information_to_message 40 解析的个数:2\n", logged());
    EXPECT_EQ(wire(3, 1, 10, 2, 20, 0, 0, 0), encoded(ENCODE_IDS, list));
    EXPECT_EQ(wire("u", -1, 3, 1, 10, 2, 20, 0, 0), encoded(encode_movid_info_to_buffer, "u", -1, list));
    delete_tavisys_movie_id_information(&list);
    EXPECT_NE(nullptr, list) << "the head pointer stays";
}

TEST_F(Touchscreen, TheUuidInFrontOfIdsStaysWithTheCallerWhenTheRestFails) {
    each_cut(wire("uuid", 7, 2, 1, 10, 2, 20), [](const BODY_T &part) {
        INT8_T *uuid = nullptr;
        INT32_T rid = 0;
        IDS_T *list = nullptr;
        EXPECT_EQ(part.length() < 32 ? -1 : 32,
                  decode_movid_info_to_buffer(part.data(), part.length(), &uuid, &rid, &list));
        EXPECT_EQ(part.length() < 8 ? "" : "uuid", std::string(uuid == nullptr ? "" : uuid));
        EXPECT_EQ(part.length() < 12 ? 0 : 7, rid);
        EXPECT_EQ(part.length() < 32, list == nullptr);
        EXPECT_EQ(part.length() < 16 ? "" : "decode_movid_info_to_buffer 40 解析的个数:2\n", logged());
        delete_tavisys_movie_id_information(&list);
        safe_free(uuid);
    });
    const BODY_T empty(wire("uuid", 7, 0));
    INT8_T *uuid = nullptr;
    INT32_T rid = 0;
    IDS_T *list = ANY_T{&rid}; // anything but NULL
    EXPECT_EQ(-1, decode_movid_info_to_buffer(empty.data(), empty.length(), nullptr, &rid, &list));
    EXPECT_EQ(16, decode_movid_info_to_buffer(empty.data(), empty.length(), &uuid, &rid, &list));
    EXPECT_EQ(nullptr, list);
    EXPECT_STREQ("uuid", uuid);
    safe_free(uuid);
}

TEST_F(Touchscreen, EncodersLogUnderTheirNamesWhatTheyMiss) {
    const IDS_T pair{};
    const PAGE_T page{};
    const auto expect_failure = [](const std::string &body, const std::string &log) {
        EXPECT_EQ("", body);
        EXPECT_EQ(log, logged());
    };
    const std::string missing = " 80 参数获取出错! info((nil)) msgdata(0x) msglen(0x)\n";
    expect_failure(encoded(ENCODE_IDS, nullptr), "encode_tavisys_movie_id_information_to_message" + missing);
    expect_failure(encoded(encode_movid_info_to_buffer, "u", 1, nullptr),
                   "encode_movid_info_to_buffer" + missing);
    expect_failure(encoded(encode_movid_info_to_buffer, nullptr, 1, &pair),
                   "encode_movid_info_to_buffer 80 参数获取出错! info(0x) msgdata(0x) msglen(0x)\n");
    expect_failure(encoded(encode_hdvideo_list_to_message, nullptr),
                   "encode_hdvideo_list_to_message" + missing);
    fail_nth_allocation(1);
    expect_failure(encoded(encode_movid_info_to_buffer, "u", 1, &pair),
                   "encode_movid_info_to_buffer 80 创建内存失败..\n");
    fail_nth_allocation(1);
    expect_failure(encoded(ENCODE_IDS, &pair),
                   "encode_tavisys_movie_id_information_to_message 80 创建内存失败..\n");
    expect_failure(encoded(ENCODE_TOUCH_PAGE, &page),
                   "encode_touchscreen_tavisys_basic_movie_information_list_to_buffer 80 参数获取出错! "
                   "list((nil)) message(0x)\n"
                   "encode_touchscreen_basic_movie_ext_information_to_message 80 出错..\n");
}

TEST_F(Touchscreen, AMovieWithoutVideosFailsAWholeListOfVideos) {
    HDVIDEO_T *list = create_hard_disk_videonode("TV-1", create_video_node("SN", 1, "一"));
    add_node_to_mhard_disk_videolist(&list, create_hard_disk_videonode("TV-2", nullptr));
    EXPECT_EQ("", encoded(encode_hdvideo_list_to_message, list));
    EXPECT_EQ("encode_hdvideo_list_to_message 40 -- 影片编码个数:2 总大小为:41\n"
              "encode_video_list_to_message 40 传入的length:29\n"
              "encode_video_list_to_message 40 -- 解出来视频信息:1\n"
              "encode_video_list_to_message 80 参数获取出错! info((nil)) message(0x) length(0)\n"
              "encode_hdvideo_list_to_message 80 error ..\n",
              logged());
    add_node_to_video_list(&list->list, create_video_node("SN2", 1, nullptr));
    INT8_T room[36]; // what the two take; a byte less is too little
    for (INT32_T length : {35, 36})
        EXPECT_EQ(length < 36 ? -1 : 36, encode_video_list_to_message(list->list, room, length));
    EXPECT_TRUE(logged().find(" 80 error ..\n") != std::string::npos);
    EXPECT_EQ(-1, encode_video_list_to_message(list->list, nullptr, 36));
    EXPECT_EQ(-1, encode_video_list_to_message(list->list, room, 0));
    EXPECT_EQ("encode_video_list_to_message 80 参数获取出错! info(0x) message((nil)) length(36)\n"
              "encode_video_list_to_message 80 参数获取出错! info(0x) message(0x) length(0)\n",
              logged());
    delete_hard_disk_videolist(&list);
    EXPECT_NE(nullptr, list);
    list = decoded<HDVIDEO_T>("videos");
    EXPECT_EQ("decode_tavisys_videolist_information_from_buffer 40 解析的 video list 个数:2\n"
              "decode_tavisys_videolist_information_from_buffer 40 解析的 video list 个数:1\n",
              logged());
    delete_hard_disk_videolist(&list);
}
