// Holds the worked examples of docs/protocol.md against the library: what its channel sends is what the
// document shows, and its decoders read the document's bytes as records that are encoded to the same bytes.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "families.h"
#include "fuzz.h"
#include "peer.h"
#include "support_memory.h"

using namespace harness;

void fuzz::require(bool holds, const char *what, const char *of) {
    EXPECT_TRUE(holds) << of << ": " << what;
}

namespace {

// The text of the document's blocks that are fenced as ```LANGUAGE name=NAME, by name.
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

// Exchanges, by the names of their blocks.
const struct EXAMPLE_T {
    const char *request; // NULL when the document shows the reply alone
    const char *reply;
    INT32_T type;
    const char *family; // of the reply's body; NULL when it has none
    RTSTATUS result = 0;
} EXAMPLES[] = {
    {"version-request", "version-reply", 1000, "version"},
    {nullptr, "status-reply", 1001, "status"},
    {nullptr, "system-reply", 1002, "system"},
    {nullptr, "categories-reply", 1003, "categories"},
    {nullptr, "kinds-reply", 1004, "kinds"},
    {"filters-request", "filters-reply", 1005, "filters"},
    {"page-request", "page-reply", 1006, "page"},
    {nullptr, "empty-page-reply", 1006, nullptr},
    {"detail-request", "detail-reply", 1007, "detail"},
    {nullptr, "poster-reply", 1008, nullptr},
    {nullptr, "disks-reply", 3000, "disks"},
    {"disk-request", "disk-reply", 3001, "disks"},
    {"count-request", "count-reply", 3002, nullptr},
    {nullptr, "movies-reply", 3003, "movies"},
    {nullptr, "uuid-reply", 3004, nullptr},
    {"codes-request", "codes-reply", 3005, nullptr},
    {nullptr, "touch-page-reply", 5006, "touch_page"},
    {"touch-detail-request", "touch-detail-reply", 5007, nullptr, -103},
    {nullptr, "error-reply", 1007, nullptr, -103},
};
const std::map<std::string, const char *> BODIES = { // and their families
    {"movie-ids", "movie_ids"},     {"movie-ids-with-uuid", "uuid_and_ids"},
    {"videos-by-code", "hdvideos"}, {"mid-vid", "mid_vid"},
    {"basic-movie", "answer"},      {"movie-path", "path"},
    {"player-status", "player"}};

std::string body_of(const std::string &message) {
    return message.substr(HEAD);
}

// A body that is a family's becomes a record that becomes the body.
void expect_way_back(const std::string &body, const char *name) {
    const fuzz::FAMILY_T &family = fuzz::family_of(name);
    const auto length = static_cast<INT32_T>(body.size());
    void *record = nullptr;
    PVOID again = nullptr;
    INT32_T again_length = 0;
    EXPECT_EQ(family.tells_bytes ? length - family.unread : 0, family.decode(body.data(), length, &record));
    EXPECT_EQ(0, family.encode(record, &again, &again_length));
    EXPECT_EQ(body, as_string(again, again_length));
    family.release(&record);
    safe_free(again);
}

std::string expected_request, reply_body; // of the handler
RTSTATUS reply_result = 0;

RTSTATUS answer(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    EXPECT_EQ(expected_request, message(type, 0, as_string(body, length)));
    *replylen = static_cast<INT32_T>(reply_body.size());
    *reply = calloc(1, reply_body.size() + 1);
    memcpy(*reply, reply_body.data(), reply_body.size());
    return reply_result;
}

// All that the library has sent over its end.
std::string sent_over(const PAIR_T &pair) {
    shutdown(pair.ours(), SHUT_WR);
    return hear(pair.peer(), 4096);
}

} // namespace

TEST(ProtocolExamples, EveryBlockOfTheDocumentIsHeldAgainstTheLibrary) {
    std::set<std::string> covered = {"text-request", "text-reply", "videos"}, blocks;
    for (const EXAMPLE_T &each : EXAMPLES)
        covered.insert({each.reply, each.request != nullptr ? each.request : each.reply});
    for (const auto &[name, family] : BODIES) {
        SCOPED_TRACE(name);
        covered.insert(name);
        expect_way_back(shown(name), family);
    }
    expect_way_back(body_of(shown("codes-request")), "movcodes");
    EXPECT_NE(std::string::npos, shown("videos-by-code").find(shown("videos")));
    for (const auto &block : blocks_of("hex"))
        blocks.insert(block.first);
    EXPECT_EQ(covered, blocks);
}

TEST(ProtocolExamples, AClientAndAServerSendWhatIsShownAndReadIt) {
    for (const EXAMPLE_T &each : EXAMPLES) {
        SCOPED_TRACE(each.reply);
        expected_request = each.request != nullptr ? shown(each.request) : message(each.type, 0, "asks");
        reply_body = body_of(shown(each.reply));
        reply_result = each.result;
        const std::string question = body_of(expected_request);

        const PAIR_T client;
        say(client.peer(), shown(each.reply));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(each.result, exchange_data_in_tavisys_msg_channel(client.ours(), each.type, question.data(),
                                                                    static_cast<INT32_T>(question.size()),
                                                                    &body, &length, 5));
        EXPECT_EQ(expected_request, sent_over(client));
        EXPECT_EQ(reply_body, as_string(body, length));
        if (each.family != nullptr)
            expect_way_back(reply_body, each.family);
        safe_free(body);

        const PAIR_T server;
        say(server.peer(), expected_request);
        EXPECT_LT(0, deal_data_from_tavisys_msg_channel(server.ours(), answer));
        EXPECT_EQ(shown(each.reply), sent_over(server));
    }
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
    expected_request = message(1006, 0, wire(0, 0, 0, 0, 0, 1, 20, 0));
    reply_body = body_of(shown("page-reply"));
    reply_result = 0;
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
