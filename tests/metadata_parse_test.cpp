#include "metadata_parse.h"

#include <cstdio>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iconv.h>
#include <memory>
#include <sstream>

#include "harness.h"

using namespace harness;
using namespace std::string_literals;

namespace {

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
  <detailed_desc> 详细 </detailed_desc><description> 简介 </description><episodes>2</episodes><videos>
  <video><video_seqno>2</video_seqno><video_name>下</video_name><video_filepath>/2</video_filepath></video>
  <video><video_seqno>1</video_seqno><video_name>上</video_name><video_filepath>/1</video_filepath></video></videos>
</metadata>)";

// The document with the first element of that name replaced.
std::string with(const std::string &tag, const std::string &element, std::string text = DOCUMENT) {
    const size_t from = text.find("<" + tag + ">");
    const std::string end = "</" + tag + ">";
    return text.replace(from, text.find(end, from) + end.size() - from, element);
}
std::string with_text(const std::string &tag, const std::string &content, std::string text = DOCUMENT) {
    return with(tag, "<" + tag + ">" + content + "</" + tag + ">", std::move(text));
}
std::string without(const std::string &tag) {
    return with(tag, "");
}

struct RELEASE_T {
    void operator()(DBDATA_MOVIE_INFORMATION_T *movie) const { release_dbdata_movie_information(&movie); }
};
using MOVIE_T = std::unique_ptr<DBDATA_MOVIE_INFORMATION_T, RELEASE_T>;

// In silence.
MOVIE_T read(const std::string &document, TAVI_METADATA_FAILURE_E *failure = nullptr) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    const RTSTATUS result = get_tavi_metadata_information_from_document(
        document.data(), static_cast<INT32_T>(document.size()), &movie, failure);
    EXPECT_EQ(result == 0, movie != nullptr);
    return MOVIE_T(movie);
}

struct LOADED_T {
    MOVIE_T movie;
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    std::string printed;
    std::string log;
};
// In silence, which leaves no trace, and then aloud.
LOADED_T load(const std::string &document) {
    LOADED_T loaded;
    EXPECT_EQ("", said_by([&] { loaded.movie = read(document, &loaded.failure); }));
    EXPECT_EQ("", logged());
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    RTSTATUS result = 0;
    loaded.printed =
        said_by([&] { result = get_tavi_metadata_information_from_string(document.c_str(), &movie); });
    loaded.log = logged("utils/metadata_parse.c");
    EXPECT_EQ(result == 0, movie != nullptr);
    EXPECT_EQ(loaded.movie == nullptr, movie == nullptr);
    loaded.movie.reset(movie);
    return loaded;
}

template <class NODE, class FIELD>
std::string listed(const NODE *list, FIELD field) {
    std::ostringstream text;
    for (const NODE *node : nodes_of(list))
        text << node->info->*field << ';';
    return text.str();
}
// What the document's values became, value by value.
std::string described(const DBDATA_MOVIE_INFORMATION_T &movie) {
    std::ostringstream text;
    text << movie.info->movie_code << ' ' << movie.info->movie_name_ch << ' ' << movie.info->movie_name_en
         << ' ' << movie.imdbvalue << ' ' << movie.acronym << ' ' << movie.posters->relative_small_path << ' '
         << movie.summary << ' ' << listed(movie.dimension_list, &DBDATA_DIMENSION_INFORMATION_T::dimension)
         << ' ' << listed(movie.resolution_list, &DBDATA_RESOLUTION_INFORMATION_T::resolution)
         << " category=" << listed(movie.category_list, &DBDATA_CATEGORY_INFORMATION_T::name)
         << " kind=" << listed(movie.kind_list, &DBDATA_KIND_INFORMATION_T::name)
         << " area=" << listed(movie.area_list, &DBDATA_AREA_INFORMATION_T::name) << ' '
         << listed(movie.director_list, &DBDATA_DIRECTOR_INFORMATION_T::code) << ' '
         << listed(movie.actor_list, &DBDATA_ACTOR_INFORMATION_T::name) << " put=" << movie.put_time
         << " publish=" << movie.publish_time
         << " year=" << listed(movie.year_list, &DBDATA_YEAR_INFORMATION_T::year)
         << " duration=" << movie.duration << " episodes=" << movie.episodes
         << " video=" << listed(movie.video_list, &DBDATA_VIDEO_INFORMATION_T::seqno)
         << listed(movie.video_list, &DBDATA_VIDEO_INFORMATION_T::relative_filepath);
    return text.str();
}

std::string logged_line(const std::string &text) {
    return "parse_tavi_metadata_from_object 40 " + text + "\n";
}

using MetadataParse = LEAK_CHECKED_T;

} // namespace

TEST_F(MetadataParse, ADocumentFillsTheRecordAndTellsItsProgress) {
    const LOADED_T loaded = load(DOCUMENT);
    ASSERT_NE(nullptr, loaded.movie);
    EXPECT_EQ("M1 片名 Title 7.1 pM1 m 简介 全部;3d; 全部;4K; category=电视剧; kind=全部;动作; 动作;3D; "
              "area=全部;美国; P1; 乙; put=20150607 publish=19991231 year=0;1999; duration=137 episodes=2 "
              "video=2;1;/2;/1;",
              described(*loaded.movie));
    EXPECT_STREQ("ts", loaded.movie->posters->tv_small);
    EXPECT_STREQ("详细", loaded.movie->description);
    EXPECT_EQ(nullptr, loaded.movie->video_list->info->mp4);
    EXPECT_EQ("过滤影片类型\n", loaded.printed);
    std::string want;
    for (const char *text :
         {"地区列表", "导演列表", "演员列表", "上架时间", "发布时间", "影片时长", "影片海报信息",
          "影片TV海报信息", "影片详细简介", "影片简介", "影片视频集数", "影片视频列表", "完成"})
        want += logged_line(text);
    EXPECT_EQ(want, loaded.log);
}

void expect_refused(const std::string &document, const std::string &reason, const std::string &printed) {
    SCOPED_TRACE(reason);
    const LOADED_T loaded = load(document);
    EXPECT_EQ(nullptr, loaded.movie);
    EXPECT_EQ(reason, get_tavi_metadata_failure_text(loaded.failure));
    const bool filtered = loaded.failure >= TAVI_METADATA_DISALLOWED_KIND; // as far as the walk came
    EXPECT_EQ((filtered ? "过滤影片类型\n" : "") + printed, loaded.printed);
    EXPECT_EQ(loaded.failure == TAVI_METADATA_POSTERS, loaded.log.ends_with(logged_line("片名: " + reason)));
}

TEST_F(MetadataParse, ADocumentWithoutAnElementOrAUsableValueIsRefusedWithAReason) {
    const std::pair<std::string, std::string> CASES[] = {
        {without("imdb_value"), "IMDB评分"},    {without("index"), "名称首字母索引"},
        {without("category"), "分类信息"},      {without("kinds"), "类型信息"},
        {without("kind_name"), "类型信息"},     {without("areas"), "拍摄地信息"},
        {without("area_name"), "拍摄地信息"},   {without("directors"), "导演信息"},
        {without("director_code"), "导演信息"}, {without("actors"), "主演信息"},
        {without("actor_name"), "主演信息"},    {without("publish_time"), "发布时间"},
        {without("duration"), "时长信息"},      {with_text("duration", " "), "时长信息"},
        {without("episodes"), "视频集数"},      {without("videos"), "视频列表"},
        {without("video_name"), "视频列表"},    {with("videos", "<videos/>"), "视频列表"}};
    const std::string failed = "分析并提取XML数据失败\n";
    const auto reason_of = [](const std::string &what) { return "解析影片" + what + "时出错"; };
    const auto told = [&](const std::string &what) { return "片名: " + reason_of(what) + "\n" + failed; };
    for (const auto &[document, what] : CASES)
        expect_refused(document, reason_of(what), told(what));
    for (const char *tag : {"movie", "movie_name_en"})
        expect_refused(without(tag), "解析影片编码和名称时出错", "解析影片编码和名称时出错\n" + failed);
    for (const char *kind : {"情色", "同志", "暴力"})
        expect_refused(with_text("kind_name", kind), "影片属于禁止的类型",
                       "filter movie(片名) due to disallow kind\n" + failed);
    for (const char *tag : {"poster", "poster_m"})
        expect_refused(without(tag), "解析影片海报信息时出错", failed);
    expect_refused(without("description"), "解析影片简介信息时出错", "片名: 解析影片简介信息时出错" + failed);
    expect_refused(std::string(DOCUMENT, 900), "从字符串获取DOC对象失败", "从字符串获取DOC对象失败\n");
}

TEST_F(MetadataParse, BadArgumentsAreRefused) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    EXPECT_EQ("无效的参数\n无效的参数\n", said_by([&movie] {
                  EXPECT_EQ(-1, get_tavi_metadata_information_from_string(nullptr, &movie));
                  EXPECT_EQ(-1, get_tavi_metadata_information_from_string(DOCUMENT, nullptr));
              }));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_document(nullptr, 5, &movie, nullptr));
    const auto length = static_cast<INT32_T>(strlen(DOCUMENT));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_document(DOCUMENT, length, nullptr, nullptr));
    EXPECT_EQ(nullptr, read("", &failure));
    EXPECT_STREQ("无效的参数", get_tavi_metadata_failure_text(failure));
}

void expect_value(const std::string &document, const std::string &want) {
    const MOVIE_T movie = read(document);
    ASSERT_NE(nullptr, movie) << want;
    EXPECT_NE(std::string::npos, described(*movie).find(want)) << want << described(*movie);
}

TEST_F(MetadataParse, WhatAMovieMayLackOrSayStrangelyIsReplacedOrLeftOut) {
    expect_value(without("dimension_info"), " 全部;2D; 全部;4K; ");
    expect_value(without("dimension_info"), "kind=全部;动作; 动作; ");
    expect_value(with_text("dimension_name", " 全部"), " 全部; 全部;4K; ");
    expect_value(without("resolution_info"), " 全部;BD; ");
    expect_value(with_text("category", "纪录片"), "category=电影; ");
    expect_value(with("kinds", "<kinds/>"), "kind=全部;3D; ");
    expect_value(with_text("kind_name", "3D"), "kind=全部;3D; 动作; ");
    expect_value(with_text("kind_name", "非暴力"), "kind=全部;非暴力; 动作;3D; ");
    for (const char *date : {"", "2015-6", "2015 -6-7", "99999999999-6-7", "2000000000-6-7"})
        expect_value(with_text("put_time", date), "put=20130101 ");
    expect_value(without("put_time"), "put=20130101 ");
    expect_value(with_text("put_time", "2015- 6-+7th"), "put=20150607 "); // as scanf() takes numbers
    expect_value(with_text("publish_time", "?"), "publish=20130101 year=0;2013; ");
    expect_value(with_text("publish_time", "0-6-7"), "publish=607 year=0; ");
    for (const char *duration : {"long", "99999999999"})
        expect_value(with_text("duration", duration), "duration=0 ");
    expect_value(with_text("duration", "-5"), "duration=-5 ");
}

TEST_F(MetadataParse, MissingTvPostersAndDetailsAreToldByAddress) {
    for (const auto &[tag, line] : {std::pair{"poster_tv_m", "0x: 解析影片tv海报信息时出错"},
                                    {"detailed_desc", "(nil): 解析详细内容出错"}}) {
        const LOADED_T loaded = load(without(tag));
        ASSERT_NE(nullptr, loaded.movie);
        EXPECT_EQ("过滤影片类型\n"s + line + "\n", loaded.printed);
        EXPECT_NE(std::string::npos, loaded.log.find(logged_line(line)));
        EXPECT_EQ(nullptr, *tag == 'p' ? loaded.movie->posters->tv_big : loaded.movie->description);
    }
}

TEST_F(MetadataParse, LongTextsAreCutAtAWholeCharacter) {
    std::string text = "a";
    for (int i = 0; i < 10000; i++)
        text += "电";
    const MOVIE_T movie = read(with_text("description", text, with_text("detailed_desc", text)));
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ(text.substr(0, 1 + 340 * 3), movie->summary);
    EXPECT_EQ(text.substr(0, 1 + 6826 * 3), movie->description);
}

TEST_F(MetadataParse, ThreadsLoadMoviesAtOnce) {
    std::vector<std::future<MOVIE_T>> movies(40);
    for (auto &movie : movies)
        movie = std::async(std::launch::async, [] { return read(DOCUMENT); });
    for (auto &movie : movies)
        EXPECT_NE(nullptr, movie.get());
}

// ---- Documents that attack the parser, and those that only look strange

namespace {

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

// The document with something between the declaration and the root, and in front of its title.
std::string document_with(const std::string &prolog, const std::string &title) {
    std::string text = with_text("movie_name_ch", title + "片名");
    return text.insert(text.find("<metadata>"), prolog);
}

} // namespace

TEST_F(MetadataParse, LegalEncodingsLoadAlike) {
    const std::string want = described(*read(DOCUMENT));
    for (const char *encoding : {"UTF-8", "GB18030", "GBK", "UTF-16", "UTF-16BE", "UTF-16LE"}) {
        std::string text = DOCUMENT;
        text.replace(text.find("UTF-8"), 5, encoding);
        text = (encoding == "UTF-16BE"s || encoding == "UTF-16LE"s ? "\uFEFF" : "") + text;
        const MOVIE_T movie = read(converted(text, encoding));
        ASSERT_NE(nullptr, movie) << encoding;
        EXPECT_EQ(want, described(*movie)) << encoding;
    }
}

TEST_F(MetadataParse, AttacksAreRefusedAndReachNothing) {
    std::string laughs = "<!DOCTYPE m [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 30; i++)
        laughs += "<!ENTITY a" + std::to_string(i) + " \"" +
                  repeated("&a" + std::to_string(i - 1) + ";", 10) + "\">";
    const std::string secret = testing::TempDir() + "tavisys-secret";
    std::ofstream(secret) << "<!ENTITY fetched 'secret'>";
    const std::pair<const char *, std::string> CASES[] = {
        {"entities of entities", document_with(laughs + "]>", "&a29;")},
        {"one long entity used often",
         document_with("<!DOCTYPE m [<!ENTITY a '" + repeated("x", 100000) + "'>]>", repeated("&a;", 10000))},
        {"an external entity", document_with("<!DOCTYPE m [<!ENTITY a SYSTEM '" + secret + "'>]>", "&a;")},
        {"an external parameter entity",
         document_with("<!DOCTYPE m [<!ENTITY % a SYSTEM '" + secret + "'> %a;]>", "&fetched;")},
        {"deep nesting", document_with("", repeated("<d>", 10000) + repeated("</d>", 10000))},
        {"100 MB of text", document_with("", repeated("电影", 17 * 1024 * 1024))},
        {"a name of 20 MB", document_with("", "<" + repeated("n", 20 * 1024 * 1024) + "/>")},
        {"bad UTF-8", document_with("", "\xC3\x28")},
        {"UTF-8 longer than it need be", document_with("", "\xC0\xAF")},
        {"half a surrogate pair", document_with("", "\xED\xA0\x80")},
        {"a NUL", document_with("", "a\0b"s)},
        {"a reference to NUL", document_with("", "&#0;")},
        {"control characters", document_with("", "\x01")},
        {"an encoding that isn't there", std::string(DOCUMENT).replace(30, 5, "UTF-9")},
        {"nothing but blanks", repeated(" ", 1000000)},
    };
    for (const auto &[what, document] : CASES)
        EXPECT_EQ(nullptr, read(document)) << what;
    // A DTD isn't read, so that what it may declare is nothing; that there is one is nobody's fault.
    for (const char *title : {"", "&fetched;"})
        expect_value(document_with("<!DOCTYPE m SYSTEM '" + secret + "'>", title), "M1 片名 ");
    std::remove(secret.c_str());
}

// The test's time limit stops what is quadratic.
TEST_F(MetadataParse, AHundredThousandOfAnElementAreReadInOneWalk) {
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
        std::string all = "<movie_name_ch>n</movie_name_ch><movie_name_en>n</movie_name_en>";
        for (int i = 0; i < 100000; i++) {
            std::string children = c.children;
            children.replace(children.find('#'), 1, std::to_string(i));
            all.append("<").append(c.each).append(">").append(children);
            all.append("</").append(c.each).append(">");
        }
        EXPECT_NE(nullptr, read(with_text(c.list, all))) << c.list;
    }
}
