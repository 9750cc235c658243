// From the records of another server to the documents of a library: what is written loads as what was
// fetched, and a peer that has made its records up reaches nothing but its own folders.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <csignal>
#include <fstream>
#include <iterator>
#include <set>

#include "error.h"
#include "fetched.h"
#include "harness.h"
#include "metadata_document.h"
#include "metadata_parse.h"
#include "server.h"
#include "server_harness.h"
#include "terminal.h"
#include "transfer_records.h"

using namespace client;
using harness::wire;
namespace fs = std::filesystem;

namespace {

MOVIE_RECORDS_T decode(const std::string &body) {
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list = nullptr;
    EXPECT_LT(0, decode_tp_tavisys_dbdata_movie_information_list_from_message(
                     body.data(), static_cast<INT32_T>(body.size()), &list));
    return MOVIE_RECORDS_T{list};
}

std::string names(const std::vector<const char *> &texts) {
    std::string bytes = wire(static_cast<INT32_T>(texts.size()));
    for (const char *text : texts)
        bytes += wire(text);
    return bytes;
}

// The record as a server would hand on the movie that the document gives, its ids aside; or nothing.
std::string loaded_record(const std::string &document) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    get_tavi_metadata_information_from_document(document.data(), static_cast<INT32_T>(document.size()),
                                                &movie, nullptr);
    if (movie == nullptr)
        return "";
    movie->id = 0;
    harness::for_each(movie->video_list, [](auto &video) { video.id = 0; });
    server::TRANSFER_BODY_T list(1);
    list.append(*movie);
    INT32_T length = 0;
    PVOID body = list.release(&length);
    std::string record =
        std::string(static_cast<char *>(body), static_cast<size_t>(length)).substr(wire(1).size());
    safe_free(body);
    release_dbdata_movie_information(&movie);
    return record;
}

// A movie with little more than it needs to be loaded.
std::string bare(const char *code, const char *title = "t", const std::string &kinds = wire(0),
                 const std::string &videos = wire(1, 7, 1, "v", nullptr, "m.mp4")) {
    return wire(3, code, title, nullptr, nullptr, nullptr, 0, 0, 0, kinds, 0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr,
                0, videos);
}

std::string read_file(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> files_below(const fs::path &folder) {
    std::set<std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder))
        if (!entry.is_directory())
            files.insert(entry.path().lexically_relative(folder).string());
    return files;
}

// Exit status of writing the one movie "m".
int write_movie(const fs::path &library) {
    try {
        write_documents(decode(wire(1, bare("m"))).get(), LIBRARY_FOLDER_T{library, "sda", "sda1"});
        return EXIT_DONE;
    } catch (const CLIENT_ERROR_T &error) {
        return error.status;
    }
}

} // namespace

TEST(ClientFetch, ADocumentLoadsAsTheRecordThatItWasWrittenFrom) {
    const std::string stripped = "<&>\"']]>\r\r\n&#13;\xC2\x85\xEF\xBF\xBD\xF0\x9F\x8E\xAC全部";
    const std::string unstripped = " \t\r\n" + stripped + "\r ";
    const std::string longest = std::string(1020, 'x') + "影";
    const char *const odd = unstripped.c_str();
    const char *const core = stripped.c_str();
    const char *const full = longest.c_str();
    std::string crowd = wire(300);
    for (int i = 0; i < 300; i++)
        crowd += wire(std::to_string(i).c_str(), i % 2 == 0 ? "" : odd);
    const std::string records[] = {
        wire(0, odd, odd, odd, core, "BWBJ", names({"全部", "3d"}), names({"全部", core}), names({"醇音乐"}),
             names({"全部", odd, "3D", ""}), names({"全部", "", odd}), 1, "", "", crowd, 2, 0, 2015,
             -20150607, 20150607, 0, 171, 1, odd, "", full, core, 2, 3, 0, -2, odd, "", nullptr, 0, 7, "",
             odd, nullptr, 0, 7, full, full, nullptr),
        wire(0, "", "", "", "", "", names({"全部"}), names({"全部", ""}), names({"电影"}), names({"全部"}),
             names({"全部"}), 0, 0, 1, 0, INT_MIN, -5, 0, -1, 1, "", "", "", "", INT_MIN, 1, 0, INT_MAX, "",
             "", nullptr),
        wire(0, full, full, full, full, "B", names({"全部", "2D"}), names({"全部"}), names({"电影"}),
             names({"全部", "3D", "剧情"}), names({"全部", full}), 1, full, full, 0, 2, 0, 214748, 0, INT_MAX,
             0, INT_MIN, 1, full, full, full, full, 0, 1, 0, 0, "v", "v", nullptr),
    };
    for (const std::string &record : records)
        EXPECT_EQ(record, loaded_record(metadata_document(*decode(wire(1, record))->info)));
}

TEST(ClientFetch, WhatAPeerMakesUpIsWrittenToItsOwnFoldersOrSkipped) {
    const std::string thousand(1000, 'x');
    const std::string cut(1023, 'y');
    std::string crowd = wire(5000);
    for (int i = 0; i < 5000; i++)
        crowd += wire(i, i, "", thousand.c_str(), nullptr);
    const struct {
        std::string record;
        std::string folder; // or why there is none
    } cases[] = {{bare("TV-1_2.x"), "TV-1_2.x"},
                 {bare(""), "%"},
                 {bare(".."), "%2E."},
                 {bare("../../x"), "%2E.%2F..%2Fx"},
                 {bare("a/b"), "a%2Fb"},
                 {bare("a%2Fb"), "a%252Fb"},
                 {bare("\033\xFF\xED\xA0"), "%EF%BF%BD%EF%BF%BD%EF%BF%BD%EF%BF%BD"},
                 {bare((thousand + "1").c_str()), std::string(182, 'x') + "%~af2e880e9cc2749c"},
                 {bare((thousand + "2").c_str()), std::string(182, 'x') + "%~af2e8b0e9cc279b5"},
                 {bare(cut.c_str()), std::string(182, 'y') + "%~d6a761c85c08c7be"},
                 {bare((cut + "z").c_str()), "同一分区上已有相同影片编码的影片"},
                 {bare(nullptr), "没有影片编码"},
                 {bare("n", nullptr), "没有片名"},
                 {bare("n", "t", wire(0), wire(0)), "没有视频"},
                 {bare("n", "t", names({nullptr, "暴力"})), "影片属于禁止的类型"},
                 {bare("n", "t", wire(0), crowd), "元数据超过4 MiB"},
                 {bare("n", "\xFF\001\xEF\xBF\xBF"), "n"}};
    std::string body = wire(static_cast<INT32_T>(std::size(cases)));
    for (const auto &c : cases)
        body += c.record;
    const harness::FOLDER_T folder;
    const LIBRARY_FOLDER_T library{folder.path() / "library", "sda", "sda1"};
    const FETCHED_T fetched = write_documents(decode(body).get(), library);

    std::set<std::string> files;
    auto skipped = fetched.skipped.begin();
    for (const auto &c : cases) {
        const bool is_reason = (c.folder[0] & 0x80) != 0; // they are Chinese
        if (!is_reason)
            files.insert("library/sda/sda1/" + c.folder + "/metadata.xml");
        EXPECT_TRUE(!is_reason || (skipped != fetched.skipped.end() && c.folder == skipped++->reason))
            << c.folder;
    }
    EXPECT_EQ(files, files_below(folder.path()));
    EXPECT_EQ(std::size(cases), files.size() + fetched.skipped.size());
    for (const std::string &file : files)
        EXPECT_NE("", loaded_record(read_file(folder.path() / file))) << file;
}

TEST(ClientFetch, NothingIsReachedThroughALinkAndADocumentIsWrittenWholeOrNotAtAll) {
    const harness::FOLDER_T folder;
    const fs::path outside = folder.path() / "outside";
    harness::write_file(outside / "file", "kept");
    for (const char *link : {"1/sda", "2/sda/sda1", "3/sda/sda1/m"}) {
        fs::create_directories((folder.path() / link).parent_path());
        fs::create_directory_symlink(outside, folder.path() / link);
        EXPECT_EQ(EXIT_FAILED, write_movie(folder.path() / std::string(link, 1))) << link;
    }
    const fs::path document = folder.path() / "4/sda/sda1/m/metadata.xml";
    fs::create_directories(document.parent_path());
    fs::create_symlink(outside / "file", document);
    EXPECT_EQ(EXIT_DONE, write_movie(folder.path() / "4")); // the link itself makes way
    const std::string text = read_file(document);
    EXPECT_NE("", loaded_record(text));
    EXPECT_EQ("kept", read_file(outside / "file"));
    EXPECT_EQ(1U, files_below(outside).size());

    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{100, limit.rlim_max}; // as on a full disk
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(EXIT_FAILED, write_movie(folder.path() / "4"));
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(text, read_file(document));
    EXPECT_EQ(1U, files_below(folder.path() / "4").size());
    const auto write_interrupted = [&] {
        const INTERRUPT_GUARD_T guard;
        raise(SIGINT);
        _exit(write_movie(folder.path() / "5"));
    };
    EXPECT_EXIT(write_interrupted(), testing::ExitedWithCode(EXIT_INTERRUPTED), "");
    EXPECT_TRUE(files_below(folder.path() / "5").empty());
}
