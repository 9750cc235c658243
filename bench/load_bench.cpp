// How long the server takes to load a library, beside the time that the XML parser alone takes over the
// same documents in the same run.
//
//     load_bench [DIR...] [--benchmark_...]
//
// DIR: library folders; without any, the folder that TAVISYS_DATA names, or else the sample library.
// Counters: `ratio` is the loading time over that of xmlReadMemory() and xmlFreeDoc(), one thread, files
// read beforehand; `document_us` the loading time for one document. Loading is everything from the
// start of the scan to the complete catalogue: walking the folders, reading, parsing, sorting.
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <libxml/parser.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "documents.h"
#include "scanner.h"
#include "store.h"

namespace {

using CLOCK_T = std::chrono::steady_clock;
using SECONDS_T = std::chrono::duration<double>;

constexpr int XML_OPTIONS = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// The floor: what a tree parser can't do without.
double parse_alone(const std::string &root, const server::LIBRARY_T &library) {
    CLOCK_T::duration spent{};
    server::DOCUMENT_READER_T reader(root);
    for (const server::DOCUMENT_T &document : library.documents) {
        server::SIGNATURE_T signature;
        if (reader.open(document, &signature) != nullptr || reader.read() != nullptr)
            continue;
        const auto begun = CLOCK_T::now();
        xmlFreeDoc(xmlReadMemory(reader.data(), reader.length(), nullptr, nullptr, XML_OPTIONS));
        spent += CLOCK_T::now() - begun;
    }
    return SECONDS_T(spent).count();
}

double load(const std::string &root, size_t *loaded) {
    server::STORE_T store;
    server::SCANNER_T scanner(root, "", std::thread::hardware_concurrency(), &store);
    const auto begun = CLOCK_T::now();
    scanner.start();
    while (store.status().status != SYSRUN_STATUS_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the server has no one to tell
    const double spent = SECONDS_T(CLOCK_T::now() - begun).count();
    *loaded = store.snapshot()->movies().size();
    return spent;
}

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
    double floor = 0;
    double spent = 0;
    size_t loaded = 0;
    for (auto _ : state) {
        floor += parse_alone(root, library);
        const double once = load(root, &loaded);
        spent += once;
        state.SetIterationTime(once);
    }
    const auto documents = static_cast<double>(library.documents.size());
    state.counters["documents"] = documents;
    state.counters["loaded"] = static_cast<double>(loaded);
    state.counters["ratio"] = spent / floor;
    state.counters["document_us"] = spent / documents / static_cast<double>(state.iterations()) * 1e6;
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
