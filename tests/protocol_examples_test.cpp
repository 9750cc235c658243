// Holds the worked examples of docs/protocol.md against the library: what its channel sends and what its
// encoders write is what the document shows, and its decoders read the document's bytes as records that are
// encoded to the same bytes. The bodies stand here once more, value by value, as their descriptions say.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <poll.h>
#include <set>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "codec_kind_info.h"
#include "harness.h"
#include "support_memory.h"
#include "tavisys_agent_api.h"
#include "tavisys_comm.h"

using harness::wire;

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
std::string message(const std::string &name) {
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
std::string bytes(const void *from, INT32_T length) {
    return {static_cast<const char *>(from), static_cast<size_t>(length)};
}

// What becomes of a body that is decoded and encoded again.
template <class RECORD, auto DECODE, auto ENCODE, auto DELETE>
std::string recoded(const std::string &body) {
    RECORD *record = nullptr;
    PVOID again = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(size_of(body), DECODE(body.data(), size_of(body), &record));
    EXPECT_EQ(0, ENCODE(record, &again, &length));
    std::string result = bytes(again, length);
    safe_free(again);
    DELETE(&record);
    return result;
}

std::string as_it_is(const std::string &body) {
    return body;
}

// The decoder gives an empty page as NULL, the encoder takes it as a list of one node without a record.
RTSTATUS encode_page(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page, PVOID *to, INT32_T *length) {
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T no_movie{nullptr, nullptr};
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T sent{page->pageinfo,
                                                        page->list == nullptr ? &no_movie : page->list};
    return encode_tavisys_basic_movie_ext_information_to_message(&sent, to, length);
}
constexpr auto PAGE =
    recoded<TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T, decode_tavisys_basic_movie_ext_information_from_message,
            encode_page, delete_tavisys_basic_movie_ext_information>;

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
                                  1, 5, 4, 1, 2, 3, 4, 3, 1, 2, 3, 2, 1, 2, 0, "sda", 1);
const std::string PAGE_1 = wire(1, 20, 1, 1, 1, 1, FAREWELL);

const EXAMPLE_T EXAMPLES[] = {
    {"version-request", "version-reply", 1000, 0, "", wire("1.0.0", "影柜", nullptr),
     recoded<TP_TAVISYS_VERSION_INFORMATION_T, decode_tavisys_version_information_from_message,
             encode_tavisys_version_information_to_message, delete_tavisys_version_information>},
    {nullptr, "status-reply", 1001, 0, "", wire(2, 30, 18, 1, 11),
     recoded<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T, decode_tavisys_sysrun_status_information_from_message,
             encode_tavisys_sysrun_status_information_to_message, delete_tavisys_sysrun_status_information>},
    {nullptr, "system-reply", 1002, 0, "", wire(2, 28),
     recoded<TP_TAVISYS_SYSTEM_INFORMATION_T, decode_tavisys_system_information_from_message,
             encode_tavisys_system_information_to_message, delete_tavisys_system_information>},
    {nullptr, "categories-reply", 1003, 0, "", wire(2, 1, "电影", 23, 2, "电视剧", 5),
     recoded<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T, decode_tavisys_category_information_list_from_message,
             encode_tavisys_category_information_list_to_message, delete_tavisys_category_information_list>},
    {nullptr, "kinds-reply", 1004, 0, "", wire(2, 1, "全部", 23, 2, "剧情", 14),
     recoded<TP_TAVISYS_KIND_INFORMATION_LIST_T, decode_tavisys_kind_information_from_message,
             encode_tavisys_kind_information_list_to_message, delete_tavisys_kind_information_list>},
    {"filters-request", "filters-reply", 1005, 0, wire(2, 1), wire(3, 1, "全部", 2, "中国", 3, "香港"),
     recoded<TP_TAVISYS_FILTER_INFORMATION_LIST_T, decode_tavisys_filter_information_list_from_message,
             encode_tavisys_filter_information_list_to_message, delete_tavisys_filter_information_list>},
    {"page-request", "page-reply", 1006, 0, wire(1, 0, 3, 0, 0, 1, 20, 2), PAGE_1, PAGE},
    {nullptr, "empty-page-reply", 1006, 0, wire(1, 0, 3, 0, 0, 3, 20, 2), wire(3, 20, 1, 1, 0, 0), PAGE},
    {"detail-request", "detail-reply", 1007, 0, wire(1, 15),
     wire("霸王别姬", 1993, 1, 2, "2D", BIG, 1, "导演", 1, "陈凯歌", 1, "主演", 2, "张国荣", "巩俐", 0, 1,
          "时长", "171分钟", 0, 2, 2, 1, 1, "上集", (FOLDER + "videos/1.mkv").c_str(), 2, 2, "下集", nullptr),
     recoded<TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T, decode_tavisys_detail_movie_information_from_message,
             encode_tavisys_detail_movie_information_to_message, release_tavisys_detail_movie_information>},
    {nullptr, "uuid-reply", 3004, 0, "", std::string("6f1c2a52-3d0e-4b7a-9c55-0a1b2c3d4e5f\0", 37), as_it_is},
    {nullptr, "error-reply", 1007, -103, wire(1, 15), "", as_it_is},
};

std::string request_of(const EXAMPLE_T &each) {
    return each.request != nullptr ? message(each.request)
                                   : wire(each.type, 0, size_of(each.question), each.question);
}

// ---- Both ends of the channel

EXAMPLE_T asked; // what the handler expects and answers

RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    EXPECT_EQ(asked.type, type);
    EXPECT_EQ(asked.question, bytes(body, length));
    *replylen = size_of(asked.answer);
    *reply = calloc(1, asked.answer.size() + 1);
    memcpy(*reply, asked.answer.data(), asked.answer.size());
    return asked.result;
}

// A connected pair of sockets: the library has one end; the test has the other, from which it has sent.
class PAIR_T {
public:
    explicit PAIR_T(const std::string &sent) {
        EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_));
        EXPECT_EQ(size_of(sent), write(ends_[1], sent.data(), sent.size()));
    }
    PAIR_T(const PAIR_T &) = delete;
    PAIR_T &operator=(const PAIR_T &) = delete;
    ~PAIR_T() {
        close(ends_[0]);
        close(ends_[1]);
    }
    int library() const { return ends_[0]; }
    std::string received() const { // all that the library has sent
        shutdown(ends_[0], SHUT_WR);
        char piece[4096];
        const ssize_t count = recv(ends_[1], piece, sizeof piece, MSG_WAITALL);
        return bytes(piece, static_cast<INT32_T>(count));
    }

private:
    int ends_[2] = {-1, -1};
};

TEST(ProtocolExamples, EveryBlockOfTheDocumentIsHeldAgainstTheLibrary) {
    std::set<std::string> covered;
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
        const PAIR_T pair(message(each.reply));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(each.result,
                  exchange_data_in_tavisys_msg_channel(pair.library(), each.type, each.question.data(),
                                                       size_of(each.question), &body, &length, 5));
        EXPECT_EQ(request_of(each), pair.received());
        EXPECT_EQ(each.answer, bytes(body, length));
        EXPECT_EQ(each.answer, each.recoded(each.answer));
        safe_free(body);
    }
}

TEST(ProtocolExamples, AServerReadsTheRequestsAndSendsTheReplies) {
    for (const EXAMPLE_T &each : EXAMPLES) {
        SCOPED_TRACE(each.reply);
        const PAIR_T pair(request_of(each));
        asked = each;
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(pair.library(), answer));
        EXPECT_EQ(message(each.reply), pair.received());
    }
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
