// Holds the worked examples of docs/protocol.md against the library: what its channel and its encoders
// write is what the document shows, and its decoders read the document's bytes as records that are written
// as the same bytes, so as the records of this test.
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <poll.h>
#include <set>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "codec_kind_info.h"
#include "support_memory.h"
#include "tavisys_agent_api.h"
#include "tavisys_comm.h"

namespace {

// ---- The document's named blocks

// The bytes of a hex block; what stands behind a # is a comment.
std::string bytes_of(const std::string &lines) {
    std::string bytes;
    std::istringstream from(lines);
    for (std::string line; std::getline(from, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        for (std::string word; words >> word;) {
            EXPECT_TRUE(word.size() == 2 && word.find_first_not_of("0123456789abcdef") == std::string::npos)
                << word << " in: " << line;
            bytes += static_cast<char>(strtol(word.c_str(), nullptr, 16));
        }
    }
    return bytes;
}

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

std::string message(const std::string &name) {
    static const std::map<std::string, std::string> BLOCKS = blocks_of("hex");
    const auto found = BLOCKS.find(name);
    EXPECT_NE(BLOCKS.end(), found) << "the document has no block " << name;
    return found == BLOCKS.end() ? std::string() : bytes_of(found->second);
}

// ---- The records of the examples. No encoder writes to a string.

INT8_T *operator""_s(const char *text, size_t) {
    return const_cast<INT8_T *>(text);
}

// A list that holds its records itself.
template <class NODE>
class LIST_T {
    using RECORD = std::remove_pointer_t<decltype(NODE::info)>;

public:
    LIST_T(std::initializer_list<RECORD> records) : records_(records) {
        for (RECORD &record : records_)
            nodes_.push_back({nullptr, &record});
        for (size_t i = 1; i < nodes_.size(); i++)
            nodes_[i - 1].next = &nodes_[i];
    }
    NODE *head() { return nodes_.data(); }

private:
    std::vector<RECORD> records_;
    std::vector<NODE> nodes_;
};

const TP_TAVISYS_VERSION_INFORMATION_T VERSION{"1.0.0"_s, "影柜"_s, nullptr};
const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T STATUS{SYSRUN_STATUS_PARSING, 30, 18, 1, 11};
const TP_TAVISYS_SYSTEM_INFORMATION_T SYSTEM{2, 28};
LIST_T<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T> CATEGORIES{{1, "电影"_s, 23}, {2, "电视剧"_s, 5}};
LIST_T<TP_TAVISYS_KIND_INFORMATION_LIST_T> KINDS{{1, "全部"_s, 23}, {2, "剧情"_s, 14}};
LIST_T<TP_TAVISYS_FILTER_INFORMATION_LIST_T> AREAS{{1, "全部"_s}, {2, "中国"_s}, {3, "香港"_s}};

INT32_T IDS[] = {1, 2, 3, 4};
BASIC_MOVIE_IDS_T TWO_IDS{2, IDS}, THREE_IDS{3, IDS}, FOUR_IDS{4, IDS};
INT8_T *const BIG_POSTER = "sda/sda1/TV1993-0015/posters/b.jpg"_s;
LIST_T<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T> MOVIES{
    {15, "TV1993-0015"_s, "霸王别姬"_s, 81, 20230101, 19930101, "sda/sda1/TV1993-0015/posters/m.jpg"_s,
     BIG_POSTER, "BWBJ"_s, 1, 5, &FOUR_IDS, &THREE_IDS, &TWO_IDS, nullptr, "sda"_s, 1, 0, 0}};
const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T PAGE{{1, 20, 1, 1, 1}, MOVIES.head()};
const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T EMPTY_PAGE{{3, 20, 1, 1, 0}, nullptr};

TP_MOVIE_DIMENSION_INFORMATION_T DIMENSION{2, "2D"_s};
LIST_T<TP_MOVIE_FILTER_INFORMATION_LIST_T> DIRECTOR_NAMES{{"陈凯歌"_s}};
LIST_T<TP_MOVIE_FILTER_INFORMATION_LIST_T> ACTOR_NAMES{{"张国荣"_s}, {"巩俐"_s}};
TP_MOVIE_FILTER_KVP_INFORMATION_T DIRECTORS{"导演"_s, DIRECTOR_NAMES.head()};
TP_MOVIE_FILTER_KVP_INFORMATION_T ACTORS{"主演"_s, ACTOR_NAMES.head()};
TP_MOVIE_SINGLE_KVP_INFORMATION_T DURATION{"时长"_s, "171分钟"_s};
LIST_T<TP_TAVISYS_VIDEO_INFORMATION_LIST_T> VIDEOS{{1, 1, "上集"_s, "sda/sda1/TV1993-0015/videos/1.mkv"_s},
                                                   {2, 2, "下集"_s, nullptr}};
const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T DETAIL{"霸王别姬"_s, 1993,    &DIMENSION,   BIG_POSTER,
                                                   &DIRECTORS,   &ACTORS, nullptr,      &DURATION,
                                                   nullptr,      2,       VIDEOS.head()};
constexpr char UUID[] = "6f1c2a52-3d0e-4b7a-9c55-0a1b2c3d4e5f";

// ---- The examples

struct EXAMPLE_T {
    const char *request; // name of the request's block; NULL when the document shows the reply alone
    const char *reply;   // name of the reply's block
    INT32_T type;
    RTSTATUS result;
    std::string body;                                   // of the request
    std::function<RTSTATUS(PVOID *, INT32_T *)> encode; // makes the reply's body
    std::function<void(const std::string &)> check;     // decodes a reply's body and compares
};

INT32_T size_of(const std::string &body) {
    return static_cast<INT32_T>(body.size());
}
std::string bytes(const void *from, INT32_T length) {
    return {static_cast<const char *>(from), static_cast<size_t>(length)};
}
template <class RECORD>
std::string raw(const RECORD &record) {
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

// The bodies of the requests.
const std::string AREAS_WANTED = raw(TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T{TP_FILTER_TYPE_AREA, 1});
const std::string DETAIL_WANTED = raw(TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T{1, 15});
std::string page_wanted(INT32_T cid, INT32_T aid, INT32_T pagenum, TP_ORDER_BY_E orderby) {
    return raw(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T{cid, 0, aid, 0, 0, pagenum, 20, orderby});
}

template <auto ENCODE, auto DECODE, auto DELETE, class RECORD>
EXAMPLE_T example(const char *request, const char *reply, INT32_T type, std::string body,
                  const RECORD *record) {
    const auto encode = [record](PVOID *to, INT32_T *length) { return ENCODE(record, to, length); };
    const auto check = [](const std::string &from) {
        RECORD *decoded = nullptr;
        EXPECT_EQ(size_of(from), DECODE(from.data(), size_of(from), &decoded));
        PVOID again = nullptr;
        INT32_T length = 0;
        ASSERT_NE(nullptr, decoded);
        EXPECT_EQ(0, ENCODE(decoded, &again, &length));
        EXPECT_EQ(from, bytes(again, length));
        safe_free(again);
        DELETE(&decoded);
    };
    return {request, reply, type, 0, std::move(body), encode, check};
}

// The encoder takes an empty page as a list of one node without a record, and the decoder gives NULL.
RTSTATUS encode_page(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page, PVOID *to, INT32_T *length) {
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T no_movie{nullptr, nullptr};
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T sent{page->pageinfo,
                                                        page->list == nullptr ? &no_movie : page->list};
    return encode_tavisys_basic_movie_ext_information_to_message(&sent, to, length);
}
constexpr auto PAGE_OF =
    example<encode_page, decode_tavisys_basic_movie_ext_information_from_message,
            delete_tavisys_basic_movie_ext_information, TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T>;

RTSTATUS encode_uuid(PVOID *to, INT32_T *length) {
    *to = safe_strdup(UUID);
    *length = sizeof UUID;
    return 0;
}
void check_uuid(const std::string &from) {
    EXPECT_EQ(bytes(UUID, sizeof UUID), from);
}

const EXAMPLE_T PAGE_EXAMPLE = PAGE_OF("page-request", "page-reply", TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO,
                                       page_wanted(1, 3, 1, TP_ORDER_BY_SCORE), &PAGE);

const EXAMPLE_T EXAMPLES[] = {
    example<encode_tavisys_version_information_to_message, decode_tavisys_version_information_from_message,
            delete_tavisys_version_information>("version-request", "version-reply",
                                                TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, "", &VERSION),
    example<encode_tavisys_sysrun_status_information_to_message,
            decode_tavisys_sysrun_status_information_from_message, delete_tavisys_sysrun_status_information>(
        nullptr, "status-reply", TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, "", &STATUS),
    example<encode_tavisys_system_information_to_message, decode_tavisys_system_information_from_message,
            delete_tavisys_system_information>(nullptr, "system-reply",
                                               TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, "", &SYSTEM),
    example<encode_tavisys_category_information_list_to_message,
            decode_tavisys_category_information_list_from_message, delete_tavisys_category_information_list>(
        nullptr, "categories-reply", TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, "", CATEGORIES.head()),
    example<encode_tavisys_kind_information_list_to_message, decode_tavisys_kind_information_from_message,
            delete_tavisys_kind_information_list>(nullptr, "kinds-reply", TAVISYS_MSGTYPE_REQUEST_KIND_LIST,
                                                  "", KINDS.head()),
    example<encode_tavisys_filter_information_list_to_message,
            decode_tavisys_filter_information_list_from_message, delete_tavisys_filter_information_list>(
        "filters-request", "filters-reply", TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, AREAS_WANTED,
        AREAS.head()),
    PAGE_EXAMPLE,
    PAGE_OF(nullptr, "empty-page-reply", TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO,
            page_wanted(1, 3, 3, TP_ORDER_BY_SCORE), &EMPTY_PAGE),
    example<encode_tavisys_detail_movie_information_to_message,
            decode_tavisys_detail_movie_information_from_message, release_tavisys_detail_movie_information>(
        "detail-request", "detail-reply", TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, DETAIL_WANTED, &DETAIL),
    {nullptr, "uuid-reply", TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, 0, "", encode_uuid, check_uuid},
    {nullptr, "error-reply", TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, TAVISYS_RESULT_NO_SUCH_MOVIE,
     DETAIL_WANTED, [](PVOID *, INT32_T *) { return 0; }, nullptr},
};

std::string request_of(const EXAMPLE_T &each) {
    if (each.request != nullptr)
        return message(each.request);
    return raw(TRLV_MESSAGE_HEAD{each.type, 0, size_of(each.body)}) + each.body;
}

// ---- Both ends of the channel

const EXAMPLE_T *asked = nullptr; // what the handler expects and answers

RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    EXPECT_EQ(asked->type, type);
    EXPECT_EQ(asked->body, bytes(body, length));
    EXPECT_EQ(0, asked->encode(reply, replylen));
    return asked->result;
}

// A connected pair of sockets: the library has one end, the test the other.
class PAIR_T {
public:
    PAIR_T() { EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_)); }
    PAIR_T(const PAIR_T &) = delete;
    PAIR_T &operator=(const PAIR_T &) = delete;
    ~PAIR_T() {
        close(ends_[0]);
        close(ends_[1]);
    }
    int library() const { return ends_[0]; }
    void send(const std::string &bytes) const {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), write(ends_[1], bytes.data(), bytes.size()));
    }
    std::string received() const { // all that the library has sent
        shutdown(ends_[0], SHUT_WR);
        return rest_of(ends_[1]);
    }
    static std::string rest_of(int file) { // up to the end of the stream
        std::string bytes;
        char piece[4096];
        for (ssize_t count = 0; (count = read(file, piece, sizeof piece)) > 0;)
            bytes.append(piece, static_cast<size_t>(count));
        return bytes;
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
        const PAIR_T pair;
        pair.send(message(each.reply));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(each.result,
                  exchange_data_in_tavisys_msg_channel(pair.library(), each.type, each.body.data(),
                                                       size_of(each.body), &body, &length, 5));
        EXPECT_EQ(request_of(each), pair.received());
        if (each.result == 0)
            each.check(bytes(body, length));
        safe_free(body);
    }
}

TEST(ProtocolExamples, AServerReadsTheRequestsAndSendsTheReplies) {
    for (const EXAMPLE_T &each : EXAMPLES) {
        SCOPED_TRACE(each.reply);
        const PAIR_T pair;
        pair.send(request_of(each));
        asked = &each;
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(pair.library(), answer));
        EXPECT_EQ(message(each.reply), pair.received());
    }
}

TEST(ProtocolExamples, ThePythonClientPrintsTheFirstPage) {
    std::string script = blocks_of("python")["first-page"];
    ASSERT_FALSE(script.empty());
    EXAMPLE_T first = PAGE_EXAMPLE;
    first.body = page_wanted(0, 0, 1, TP_ORDER_BY_PUT_TIME);
    asked = &first;
    const INT32_T listener = svr_open_tavisys_msg_channel();
    ASSERT_LE(0, listener);

    int output[2];
    ASSERT_EQ(0, pipe2(output, O_CLOEXEC));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    char *const arguments[] = {"python3"_s, "-X"_s, "utf8"_s, "-c"_s, script.data(), nullptr};
    pid_t python = -1;
    const int spawned = posix_spawnp(&python, arguments[0], &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    pollfd waiting{listener, POLLIN, 0};
    if (spawned == 0 && poll(&waiting, 1, 30000) == 1) {
        const INT32_T peer = monitor_tavisys_msg_channel(listener);
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(peer, answer));
        close_tavisys_msg_channel(peer);
    }
    close_tavisys_msg_channel(listener);
    const std::string printed = PAIR_T::rest_of(output[0]);
    close(output[0]);
    if (spawned == ENOENT)
        GTEST_SKIP() << "there is no python3";
    ASSERT_EQ(0, spawned);
    int status = -1;
    EXPECT_EQ(python, waitpid(python, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ("page 1 of 1, 1 movies\n15 TV1993-0015 霸王别姬 8.1\n", printed);
}

} // namespace
