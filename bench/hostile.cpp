// Peers that misbehave against a tavisys-server, with honest clients beside them all the time.
//
//     hostile [--connections N] [--at-once N] [--within SECONDS] ...
//
// Connects again and again in every wrong way that crowd.h names; lets the server run out of descriptors;
// interrupts it and its clients with signals. Each honest question has to be answered rightly within the
// stated time, and afterwards the server has as many descriptors as before, and as much memory. Port 40001
// has to be free. Ends with 1 when anything of that fails.
#include <CLI/CLI.hpp>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>

#include "client.h"
#include "crowd.h"
#include "scratch.h"
#include "server.h"

using namespace bench;
using namespace std::chrono_literals;

namespace {

using SECONDS_T = std::chrono::duration<double>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool JUDGES_MEMORY = false; // the sanitizers keep freed memory back
#else
constexpr bool JUDGES_MEMORY = true;
#endif
constexpr int LARGE_MOVIES = 1000;
constexpr auto SETTLING = 15s; // for what the server still holds when the peers have gone
constexpr rlim_t FEW_FILES = 100;
constexpr size_t SILENT = 400;
constexpr size_t QUESTIONS_BESIDE = 200;

struct OPTIONS_T {
    size_t connections = 100000;
    size_t at_once = 2000;
    double within = 2;
    unsigned honest = 4;
    long margin = 16;
    double signal_seconds = 10;
};

int read_options(int argc, char **argv, OPTIONS_T *options) {
    CLI::App app("Peers that misbehave against a tavisys-server", "hostile");
    app.add_option("--connections", options->connections, "peers in all")->capture_default_str();
    app.add_option("--at-once", options->at_once, "peers at a time")->capture_default_str();
    app.add_option("--within", options->within, "seconds that an honest call may take")
        ->capture_default_str();
    app.add_option("--honest", options->honest, "honest clients")->capture_default_str();
    app.add_option("--margin", options->margin, "MiB that the server may have more afterwards")
        ->capture_default_str();
    app.add_option("--signals", options->signal_seconds, "seconds of signals")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    return -1;
}

CLOCK_T::duration most_of(const OPTIONS_T &options) {
    return std::chrono::duration_cast<CLOCK_T::duration>(SECONDS_T(options.within));
}

// Clients that ask, one question after the other, as long as the object lives.
class HONEST_T {
public:
    HONEST_T(const OPTIONS_T &options, const KNOWN_T &known, FAILURES_T *failures) {
        for (unsigned i = 0; i < options.honest; i++)
            clients_.push_back(std::make_unique<CLIENT_T>(known, failures, most_of(options), i + 1));
        for (const auto &client : clients_)
            threads_.emplace_back([this, &client] {
                while (!stop_)
                    client->ask_something();
            });
    }
    HONEST_T(const HONEST_T &) = delete;
    HONEST_T &operator=(const HONEST_T &) = delete;
    ~HONEST_T() {
        stop_ = true;
        for (std::thread &thread : threads_)
            thread.join();
        TIMES_T times;
        for (const auto &client : clients_)
            for (const TIMES_T &some : client->record().times)
                times.add(some);
        printf("honest requests: %llu, p50 %.3f ms, p99 %.3f ms, most %.3f ms\n",
               static_cast<unsigned long long>(times.count()), times.ms_of(500), times.ms_of(990),
               times.longest_ms());
    }
    void interrupt(size_t turn) { pthread_kill(threads_[turn % threads_.size()].native_handle(), SIGUSR1); }

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::unique_ptr<CLIENT_T>> clients_;
    std::vector<std::thread> threads_;
};

// A server on the library of long texts, and what it holds.
struct STAND_T {
    explicit STAND_T(const SCRATCH_T &scratch, rlim_t files = 0)
        : server({"--library", scratch.path().string(), "--log-level", "NOTICE"}, files) {}
    // Whether it serves and all can be read.
    bool ready(FAILURES_T *failures) {
        const std::string wrong = server.wait_for_scans(1) ? known.read() : server.last_words();
        if (!wrong.empty())
            failures->add("the server can't be measured: " + wrong);
        return wrong.empty();
    }

    SERVER_T server;
    KNOWN_T known;
};

void judge_files(const SERVER_T &server, size_t before, FAILURES_T *failures) {
    const size_t after = server.settle(before, SETTLING);
    printf("open files of the server: %zu before, %zu after\n", before, after);
    if (after > before)
        failures->add("the server has more open files than before");
}

void judge_end(SERVER_T *server, FAILURES_T *failures) {
    if (const int status = server->end(); status != 0)
        failures->add("the server ended with " + std::to_string(status) + "\n" + server->last_words());
}

// Its memory is looked at after each tenth of the peers. What it has after the first is what it works with,
// and has to do for all that follow.
void meet_crowd(const OPTIONS_T &options, const SCRATCH_T &scratch, FAILURES_T *failures) {
    printf("== %zu peers that misbehave, %zu at a time, a scan every second\n", options.connections,
           options.at_once);
    STAND_T stand(scratch);
    if (!stand.ready(failures))
        return;
    const SERVER_T &server = stand.server;
    CROWD_T crowd(failures);
    const size_t files = server.settle(0, 0s);
    const auto rescan = [&server] { server.signal(SIGHUP); };
    std::vector<long> resident; // KiB
    {
        const HONEST_T honest(options, stand.known, failures);
        for (size_t tenth = 0; tenth < 10; tenth++) {
            crowd.run(options.connections / 10, options.at_once, rescan);
            resident.push_back(server.resident_kib());
        }
    }
    crowd.report();
    judge_files(server, files, failures);
    resident.push_back(server.resident_kib());
    printf("resident memory of the server in MiB, after each tenth and in the end:");
    for (const long kib : resident)
        printf(" %.1f", static_cast<double>(kib) / 1024);
    printf("\n");
    if (JUDGES_MEMORY && resident.back() > resident[2] + options.margin * 1024)
        failures->add("the server's memory has grown");
    judge_end(&stand.server, failures);
}

// More silent peers than it has descriptors, whether it knows its limit or runs into it.
void run_out_of_files(const OPTIONS_T &options, const SCRATCH_T &scratch, FAILURES_T *failures) {
    for (const bool knows : {true, false}) {
        printf("\n== %zu silent peers, %s\n", SILENT,
               knows ? "more than the server has descriptors" : "and no descriptor left");
        STAND_T stand(scratch, knows ? FEW_FILES : 0);
        if (!stand.ready(failures))
            return;
        const size_t files = stand.server.settle(0, 0s);
        if (!knows)
            stand.server.limit_files(files + 4);
        std::deque<INT32_T> silent;
        CLIENT_T honest(stand.known, failures, most_of(options), 1);
        for (size_t question = 0; question < QUESTIONS_BESIDE; question++) {
            for (size_t i = 0; i < SILENT / 10; i++)
                silent.push_back(agent_open_tavisys_msg_channel());
            honest.ask_something();
            for (; silent.size() > SILENT; silent.pop_front())
                close_tavisys_msg_channel(silent.front());
        }
        for (const INT32_T sock : silent)
            close_tavisys_msg_channel(sock);
        if (!knows)
            stand.server.limit_files(1024);
        judge_files(stand.server, files, failures);
        judge_end(&stand.server, failures);
    }
}

void ignore_signal(int) {}

// Signals at a high rate, at the server and at the clients in their calls.
void send_signals(const OPTIONS_T &options, const SCRATCH_T &scratch, FAILURES_T *failures) {
    printf("\n== %.0f seconds of signals\n", options.signal_seconds);
    STAND_T stand(scratch);
    if (!stand.ready(failures))
        return;
    struct sigaction action {};
    action.sa_handler = ignore_signal; // and no SA_RESTART: calls of the system end early
    sigaction(SIGUSR1, &action, nullptr);
    const size_t files = stand.server.settle(0, 0s);
    size_t turns = 0;
    {
        HONEST_T honest(options, stand.known, failures);
        const auto end = CLOCK_T::now() + SECONDS_T(options.signal_seconds);
        for (; CLOCK_T::now() < end; turns++) {
            // One that is stopped and goes on finds its waits ended early.
            for (const int number : {SIGHUP, SIGSTOP, SIGCONT})
                stand.server.signal(number);
            honest.interrupt(turns);
            std::this_thread::sleep_for(200us);
        }
    }
    printf("%zu times SIGHUP, SIGSTOP and SIGCONT at the server and SIGUSR1 at a client\n", turns);
    judge_files(stand.server, files, failures);
    judge_end(&stand.server, failures);
}

int run(const OPTIONS_T &options) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    const SCRATCH_T scratch;
    scratch.write_large_movies(LARGE_MOVIES);
    FAILURES_T failures;
    meet_crowd(options, scratch, &failures);
    run_out_of_files(options, scratch, &failures);
    send_signals(options, scratch, &failures);
    printf("failures: %zu\n", failures.count());
    return failures.count() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv) {
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    OPTIONS_T options;
    try {
        const int status = read_options(argc, argv, &options);
        return status >= 0 ? status : run(options);
    } catch (const std::exception &error) {
        fprintf(stderr, "hostile: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
