// What encoding and decoding costs, beside a floor and beside other codecs, in the same run.
//
//     codec_bench [--benchmark_...]
//
// The records come from the folder that TAVISYS_DATA names, or else from the sample library: a page of 24
// movies, a transfer list of 10,000, a movie in detail, a list of hard disks. Encoding makes one fresh body
// of the records; decoding makes of a body the records again, each string an allocation of its own, and
// frees them. Every round takes each codec in turn, so that what disturbs the machine disturbs all.
// Counters: for each codec its time over that of the floor, and `floor_us`, the floor's own time.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

#include "codecs.h"
#include "corpus.h"

namespace {

using namespace bench;

constexpr double BATCH = 0.003;  // seconds of one codec's turn, about
constexpr size_t MOVIES = 10000; // in the transfer list
constexpr int ROUNDS = 5;
constexpr int REPETITIONS = 3;
constexpr size_t LIBRARY = 0; // places in codecs()
constexpr size_t FLOOR = 1;

// Of this thread: others on the machine don't count.
double cpu_seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double time_of(const std::function<void()> &work, int times) {
    const double begun = cpu_seconds();
    for (int i = 0; i < times; i++)
        work();
    return (cpu_seconds() - begun) / times;
}

// A large allocation makes the C library join the small blocks that were freed before, so that nobody does
// it for the one whose turn was before.
void settle_heap() {
    void *large = malloc(size_t{1} << 20);
    benchmark::DoNotOptimize(large);
    free(large);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct CONTENDER_T {
    std::string name;
    std::function<void()> work;
    int batch = 1;
    double spent = 0;             // in this round
    std::vector<double> ratios{}; // to the floor, one of each round
};

void measure(benchmark::State &state, std::vector<CONTENDER_T> contenders) {
    for (CONTENDER_T &contender : contenders)
        contender.batch = std::max(1, static_cast<int>(BATCH / time_of(contender.work, 2)));
    std::vector<double> floors;
    size_t first = 0; // everyone has each place in turn
    for (auto _ : state) {
        for (size_t i = 0; i < contenders.size(); i++) {
            CONTENDER_T &contender = contenders[(first + i) % contenders.size()];
            contender.work();
            settle_heap();
            contender.spent = time_of(contender.work, contender.batch);
        }
        first++;
        for (CONTENDER_T &contender : contenders)
            contender.ratios.push_back(contender.spent / contenders[FLOOR].spent);
        floors.push_back(contenders[FLOOR].spent);
        state.SetIterationTime(contenders[LIBRARY].spent);
    }
    for (const CONTENDER_T &contender : contenders)
        state.counters[contender.name] = median(contender.ratios);
    state.counters["floor_us"] = median(floors) * 1e6;
}

template <class RECORD>
bool survives(const CODEC_T<RECORD> &codec, const RECORD &record, const BODY_T &body) {
    RECORD *decoded = codec.decode(body);
    const bool same = decoded != nullptr && are_equal(record, *decoded);
    codec.release(&decoded);
    return same;
}

void add(const std::string &name, std::vector<CONTENDER_T> contenders) {
    benchmark::RegisterBenchmark(name.c_str(), [contenders = std::move(contenders)](
                                                   benchmark::State &state) { measure(state, contenders); })
        ->UseManualTime()
        ->Iterations(ROUNDS)
        ->Repetitions(REPETITIONS)
        ->ReportAggregatesOnly()
        ->Unit(benchmark::kMicrosecond);
}

template <class RECORD>
void compare(const std::string &name, const RECORD *record) {
    // The bodies stay until the end.
    auto &bodies = *new std::vector<BODY_T>;
    std::vector<CONTENDER_T> encoders;
    std::vector<CONTENDER_T> decoders;
    const BODY_T known = library_codec<RECORD>().encode(*record, 0);
    const auto all = codecs<RECORD>();
    bodies.reserve(all.size());
    for (const CODEC_T<RECORD> &codec : all) {
        const size_t length = known.length();
        const BODY_T &body = bodies.emplace_back(codec.encode(*record, length));
        printf("%-8s %-12s %zu bytes\n", name.c_str(), codec.name, body.length());
        if (!survives(codec, *record, body)) {
            fprintf(stderr, "%s: what %s decodes is not what was encoded\n", name.c_str(), codec.name);
            exit(EXIT_FAILURE);
        }
        encoders.push_back({codec.name, [codec, record, length] {
                                benchmark::DoNotOptimize(codec.encode(*record, length).data());
                            }});
        decoders.push_back({codec.name, [codec, &body] {
                                RECORD *decoded = codec.decode(body);
                                benchmark::DoNotOptimize(decoded);
                                codec.release(&decoded);
                            }});
    }
    if (const BODY_T &by_hand = bodies[FLOOR];
        by_hand.length() != known.length() || memcmp(by_hand.data(), known.data(), known.length()) != 0) {
        fprintf(stderr, "%s: the floor's body is not the library's\n", name.c_str());
        exit(EXIT_FAILURE);
    }
    add("encode/" + name, std::move(encoders));
    add("decode/" + name, std::move(decoders));
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    server::STORE_T store;
    load(library_folder(), &store);
    const CORPUS_T corpus = make_corpus(store, MOVIES);
    store.publish(std::make_shared<const server::CATALOGUE_T>(std::vector<server::MOVIE_PTR>{},
                                                              std::span<const server::DISK_T>{}));
    compare("page", corpus.page);
    compare("transfer", corpus.movies);
    compare("detail", corpus.detail);
    compare("disks", corpus.disks);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
