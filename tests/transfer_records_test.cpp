// What servers tell each other: whole movies, and the bodies that name movies and videos by code or id.
#include "codec_dbdata_movinfo.h"
#include "record_family.h"

using namespace harness;

namespace {

using MOVIES_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;
using REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T;
using Transfer = LEAK_CHECKED_T;

constexpr auto ENCODE = encode_tp_tavisys_dbdata_movie_information_list_to_message;
constexpr auto ENCODE_PACKED = encode_tp_tavisys_dbdata_movie_information_list_to_message_packed;
constexpr auto DECODE = decode_tp_tavisys_dbdata_movie_information_list_from_message;

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

MOVIES_T *decode_movies(const std::string &bytes) {
    MOVIES_T *list = nullptr;
    DECODE(bytes.data(), static_cast<INT32_T>(bytes.size()), &list);
    return list;
}

std::string text_of(const INT8_T *string) {
    return string == nullptr ? "" : string;
}

// NULL is a request, too, but no record to try the others' rules on.
RTSTATUS encode_request(const REQUEST_T *info, PVOID *body, INT32_T *length) {
    return info == nullptr ? -1 : encode_movinfo_request_information_to_message(info, body, length);
}

} // namespace

const std::vector<FAMILY_T> harness::FAMILIES = {
    family<ENCODE_PACKED, DECODE, delete_tp_tavisys_dbdata_movie_information_list>(
        "movies", wire(2, movie("TV-1"), movie("TV-22"))),
    family<encode_request, decode_movinfo_request_information_from_buffer,
           delete_tp_tavisys_movieinfo_request_information>(
        "request", wire(46, "dev", "sdb", nullptr, 3, 8, "TV-1", 0, 4, nullptr))};

TEST_F(Transfer, SeveralMoviesOverlapUnlessTheyArePacked) {
    MOVIES_T *list = decode_movies(wire(1, movie("TV-1")));
    EXPECT_EQ(wire(7, 31), wire(list->info->mid, list->info->video_list->info->vid)); // not listed
    EXPECT_EQ("编码后信息长度为" + std::to_string(4 + movie("TV-1").size()) + "\n",
              said_by([&] { EXPECT_EQ(wire(1, movie("TV-1")), encoded(ENCODE, list)); })); // as peers send it
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
    EXPECT_NE("", said_by([&] { EXPECT_EQ(overlapping, encoded(ENCODE, list)); }));
    EXPECT_EQ(nullptr, decode_movies(overlapping));
    EXPECT_EQ("", said_by([&] { EXPECT_EQ(packed, encoded(ENCODE_PACKED, list)); }));
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

TEST_F(Transfer, PersonsYearsAndVideosHaveToBeThereAndTheRestNeedNot) {
    auto *info = create_tp_tavisys_dbdata_movie_information();
    MOVIES_T *list = create_tp_tavisys_dbdata_movie_information_list_node(info);
    const auto expect_missing = [&](INT32_T length, const std::string &pointers, const char *step) {
        EXPECT_EQ(
            "编码后信息长度为" + std::to_string(length) + "\n" + pointers +
                "[encode_tp_tavisys_dbdata_movie_information_to_buffer][] warning " + step +
                "!\n[encode_tp_tavisys_dbdata_movie_information_list_to_buffer][] warning "
                "encode_tp_tavisys_dbdata_movie_information_to_buffer!\n编码影片元数据传输信息出错(-1)\n",
            said_by([&] { EXPECT_EQ("", encoded(ENCODE, list)); }));
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
            EXPECT_EQ("", encoded(ENCODE, list));
            EXPECT_EQ(wire(1, BARE_MOVIE), encoded(ENCODE, list));
            EXPECT_EQ("", encoded(ENCODE, nullptr));
        }));
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

TEST_F(Transfer, MoviesAreListedInFull) {
    MOVIES_T *list = decode_movies(wire(1, movie("TV-1")));
    const std::string head =
        "===========================影片元数据传输信息====================================\n";
    const std::string foot = std::string(75, '=') + "\n";
    EXPECT_EQ(head +
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
              said_by([&] { show_tp_tavisys_dbdata_movie_information_list(list); }));
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

TEST_F(Transfer, ARequestNamesMoviesByCodeAndMayBeNull) {
    EXPECT_EQ(wire(0), encoded(encode_movinfo_request_information_to_message, nullptr));
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
        EXPECT_EQ(c.result, decode_movinfo_request_information_from_buffer(
                                c.body.data(), static_cast<INT32_T>(c.body.size()), &request));
        EXPECT_EQ(c.again, encoded(encode_movinfo_request_information_to_message, request));
        delete_tp_tavisys_movieinfo_request_information(&request);
    }
}

TEST_F(Transfer, ACodeMayBeMissingFromItsNode) {
    auto *list = create_tp_movcode_information_list_node_ex("TV-1");
    add_node_to_tp_movcode_information_list(&list, create_tp_movcode_information_list_node(nullptr));
    delete_tp_movcode_information(&list->info);
    delete_tp_movcode_information_list(&list);
    EXPECT_NE(nullptr, list) << "the head pointer stays";
}

TEST_F(Transfer, IdsAndAnswersAreDecodedBehindAnIntegerThatTheirEncodersDoNotWrite) {
    EXPECT_EQ(wire("12", nullptr), encoded(encode_mid_vid_to_buffer, "12", nullptr));
    EXPECT_EQ("",
              encoded(encode_basic_movie_return, 1, 2, "SN", "名", "M1", "3D")); // too little room, always
    const std::string ids = wire("12", "345");
    const std::string answer = wire(1, 2, "SN", "名", "M1", "3D");
    each_cut(answer, [&](const BODY_T &room) {
        const INT32_T length = room.length();
        EXPECT_EQ(length < 13 ? -1 : 13, encode_mid_vid_argument_to_buffer("12", "345", room.data(), length));
        const bool fits = length == static_cast<INT32_T>(answer.size());
        EXPECT_EQ(fits ? length : -1,
                  encode_basic_movie_argument_to_buffer(1, 2, "SN", "名", "M1", "3D", room.data(), length));
        EXPECT_TRUE(!fits || answer == std::string(room.data(), answer.size()));
    });
    each_cut(wire(13, ids), [](const BODY_T &part) {
        INT8_T *mid = nullptr;
        INT8_T *vid = nullptr;
        const INT32_T length = part.length();
        EXPECT_EQ(length < 17 ? -1 : 17, decode_mid_vid_to_buffer(part.data(), length, &mid, &vid));
        EXPECT_EQ(length < 10 ? "" : "12", text_of(mid)); // the caller's from here on
        EXPECT_EQ(length < 17 ? "" : "345", text_of(vid));
        safe_free(mid);
        safe_free(vid);
    });
    each_cut(wire(29, answer), [&](const BODY_T &part) { // exactly as long as the length states
        INT32_T numbers[] = {0, 0};
        INT8_T *strings[] = {nullptr, nullptr, nullptr, nullptr};
        const INT32_T length = part.length();
        const bool is_whole = length == static_cast<INT32_T>(4 + answer.size());
        EXPECT_EQ(is_whole ? length : -1,
                  decode_basic_movie_to_buffer(part.data(), &length, &numbers[0], &numbers[1], &strings[0],
                                               &strings[1], &strings[2], &strings[3]));
        EXPECT_EQ(length < 12 ? 0 : 2, numbers[1]);
        EXPECT_EQ(length < 18 ? "" : "SN", text_of(strings[0]));
        EXPECT_EQ(is_whole ? "3D" : "", text_of(strings[3]));
        for (INT8_T *string : strings)
            safe_free(string);
    });
    INT8_T mark = 0;
    INT8_T *kept = &mark;
    EXPECT_EQ(4, decode_mid_vid_to_buffer(wire(0, ids).data(), 17, &kept, &kept));
    EXPECT_EQ(&mark, kept);
}

TEST_F(Transfer, WhatIsMissingIsRefused) {
    INT8_T mark = 0;
    INT8_T *kept = &mark;
    PVOID body = &mark;
    INT32_T number = 77;
    const std::string ids = wire(13, "12", "345");
    for (const INT32_T refused :
         {decode_mid_vid_to_buffer(ids.data(), 17, nullptr, &kept),
          decode_mid_vid_to_buffer(nullptr, 17, &kept, &kept),
          decode_basic_movie_to_buffer(&mark, nullptr, &number, &number, &kept, &kept, &kept, &kept),
          decode_basic_movie_to_buffer(nullptr, &number, &number, &number, &kept, &kept, &kept, &kept),
          encode_mid_vid_argument_to_buffer("12", "345", nullptr, 100),
          encode_basic_movie_argument_to_buffer(1, 2, "SN", "名", "M1", "3D", nullptr, 100),
          encode_mid_vid_to_buffer("12", "345", nullptr, &number),
          encode_mid_vid_to_buffer("12", "345", &body, nullptr),
          encode_basic_movie_return(1, 2, "SN", "名", "M1", "3D", nullptr, &number),
          encode_basic_movie_return(1, 2, "SN", "名", "M1", "3D", &body, nullptr),
          encode_ffmpegc_movie_path_to_buffer("sdb1", "a/b.ts", nullptr, &number),
          encode_ffmpegc_movie_path_to_buffer("sdb1", "a/b.ts", &body, nullptr)})
        EXPECT_EQ(-1, refused);
    EXPECT_EQ(&mark, kept);
    EXPECT_EQ(&mark, body);
    EXPECT_EQ(77, number);
}

TEST_F(Transfer, PathsSayWhatFails) {
    const std::string path = wire("sdb1", "a/b.ts");
    EXPECT_EQ(18, calc_ffmpegc_movie_path_length("sdb1", "a/b.ts"));
    EXPECT_EQ(path, encoded(encode_ffmpegc_movie_path_to_buffer, "sdb1", "a/b.ts"));
    const BODY_T body(path);
    for (INT32_T length : {18, 17}) { // the second lacks the end
        INT8_T *device = nullptr;
        INT8_T *rest = nullptr;
        EXPECT_EQ(length < 18 ? "failed to decode_ptr_data_from_buffer" : "", said_by([&] {
                      EXPECT_EQ(length < 18 ? -1 : 18,
                                decode_ffmpegc_movie_path_from_buffer(body.data(), length, &device, &rest));
                      EXPECT_EQ(0, decode_ffmpegc_movie_path_from_buffer(nullptr, 18, &device, &rest));
                  }));
        EXPECT_EQ(length < 18 ? "sdb1" : "sdb1a/b.ts", text_of(device) + text_of(rest));
        safe_free(device);
        safe_free(rest);
    }
}
