// Many clients at once against a tavisys-server, each reply compared with what the library holds, while the
// server scans its library again and again.
//
//     load [--library DIR] [--clients N] [--seconds N] [--rescan SECONDS] ...
//
// DIR: by default the folder that TAVISYS_DATA names, or else the sample library. The server gets a folder
// of its own with the same documents, some of which are rewritten before each scan. Port 40001 has to be
// free. Prints what was asked, how long it took, and what the server's memory and descriptors did; ends with
// 1 when a reply was wrong or missing, or when the server grew or ended badly.
#include <CLI/CLI.hpp>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "client.h"
#include "scratch.h"
#include "server.h"

using namespace bench;

namespace {

using SECONDS_T = std::chrono::duration<double>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool JUDGES_MEMORY = false; // the sanitizers keep freed memory back
#else
constexpr bool JUDGES_MEMORY = true;
#endif
constexpr size_t PARTS = 10;      // of the run, for the report
constexpr double FIRST_PART = 60; // seconds, to which the memory of the rest is compared

struct OPTIONS_T {
    std::string library;
    unsigned clients = 16 * std::max(1U, std::thread::hardware_concurrency());
    double seconds = 600;
    double rescan = 5;
    size_t rewrite = 200;
    double within = 5;
    double growth = 10;
    unsigned interrupts = 0;
};

int read_options(int argc, char **argv, OPTIONS_T *options) {
    CLI::App app("Many clients at once against a tavisys-server, each reply compared", "load");
    app.add_option("--library", options->library, "folder of movie documents");
    app.add_option("--clients", options->clients, "threads that ask")->capture_default_str();
    app.add_option("--seconds", options->seconds, "how long")->capture_default_str();
    app.add_option("--rescan", options->rescan, "seconds between scans")->capture_default_str();
    app.add_option("--rewrite", options->rewrite, "documents rewritten before each scan")
        ->capture_default_str();
    app.add_option("--within", options->within, "seconds that a call may take")->capture_default_str();
    app.add_option("--growth", options->growth,
                   "per cent that the server's memory may grow after the first minute")
        ->capture_default_str();
    app.add_option("--interrupts", options->interrupts, "signals a second that interrupt the clients' calls")
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    const char *data = getenv("TAVISYS_DATA");
    if (options->library.empty())
        options->library = data != nullptr ? data : SAMPLE_LIBRARY;
    return -1;
}

// The server's memory over time.
class MEMORY_T {
public:
    void add(double second, long kib) { samples_.emplace_back(second, kib); }
    // Prints it for each part of the run. Whether it stayed flat after the first.
    bool report(double seconds, double growth) const {
        printf("\nresident memory of the server, MiB\n%12s %9s %9s %9s\n", "seconds", "least", "median",
               "most");
        for (size_t part = 0; part < PARTS; part++) {
            const double begin = seconds * static_cast<double>(part) / PARTS;
            const double end = seconds * static_cast<double>(part + 1) / PARTS;
            const std::vector<long> kib = between(begin, end);
            if (!kib.empty())
                printf("%5.0f -%5.0f %9.1f %9.1f %9.1f\n", begin, end, mib(kib.front()),
                       mib(kib[kib.size() / 2]), mib(kib.back()));
        }
        const double first = std::min(FIRST_PART, seconds / 2);
        const std::vector<long> before = between(0, first);
        const std::vector<long> after = between(first, seconds + 1);
        if (before.empty() || after.empty())
            return true;
        const double more = 100 * (mib(after[after.size() / 2]) / mib(before[before.size() / 2]) - 1);
        printf("median after the first %.0f seconds: %+.1f %%\n", first, more);
        return more <= growth;
    }

private:
    static double mib(long kib) { return static_cast<double>(kib) / 1024; }
    std::vector<long> between(double begin, double end) const {
        std::vector<long> kib;
        for (const auto &[second, amount] : samples_)
            if (second >= begin && second < end)
                kib.push_back(amount);
        std::sort(kib.begin(), kib.end());
        return kib;
    }
    std::vector<std::pair<double, long>> samples_;
};

void ignore_signal(int) {}

// The clients' threads, and what interrupts them.
class CLIENTS_T {
public:
    CLIENTS_T(const OPTIONS_T &options, const KNOWN_T &known, FAILURES_T *failures) {
        struct sigaction action {};
        action.sa_handler = ignore_signal; // and no SA_RESTART: calls of the system end early
        sigaction(SIGUSR1, &action, nullptr);
        const auto most = std::chrono::duration_cast<CLOCK_T::duration>(SECONDS_T(options.within));
        for (unsigned i = 0; i < options.clients; i++)
            clients_.push_back(std::make_unique<CLIENT_T>(known, failures, most, i + 1));
        for (const auto &client : clients_)
            threads_.emplace_back([this, &client] {
                while (!stop_)
                    client->ask_something();
            });
        if (options.interrupts > 0)
            interrupter_ = std::thread([this, pause = SECONDS_T(1.0 / options.interrupts)] {
                for (size_t i = 0; !stop_; i++) {
                    pthread_kill(threads_[i % threads_.size()].native_handle(), SIGUSR1);
                    std::this_thread::sleep_for(pause);
                }
            });
    }
    void end() {
        stop_ = true;
        if (interrupter_.joinable())
            interrupter_.join();
        for (std::thread &thread : threads_)
            thread.join();
    }
    RECORD_T record() const {
        RECORD_T sum;
        for (const auto &client : clients_) {
            for (size_t i = 0; i < QUESTIONS; i++)
                sum.times[i].add(client->record().times[i]);
            sum.walks += client->record().walks;
            sum.asked_again += client->record().asked_again;
        }
        return sum;
    }

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::unique_ptr<CLIENT_T>> clients_;
    std::vector<std::thread> threads_;
    std::thread interrupter_;
};

// Every so manieth movie's document, as many as wanted but not more than half of all.
std::vector<std::string> choose_rewritten(const SCRATCH_T &scratch, size_t wanted, KNOWN_T *known) {
    std::vector<std::string> folders;
    const size_t step = std::max<size_t>(2, known->movies.size() / std::max<size_t>(wanted, 1));
    for (size_t i = 0; i < known->movies.size() && folders.size() < wanted; i += step) {
        std::string folder = scratch.folder_of(known->movies[i].poster);
        known->movies[i].rewritten = !folder.empty();
        if (!folder.empty())
            folders.push_back(std::move(folder));
    }
    return folders;
}

void report(const RECORD_T &record, double seconds) {
    printf("\n%-14s %10s %9s %9s %9s %9s\n", "requests", "number", "a second", "p50 ms", "p99 ms", "most ms");
    TIMES_T all;
    const auto line = [&](const char *name, const TIMES_T &times) {
        printf("%-14s %10llu %9.1f %9.3f %9.3f %9.3f\n", name, static_cast<unsigned long long>(times.count()),
               static_cast<double>(times.count()) / seconds, times.ms_of(500), times.ms_of(990),
               times.longest_ms());
    };
    for (size_t i = 0; i < QUESTIONS; i++) {
        line(NAME_OF_QUESTION[i], record.times[i]);
        all.add(record.times[i]);
    }
    line("all", all);
    printf(
        "lists walked from the first page to the last: %llu; movies asked for again under a new id: %llu\n",
        static_cast<unsigned long long>(record.walks), static_cast<unsigned long long>(record.asked_again));
}

// Scans and measures until the time is up. Returns how long it took.
double keep_busy(const OPTIONS_T &options, const std::vector<std::string> &rewritten, SCRATCH_T *scratch,
                 const SERVER_T &server, MEMORY_T *memory) {
    const auto begun = CLOCK_T::now();
    const auto passed = [&] { return SECONDS_T(CLOCK_T::now() - begun).count(); };
    double next_scan = options.rescan;
    size_t round = 0;
    while (passed() < options.seconds) {
        memory->add(passed(), server.resident_kib());
        if (options.rescan > 0 && passed() >= next_scan) {
            round++;
            for (const std::string &folder : rewritten)
                scratch->rewrite(folder, round);
            server.signal(SIGHUP);
            next_scan = passed() + options.rescan;
        }
        std::this_thread::sleep_for(
            SECONDS_T(std::min({0.5, options.rescan > 0 ? options.rescan : 0.5, options.seconds / 100})));
    }
    return passed();
}

int run(const OPTIONS_T &options) {
    SCRATCH_T scratch;
    scratch.copy_documents_of(options.library);
    FAILURES_T failures;
    SERVER_T server({"--library", scratch.path().string(), "--log-level", "NOTICE"});
    KNOWN_T known;
    if (const std::string wrong = server.wait_for_scans(1) ? known.read() : server.last_words();
        !wrong.empty()) {
        fprintf(stderr, "the server can't be measured: %s\n", wrong.c_str());
        return EXIT_FAILURE;
    }
    const std::vector<std::string> rewritten = choose_rewritten(scratch, options.rewrite, &known);
    const size_t files = server.settle(0, std::chrono::seconds(0));
    printf("%zu movies in %s, %u clients, %.0f seconds, a scan every %.2f seconds with %zu documents "
           "rewritten\n",
           known.movies.size(), options.library.c_str(), options.clients, options.seconds, options.rescan,
           rewritten.size());
    fflush(stdout);

    MEMORY_T memory;
    CLIENTS_T clients(options, known, &failures);
    const double seconds = keep_busy(options, rewritten, &scratch, server, &memory);
    clients.end();
    report(clients.record(), seconds);
    printf("scans: %zu\n", server.scans());
    if (!memory.report(seconds, options.growth) && JUDGES_MEMORY)
        failures.add("the server's memory has grown");
    const size_t files_left = server.settle(files, std::chrono::seconds(10));
    printf("open files of the server: %zu before, %zu after\n", files, files_left);
    if (files_left > files)
        failures.add("the server has more open files than before");
    if (const int status = server.end(); status != 0)
        failures.add("the server ended with " + std::to_string(status) + "\n" + server.last_words());
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
        fprintf(stderr, "load: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
