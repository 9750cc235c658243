#include "metadata_parse.h"

#include <future>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "harness.h"

using namespace harness;

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

MOVIE_T load(const std::string &document, TAVI_METADATA_FAILURE_E *failure = nullptr) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    const RTSTATUS result = get_tavi_metadata_information_from_document(
        document.data(), static_cast<INT32_T>(document.size()), &movie, failure);
    EXPECT_EQ(result == 0, movie != nullptr);
    return MOVIE_T(movie);
}

// The same through the function that tells; what it printed goes to printed.
MOVIE_T load_aloud(const std::string &document, std::string *printed) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    testing::internal::CaptureStdout();
    const RTSTATUS result = get_tavi_metadata_information_from_string(document.c_str(), &movie);
    *printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(result == 0, movie != nullptr);
    return MOVIE_T(movie);
}

template <class NODE, class FIELD>
std::string listed(const NODE *list, FIELD field) {
    std::ostringstream text;
    for (; list != nullptr; list = static_cast<const NODE *>(list->next))
        text << list->info->*field << ';';
    return text.str();
}
// What the document's values became, value by value.
std::string described(const DBDATA_MOVIE_INFORMATION_T &movie) {
    std::ostringstream text;
    text << movie.info->movie_code << ' ' << movie.info->movie_name_ch << ' ' << movie.info->movie_name_en
         << ' ' << movie.imdbvalue << ' ' << movie.acronym << ' ' << movie.posters->relative_small_path << ' '
         << movie.summary
         << " dimension=" << listed(movie.dimension_list, &DBDATA_DIMENSION_INFORMATION_T::dimension)
         << " resolution=" << listed(movie.resolution_list, &DBDATA_RESOLUTION_INFORMATION_T::resolution)
         << " category=" << listed(movie.category_list, &DBDATA_CATEGORY_INFORMATION_T::name)
         << " kind=" << listed(movie.kind_list, &DBDATA_KIND_INFORMATION_T::name)
         << " area=" << listed(movie.area_list, &DBDATA_AREA_INFORMATION_T::name)
         << " director=" << listed(movie.director_list, &DBDATA_DIRECTOR_INFORMATION_T::code)
         << " actor=" << listed(movie.actor_list, &DBDATA_ACTOR_INFORMATION_T::name)
         << " put=" << movie.put_time << " publish=" << movie.publish_time
         << " year=" << listed(movie.year_list, &DBDATA_YEAR_INFORMATION_T::year)
         << " duration=" << movie.duration << " episodes=" << movie.episodes
         << " video=" << listed(movie.video_list, &DBDATA_VIDEO_INFORMATION_T::seqno)
         << listed(movie.video_list, &DBDATA_VIDEO_INFORMATION_T::relative_filepath) << " end";
    return text.str();
}

class MetadataParse : public testing::Test {
protected:
    long live_before_ = live_allocations();
    void SetUp() override { take_log(); }
    void TearDown() override { EXPECT_EQ(live_before_, live_allocations()); }
};

} // namespace

TEST_F(MetadataParse, ADocumentFillsTheRecord) {
    const MOVIE_T movie = load(DOCUMENT);
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ("M1 片名 Title 7.1 pM1 m 简介 dimension=全部;3d; resolution=全部;4K; category=电视剧; "
              "kind=全部;动作; 动作;3D; area=全部;美国; director=P1; actor=乙; put=20150607 publish=19991231 "
              "year=0;1999; duration=137 episodes=2 video=2;1;/2;/1; end",
              described(*movie));
    EXPECT_EQ(1, movie->count);
    EXPECT_STREQ("ts", movie->posters->tv_small);
    EXPECT_STREQ("详细", movie->description);
    EXPECT_EQ(nullptr, movie->video_list->info->mp4);
}

TEST_F(MetadataParse, ProgressIsToldAloudAndNeverInSilence) {
    std::string printed;
    EXPECT_NE(nullptr, load_aloud(DOCUMENT, &printed));
    EXPECT_EQ("过滤影片类型\n", printed);
    std::vector<LOG_LINE_T> want;
    for (const char *text :
         {"地区列表", "导演列表", "演员列表", "上架时间", "发布时间", "影片时长", "影片海报信息",
          "影片TV海报信息", "影片详细简介", "影片简介", "影片视频集数", "影片视频列表", "完成"})
        want.push_back({"utils/metadata_parse.c", "parse_tavi_metadata_from_object", 40, text});
    EXPECT_EQ(want, take_log());

    testing::internal::CaptureStdout();
    EXPECT_NE(nullptr, load(DOCUMENT));
    EXPECT_NE(nullptr, load(without("detailed_desc")));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(take_log().empty());
}

void expect_refused(const std::string &document, TAVI_METADATA_FAILURE_E want, const std::string &message) {
    SCOPED_TRACE(message);
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    std::string printed;
    EXPECT_EQ(nullptr, load(document, &failure));
    EXPECT_EQ(want, failure);
    EXPECT_TRUE(take_log().empty());
    EXPECT_EQ(nullptr, load_aloud(document, &printed));
    const bool filtered = want >= TAVI_METADATA_DISALLOWED_KIND; // as far as the walk came
    EXPECT_EQ((filtered ? "过滤影片类型\n" : "") + message + "分析并提取XML数据失败\n", printed);
    const auto log = take_log();
    const bool in_log = !log.empty() && log.back().text == "片名: 解析影片海报信息时出错";
    EXPECT_EQ(want == TAVI_METADATA_POSTERS, in_log);
}

TEST_F(MetadataParse, ADocumentThatLacksAnElementIsRefusedWithAReason) {
    const struct {
        TAVI_METADATA_FAILURE_E failure;
        const char *message;
        std::vector<const char *> missing; // in one document each
    } CASES[] = {
        {TAVI_METADATA_CODE_AND_NAME, "解析影片编码和名称时出错\n", {"movie", "movie_name_en"}},
        {TAVI_METADATA_IMDB, "片名: 解析影片IMDB评分时出错\n", {"imdb_value"}},
        {TAVI_METADATA_INDEX, "片名: 解析影片名称首字母索引时出错\n", {"index"}},
        {TAVI_METADATA_CATEGORY, "片名: 解析影片分类信息时出错\n", {"category"}},
        {TAVI_METADATA_KINDS, "片名: 解析影片类型信息时出错\n", {"kinds", "kind_name"}},
        {TAVI_METADATA_AREAS, "片名: 解析影片拍摄地信息时出错\n", {"areas", "area_name"}},
        {TAVI_METADATA_DIRECTORS, "片名: 解析影片导演信息时出错\n", {"directors", "director_code"}},
        {TAVI_METADATA_ACTORS, "片名: 解析影片主演信息时出错\n", {"actors", "actor_name"}},
        {TAVI_METADATA_PUBLISH_TIME, "片名: 解析影片发布时间时出错\n", {"publish_time"}},
        {TAVI_METADATA_DURATION, "片名: 解析影片时长信息时出错\n", {"duration"}},
        {TAVI_METADATA_POSTERS, "", {"poster", "poster_m"}},
        {TAVI_METADATA_SUMMARY, "片名: 解析影片简介信息时出错", {"description"}},
        {TAVI_METADATA_EPISODES, "片名: 解析影片视频集数时出错\n", {"episodes"}},
        {TAVI_METADATA_VIDEOS, "片名: 解析影片视频列表时出错\n", {"videos", "video_filepath", "video_name"}},
    };
    for (const auto &c : CASES) {
        for (const char *tag : c.missing)
            expect_refused(without(tag), c.failure, c.message);
    }
}

TEST_F(MetadataParse, ADocumentWithUnusableValuesIsRefusedWithAReason) {
    const char *filtered = "filter movie(片名) due to disallow kind\n";
    for (const char *kind : {"情色", "同志", "暴力"})
        expect_refused(with_text("kind_name", kind), TAVI_METADATA_DISALLOWED_KIND, filtered);
    expect_refused(with_text("duration", " "), TAVI_METADATA_DURATION, "片名: 解析影片时长信息时出错\n");
    expect_refused(with("videos", "<videos/>"), TAVI_METADATA_VIDEOS, "片名: 解析影片视频列表时出错\n");
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    std::string printed;
    EXPECT_EQ(nullptr, load(std::string(DOCUMENT, 900), &failure));
    EXPECT_EQ(TAVI_METADATA_NOT_WELL_FORMED, failure);
    EXPECT_EQ(nullptr, load_aloud(std::string(DOCUMENT, 900), &printed));
    EXPECT_EQ("从字符串获取DOC对象失败\n", printed);
}

TEST_F(MetadataParse, BadArgumentsAreRefused) {
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    testing::internal::CaptureStdout();
    EXPECT_EQ(-1, get_tavi_metadata_information_from_string(nullptr, &movie));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_string(DOCUMENT, nullptr));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_document(nullptr, 5, &movie, nullptr));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_document(DOCUMENT, 5, nullptr, nullptr));
    EXPECT_EQ(-1, get_tavi_metadata_information_from_document(DOCUMENT, 0, &movie, &failure));
    EXPECT_EQ(TAVI_METADATA_INVALID_ARGUMENT, failure);
    EXPECT_EQ("无效的参数\n无效的参数\n", testing::internal::GetCapturedStdout());
}

TEST_F(MetadataParse, WhatAMovieMayLackIsReplacedOrLeftOut) {
    const struct {
        std::string document;
        const char *want;
    } CASES[] = {
        {without("dimension_info"), "dimension=全部;2D; "},
        {without("dimension_info"), "kind=全部;动作; 动作; "},
        {without("dimension_name"), "dimension=全部;2D; "},
        {with_text("dimension_name", " 全部"), "dimension=全部; "},
        {with_text("kind_name", "3D"), "kind=全部;3D; 动作; "},
        {without("resolution_info"), "resolution=全部;BD; "},
        {with_text("category", "纪录片"), "category=电影; "},
        {with_text("category", ""), "category=电影; "},
        {with_text("category", "醇音乐"), "category=醇音乐; "},
        {with("kinds", "<kinds/>"), "kind=全部;3D; "},
        {with_text("kind_name", "非暴力"), "kind=全部;非暴力; 动作;3D; "},
        {without("put_time"), "put=20130101 "},
        {with_text("put_time", "2015/6/7"), "put=20130101 "},
        {with_text("put_time", "2015-6"), "put=20130101 "},
        {with_text("put_time", "2015 -6-7"), "put=20130101 "},
        {with_text("put_time", "2015- 6-+7th"), "put=20150607 "}, // as scanf() takes numbers
        {with_text("put_time", "99999999999-6-7"), "put=20130101 "},
        {with_text("put_time", "2000000000-6-7"), "put=20130101 "},
        {with_text("publish_time", "?"), "publish=20130101 year=0;2013; "},
        {with_text("publish_time", "0-6-7"), "publish=607 year=0; "},
        {with_text("duration", "long"), "duration=0 "},
        {with_text("duration", "99999999999"), "duration=0 "},
        {with_text("duration", "-5"), "duration=-5 "},
    };
    for (const auto &c : CASES) {
        const MOVIE_T movie = load(c.document);
        ASSERT_NE(nullptr, movie);
        EXPECT_NE(std::string::npos, described(*movie).find(c.want)) << c.want << described(*movie);
    }
}

TEST_F(MetadataParse, MissingTvPostersAndDetailsAreToldByAddress) {
    std::string printed;
    MOVIE_T movie = load_aloud(without("poster_tv_m"), &printed);
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ(nullptr, movie->posters->tv_big);
    std::ostringstream line;
    line << static_cast<const void *>(movie->info->movie_name_ch) << ": 解析影片tv海报信息时出错";
    EXPECT_EQ("过滤影片类型\n" + line.str() + "\n", printed);
    EXPECT_EQ(line.str(), take_log()[8].text);

    movie = load_aloud(without("detailed_desc"), &printed);
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ(nullptr, movie->description);
    EXPECT_EQ("过滤影片类型\n(nil): 解析详细内容出错\n", printed);
    EXPECT_EQ("(nil): 解析详细内容出错", take_log()[9].text);
}

TEST_F(MetadataParse, LongListsKeepEachPersonOnceAndTheirOrder) {
    std::string actors = "<actors>";
    std::string want;
    for (int i = 0; i < 300; i++) {
        const std::string code = "P" + std::to_string(i % 150);
        actors += "<actor><actor_code>" + code + "</actor_code><actor_name>" + std::to_string(i) +
                  "</actor_name></actor>";
        want += i < 150 ? std::to_string(i) + ";" : "";
    }
    const MOVIE_T movie = load(with("actors", actors + "</actors>"));
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ(want, listed(movie->actor_list, &DBDATA_ACTOR_INFORMATION_T::name));
}

TEST_F(MetadataParse, LongTextsAreCutAtAWholeCharacter) {
    std::string text = "a";
    for (int i = 0; i < 10000; i++)
        text += "电";
    const MOVIE_T movie = load(with_text("description", text, with_text("detailed_desc", text)));
    ASSERT_NE(nullptr, movie);
    EXPECT_EQ(text.substr(0, 1 + 340 * 3), movie->summary);
    EXPECT_EQ(text.substr(0, 1 + 6826 * 3), movie->description);
}

TEST_F(MetadataParse, ADocumentMayBeInAnotherEncoding) {
    std::string latin = with_text("movie_name_ch", "Caf\xE9");
    latin.replace(latin.find("UTF-8"), 5, "ISO-8859-1");
    const MOVIE_T movie = load(latin);
    ASSERT_NE(nullptr, movie);
    EXPECT_STREQ("Caf\xC3\xA9", movie->info->movie_name_ch);
}

TEST_F(MetadataParse, ShortMemoryLosesNothing) {
    int refused = 0;
    bool failed = true;
    for (int nth = 1; failed; nth++) {
        TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
        testing::internal::CaptureStdout(); // node creators tell when memory is short
        fail_nth_allocation(nth);
        const MOVIE_T movie = load(DOCUMENT, &failure);
        failed = an_allocation_failed();
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(movie == nullptr, failure != TAVI_METADATA_OK);
        EXPECT_EQ(nth == 1, failure == TAVI_METADATA_MEMORY);
        refused += movie == nullptr ? 1 : 0;
    }
    EXPECT_GT(refused, 30); // the others cost an optional value only
}

TEST_F(MetadataParse, EveryFailureHasATextOfItsOwn) {
    std::set<std::string> texts;
    for (int failure = TAVI_METADATA_OK; failure <= TAVI_METADATA_VIDEOS + 1; failure++)
        texts.insert(get_tavi_metadata_failure_text(static_cast<TAVI_METADATA_FAILURE_E>(failure)));
    EXPECT_EQ(static_cast<size_t>(TAVI_METADATA_VIDEOS) + 2, texts.size());
}

TEST_F(MetadataParse, ThreadsLoadMoviesWithIdsOfTheirOwn) {
    std::vector<std::future<MOVIE_T>> movies(40);
    for (auto &movie : movies)
        movie = std::async(std::launch::async, [] { return load(DOCUMENT); });
    std::set<INT32_T> ids;
    for (auto &movie : movies)
        ids.insert(movie.get()->id);
    EXPECT_EQ(movies.size(), ids.size());
}
