#include "client.h"

#include <algorithm>
#include <strings.h>
#include <utility>

namespace bench {

namespace {

constexpr int TRIES = 10; // for a movie that gets a new id again and again
constexpr size_t PAGES_OF_A_WALK = 30;
constexpr INT32_T LARGEST_PAGE = 1000;

// The decoder of the touch screens' form leaves out what has the code of a movie before it in the page.
bool repeats(const KNOWN_T &known, const PLACES_T &list, size_t begin, size_t at) {
    const std::string &code = known.movies[list[at]].code;
    for (size_t i = begin; i < at; i++)
        if (strcasecmp(known.movies[list[i]].code.c_str(), code.c_str()) == 0)
            return true;
    return false;
}

} // namespace

const std::array<const char *, QUESTIONS> NAME_OF_QUESTION = {
    "uuid",          "version",    "status", "system", "categories", "filters",     "page",
    "filtered page", "touch page", "detail", "poster", "disks",      "movie count", "transfer"};

template <class CALL>
RTSTATUS CLIENT_T::timed(QUESTION_E question, RTSTATUS want, CALL call) {
    const auto begun = CLOCK_T::now();
    const RTSTATUS result = call();
    const auto took = CLOCK_T::now() - begun;
    record_.times[question].add(took);
    if (want >= 0)
        check(result == want, question, "result " + std::to_string(result));
    if (took > most_)
        check(false, question, "took " + std::to_string(took / std::chrono::milliseconds(1)) + " ms");
    return result;
}

void CLIENT_T::check(bool right, QUESTION_E question, const std::string &what) {
    if (!right)
        failures_->add(std::string(NAME_OF_QUESTION[question]) + ": " + what);
}

void CLIENT_T::ask_something() {
    struct SHARE_T {
        unsigned per_10000;
        void (CLIENT_T::*ask)();
    };
    // A walk and a transfer send thousands of movies each.
    constexpr SHARE_T SHARES[] = {{400, &CLIENT_T::ask_uuid},        {400, &CLIENT_T::ask_version},
                                  {500, &CLIENT_T::ask_status},      {500, &CLIENT_T::ask_system},
                                  {400, &CLIENT_T::ask_categories},  {800, &CLIENT_T::ask_filters},
                                  {1700, &CLIENT_T::ask_page},       {1600, &CLIENT_T::ask_filtered_page},
                                  {800, &CLIENT_T::ask_touch_page},  {1890, &CLIENT_T::ask_detail},
                                  {500, &CLIENT_T::ask_poster},      {250, &CLIENT_T::ask_disks},
                                  {250, &CLIENT_T::ask_movie_count}, {5, &CLIENT_T::walk}};
    size_t draw = below(10000);
    for (const SHARE_T &share : SHARES) {
        if (draw < share.per_10000)
            return (this->*share.ask)();
        draw -= share.per_10000;
    }
    ask_transfer();
}

void CLIENT_T::ask_uuid() {
    INT8_T uuid[37] = "";
    timed(ASK_UUID, 0, [&] { return tavisysapi_get_uuid_infomation(uuid, sizeof uuid); });
    check(known_.uuid == uuid, ASK_UUID, uuid);
}

void CLIENT_T::ask_version() {
    VERSION_OUT_T out;
    timed(ASK_VERSION, 0, [&] { return tavisysapi_get_software_version_information(out.address()); });
    check(out.get() != nullptr && known_.uuid == text_or_empty(out->devid), ASK_VERSION, "another device");
}

// A scan counts up from nothing found; the documents stay as many as they were.
void CLIENT_T::ask_status() {
    STATUS_OUT_T out;
    if (timed(ASK_STATUS, 20, [&] { return tavisysapi_get_system_running_status(out.address()); }) != 20)
        return;
    const auto [all, loaded, failed] = known_.documents;
    const bool right = (out->total_movies == all || out->total_movies == 0) && out->parseok_movies >= 0 &&
                       out->left_movies >= 0 && out->parseok_movies <= all &&
                       out->parseok_movies + out->parseerr_movies + out->left_movies == out->total_movies &&
                       (out->status != SYSRUN_STATUS_RUNNING ||
                        (out->parseok_movies == loaded && out->parseerr_movies == failed));
    check(right, ASK_STATUS,
          "found " + std::to_string(out->total_movies) + ", loaded " + std::to_string(out->parseok_movies) +
              ", failed " + std::to_string(out->parseerr_movies) + ", left " +
              std::to_string(out->left_movies));
}

void CLIENT_T::ask_system() {
    SYSTEM_OUT_T out;
    if (timed(ASK_SYSTEM, 0, [&] { return tavisysapi_get_system_information(out.address()); }) == 0)
        check(out->hdnum == known_.disks && out->movnum == known_.documents[1], ASK_SYSTEM,
              std::to_string(out->movnum) + " movies");
}

void CLIENT_T::ask_categories() {
    CATEGORIES_OUT_T out;
    timed(ASK_CATEGORIES, 0, [&] { return tavisysapi_get_category_information_list(out.address()); });
    check(text_of(out.get()) == known_.category_list, ASK_CATEGORIES, text_of(out.get()));
}

void CLIENT_T::ask_filters() {
    FILTERS_OUT_T out;
    const INT32_T category = known_.categories[below(known_.categories.size())];
    const auto type = static_cast<INT32_T>(1 + below(TP_FILTER_TYPE_DIMENSION));
    timed(ASK_FILTERS, 0,
          [&] { return tavisysapi_get_movie_filter_information_list(category, type, out.address()); });
    check(text_of(out.get()) == known_.filters.at({category, type}), ASK_FILTERS, text_of(out.get()));
}

PAGE_REQUEST_T CLIENT_T::some_page(KNOWN_T::LIST_KEY_T key, const PLACES_T **list) {
    constexpr INT32_T SIZES[] = {1, 7, 20, 20, 20, 50, 100};
    const auto [category, type, value] = key;
    const size_t order = below(ORDERS);
    *list = &known_.lists.at(key)[order];
    const INT32_T size = SIZES[below(std::size(SIZES))];
    const size_t pages = (*list)->size() / static_cast<size_t>(size) + 2; // at times the one behind the last
    PAGE_REQUEST_T request{
        category, 0, 0, 0, 0, static_cast<INT32_T>(1 + below(pages)), size, static_cast<INT32_T>(order)};
    INT32_T *const filters[] = {&request.tid, &request.tid, &request.aid, &request.yid, &request.did};
    *filters[type] = value;
    return request;
}

void CLIENT_T::ask_page() {
    const PLACES_T *list = nullptr;
    const INT32_T category = known_.categories[below(known_.categories.size())];
    const PAGE_REQUEST_T request = some_page({category, 0, 0}, &list);
    check_page(ASK_PAGE, request, *list);
}

// Of one value; and, every other time, of a year among its movies as well.
void CLIENT_T::ask_filtered_page() {
    const PLACES_T *list = nullptr;
    PAGE_REQUEST_T request = some_page(known_.keys[below(known_.keys.size())], &list);
    if (request.yid != 0 || list->empty() || below(2) == 0)
        return check_page(ASK_FILTERED_PAGE, request, *list);
    request.yid = known_.movies[(*list)[below(list->size())]].year();
    if (request.yid == 0)
        return;
    PLACES_T narrowed;
    std::copy_if(list->begin(), list->end(), std::back_inserter(narrowed),
                 [&](size_t place) { return known_.years[place] == request.yid; });
    request.pagenum = 1;
    check_page(ASK_FILTERED_PAGE, request, narrowed);
}

void CLIENT_T::ask_touch_page() {
    const PLACES_T *list = nullptr;
    const PAGE_REQUEST_T request = some_page({0, 0, 0}, &list);
    check_page(ASK_TOUCH_PAGE, request, *list);
}

// Every page of a list in turn: with each page right, no movie is missing and none comes twice.
void CLIENT_T::walk() {
    const auto key = known_.keys[below(known_.keys.size())];
    const PLACES_T *list = nullptr;
    PAGE_REQUEST_T request = some_page(below(2) == 0 ? key : KNOWN_T::LIST_KEY_T{0, 0, 0}, &list);
    const auto even = static_cast<INT32_T>(list->size() / PAGES_OF_A_WALK + 1);
    request.pagesize = std::min(LARGEST_PAGE, std::max(request.pagesize, even));
    const auto pages = static_cast<INT32_T>((list->size() + static_cast<size_t>(request.pagesize) - 1) /
                                            static_cast<size_t>(request.pagesize));
    for (request.pagenum = 1; request.pagenum <= pages; request.pagenum++)
        check_page(ASK_PAGE, request, *list);
    record_.walks++;
}

void CLIENT_T::check_page(QUESTION_E question, const PAGE_REQUEST_T &request, const PLACES_T &list) {
    PAGE_OUT_T out;
    const auto call = question == ASK_TOUCH_PAGE ? touchscreen_get_movie_basic_ext_information
                                                 : tavisysapi_get_movie_basic_ext_information;
    if (timed(question, 0, [&] { return call(&request, out.address()); }) != 0)
        return;
    const auto total = static_cast<INT32_T>(list.size());
    const TP_PAGE_INFORMATION &info = out->pageinfo;
    const INT32_T pages = (total + request.pagesize - 1) / request.pagesize;
    check(info.pagenum == request.pagenum && info.pagesize == request.pagesize && info.totalpages == pages &&
              info.totalmovies == total,
          question, std::to_string(info.totalmovies) + " movies instead of " + std::to_string(total));
    check_movies(question, request, list, *out.get());
}

void CLIENT_T::check_movies(QUESTION_E question, const PAGE_REQUEST_T &request, const PLACES_T &list,
                            const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page) {
    const size_t begin = std::min(list.size(), static_cast<size_t>(request.pagenum - 1) *
                                                   static_cast<size_t>(request.pagesize));
    const size_t end = std::min(list.size(), begin + static_cast<size_t>(request.pagesize));
    size_t at = begin;
    for_each_node(page.list, [&](const auto &node) {
        while (question == ASK_TOUCH_PAGE && at < end && repeats(known_, list, begin, at))
            at++;
        if (at >= end)
            return check(false, question, "more movies than there are");
        const MOVIE_T &want = known_.movies[list[at]];
        const MOVIE_T got = movie_of(*node.info);
        const bool right =
            same_movie(want, got) && (want.rewritten || want.id == got.id) &&
            node.info->index == static_cast<INT32_T>(at + 1) &&
            (question != ASK_TOUCH_PAGE || (got.videos == want.videos && got.duration == want.duration));
        if (!right)
            check(false, question,
                  got.code + ' ' + std::to_string(got.id) + " in the place of " + want.code + ' ' +
                      std::to_string(want.id));
        at++;
    });
    while (question == ASK_TOUCH_PAGE && at < end && repeats(known_, list, begin, at))
        at++;
    check(at == end && page.pageinfo.replymovies == static_cast<INT32_T>(end - begin), question,
          "movies are missing from a page");
}

// Of a movie whose document is rewritten only its place is known for sure.
INT32_T CLIENT_T::id_of(size_t place) {
    const MOVIE_T &movie = known_.movies[place];
    if (!movie.rewritten)
        return movie.id;
    const PLACES_T &list = known_.lists.at({0, 0, 0})[TP_ORDER_BY_PUT_TIME];
    const auto at = static_cast<INT32_T>(std::find(list.begin(), list.end(), place) - list.begin());
    const PAGE_REQUEST_T request{0, 0, 0, 0, 0, at + 1, 1, TP_ORDER_BY_PUT_TIME};
    PAGE_OUT_T out;
    if (timed(ASK_PAGE, 0,
              [&] { return tavisysapi_get_movie_basic_ext_information(&request, out.address()); }) != 0)
        return -1;
    check_movies(ASK_PAGE, request, list, *out.get());
    return out->list == nullptr ? -1 : out->list->info->movid;
}

void CLIENT_T::ask_detail() {
    const size_t place = below(known_.movies.size());
    const MOVIE_T &movie = known_.movies[place];
    for (int tries = 0; tries < TRIES; tries++) {
        DETAIL_OUT_T out;
        const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T request{
            below(2) == 0 ? 0 : movie.category(), id_of(place)};
        const RTSTATUS result = timed(ASK_DETAIL, movie.rewritten ? -1 : 0, [&] {
            return tavisysapi_get_movie_detail_information(&request, out.address());
        });
        if (result == 0)
            return check_detail(movie, *out.get());
        if (!movie.rewritten || result != TAVISYS_RESULT_NO_SUCH_MOVIE)
            return check(!movie.rewritten, ASK_DETAIL, "result " + std::to_string(result));
        record_.asked_again++;
    }
    check(false, ASK_DETAIL, movie.code + " has a new id each time");
}

void CLIENT_T::check_detail(const MOVIE_T &movie, const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &detail) {
    constexpr INT32_T YEAR_OF_DATE = 10000; // a date is YYYYMMDD
    check(text_or_empty(detail.name) == movie.name && text_or_empty(detail.poster) == movie.poster &&
              detail.year == movie.numbers[2] / YEAR_OF_DATE,
          ASK_DETAIL, text_or_empty(detail.name) + " for " + movie.name);
    check(detail.duration_info != nullptr &&
              text_or_empty(detail.duration_info->value) == std::to_string(movie.duration) + "分钟",
          ASK_DETAIL, movie.name + " has another duration");
    INT32_T videos = 0;
    for_each_node(detail.video_list, [&](const auto &) { videos++; });
    check(videos == movie.videos && detail.videos == videos, ASK_DETAIL, movie.name + " has other videos");
}

void CLIENT_T::ask_poster() {
    INT8_T path[4096] = "";
    if (known_.posters.empty())
        return;
    timed(ASK_POSTER, 0, [&] { return tavisysapi_random_get_movie_poster(path, sizeof path - 1); });
    check(known_.posters.count(path) > 0, ASK_POSTER, path);
}

void CLIENT_T::ask_disks() {
    DISKS_OUT_T out;
    const RTSTATUS length = timed(ASK_DISKS, -1, [&] {
        return tavisysapi_get_vod_harddisk_information(TAVISYS_LOCAL_SERVER_ADDRESS, out.address());
    });
    check(length > 0 && text_of(out.get()) == known_.disk_list, ASK_DISKS, text_of(out.get()));
}

void CLIENT_T::ask_movie_count() {
    const PARTITION_T &partition = known_.partitions[below(known_.partitions.size())];
    INT32_T movies = -1;
    timed(ASK_MOVIE_COUNT, 0, [&] {
        return tavisysapi_get_movies_from_server(TAVISYS_LOCAL_SERVER_ADDRESS, partition.disk.c_str(),
                                                 partition.name.c_str(), &movies);
    });
    check(movies == partition.movies, ASK_MOVIE_COUNT, std::to_string(movies) + " movies");
}

void CLIENT_T::ask_transfer() {
    const PARTITION_T &partition = known_.partitions[below(known_.partitions.size())];
    TRANSFER_OUT_T out;
    const RTSTATUS length = timed(ASK_TRANSFER, -1, [&] {
        return tavisysapi_get_movie_metadata_from_server(TAVISYS_LOCAL_SERVER_ADDRESS, partition.disk.c_str(),
                                                         partition.name.c_str(), out.address());
    });
    check(length > 0 && codes_of(out.get()) == partition.codes, ASK_TRANSFER,
          "result " + std::to_string(length) + " from " + partition.name);
}

} // namespace bench
