// Holds the worked examples of docs/protocol.md against the library: what its channel sends and what its
// encoders write is what the document shows, and its decoders read the document's bytes as records that are
// encoded to the same bytes. The bodies stand here once more, value by value, as their descriptions say.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "codec_kind_info.h"
#include "codec_player_status_info.h"
#include "peer.h"
#include "record_family.h"
#include "tavisys_agent_api.h"

using namespace harness;

namespace {

// ---- The document's named blocks

// The text of the blocks that are fenced as ```LANGUAGE name=NAME, by name.
std::map<std::string, std::string> blocks_of(const std::string &language) {
    const std::string fence = "```" + language + " name=";
    std::map<std::string, std::string> blocks;
    std::ifstream document(PROTOCOL_DOCUMENT);
    EXPECT_TRUE(document.is_open()) << PROTOCOL_DOCUMENT;
    for (std::string line; std::getline(document, line);) {
        if (line.rfind(fence, 0) != 0)
            continue;
        const std::string name = line.substr(fence.size());
        EXPECT_EQ(0U, blocks.count(name)) << "two blocks are named " << name;
        while (std::getline(document, line) && line != "```")
            blocks[name] += line + "\n";
    }
    return blocks;
}

// The bytes of a hex block; what stands behind a # is a comment.
std::string shown(const std::string &name) {
    static const std::map<std::string, std::string> BLOCKS = blocks_of("hex");
    std::string bytes;
    std::istringstream from(BLOCKS.at(name));
    for (std::string line; std::getline(from, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        for (std::string word; words >> word;)
            bytes += static_cast<char>(std::stoi(word, nullptr, 16));
    }
    return bytes;
}

// ---- The examples

INT32_T size_of(const std::string &body) {
    return static_cast<INT32_T>(body.size());
}

// What becomes of a body that is decoded and encoded again.
template <auto ENCODE, auto DECODE, auto DELETE>
std::string recoded(const std::string &body) {
    const FAMILY_T erased = family<ENCODE, DECODE, DELETE>("", body);
    void *record = nullptr;
    EXPECT_EQ(size_of(body), erased.decode(body.data(), size_of(body), &record));
    std::string result = encoded(erased.encode, record);
    erased.release(&record);
    return result;
}

std::string as_it_is(const std::string &body) {
    return body;
}

// The decoder gives an empty page as NULL, the encoder takes it as a list of one node without a record.
template <auto ENCODE>
RTSTATUS encode_page(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page, PVOID *to, INT32_T *length) {
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T no_movie{nullptr, nullptr};
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T sent{page->pageinfo,
                                                        page->list == nullptr ? &no_movie : page->list};
    return ENCODE(&sent, to, length);
}
constexpr auto PAGE = recoded<encode_page<encode_tavisys_basic_movie_ext_information_to_message>,
                              decode_tavisys_basic_movie_ext_information_from_message,
                              delete_tavisys_basic_movie_ext_information>;
constexpr auto TOUCH_PAGE = recoded<encode_page<encode_touchscreen_basic_movie_ext_information_to_message>,
                                    decode_touchscreen_basic_movie_ext_information_from_message,
                                    delete_tavisys_basic_movie_ext_information>;
constexpr auto DISKS =
    recoded<encode_tavisys_harddisk_information_list_to_message,
            decode_tavisys_harddisk_information_list_from_message, release_tavisys_harddisk_information_list>;
constexpr auto MOVIES = recoded<encode_tp_tavisys_dbdata_movie_information_list_to_message_packed,
                                decode_tp_tavisys_dbdata_movie_information_list_from_message,
                                delete_tp_tavisys_dbdata_movie_information_list>;

struct EXAMPLE_T {
    const char *request; // name of the request's block; NULL when the document shows the reply alone
    const char *reply;   // name of the reply's block
    INT32_T type;
    RTSTATUS result;
    std::string question, answer; // the bodies
    std::string (*recoded)(const std::string &);
};
const std::string FOLDER = "sda/sda1/TV1993-0015/";
const std::string NORMAL = wire((FOLDER + "posters/m.jpg").c_str());
const std::string BIG = wire((FOLDER + "posters/b.jpg").c_str());
const std::string FAREWELL = wire(15, "TV1993-0015", "霸王别姬", 81, 20230101, 19930101, NORMAL, BIG, "BWBJ",
                                  1, 5, 4, 1, 2, 3, 4, 3, 1, 2, 3, 2, 1, 2, 0, "SN100001", 1);
const std::string PAGE_1 = wire(1, 20, 1, 1, 1, 1, FAREWELL);
const std::string DISK_A =
    wire("sda", "SN100001", 2, 1, "sda1", "1F0A-22B7", "/media/sda1", 2, "sda2", "1F0A-22B8", "/media/sda2");
const std::string DISK_B = wire("sdb", "SN100002", 1, 1, "sdb1", "1F0A-22B9", "/media/sdb1");
const std::string WHOLE_FAREWELL =
    wire(15, "TV1993-0015", "霸王别姬", "Farewell My Concubine", "8.1", "BWBJ", 1, "2D", 1, "4K", 1, "电影",
         2, "剧情", "爱情", 2, "中国", "香港", 1, "P0084", "陈凯歌", 2, "P0050", "张国荣", "P0086", "巩俐", 1,
         1993, 20230101, 19930101, 0, 171, 1, "posters/b.jpg", "posters/m.jpg", "posters/s.jpg", "戏里戏外",
         1, 1, 16, 1, "霸王别姬", "videos/TV1993-0015.mkv", nullptr);
const std::string CODES = wire(59, "TP-02", "", nullptr, 2, 15, "TV1993-0015", 15, "TV9999-0001");

// The request record with the names of a disk and a partition.
std::string position(std::string disk, std::string partition) {
    disk.resize(16);
    partition.resize(16);
    return std::string(128, '\0') + disk + partition;
}

const EXAMPLE_T EXAMPLES[] = {
    {"version-request", "version-reply", 1000, 0, "", wire("1.0.0", "影柜", nullptr),
     recoded<encode_tavisys_version_information_to_message, decode_tavisys_version_information_from_message,
             delete_tavisys_version_information>},
    {nullptr, "status-reply", 1001, 0, "", wire(2, 30, 18, 1, 11),
     recoded<encode_tavisys_sysrun_status_information_to_message,
             decode_tavisys_sysrun_status_information_from_message,
             delete_tavisys_sysrun_status_information>},
    {nullptr, "system-reply", 1002, 0, "", wire(2, 28),
     recoded<encode_tavisys_system_information_to_message, decode_tavisys_system_information_from_message,
             delete_tavisys_system_information>},
    {nullptr, "categories-reply", 1003, 0, "", wire(2, 1, "电影", 23, 2, "电视剧", 5),
     recoded<encode_tavisys_category_information_list_to_message,
             decode_tavisys_category_information_list_from_message,
             delete_tavisys_category_information_list>},
    {nullptr, "kinds-reply", 1004, 0, "", wire(2, 1, "全部", 23, 2, "剧情", 14),
     recoded<encode_tavisys_kind_information_list_to_message, decode_tavisys_kind_information_from_message,
             delete_tavisys_kind_information_list>},
    {"filters-request", "filters-reply", 1005, 0, wire(2, 1), wire(3, 1, "全部", 2, "中国", 3, "香港"),
     recoded<encode_tavisys_filter_information_list_to_message,
             decode_tavisys_filter_information_list_from_message, delete_tavisys_filter_information_list>},
    {"page-request", "page-reply", 1006, 0, wire(1, 0, 3, 0, 0, 1, 20, 2), PAGE_1, PAGE},
    {nullptr, "empty-page-reply", 1006, 0, wire(1, 0, 3, 0, 0, 3, 20, 2), wire(3, 20, 1, 1, 0, 0), PAGE},
    {"detail-request", "detail-reply", 1007, 0, wire(1, 15),
     wire("霸王别姬", 1993, 1, 2, "2D", BIG, 1, "导演", 1, "陈凯歌", 1, "主演", 2, "张国荣", "巩俐", 0, 1,
          "时长", "171分钟", 0, 2, 2, 1, 1, "上集", (FOLDER + "videos/1.mkv").c_str(), 2, 2, "下集", nullptr),
     recoded<encode_tavisys_detail_movie_information_to_message,
             decode_tavisys_detail_movie_information_from_message, release_tavisys_detail_movie_information>},
    {nullptr, "poster-reply", 1008, 0, "", FOLDER + "posters/b.jpg", as_it_is},
    {nullptr, "disks-reply", 3000, 0, "", wire(2, DISK_A, DISK_B), DISKS},
    {"disk-request", "disk-reply", 3001, 0, position("sdb", ""), wire(1, DISK_B), DISKS},
    {"count-request", "count-reply", 3002, 0, position("sda", "sda1"), wire(12), as_it_is},
    {nullptr, "movies-reply", 3003, 0, position("sda", "sda1"), wire(1, WHOLE_FAREWELL), MOVIES},
    {nullptr, "uuid-reply", 3004, 0, "", std::string("6f1c2a52-3d0e-4b7a-9c55-0a1b2c3d4e5f\0", 37), as_it_is},
    {"codes-request", "codes-reply", 3005, 0, CODES, wire(0), as_it_is},
    {nullptr, "touch-page-reply", 5006, 0, wire(1, 0, 3, 0, 0, 1, 20, 2), wire(PAGE_1, 1, 171), TOUCH_PAGE},
    {"touch-detail-request", "touch-detail-reply", 5007, -103, wire(1, 15), "", as_it_is},
    {nullptr, "error-reply", 1007, -103, wire(1, 15), "", as_it_is},
};

std::string request_of(const EXAMPLE_T &each) {
    return each.request != nullptr ? shown(each.request) : message(each.type, 0, each.question);
}

// ---- Bodies without a message type

// Strings that a decoder hands out.
struct TEXTS_T {
    INT8_T *of[4] = {};
    ~TEXTS_T() { std::for_each(std::begin(of), std::end(of), safe_free); }
};

using IDS_T = TP_TAVISYS_MOVIE_ID_INFORMATION_T;
using HDVIDEO_T = TP_HARD_DISK_VIDEO_INFORMATION_T;

INT32_T decode_ids(const void *body, INT32_T length, IDS_T **ids) {
    return decode_tavisys_movie_id_information_to_message(body, length, ids) + 4; // which nobody reads
}

std::string ids_with_uuid(const std::string &body) {
    TEXTS_T text;
    INT32_T rid = 0;
    IDS_T *ids = nullptr;
    EXPECT_EQ(size_of(body),
              decode_movid_info_to_buffer(body.data(), size_of(body), &text.of[0], &rid, &ids));
    std::string result = encoded(encode_movid_info_to_buffer, text.of[0], rid, ids);
    delete_tavisys_movie_id_information(&ids);
    return result;
}

INT32_T decode_hdvideos(const void *body, INT32_T length, HDVIDEO_T **videos) {
    return decode_hdvideo_list_information_from_message(body, length, videos) == 0 ? length : -1;
}

std::string mid_vid(const std::string &body) {
    TEXTS_T text;
    EXPECT_EQ(size_of(body), decode_mid_vid_to_buffer(body.data(), size_of(body), &text.of[0], &text.of[1]));
    return wire(size_of(body) - 4, encoded(encode_mid_vid_to_buffer, text.of[0], text.of[1]));
}

std::string basic_movie(const std::string &body) {
    TEXTS_T text;
    INT32_T length = size_of(body), index = 0, duration = 0;
    EXPECT_EQ(length, decode_basic_movie_to_buffer(body.data(), &length, &index, &duration, &text.of[0],
                                                   &text.of[1], &text.of[2], &text.of[3]));
    std::string items(body.size() - 4, '\0');
    EXPECT_EQ(size_of(items),
              encode_basic_movie_argument_to_buffer(index, duration, text.of[0], text.of[1], text.of[2],
                                                    text.of[3], items.data(), size_of(items)));
    return wire(size_of(items), items);
}

std::string movie_path(const std::string &body) {
    TEXTS_T text;
    EXPECT_EQ(size_of(body),
              decode_ffmpegc_movie_path_from_buffer(body.data(), size_of(body), &text.of[0], &text.of[1]));
    return encoded(encode_ffmpegc_movie_path_to_buffer, text.of[0], text.of[1]);
}

const std::string IDS = wire(2, 15, 16, 17, 18);
const std::string VIDEOS = wire(2, 1, "SN100001", "霸王别姬", 2, "SN100002", nullptr);

const struct {
    const char *name; // of the block
    std::string body;
    std::string (*recoded)(const std::string &);
} BODIES[] = {
    {"movie-ids", wire(IDS, 0),
     recoded<encode_tavisys_movie_id_information_to_message, decode_ids,
             delete_tavisys_movie_id_information>},
    {"movie-ids-with-uuid", wire("6f1c2a52-3d0e-4b7a-9c55-0a1b2c3d4e5f", 7, IDS), ids_with_uuid},
    {"videos", VIDEOS, as_it_is}, // as part of the next
    {"videos-by-code", wire(1, "TV1993-0015", VIDEOS),
     recoded<encode_hdvideo_list_to_message, decode_hdvideos, delete_hard_disk_videolist>},
    {"mid-vid", wire(12, "15", "16"), mid_vid},
    {"basic-movie", wire(48, 1, 171, "SN100001", "霸王别姬", "15", "2D"), basic_movie},
    {"movie-path", wire("sda1", "TV1993-0015/videos/TV1993-0015.mkv"), movie_path},
    {"player-status", wire(1, "TV1993-0015.mkv", "videos", 90, 10260, 0, 30, 15, 16, 1, 1),
     recoded<encode_tavisys_player_status_information_to_message,
             decode_tavisys_player_status_information_from_message,
             delete_tavisys_player_status_information>},
};

// ---- Both ends of the channel

EXAMPLE_T asked; // what the handler expects and answers

RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    EXPECT_EQ(asked.type, type);
    EXPECT_EQ(asked.question, as_string(body, length));
    *replylen = size_of(asked.answer);
    *reply = calloc(1, asked.answer.size() + 1);
    memcpy(*reply, asked.answer.data(), asked.answer.size());
    return asked.result;
}

// All that the library has sent over its end.
std::string sent_over(const PAIR_T &pair) {
    shutdown(pair.ours(), SHUT_WR);
    return hear(pair.peer(), 4096);
}

TEST(ProtocolExamples, EveryBlockOfTheDocumentIsHeldAgainstTheLibrary) {
    std::set<std::string> covered = {"text-request", "text-reply"};
    for (const auto &each : BODIES)
        covered.insert(each.name);
    for (const EXAMPLE_T &each : EXAMPLES)
        covered.insert({each.reply, each.request != nullptr ? each.request : each.reply});
    std::set<std::string> shown;
    for (const auto &block : blocks_of("hex"))
        shown.insert(block.first);
    EXPECT_EQ(covered, shown);
}

TEST(ProtocolExamples, AClientSendsTheRequestsAndReadsTheReplies) {
    for (const EXAMPLE_T &each : EXAMPLES) {
        SCOPED_TRACE(each.reply);
        const PAIR_T pair;
        say(pair.peer(), shown(each.reply));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(each.result,
                  exchange_data_in_tavisys_msg_channel(pair.ours(), each.type, each.question.data(),
                                                       size_of(each.question), &body, &length, 5));
        EXPECT_EQ(request_of(each), sent_over(pair));
        EXPECT_EQ(each.answer, as_string(body, length));
        EXPECT_EQ(each.answer, each.recoded(each.answer));
        safe_free(body);
    }
}

TEST(ProtocolExamples, AServerReadsTheRequestsAndSendsTheReplies) {
    for (const EXAMPLE_T &each : EXAMPLES) {
        SCOPED_TRACE(each.reply);
        const PAIR_T pair;
        say(pair.peer(), request_of(each));
        asked = each;
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(pair.ours(), answer));
        EXPECT_EQ(shown(each.reply), sent_over(pair));
    }
}

TEST(ProtocolExamples, WhatIsEncodedBesidesRepliesIsAsShown) {
    for (const auto &each : BODIES) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(each.body, shown(each.name));
        EXPECT_EQ(each.body, each.recoded(each.body));
    }
    EXPECT_EQ(CODES, (recoded<encode_movinfo_request_information_to_message,
                              decode_movinfo_request_information_from_buffer,
                              delete_tp_tavisys_movieinfo_request_information>(CODES)));
}

TEST(ProtocolExamples, TheTextHeadedChannelSendsAndReadsItsHeads) {
    const PAIR_T pair;
    say(pair.peer(), shown("text-reply"));
    PVOID body = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(0,
              exchange_data_in_net_communication_channel(pair.ours(), 1000, nullptr, 0, &body, &length, 5));
    EXPECT_EQ(shown("text-request"), sent_over(pair));
    EXPECT_EQ("1.0.0", as_string(body, length));
    safe_free(body);

    const PAIR_T server;
    const TP_MESSAGE_HEAD head{1000, 0, 5};
    EXPECT_EQ(24, send_data_to_net_communication_channel(server.ours(), &head, 0, "1.0.0"));
    EXPECT_EQ(shown("text-reply"), sent_over(server));
}

TEST(ProtocolExamples, ThePythonClientPrintsTheFirstPage) {
    const std::string script = blocks_of("python")["first-page"];
    ASSERT_FALSE(script.empty());
    asked = {nullptr, nullptr, 1006, 0, wire(0, 0, 0, 0, 0, 1, 20, 0), PAGE_1, nullptr};
    const INT32_T listener = svr_open_tavisys_msg_channel();
    ASSERT_LE(0, listener);
    // NOLINTNEXTLINE(cert-env33-c): the command is the document's own
    FILE *python = popen(("python3 -X utf8 - <<'END'\n" + script + "END\n").c_str(), "r");
    ASSERT_NE(nullptr, python);
    pollfd waiting{listener, POLLIN, 0};
    if (poll(&waiting, 1, 30000) == 1) {
        const INT32_T peer = monitor_tavisys_msg_channel(listener);
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(peer, answer));
        close_tavisys_msg_channel(peer);
    }
    close_tavisys_msg_channel(listener);
    char printed[4096];
    const size_t count = fread(printed, 1, sizeof printed, python);
    EXPECT_EQ(0, pclose(python));
    EXPECT_EQ("page 1 of 1, 1 movies\n15 TV1993-0015 霸王别姬 8.1\n", std::string(printed, count));
}

} // namespace
