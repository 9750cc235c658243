// How long the server takes to load a library, beside the time that an XML parser alone takes to read the
// same documents in the same run, how much memory, and how long a second scan takes when nothing has changed.
//
//     load_bench [DIR...] [--benchmark_...]
//
// DIR: library folders; without any, the folder that TAVISYS_DATA names, or else the sample library. Loading
// is everything from the start of the scan to the complete catalogue: walking the folders, reading, parsing,
// sorting. The floor is what a tree parser can't do without: reading each file, xmlReadMemory() and
// xmlFreeDoc(), on one thread. Counters:
//
//     ratio        the loading time over the floor's
//     cpu_ratio    the same of the time on processors, which a busy machine doesn't change
//     document_us  the loading time for one document; document_cpu_us its time on processors
//     memory       the most memory that loading took at any moment over the bytes of all strings that it kept
//     rescan       the time of the second scan over that of the first; rescan_cpu the same on processors
//     reparsed     documents that the second scan has parsed
#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <initializer_list>
#include <libxml/parser.h>
#include <malloc.h>
#include <span>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "documents.h"
#include "on_loan.h"
#include "scanner.h"
#include "store.h"

namespace {

constexpr int XML_OPTIONS = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// Time that has passed, and time on processors of all threads of this process; in seconds.
struct TIMES_T {
    double wall = 0;
    double cpu = 0;
    TIMES_T &operator+=(const TIMES_T &other) {
        wall += other.wall;
        cpu += other.cpu;
        return *this;
    }
};

template <class WORK>
TIMES_T times_of(WORK work) {
    const auto seconds = [](clockid_t clock) {
        timespec time{};
        clock_gettime(clock, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const TIMES_T begun{seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)};
    work();
    return {seconds(CLOCK_MONOTONIC) - begun.wall, seconds(CLOCK_PROCESS_CPUTIME_ID) - begun.cpu};
}

void parse_alone(const std::string &root, const server::LIBRARY_T &library) {
    server::DOCUMENT_READER_T reader(root);
    for (const server::DOCUMENT_T &document : library.documents) {
        server::SIGNATURE_T signature;
        if (reader.open(document, &signature) == nullptr && reader.read() == nullptr)
            xmlFreeDoc(xmlReadMemory(reader.data(), reader.length(), nullptr, nullptr, XML_OPTIONS));
    }
}

void wait_for_scans(const server::SCANNER_T &scanner, size_t scans) {
    while (scanner.scans() < scans)
        std::this_thread::sleep_for(std::chrono::microseconds(100)); // the scanner has no one to tell
}

// A number of this process's status, bytes.
double status_bytes(const char *name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(name))
            return atof(line.c_str() + strlen(name) + 1) * 1024;
    return 0;
}

// The bytes of all strings of a movie, terminators included.
class STRINGS_T {
public:
    explicit STRINGS_T(const server::MOVIE_T &movie) {
        const DBDATA_MOVIE_INFORMATION_T &record = *movie.record;
        const DBDATA_POSTER_INFORMATION_T &posters = *record.posters;
        add({record.info->movie_code, record.info->movie_name_ch, record.info->movie_name_en,
             record.imdbvalue, record.acronym, record.summary, record.description, record.ipaddr,
             record.hddevname, record.ptdevname, posters.big, posters.middle, posters.small,
             posters.relative_big_path, posters.relative_middle_path, posters.relative_small_path,
             posters.tv_big, posters.tv_middle, posters.tv_small});
        list(record.dimension_list, [](const auto &info) { return std::array{info.dimension}; });
        list(record.resolution_list, [](const auto &info) { return std::array{info.resolution}; });
        list(record.category_list, [](const auto &info) { return std::array{info.name}; });
        list(record.kind_list, [](const auto &info) { return std::array{info.name}; });
        list(record.area_list, [](const auto &info) { return std::array{info.name}; });
        list(record.director_list, [](const auto &info) { return std::array{info.code, info.name}; });
        list(record.actor_list, [](const auto &info) { return std::array{info.code, info.name}; });
        list(record.video_list, [](const auto &info) {
            return std::array{info.name, info.filepath, info.mp4, info.relative_mp4, info.relative_filepath};
        });
    }
    size_t bytes = 0;

private:
    void add(std::span<INT8_T *const> texts) {
        for (const INT8_T *text : texts)
            bytes += text == nullptr ? 0 : strlen(text) + 1;
    }
    void add(std::initializer_list<INT8_T *> texts) { add(std::span(texts.begin(), texts.size())); }
    template <class NODE, class TEXTS>
    void list(const NODE *list, TEXTS texts_of) {
        for (const NODE *node = list; node != nullptr; node = server::next_of(node))
            add(texts_of(*node->info));
    }
};

// What loading a library takes.
struct LOADING_T {
    TIMES_T first;
    TIMES_T second;
    size_t loaded = 0;
    size_t reparsed = 0;
    double memory = 0;

    explicit LOADING_T(const std::string &root) {
        malloc_trim(0);
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins anew: proc(5)
        const double before = status_bytes("VmRSS");
        server::STORE_T store;
        server::SCANNER_T scanner(root, "", std::max(1U, std::thread::hardware_concurrency()), &store);
        first = times_of([&] {
            scanner.start();
            wait_for_scans(scanner, 1);
        });
        const double peak = status_bytes("VmHWM") - before;
        const size_t parsed = scanner.parsed();
        second = times_of([&] {
            scanner.rescan();
            wait_for_scans(scanner, 2);
        });
        reparsed = scanner.parsed() - parsed;
        size_t strings = 0;
        for (const server::MOVIE_PTR &movie : store.snapshot()->movies())
            strings += STRINGS_T(*movie).bytes;
        memory = peak / static_cast<double>(strings);
        loaded = store.snapshot()->movies().size();
    }
};

// The scanner's progress is for a server's terminal.
class QUIET_T {
public:
    QUIET_T() : kept_(dup(STDERR_FILENO)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    QUIET_T(const QUIET_T &) = delete;
    QUIET_T &operator=(const QUIET_T &) = delete;
    ~QUIET_T() {
        dup2(kept_, STDERR_FILENO);
        close(kept_);
    }

private:
    int kept_;
};

void load_library(benchmark::State &state, const std::string &root) {
    const QUIET_T quiet;
    const std::atomic<bool> never = false;
    const server::LIBRARY_T library = server::find_documents(root, 1, never);
    if (library.documents.empty()) {
        state.SkipWithError("no documents in the folder");
        return;
    }
    TIMES_T floor;
    TIMES_T first;
    TIMES_T second;
    for (auto _ : state) {
        floor += times_of([&] { parse_alone(root, library); });
        const LOADING_T loading(root);
        first += loading.first;
        second += loading.second;
        state.SetIterationTime(loading.first.wall);
        state.counters["loaded"] = static_cast<double>(loading.loaded);
        state.counters["reparsed"] = static_cast<double>(loading.reparsed);
        state.counters["memory"] = loading.memory;
    }
    const auto documents = static_cast<double>(library.documents.size());
    const double scale = 1e6 / documents / static_cast<double>(state.iterations());
    state.counters["documents"] = documents;
    state.counters["ratio"] = first.wall / floor.wall;
    state.counters["cpu_ratio"] = first.cpu / floor.cpu;
    state.counters["document_us"] = first.wall * scale;
    state.counters["document_cpu_us"] = first.cpu * scale;
    state.counters["rescan"] = second.wall / first.wall;
    state.counters["rescan_cpu"] = second.cpu / first.cpu;
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<std::string> roots(argv + 1, argv + argc);
    if (const char *data = getenv("TAVISYS_DATA"); roots.empty() && data != nullptr)
        roots.emplace_back(data);
    if (roots.empty()) {
        puts("TAVISYS_DATA names no folder of movie documents: loading the sample library");
        roots.emplace_back(SAMPLE_LIBRARY);
    }
    for (const std::string &root : roots)
        benchmark::RegisterBenchmark(("load/" + root).c_str(), load_library, root)
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(3)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
