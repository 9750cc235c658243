// What an exchange costs on the loopback, beside raw sockets and other transports, in the same run.
//
//     exchange_bench [--benchmark_...]
//
// Every transport has as many client threads and as many server threads: "version" has a small reply, "page"
// one of 24 movies. All but floor and channel answer from prepared records, encoded for each reply and
// decoded for each client.
//     channel    the library's, each exchange with a connection of its own, the same bytes as the floor
//     agent      the library's agent calls over it, encoding and decoding
//     floor      raw sockets, the same bytes: connect, one send, receive, close; nothing encoded or decoded
//     grpc       protobuf on a kept connection
//     http       HTTP/1.1 and JSON, a connection for each exchange
//     http_kept  the same on a kept connection
// Every round takes each transport in turn, in an order of its own: what went before leaves processors and
// caches in a state that may suit the next one or not. Counters, for each transport: exchanges per second
// over those of the floor, and as NAME_p99 its 99th percentile of latency over the floor's; of the floor
// itself `floor_per_s`, `floor_p50_us`, `floor_p99_us`. Port 40001 must be free.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "corpus.h"
#include "transports.h"

namespace {

using namespace bench;
using CLOCK_T = std::chrono::steady_clock;

// Short turns: what disturbs the machine for a second disturbs all.
constexpr auto TURN = std::chrono::milliseconds(50); // of one transport in a round
constexpr int ROUNDS = 60;
constexpr int REPETITIONS = 3;

// What a transport did in all its turns of a repetition.
struct FIGURES_T {
    double seconds = 0;
    std::vector<double> spent{}; // by each exchange
    double per_second() const { return static_cast<double>(spent.size()) / seconds; }
    double part(size_t percent) {
        std::sort(spent.begin(), spent.end());
        return spent[spent.size() * percent / 100];
    }
};

[[noreturn]] void fail(const char *name) {
    fprintf(stderr, "%s: an exchange failed\n", name);
    exit(EXIT_FAILURE);
}

// One client: exchanges until the time is up.
void run_client(TRANSPORT_T &transport, CLIENT_T &client, QUESTION_T question, CLOCK_T::time_point end,
                std::vector<double> *spent) {
    for (auto begun = CLOCK_T::now(); begun < end;) {
        if (!client.exchange(question))
            fail(transport.name());
        const auto done = CLOCK_T::now();
        spent->push_back(std::chrono::duration<double>(done - begun).count());
        begun = done;
    }
}

void take_turn(TRANSPORT_T &transport, QUESTION_T question, int clients, FIGURES_T *figures) {
    std::vector<std::unique_ptr<CLIENT_T>> connected;
    for (int i = 0; i < clients; i++) {
        connected.push_back(transport.connect());
        if (!connected.back()->exchange(question)) // a kept connection is there before the clock runs
            fail(transport.name());
    }
    std::vector<std::vector<double>> spent(connected.size());
    std::vector<std::thread> threads;
    const auto begun = CLOCK_T::now();
    for (size_t i = 0; i < connected.size(); i++)
        threads.emplace_back(run_client, std::ref(transport), std::ref(*connected[i]), question, begun + TURN,
                             &spent[i]);
    for (std::thread &thread : threads)
        thread.join();
    figures->seconds += std::chrono::duration<double>(CLOCK_T::now() - begun).count();
    for (const std::vector<double> &of_one : spent)
        figures->spent.insert(figures->spent.end(), of_one.begin(), of_one.end());
}

void measure(benchmark::State &state, const std::vector<TRANSPORT_T *> &transports, QUESTION_T question,
             int clients) {
    std::vector<FIGURES_T> figures(transports.size());
    std::vector<size_t> order(transports.size());
    std::iota(order.begin(), order.end(), 0);
    std::mt19937 shuffler; // NOLINT(cert-msc51-cpp): the same orders in every run
    for (auto _ : state) {
        std::shuffle(order.begin(), order.end(), shuffler);
        for (const size_t i : order)
            take_turn(*transports[i], question, clients, &figures[i]);
        state.SetIterationTime(1 / figures[1].per_second());
    }
    FIGURES_T &floor = figures[0];
    for (size_t i = 0; i < transports.size(); i++) {
        const std::string name = transports[i]->name();
        state.counters[name] = figures[i].per_second() / floor.per_second();
        state.counters[name + "_p50"] = figures[i].part(50) / floor.part(50);
        state.counters[name + "_p99"] = figures[i].part(99) / floor.part(99);
    }
    state.counters["floor_per_s"] = floor.per_second();
    state.counters["floor_p50_us"] = floor.part(50) * 1e6;
    state.counters["floor_p99_us"] = floor.part(99) * 1e6;
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    server::STORE_T store;
    load(library_folder(), &store);
    const CORPUS_T corpus = make_corpus(store, 1);
    if (!prepare(corpus.page))
        return EXIT_FAILURE;
    std::vector<std::unique_ptr<TRANSPORT_T>> open;
    std::vector<TRANSPORT_T *> transports;
    for (const auto start : starters()) { // the floor first, then the channel
        open.push_back(start());
        transports.push_back(open.back().get());
    }
    for (const QUESTION_T question : {QUESTION_T::VERSION, QUESTION_T::PAGE})
        for (const int clients : {1, 8}) {
            const std::string name = std::string(question == QUESTION_T::PAGE ? "page" : "version") +
                                     "/clients:" + std::to_string(clients);
            benchmark::RegisterBenchmark(name.c_str(),
                                         [&transports, question, clients](benchmark::State &state) {
                                             measure(state, transports, question, clients);
                                         })
                ->UseManualTime()
                ->Iterations(ROUNDS)
                ->Repetitions(REPETITIONS)
                ->ReportAggregatesOnly()
                ->Unit(benchmark::kMicrosecond);
        }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
