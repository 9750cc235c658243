// Writes the inputs that the fuzz targets start from: what a server answers of two movies of the sample
// library, and by hand what a server never sends.
//
//     make_corpus LIBRARY DIR      writes DIR/<target>/<what it is>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "families.h"
#include "fuzz.h"
#include "replies.h"
#include "scanner.h"
#include "support_netif.h"
#include "tavisys.h"

using namespace fuzz;

namespace {

constexpr size_t MOVIES = 2;
constexpr INT32_T PAGE_NUMBERS_LENGTH = 20;
// The roles of trlv_fuzz and text_head_fuzz, and how they are played: 0 leaves nothing out.
constexpr char RECEIVES = 0;
constexpr char EXCHANGES = 1;
constexpr char DEALS = 2;
constexpr char TEXT_EXCHANGES = 0;
constexpr char PARSES_HEAD = 1;
constexpr char SENDS_HEAD = 2;
constexpr char RECEIVES_TEXT = 3;

std::filesystem::path s_corpus;

void write(const std::string &target, const std::string &name, const std::string &input) {
    create_directories(s_corpus / target);
    std::ofstream(s_corpus / target / name, std::ios::binary) << input;
}

// ---- Bodies by hand, item by item: wire(2, "电影", nullptr)

void append_item(std::string *to, INT32_T value) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        to->push_back(static_cast<char>(static_cast<uint32_t>(value) >> shift));
}
void append_item(std::string *to, std::nullptr_t) {
    append_item(to, -1);
}
void append_item(std::string *to, const char *text) {
    append_item(to, static_cast<INT32_T>(strlen(text)));
    to->append(text);
}
template <class... ITEM>
std::string wire(const ITEM &...item) {
    std::string bytes;
    (append_item(&bytes, item), ...);
    return bytes;
}

// For decode_fuzz: the number of the family, then the body.
void write_body(const char *family, const std::string &name, const std::string &body) {
    const auto number = static_cast<char>(&family_of(family) - families().data());
    write("decode_fuzz", name, number + body);
}

// For trlv_fuzz: the role, how it is played, then the messages that come.
void write_messages(char role, const std::string &name, const std::string &messages) {
    write("trlv_fuzz", name, std::string{role, '\0'} + messages);
}

void write_text(char role, const std::string &name, const std::string &text) {
    write("text_head_fuzz", name, std::string{role, '\0'} + text);
}

std::string message(INT32_T type, const std::string &body) {
    return wire(type, 0, static_cast<INT32_T>(body.size())) + body;
}

// ---- What a server answers

struct SERVER_T {
    server::STORE_T store;
    server::IDENTITY_T identity{"1.0.0", "影柜", "3d1219c7-c4c5-404a-aa1f-6d2a48adfda4"};
};

void load_movies(const char *library, server::STORE_T *store) {
    server::STORE_T loaded;
    server::SCANNER_T scanner(library, "", 1, &loaded);
    scanner.start();
    while (loaded.status().status != SYSRUN_STATUS_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the scanner has no one to tell
    std::vector<server::MOVIE_PTR> movies = loaded.snapshot()->movies();
    require(movies.size() >= MOVIES, "too few movies", library);
    movies.resize(MOVIES);
    const server::DISK_T disk{"sda", "S1", {{"sda1", "uuid", "/mnt/sda1", {MOVIES, MOVIES, 0}}}};
    store->publish(std::make_shared<const server::CATALOGUE_T>(std::move(movies), std::span(&disk, 1)));
}

std::string ask(INT32_T type, std::string request) {
    PVOID body = nullptr;
    INT32_T length = 0;
    const RTSTATUS result = server::handle_request(type, request.empty() ? nullptr : request.data(),
                                                   static_cast<INT32_T>(request.size()), &body, &length);
    require(result == 0, "no answer", std::to_string(type).c_str());
    std::string reply(static_cast<const char *>(body), static_cast<size_t>(length));
    safe_free(body);
    return reply;
}

void write_answers(const server::STORE_T &store) {
    const auto &first = *store.snapshot()->movies()[0]->record;
    const std::string page = wire(0, 0, 0, 0, 0, 1, static_cast<INT32_T>(MOVIES), 0);
    const std::string code = wire("dev", "sda", "sda1", 1);
    const auto code_length = static_cast<INT32_T>(strlen(first.info->movie_code));
    const std::string codes = code + wire(code_length + 4, first.info->movie_code);
    const std::string request = wire(static_cast<INT32_T>(codes.size())) + codes;
    const struct {
        INT32_T type;
        std::string request;
        const char *family;
    } QUESTIONS[] = {
        {TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, "", "version"},
        {TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, "", "status"},
        {TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, "", "system"},
        {TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, "", "categories"},
        {TAVISYS_MSGTYPE_REQUEST_KIND_LIST, "", "kinds"},
        {TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, wire(TP_FILTER_TYPE_AREA, 0), "filters"},
        {TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, page, "page"},
        {TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, page, "touch_page"},
        {TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, wire(0, first.id), "detail"},
        {TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO, "", "disks"},
        {AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE, request, "movies"},
    };
    for (const auto &question : QUESTIONS) {
        const std::string reply = ask(question.type, question.request);
        write_body(question.family, question.family, reply);
        if (question.type <= TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST)
            write_messages(EXCHANGES, std::string("reply-") + question.family, message(question.type, reply));
    }
    write_body("basic_movies", "basic_movies",
               ask(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, page).substr(PAGE_NUMBERS_LENGTH));
    write_body("touch_movies", "touch_movies",
               ask(TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, page).substr(PAGE_NUMBERS_LENGTH));
    write_body("movcodes", "movcodes", request);
    write_messages(DEALS, "request-page", message(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, page));
    write_messages(DEALS, "request-movcodes", message(AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE, request));
}

// ---- What a server never sends, or only for a peer that asks for trouble

void write_bodies_by_hand() {
    write_body("movie_ids", "movie_ids", wire(2, 1, 10, 2, 20, 0));
    write_body("uuid_and_ids", "uuid_and_ids", wire("uuid", 7, 2, 1, 10, 2, 20));
    write_body("hdvideos", "hdvideos",
               wire(2, "TV-1", 2, 1, "SN1", "一", 2, nullptr, "", nullptr, 1, -3, "SN2", "二"));
    write_body("mid_vid", "mid_vid", wire(13, "12", "345"));
    write_body("answer", "answer", wire(34, 1, 2, "SN", "名", "M1", "3D"));
    write_body("path", "path", wire("sdb1", "a/b.ts"));
    write_body("player", "player", wire(1, "a.ts", "/盘/", -1, 2, 3, 4, 5, 6, 7, 8));
    write_body("videos", "videos", wire(2, 31, 1, nullptr, "/a.mp4", 32, 2, "下", "/b.mp4"));
    write_body("text", "text", wire("霸王别姬"));
    write("decode_fuzz", "primitives", static_cast<char>(families().size()) + wire(5, "limit"));
    write_body("disks", "disks-of-one-name",
               wire(3, "sda", "1", 2, 1, "p", "", "", 2, "p", "", "", "sda", "2", 0, nullptr, "3", 0));
    write_body("page", "page-without-movies", wire(1, 20, 0, 0, 0, 0));
    write_body("categories", "count-too-large", wire(0x7FFFFFFF, 1, "a", 2));
    write_body("movcodes", "nodes-without-codes", wire(1, nullptr, nullptr, nullptr, 3, 0, 0, 0));
}

void write_messages_by_hand() {
    write_messages(RECEIVES, "two-messages", message(1000, "body") + message(1001, ""));
    write_messages(RECEIVES, "claims-two-gigabytes", wire(1000, 0, 0x7FFFFFF3) + "body");
    write_messages(RECEIVES, "negative-length", wire(1000, 0, -1));
    write_messages(EXCHANGES, "reply-with-result", wire(1000, -101, 0));
    write_messages(DEALS, "request-cut-short", wire(1006, 0, 32, 1, 2));
    write_text(TEXT_EXCHANGES, "reply", "5006|0000|00000005|hello");
    write_text(TEXT_EXCHANGES, "reply-that-ends-early", "5006|0000|00000050|hello");
    write_text(TEXT_EXCHANGES, "reply-with-result", "5006|-104|00000000|");
    write_text(PARSES_HEAD, "head", "1000|0000|00000005|");
    write_text(PARSES_HEAD, "head-of-blanks-and-signs", " +12|-0x1|      -7");
    write_text(SENDS_HEAD, "send", wire(5006, 0) + "hello");
    write_text(RECEIVES_TEXT, "text", wire(5) + "hello");
}

// For long_body_fuzz: who receives, then what is claimed and what comes, in MiB and bytes beside them.
void write_long_bodies() {
    for (const char role : {'\0', '\1'}) {
        const std::string name = role == '\0' ? "body" : "text";
        const auto write_case = [&](const std::string &what, char claimed, int beside, char sent, int more) {
            write("long_body_fuzz", name + what,
                  std::string{role, claimed} + wire(beside) + sent + wire(more));
        };
        write_case("-whole", 3, 1, 5, 0);
        write_case("-cut-short", 5, -1, 3, 1);
        write_case("-cut-where-a-room-ends", 3, 0, 2, 0);
    }
}

// ---- Documents, beside those of the sample library

constexpr const char *DOCUMENT = R"(<?xml version="1.0" encoding="UTF-8"?>
<metadata>
  <movie><movie_code>M1</movie_code><movie_name_ch>片名</movie_name_ch><movie_name_en>Title</movie_name_en></movie>
  <imdb_value> 7.1
</imdb_value><index> p.M-1 影</index>
  <dimension_info><dimension_id>x</dimension_id><dimension_name> 3d </dimension_name></dimension_info>
  <resolution_info><resolution_id>1</resolution_id><resolution_name>4K</resolution_name></resolution_info>
  <category> 电视剧 </category>
  <kinds><kind><kind_name>动作</kind_name></kind><kind><kind_name> 动作</kind_name></kind></kinds>
  <areas><area><area_name>美国</area_name></area><area><area_name>美国</area_name></area></areas>
  <directors><director><director_code>P1</director_code><director_name>甲</director_name></director></directors>
  <actors><actor><actor_code>P2</actor_code><actor_name>乙</actor_name></actor></actors>
  <put_time> 2015-6-7 </put_time><publish_time>1999-12-31</publish_time><duration> 137min</duration>
  <poster><poster_b>b</poster_b><poster_m>m</poster_m><poster_s>s</poster_s></poster>
  <poster_tv_b>tb</poster_tv_b><poster_tv_m>tm</poster_tv_m><poster_tv_s>ts</poster_tv_s>
  <detailed_desc> 详细 </detailed_desc><description> 简介 </description><episodes>2</episodes>
  <videos><video><video_seqno>2</video_seqno><video_name>下</video_name><video_filepath>/2</video_filepath></video></videos>
</metadata>)";

void write_document(const std::string &name, const std::string &from, const std::string &to) {
    std::string text = DOCUMENT;
    text.replace(text.find(from), from.size(), to);
    write("metadata_fuzz", name, text);
}

void write_documents() {
    write("metadata_fuzz", "whole", DOCUMENT);
    write_document("cdata-and-comment", "片名", "片<!-- c --><![CDATA[<名>]]>&lt;&#x5168;");
    write_document("entity", "<metadata>", "<!DOCTYPE metadata [<!ENTITY a \"b\">]>\n<metadata>&a;");
    write("metadata_fuzz", "entity-without-xml-declaration",
          "<!DOCTYPE metadata [<!ENTITY a \"b\">]>" + std::string(strchr(DOCUMENT, '\n')));
    write_document(
        "entity-unparsed", "<metadata>",
        "<!DOCTYPE metadata [<!NOTATION n SYSTEM \"m\"><!ENTITY a SYSTEM \"b\" NDATA n>]>\n<metadata>");
    write_document("other-encoding", "UTF-8", "ISO-8859-1");
    write_document("disallowed-kind", "动作", "暴力");
    std::string actors;
    for (int i = 0; i < 36; i++) // more than are compared one by one, each code twice
        actors += "<actor><actor_code>" + std::to_string(i % 18) + "</actor_code><actor_name/></actor>";
    write_document("many-actors", "<actor>", actors + "<actor>");
    std::string title;
    for (int i = 0; i < 400; i++) // three bytes each, above the room of 1024
        title += "长";
    write_document("title-longer-than-its-room", "片名", "1" + title); // a character is cut through
    write_document("date-out-of-range", "1999-12-31", "214748-99-99");
}

// Bytes of no meaning for each trial of record_fuzz, which makes its records of them.
void write_records() {
    constexpr char TRIALS = 20;
    constexpr int LENGTH = 96;
    uint32_t state = 1;
    for (char trial = 0; trial < TRIALS; trial++) {
        std::string bytes(1, trial);
        for (int i = 0; i < LENGTH; i++) {
            state = state * 1664525 + 1013904223;
            bytes.push_back(static_cast<char>((state >> 24) & 7)); // short texts and lists
        }
        write("record_fuzz", "any-" + std::to_string(trial), bytes);
    }
}

} // namespace

// Movie ids don't depend on the machine that writes them.
RTSTATUS get_netif_address(const INT8_T *, INT8_T *, INT32_T) {
    return -1;
}

int main(int argc, char **argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: make_corpus LIBRARY DIR\n");
        return EXIT_FAILURE;
    }
    s_corpus = argv[2];
    SERVER_T server;
    load_movies(argv[1], &server.store);
    server::answer_from(&server.store, &server.identity);
    write_answers(server.store);
    write_bodies_by_hand();
    write_messages_by_hand();
    write_long_bodies();
    write_documents();
    write_records();
    return EXIT_SUCCESS;
}
