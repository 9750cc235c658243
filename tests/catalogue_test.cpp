// The catalogue's pages against a plain search through all movies, and how threads share work.
#include "catalogue.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <random>

#include "metadata_parse.h"
#include "page_body.h"
#include "server_harness.h"
#include "share_work.h"

using namespace server;
using harness::MOVIE_DOCUMENT_T;
using REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;

namespace {

class RANDOM_T {
public:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(engine_); }

private:
    std::mt19937 engine_{20261121}; // NOLINT(cert-msc51-cpp): the same movies every time
};

MOVIE_PTR random_movie(RANDOM_T *random, int number) {
    const std::string categories[] = {"电影", "电视剧", "音乐"};
    MOVIE_DOCUMENT_T document;
    document.code = "M" + std::to_string(number);
    document.name = "片" + std::to_string(random->below(50));
    document.score = std::to_string(random->below(10)) + "." + std::to_string(random->below(10));
    document.dimension = random->below(4) == 0 ? "3D" : "2D";
    document.category = categories[random->below(3)];
    document.kinds.clear();
    for (int i = random->below(4); i > 0; i--)
        document.kinds.push_back("类" + std::to_string(random->below(6)));
    document.areas = {"地" + std::to_string(random->below(4)), "地" + std::to_string(random->below(4))};
    document.put_time = "2020-1-" + std::to_string(1 + random->below(28));
    document.publish_time = std::to_string(1990 + random->below(6)) + "-06-01";
    const std::string text = document.text();
    DBDATA_MOVIE_INFORMATION_T *record = nullptr;
    EXPECT_EQ(0, get_tavi_metadata_information_from_document(text.data(), static_cast<INT32_T>(text.size()),
                                                             &record, nullptr));
    auto movie = make_movie(*record, "sda/sda1/" + document.code);
    release_dbdata_movie_information(&record);
    return movie;
}

template <class NODE>
bool holds(const NODE *list, INT32_T id, INT32_T all) {
    bool found = id == 0 || id == all;
    harness::for_each(list, [&](const auto &info) { found = found || info.id == id; });
    return found;
}

// The id under which an attribute's "all" is known: every movie carries it first.
template <class NODE>
INT32_T id_of_all(const NODE *list) {
    return list->info->id;
}

int compare(const DBDATA_MOVIE_INFORMATION_T &left, const DBDATA_MOVIE_INFORMATION_T &right, INT32_T order) {
    switch (order) {
    case TP_ORDER_BY_PUT_TIME:
        return right.put_time - left.put_time;
    case TP_ORDER_BY_PUBLISH_TIME:
        return right.publish_time - left.publish_time;
    case TP_ORDER_BY_SCORE:
        return static_cast<int>(score_of(right)) - static_cast<int>(score_of(left));
    default:
        return strcmp(left.info->movie_name_ch, right.info->movie_name_ch);
    }
}

std::vector<const DBDATA_MOVIE_INFORMATION_T *> search(const std::vector<MOVIE_PTR> &movies,
                                                       const REQUEST_T &request) {
    std::vector<const DBDATA_MOVIE_INFORMATION_T *> found;
    for (const MOVIE_PTR &movie : movies) {
        const DBDATA_MOVIE_INFORMATION_T &record = *movie->record;
        if ((request.cid == 0 || request.cid == category_id_of(record)) &&
            holds(record.kind_list, request.tid, id_of_all(record.kind_list)) &&
            holds(record.area_list, request.aid, id_of_all(record.area_list)) &&
            holds(record.year_list, request.yid, id_of_all(record.year_list)) &&
            holds(record.dimension_list, request.did, id_of_all(record.dimension_list)))
            found.push_back(&record);
    }
    std::sort(found.begin(), found.end(), [&](const auto *left, const auto *right) {
        const int order = compare(*left, *right, request.orderby);
        return order != 0 ? order < 0 : strcmp(left->info->movie_code, right->info->movie_code) < 0;
    });
    return found;
}

} // namespace

TEST(Catalogue, PagesHoldWhatAPlainSearchFinds) {
    RANDOM_T random;
    std::vector<MOVIE_PTR> movies;
    for (int i = 0; i < 400; i++)
        movies.push_back(random_movie(&random, i));
    const DISK_T disk{"sda", "S1", {{"sda1", "U1", "/m", {400, 400, 0}}}};
    const CATALOGUE_T by_one(movies, {&disk, 1});
    const CATALOGUE_T by_three(movies, {&disk, 1}, 3); // threads

    size_t filled = 0;
    for (int i = 0; i < 3000; i++) {
        const CATALOGUE_T &catalogue = i % 2 == 0 ? by_one : by_three;
        const REQUEST_T request{random.below(5),
                                random.below(3) * random.below(10),
                                random.below(2) * random.below(7),
                                random.below(2) * random.below(9),
                                random.below(2) * random.below(5),
                                1 + random.below(4),
                                1 + random.below(40),
                                random.below(4)};
        const auto wanted = search(movies, request);
        const PAGE_T page = catalogue.page(request);
        ASSERT_EQ(wanted.size(), static_cast<size_t>(page.total));
        const size_t begin =
            std::min(wanted.size(), static_cast<size_t>((request.pagenum - 1) * request.pagesize));
        const size_t end = std::min(wanted.size(), begin + static_cast<size_t>(request.pagesize));
        ASSERT_EQ(end - begin, page.positions.size());
        for (size_t at = begin; at < end; at++)
            ASSERT_STREQ(wanted[at]->info->movie_code,
                         catalogue.movies()[page.positions[at - begin]]->record->info->movie_code);
        filled += page.positions.empty() ? 0 : 1;
    }
    EXPECT_GT(filled, 500U); // the requests did select something
}

// A page's body is put together of parts that have been encoded before.
TEST(Catalogue, PageBodiesAreWhatTheEncodersMakeOfTheirMovies) {
    RANDOM_T random;
    std::vector<MOVIE_PTR> movies;
    for (int i = 0; i < 60; i++)
        movies.push_back(random_movie(&random, i));
    const DISK_T disks[] = {{"sda", "S1", {{"sda1", "U1", "/m", {20, 20, 0}}}},
                            {"sdb", "", {{"sdb1", "U2", "/n", {40, 40, 0}}}}};
    const CATALOGUE_T catalogue(movies, disks, 2);
    const struct {
        PAGE_FORM_T form;
        INT32_T (*decode)(const void *, INT32_T, TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **);
        RTSTATUS (*encode)(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *, PVOID *, INT32_T *);
    } forms[] = {{PAGE_FORM_T::PLAIN, decode_tavisys_basic_movie_ext_information_from_message,
                  encode_tavisys_basic_movie_ext_information_to_message},
                 {PAGE_FORM_T::TOUCH, decode_touchscreen_basic_movie_ext_information_from_message,
                  encode_touchscreen_basic_movie_ext_information_to_message}};
    for (const auto &[form, decode, encode] : forms)
        for (const INT32_T pagenum : {1, 3, 4}) { // whole, the rest, none
            const REQUEST_T request{0, 0, 0, 0, 0, pagenum, 25, TP_ORDER_BY_NAME};
            const PAGE_T page = catalogue.page(request);
            INT32_T length = 0;
            PVOID body = page_body_of(catalogue, page, request, form, &length);
            TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *decoded = nullptr;
            ASSERT_EQ(length, decode(body, length, &decoded));
            EXPECT_EQ(3, decoded->pageinfo.totalpages);
            size_t at = 0;
            harness::for_each(decoded->list, [&, form = form](const auto &movie) {
                const MOVIE_T &wanted = *catalogue.movies()[page.positions[at++]];
                const bool on_first_disk = atoi(wanted.record->info->movie_code + 1) < 20;
                EXPECT_EQ(wanted.record->id, movie.movid);
                EXPECT_EQ((pagenum - 1) * 25 + static_cast<INT32_T>(at), movie.index);
                EXPECT_STREQ(on_first_disk ? "S1" : "", movie.hdsn);
                EXPECT_EQ(std::string(wanted.folder) + "/posters/b.jpg", movie.bposter);
                EXPECT_EQ(form == PAGE_FORM_T::TOUCH ? 171 : 0, movie.duration);
            });
            EXPECT_EQ(page.positions.size(), at);
            PVOID again = nullptr;
            INT32_T again_length = 0;
            if (at > 0) { // the encoders take no page without a list
                ASSERT_EQ(0, encode(decoded, &again, &again_length));
                EXPECT_EQ(std::string(static_cast<INT8_T *>(body), static_cast<size_t>(length)),
                          std::string(static_cast<INT8_T *>(again), static_cast<size_t>(again_length)));
            }
            delete_tavisys_basic_movie_ext_information(&decoded);
            safe_free(again);
            safe_free(body);
        }
}

TEST(ShareWork, ThreadsDoEachPieceOnceAndPassAFailureOn) {
    for (const size_t threads : {0U, 1U, 2U, 5U, 200U}) {
        std::array<std::atomic<int>, 100> done{};
        share_work(threads, done.size(), [&](size_t piece) { done[piece]++; });
        EXPECT_EQ(100, std::count(done.begin(), done.end(), 1)) << threads;
        EXPECT_THROW(share_work(threads, done.size(),
                                [](size_t piece) {
                                    if (piece == 7)
                                        throw std::bad_alloc();
                                }),
                     std::bad_alloc);
        share_work(threads, 0, [](size_t) { FAIL(); });
    }
}

// Movies share pieces of memory: a few that are left of many say so, and their copies lie among others.
TEST(Catalogue, AMovieThatKeepsMuchMemoryForItselfIsTold) {
    RANDOM_T random;
    const MOVIE_PTR model = random_movie(&random, 1);
    std::vector<MOVIE_PTR> movies(5000);
    std::generate(movies.begin(), movies.end(), [&] { return make_movie(*model->record, model->folder); });
    const auto is_told = [](const MOVIE_PTR &movie) { return movie->lies_among_gaps(); };
    EXPECT_EQ(0, std::count_if(movies.begin(), movies.end(), is_told));
    size_t number = 0;
    movies.erase(
        std::remove_if(movies.begin(), movies.end(), [&](const auto &) { return number++ % 8 != 0; }),
        movies.end());
    EXPECT_LT(200, std::count_if(movies.begin(), movies.end(), is_told));
    for (MOVIE_PTR &movie : movies)
        movie = make_movie(*movie->record, movie->folder);
    // The first of them lie in what was being filled when the others went.
    EXPECT_GT(100, std::count_if(movies.begin(), movies.end(), is_told));
    EXPECT_STREQ(model->record->info->movie_name_ch, movies.back()->record->info->movie_name_ch);
    EXPECT_EQ(model->folder, movies.back()->folder);
}

TEST(Catalogue, TakesScoresInTenths) {
    struct SCORE_T {
        const char *text;
        UINT32_T score;
    };
    for (const SCORE_T &c : {SCORE_T{"9.3", 93},
                             {"10", 100},
                             {"0", 0},
                             {"7.85", 79},
                             {"10.1", 0},
                             {"-1", 0},
                             {"", 0},
                             {"x", 0},
                             {"nan", 0},
                             {"inf", 0},
                             {"1e300", 0}}) {
        DBDATA_MOVIE_INFORMATION_T movie{};
        movie.imdbvalue = const_cast<INT8_T *>(c.text);
        EXPECT_EQ(c.score, score_of(movie)) << c.text;
    }
    EXPECT_EQ(0U, score_of(DBDATA_MOVIE_INFORMATION_T{}));
}
