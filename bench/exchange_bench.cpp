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
// Every round takes each transport in turn. Counters, for each transport: exchanges per second over those of
// the floor, and as NAME_p99 its 99th percentile of latency over the floor's; of the floor itself
// `floor_per_s`, `floor_p50_us`, `floor_p99_us`.
// Port 40001 must be free.
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "corpus.h"
#include "transports.h"

namespace {

using namespace bench;
using CLOCK_T = std::chrono::steady_clock;

constexpr auto TURN = std::chrono::milliseconds(400); // of one transport in a round
constexpr int ROUNDS = 5;
constexpr int REPETITIONS = 3;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct TURN_T {
    double per_second = 0;
    double p50 = 0; // seconds
    double p99 = 0;
};

// One client: exchanges until the time is up.
void run_client(CLIENT_T &client, QUESTION_T question, CLOCK_T::time_point end, std::vector<double> *spent) {
    for (auto begun = CLOCK_T::now(); begun < end;) {
        if (!client.exchange(question)) {
            fprintf(stderr, "an exchange failed\n");
            exit(EXIT_FAILURE);
        }
        const auto done = CLOCK_T::now();
        spent->push_back(std::chrono::duration<double>(done - begun).count());
        begun = done;
    }
}

TURN_T take_turn(TRANSPORT_T &transport, QUESTION_T question, int clients) {
    std::vector<std::unique_ptr<CLIENT_T>> connected;
    for (int i = 0; i < clients; i++) {
        connected.push_back(transport.connect());
        if (!connected.back()->exchange(question)) { // a kept connection is there before the clock runs
            fprintf(stderr, "no first exchange\n");
            exit(EXIT_FAILURE);
        }
    }
    std::vector<std::vector<double>> spent(connected.size());
    std::vector<std::thread> threads;
    const auto begun = CLOCK_T::now();
    for (size_t i = 0; i < connected.size(); i++)
        threads.emplace_back(run_client, std::ref(*connected[i]), question, begun + TURN, &spent[i]);
    for (std::thread &thread : threads)
        thread.join();
    const double whole = std::chrono::duration<double>(CLOCK_T::now() - begun).count();
    std::vector<double> all;
    for (const std::vector<double> &of_one : spent)
        all.insert(all.end(), of_one.begin(), of_one.end());
    std::sort(all.begin(), all.end());
    return {static_cast<double>(all.size()) / whole, all[all.size() / 2], all[all.size() * 99 / 100]};
}

void measure(benchmark::State &state, const std::vector<TRANSPORT_T *> &transports, QUESTION_T question,
             int clients) {
    std::map<std::string, std::vector<double>> figures;
    for (auto _ : state) {
        std::vector<TURN_T> turns;
        for (TRANSPORT_T *transport : transports)
            turns.push_back(take_turn(*transport, question, clients));
        const TURN_T &floor = turns[0];
        for (size_t i = 0; i < turns.size(); i++) {
            const std::string name = transports[i]->name();
            figures[name].push_back(turns[i].per_second / floor.per_second);
            figures[name + "_p99"].push_back(turns[i].p99 / floor.p99);
        }
        figures["floor_per_s"].push_back(floor.per_second);
        figures["floor_p50_us"].push_back(floor.p50 * 1e6);
        figures["floor_p99_us"].push_back(floor.p99 * 1e6);
        state.SetIterationTime(1 / turns[1].per_second);
    }
    for (const auto &[name, values] : figures)
        state.counters[name] = median(values);
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
