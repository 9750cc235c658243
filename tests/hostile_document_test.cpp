// Metadata documents that attack the parser, and those that only look strange: encodings other than UTF-8
// are legal and common.
#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <iconv.h>
#include <memory>

#include "metadata_parse.h"
#include "server_harness.h"

using namespace harness;
using namespace std::string_literals;

namespace {

struct RELEASE_T {
    void operator()(DBDATA_MOVIE_INFORMATION_T *movie) const { release_dbdata_movie_information(&movie); }
};
using MOVIE_T = std::unique_ptr<DBDATA_MOVIE_INFORMATION_T, RELEASE_T>;

MOVIE_T read(const std::string &document) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    get_tavi_metadata_information_from_document(document.data(), static_cast<INT32_T>(document.size()),
                                                &movie, nullptr);
    return MOVIE_T(movie);
}

std::string converted(const std::string &text, const char *encoding) {
    const iconv_t converter = iconv_open(encoding, "UTF-8");
    std::string result(text.size() * 4, '\0');
    char *from = const_cast<char *>(text.data());
    char *to = result.data();
    size_t left = text.size();
    size_t room = result.size();
    EXPECT_EQ(0U, iconv(converter, &from, &left, &to, &room)) << encoding;
    iconv_close(converter);
    result.resize(result.size() - room);
    return result;
}

std::string repeated(const std::string &text, size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (size_t i = 0; i < times; i++)
        result += text;
    return result;
}

constexpr const char *DECLARATION = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// A movie's document with something between the declaration and the root, and in front of its title.
std::string document_with(const std::string &prolog, const std::string &title) {
    std::string text = DECLARATION + prolog + MOVIE_DOCUMENT_T().text();
    const std::string tag = "<movie_name_ch>";
    return text.insert(text.find(tag) + tag.size(), title);
}

} // namespace

TEST(HostileDocument, LegalEncodingsLoadAlike) {
    const MOVIE_DOCUMENT_T sample; // of characters that all of these have
    for (const char *encoding : {"UTF-8", "GB18030", "GBK", "UTF-16", "UTF-16BE", "UTF-16LE"}) {
        SCOPED_TRACE(encoding);
        std::string text = DECLARATION + sample.text();
        text.replace(text.find("UTF-8"), 5, encoding);
        text = (encoding == "UTF-16BE"s || encoding == "UTF-16LE"s ? "\uFEFF" : "") + text;
        const MOVIE_T movie = read(converted(text, encoding));
        ASSERT_NE(nullptr, movie);
        EXPECT_EQ(sample.name, movie->info->movie_name_ch);
        EXPECT_EQ(sample.category, movie->category_list->info->name);
    }
}

TEST(HostileDocument, AttacksAreRefusedAndReachNothing) {
    std::string laughs = "<!DOCTYPE m [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 30; i++)
        laughs += "<!ENTITY a" + std::to_string(i) + " \"" +
                  repeated("&a" + std::to_string(i - 1) + ";", 10) + "\">";
    const FOLDER_T folder;
    const std::string secret = (folder.path() / "secret").string();
    write_file(secret, "<!ENTITY fetched 'secret'>");
    const std::string deep = repeated("<d>", 10000) + repeated("</d>", 10000);
    const struct {
        const char *what;
        std::string document;
    } CASES[] = {
        {"entities of entities", document_with(laughs + "]>", "&a29;")},
        {"one long entity used often",
         document_with("<!DOCTYPE m [<!ENTITY a '" + repeated("x", 100000) + "'>]>", repeated("&a;", 10000))},
        {"an external entity", document_with("<!DOCTYPE m [<!ENTITY a SYSTEM '" + secret + "'>]>", "&a;")},
        {"an external parameter entity",
         document_with("<!DOCTYPE m [<!ENTITY % a SYSTEM '" + secret + "'> %a;]>", "&fetched;")},
        {"deep nesting", document_with("", deep)},
        {"100 MB of text", document_with("", repeated("电影", 17 * 1024 * 1024))},
        {"a name of 20 MB", document_with("", "<" + repeated("n", 20 * 1024 * 1024) + "/>")},
        {"bad UTF-8", document_with("", "\xC3\x28")},
        {"UTF-8 longer than it need be", document_with("", "\xC0\xAF")},
        {"half a surrogate pair", document_with("", "\xED\xA0\x80")},
        {"a NUL", document_with("", "a\0b"s)},
        {"a reference to NUL", document_with("", "&#0;")},
        {"control characters", document_with("", "\x01")},
        {"an encoding that isn't there",
         document_with("", "x").replace(strlen("<?xml version=\"1.0\" encoding=\""), 5, "UTF-9")},
        {"nothing but blanks", repeated(" ", 1000000)},
    };
    for (const auto &c : CASES)
        EXPECT_EQ(nullptr, read(c.document)) << c.what;
    // A DTD isn't read, so that what it may declare is nothing; that there is one is nobody's fault.
    for (const char *title : {"", "&fetched;"}) {
        const MOVIE_T movie = read(document_with("<!DOCTYPE m SYSTEM '" + secret + "'>", title));
        ASSERT_NE(nullptr, movie);
        EXPECT_EQ(MOVIE_DOCUMENT_T().name, movie->info->movie_name_ch);
    }
}

// The test's time limit stops what is quadratic.
TEST(HostileDocument, AHundredThousandOfAnElementAreReadInOneWalk) {
    constexpr size_t MANY = 100000;
    const struct {
        const char *list, *each, *children; // '#' is a number of its own
    } CASES[] = {
        {"kinds", "kind", "<kind_name>#</kind_name>"},
        {"areas", "area", "<area_name>#</area_name>"},
        {"directors", "director", "<director_code>#</director_code><director_name>n</director_name>"},
        {"actors", "actor", "<actor_code>#</actor_code><actor_name>n</actor_name>"},
        {"videos", "video",
         "<video_seqno>#</video_seqno><video_name>n</video_name><video_filepath>f</video_filepath>"},
        {"movie", "movie_code", "#"}, // of which the first counts
    };
    for (const auto &c : CASES) {
        std::string all;
        for (size_t i = 0; i < MANY; i++) {
            std::string children = c.children;
            children.replace(children.find('#'), 1, std::to_string(i));
            all.append("<").append(c.each).append(">").append(children);
            all.append("</").append(c.each).append(">");
        }
        std::string document = MOVIE_DOCUMENT_T().text();
        const std::string begin = std::string("<") + c.list + ">";
        const std::string empty = std::string("<") + c.list + "/>";
        if (const size_t at = document.find(begin); at != std::string::npos)
            document.insert(at + begin.size(), all);
        else
            document.replace(document.find(empty), empty.size(), begin + all + "</" + c.list + ">");
        EXPECT_NE(nullptr, read(document)) << c.list;
    }
}
