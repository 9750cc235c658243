// What a query costs inside the server, from the request to the encoded body without the socket, beside the
// same query to SQLite in memory in the same run.
//
//     query_bench [MOVIES...] [--benchmark_...]
//
// MOVIES: sizes of the catalogue; without any, that of the library and 1,000,000. A catalogue larger than the
// library, which is the folder that TAVISYS_DATA names or else the sample library, holds copies of its
// movies under other codes and titles. All queries are about its largest category.
//
// Counters: `us` for one query, `sqlite_us` for the same by SQLite, `ratio` the second over the first: how
// many times faster the server is. Each benchmark goes through requests of its kind in turn, and both
// sides must give the same bodies for all of them, which is checked before the time is taken.
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "on_loan.h"
#include "replies.h"
#include "scanner.h"
#include "sqlite_catalogue.h"

namespace {

using bench::PAGE_REQUEST_T;

constexpr size_t REQUESTS = 512; // of each kind
constexpr int32_t PAGE_SIZE = 24;
constexpr INT32_T ORDER = TP_ORDER_BY_PUT_TIME; // one order is like the other
constexpr size_t MANY = 1000000;

std::string ask(INT32_T type, const void *request, INT32_T length) {
    PVOID body = nullptr;
    INT32_T size = 0;
    if (server::handle_request(type, const_cast<PVOID>(request), length, &body, &size) < 0)
        abort();
    std::string result(static_cast<INT8_T *>(body), static_cast<size_t>(size));
    safe_free(body);
    return result;
}

// What a worker of the server does with a request.
template <class REQUEST>
void ask_in_passing(INT32_T type, const REQUEST *request) {
    PVOID body = nullptr;
    INT32_T size = 0;
    server::handle_request(type, const_cast<REQUEST *>(request), request == nullptr ? 0 : sizeof *request,
                           &body, &size);
    benchmark::DoNotOptimize(body);
    safe_free(body);
}

std::vector<server::MOVIE_PTR> load(const std::string &root) {
    server::STORE_T store;
    server::SCANNER_T scanner(root, "", std::thread::hardware_concurrency(), &store);
    scanner.start();
    while (store.status().status != SYSRUN_STATUS_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // the scanner has no one to tell
    return store.snapshot()->movies();
}

server::MOVIE_PTR copy_of(const server::MOVIE_T &movie, size_t number) {
    DBDATA_MOVIE_INFORMATION_T record = *movie.record;
    const std::string code = std::string(record.info->movie_code) + "-" + std::to_string(number);
    const std::string name = std::string(record.info->movie_name_ch) + " " + std::to_string(number);
    DBDATA_BASIC_MOVIE_INFORMATION_T basic{server::on_loan(code.c_str()), server::on_loan(name.c_str()),
                                           record.info->movie_name_en};
    record.info = &basic;
    record.id = static_cast<INT32_T>(number);
    return server::make_movie(record, movie.folder);
}

INT32_T largest_category(const server::CATALOGUE_T &catalogue) {
    INT32_T largest = server::ALL_CATEGORIES;
    uint32_t movies = 0;
    for (const auto &[id, category] : catalogue.categories())
        if (id != server::ALL_CATEGORIES && category.sorted.movies > movies) {
            largest = id;
            movies = category.sorted.movies;
        }
    return largest;
}

template <class NODE>
INT32_T last_id(const NODE *list) { // the first means all
    INT32_T id = server::NO_FILTER;
    for (const NODE *node = list; node != nullptr; node = server::next_of(node))
        id = node->info->id;
    return id;
}

// A catalogue of a certain size, and the same in SQLite.
class WORLD_T {
public:
    WORLD_T(const std::vector<server::MOVIE_PTR> &library, size_t size) {
        std::vector<server::MOVIE_PTR> movies;
        movies.reserve(size);
        for (size_t i = 0; i < size; i++)
            movies.push_back(copy_of(*library[i % library.size()], i + 1));
        const auto count = static_cast<UINT32_T>(size);
        const server::DISK_T disk{"sda", "serial", {{"sda1", "uuid", "/", {count, count, 0}}}};
        store_.publish(std::make_shared<const server::CATALOGUE_T>(std::move(movies), std::span(&disk, 1)));
        server::answer_from(&store_, &identity_);
        cid_ = largest_category(*catalogue());
        sqlite_ = std::make_unique<bench::SQLITE_CATALOGUE_T>(ask, cid_, ORDER);
        for (const server::MOVIE_PTR &movie : catalogue()->movies())
            if (server::category_id_of(*movie->record) == cid_)
                movies_.push_back(movie.get());
    }
    server::SNAPSHOT_PTR catalogue() const { return store_.snapshot(); }
    bench::SQLITE_CATALOGUE_T &sqlite() { return *sqlite_; }
    INT32_T cid() const { return cid_; }
    size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }
    // A movie of the category.
    const DBDATA_MOVIE_INFORMATION_T &any() { return *movies_[below(movies_.size())]->record; }

private:
    const server::IDENTITY_T identity_{"", "", ""};
    server::STORE_T store_;
    INT32_T cid_ = 0;
    std::unique_ptr<bench::SQLITE_CATALOGUE_T> sqlite_;
    std::vector<const server::MOVIE_T *> movies_;
    std::mt19937 random_{20261121}; // NOLINT(cert-msc51-cpp): the same requests every time
};

// Those of one size at a time: the benchmarks run in the order of the sizes.
WORLD_T &world_of(size_t size) {
    static std::vector<server::MOVIE_PTR> library;
    static std::unique_ptr<WORLD_T> world;
    static size_t current = 0;
    if (library.empty()) {
        const char *data = getenv("TAVISYS_DATA");
        library = load(data == nullptr ? SAMPLE_LIBRARY : data);
    }
    if (size == 0)
        size = library.size();
    if (current != size) {
        world.reset();
        world = std::make_unique<WORLD_T>(library, size);
        current = size;
    }
    return *world;
}

// This thread's time on a processor: what else the machine does is not in it.
double seconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Takes both sides' times in turns.
template <class REQUESTS_OF_KIND, class OURS, class THEIRS>
void measure(benchmark::State &state, const REQUESTS_OF_KIND &requests, OURS ours, THEIRS theirs) {
    constexpr size_t TURN = 32;
    double spent = 0;
    double spent_by_sqlite = 0;
    size_t at = 0;
    for (auto _ : state) {
        const double begun = seconds();
        for (size_t i = 0; i < TURN; i++)
            ours(requests[(at + i) % requests.size()]);
        const double between = seconds();
        for (size_t i = 0; i < TURN; i++)
            theirs(requests[(at + i) % requests.size()]);
        spent_by_sqlite += seconds() - between;
        spent += between - begun;
        at += TURN;
        state.SetIterationTime(between - begun);
    }
    const double scale = 1e6 / static_cast<double>(static_cast<size_t>(state.iterations()) * TURN);
    state.counters["us"] = spent * scale;
    state.counters["sqlite_us"] = spent_by_sqlite * scale;
    state.counters["ratio"] = spent_by_sqlite / spent;
}

struct PAGE_KIND_T {
    const char *name;
    bool kind, area, year, dimension;
    bool deep;
};
constexpr PAGE_KIND_T PAGES[] = {
    {"page/category", false, false, false, false, false},
    {"page/category_deep", false, false, false, false, true},
    {"page/kind", true, false, false, false, false},
    {"page/kind_deep", true, false, false, false, true},
    {"page/area", false, true, false, false, false},
    {"page/year", false, false, true, false, false},
    {"page/dimension", false, false, false, true, false},
    {"page/kind_area", true, true, false, false, false},
    {"page/kind_year", true, false, true, false, false},
    {"page/area_year", false, true, true, false, false},
    {"page/kind_dimension", true, false, false, true, false},
    {"page/all_filters", true, true, true, true, false},
};

PAGE_REQUEST_T page_request(WORLD_T *world, const PAGE_KIND_T &kind) {
    const DBDATA_MOVIE_INFORMATION_T &movie = world->any(); // so that there is one at least
    PAGE_REQUEST_T request{world->cid(), 0, 0, 0, 0, 1, PAGE_SIZE, ORDER};
    request.tid = kind.kind ? last_id(movie.kind_list) : server::NO_FILTER;
    request.aid = kind.area ? last_id(movie.area_list) : server::NO_FILTER;
    request.yid = kind.year ? last_id(movie.year_list) : server::NO_FILTER;
    request.did = kind.dimension ? last_id(movie.dimension_list) : server::NO_FILTER;
    const INT32_T total = world->catalogue()->page(request).total;
    const INT32_T pages = (total + PAGE_SIZE - 1) / PAGE_SIZE;
    constexpr INT32_T FIRST_PAGES = 5; // where people look
    request.pagenum = 1 + static_cast<INT32_T>(world->below(
                              static_cast<size_t>(kind.deep ? pages : std::min(pages, FIRST_PAGES))));
    return request;
}

bool selects_something(const PAGE_REQUEST_T &request, const PAGE_KIND_T &kind) {
    return (!kind.kind || request.tid > 1) && (!kind.area || request.aid > 1);
}

void query_pages(benchmark::State &state, size_t size, const PAGE_KIND_T &kind) {
    WORLD_T &world = world_of(size);
    std::vector<PAGE_REQUEST_T> requests;
    // SQLite takes its time over those with several filters.
    const size_t count = kind.kind + kind.area + kind.year + kind.dimension > 1 ? REQUESTS / 8 : REQUESTS;
    while (requests.size() < count)
        if (const PAGE_REQUEST_T request = page_request(&world, kind); selects_something(request, kind))
            requests.push_back(request);
    for (const PAGE_REQUEST_T &request : requests)
        if (ask(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &request, sizeof request) !=
            world.sqlite().page(request))
            return state.SkipWithError("SQLite gives another page");
    measure(
        state, requests,
        [](const auto &request) { ask_in_passing(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &request); },
        [&](const auto &request) { benchmark::DoNotOptimize(world.sqlite().page(request)); });
}

void query_details(benchmark::State &state, size_t size) {
    WORLD_T &world = world_of(size);
    std::vector<TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T> requests;
    while (requests.size() < REQUESTS)
        requests.push_back({world.cid(), world.any().id});
    for (const auto &request : requests)
        if (ask(TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, &request, sizeof request) !=
            world.sqlite().detail(request.mid))
            return state.SkipWithError("SQLite gives another movie");
    measure(
        state, requests,
        [](const auto &request) { ask_in_passing(TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, &request); },
        [&](const auto &request) { benchmark::DoNotOptimize(world.sqlite().detail(request.mid)); });
}

void query_filters(benchmark::State &state, size_t size) {
    WORLD_T &world = world_of(size);
    std::vector<TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T> requests;
    for (const auto type :
         {TP_FILTER_TYPE_KIND, TP_FILTER_TYPE_AREA, TP_FILTER_TYPE_YEAR, TP_FILTER_TYPE_DIMENSION})
        requests.push_back({type, world.cid()});
    for (const auto &request : requests)
        if (ask(TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, &request, sizeof request) !=
            world.sqlite().filter_list(request.type))
            return state.SkipWithError("SQLite gives another list");
    measure(
        state, requests,
        [](const auto &request) { ask_in_passing(TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, &request); },
        [&](const auto &request) { benchmark::DoNotOptimize(world.sqlite().filter_list(request.type)); });
}

void query_categories(benchmark::State &state, size_t size) {
    WORLD_T &world = world_of(size);
    if (ask(TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, nullptr, 0) != world.sqlite().category_list())
        return state.SkipWithError("SQLite gives another list");
    measure(
        state, std::vector<int>(1),
        [](int) { ask_in_passing<char>(TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, nullptr); },
        [&](int) { benchmark::DoNotOptimize(world.sqlite().category_list()); });
}

// SQLite is told the numbers of the posters, as many as the server draws on its own.
void query_posters(benchmark::State &state, size_t size) {
    WORLD_T &world = world_of(size);
    std::set<std::string> posters;
    for (const auto position : world.catalogue()->with_poster())
        posters.insert(std::string(world.catalogue()->movies()[position]->folder) + "/" +
                       world.catalogue()->movies()[position]->record->posters->big);
    std::vector<int64_t> numbers(size_t{128} * REQUESTS);
    for (int64_t &number : numbers)
        number = 1 + static_cast<int64_t>(world.below(static_cast<size_t>(world.sqlite().posters())));
    for (size_t i = 0; i < REQUESTS; i++)
        if (!posters.contains(ask(TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO, nullptr, 0)) ||
            !posters.contains(world.sqlite().poster(numbers[i])))
            return state.SkipWithError("no poster of the catalogue");
    measure(
        state, numbers,
        [](int64_t) { ask_in_passing<char>(TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO, nullptr); },
        [&](int64_t number) { benchmark::DoNotOptimize(world.sqlite().poster(number)); });
}

template <class RUN>
void add(const std::string &name, size_t size, RUN run) {
    benchmark::RegisterBenchmark((name + "/" + (size == 0 ? "library" : std::to_string(size))).c_str(), run)
        ->UseManualTime()
        ->MinTime(0.02)
        ->Repetitions(5)
        ->ReportAggregatesOnly()
        ->Unit(benchmark::kMicrosecond);
}

void add_all(size_t size) {
    for (const PAGE_KIND_T &kind : PAGES)
        add(kind.name, size, [size, &kind](benchmark::State &state) { query_pages(state, size, kind); });
    add("detail", size, [size](benchmark::State &state) { query_details(state, size); });
    add("filter_list", size, [size](benchmark::State &state) { query_filters(state, size); });
    add("category_list", size, [size](benchmark::State &state) { query_categories(state, size); });
    add("random_poster", size, [size](benchmark::State &state) { query_posters(state, size); });
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (getenv("TAVISYS_DATA") == nullptr)
        puts("TAVISYS_DATA names no folder of movie documents: asking for the movies of the sample library");
    std::vector<size_t> sizes;
    for (int i = 1; i < argc; i++)
        sizes.push_back(strtoul(argv[i], nullptr, 10));
    if (sizes.empty())
        sizes = {0, MANY}; // 0: as many as there are
    for (const size_t size : sizes)
        add_all(size);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
