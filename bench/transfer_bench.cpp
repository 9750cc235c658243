// What it costs to fetch the movies of a partition: the request to a server over the loopback, its whole
// records encoded there, sent, received and decoded here, beside the time that copying the same body into
// freshly allocated strings takes in the same run.
//
//     transfer_bench [--benchmark_...]
//
// The movies are the first 6,000 of the folder that TAVISYS_DATA names, or else the sample library's.
// Counters: `ratio` is the time over that of the copy, `to_records` over that of the copy together with the
// allocations of the records and nodes, each of which is one of its own, too, since callers free each by
// itself. The first line tells the most memory that the server took for the reply at any moment.
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

#include "replies.h"
#include "scanner.h"
#include "tavisys.h"

namespace {

using CLOCK_T = std::chrono::steady_clock;
using LIST_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;

constexpr size_t MOVIES = 6000;
constexpr TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T WHICH{"", "sda", "sda1"};

struct BODY_T {
    PVOID data = nullptr;
    INT32_T length = 0;
    BODY_T() = default;
    BODY_T(const BODY_T &) = delete;
    BODY_T &operator=(const BODY_T &) = delete;
    ~BODY_T() { safe_free(data); }
};

double seconds(CLOCK_T::time_point begun) {
    return std::chrono::duration<double>(CLOCK_T::now() - begun).count();
}

bool ask_handler(BODY_T *body) {
    auto request = WHICH;
    return server::handle_request(TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO, &request, sizeof request,
                                  &body->data, &body->length) == 0;
}

struct BLOCK_T {
    const INT8_T *text; // NULL for a record or node
    size_t size;
};

// Where the strings of a body lie and, if wanted, between them the records and nodes that hold them.
class BLOCKS_T {
public:
    BLOCKS_T(const BODY_T &body, bool with_records)
        : at_(static_cast<const INT8_T *>(body.data)), with_records_(with_records) {
        for (INT32_T movies = integer(); movies > 0; movies--)
            movie();
    }
    std::vector<BLOCK_T> blocks;

private:
    INT32_T integer() {
        INT32_T value = 0;
        memcpy(&value, at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    void texts(int count) {
        for (; count > 0; count--) {
            const INT32_T length = integer();
            if (length < 0)
                continue;
            blocks.push_back({at_, static_cast<size_t>(length)});
            at_ += length;
        }
    }
    void record(size_t size) {
        if (with_records_)
            blocks.push_back({nullptr, size});
    }
    void lists(int count, int integers, int strings_of_each) {
        for (; count > 0; count--)
            for (INT32_T entries = integer(); entries > 0; entries--) {
                record(sizeof(LIST_T));
                record(sizeof(PVOID) * static_cast<size_t>(integers + strings_of_each));
                at_ += static_cast<size_t>(integers) * sizeof(INT32_T);
                texts(strings_of_each);
            }
    }
    void movie() {
        record(sizeof(LIST_T));
        record(sizeof(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T));
        integer();
        texts(5);
        lists(5, 0, 1);
        lists(2, 0, 2);
        lists(1, 1, 0);
        at_ += 4 * sizeof(INT32_T);
        record(sizeof(TP_TAVISYS_DBDATA_POSTER_INFORMATION_T));
        if (integer() != 0)
            texts(3);
        texts(1);
        integer();
        lists(1, 2, 3);
    }
    const INT8_T *at_;
    const bool with_records_;
};

// The floor: each string in an allocation of its own.
double copy(const BLOCKS_T &body) {
    std::vector<INT8_T *> copies(body.blocks.size());
    malloc_trim(0); // into memory as new as that of a program that fetches once
    const auto begun = CLOCK_T::now();
    for (size_t i = 0; i < copies.size(); i++) {
        const auto &[text, size] = body.blocks[i];
        copies[i] = static_cast<INT8_T *>(malloc(size + 1));
        if (text == nullptr)
            memset(copies[i], 0, size);
        else
            memcpy(copies[i], text, size);
        copies[i][size] = '\0';
    }
    benchmark::DoNotOptimize(copies.data());
    const double spent = seconds(begun);
    for (INT8_T *block : copies)
        free(block);
    return spent;
}

double encode() {
    BODY_T body;
    const auto begun = CLOCK_T::now();
    if (!ask_handler(&body))
        abort();
    return seconds(begun);
}

double decode(const BODY_T &body) {
    LIST_T *list = nullptr;
    const auto begun = CLOCK_T::now();
    if (decode_tp_tavisys_dbdata_movie_information_list_from_message(body.data, body.length, &list) < 0)
        abort();
    const double spent = seconds(begun);
    delete_tp_tavisys_dbdata_movie_information_list(&list);
    return spent;
}

double fetch() {
    LIST_T *list = nullptr;
    const auto begun = CLOCK_T::now();
    if (tavisysapi_get_movie_metadata_from_server(TAVISYS_LOCAL_SERVER_ADDRESS, WHICH.hddevname,
                                                  WHICH.ptdevname, &list) < 0)
        abort();
    const double spent = seconds(begun);
    delete_tp_tavisys_dbdata_movie_information_list(&list);
    return spent;
}

// Answers in a thread of its own, as a worker of the server does.
class ANSWERS_T {
public:
    ANSWERS_T() : listener_(svr_open_tavisys_msg_channel()) {
        if (listener_ < 0) {
            perror("port 40001");
            exit(EXIT_FAILURE);
        }
    }
    ANSWERS_T(const ANSWERS_T &) = delete;
    ANSWERS_T &operator=(const ANSWERS_T &) = delete;
    ~ANSWERS_T() {
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close_tavisys_msg_channel(listener_);
    }

private:
    void run() const {
        for (int sock = 0; (sock = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            deal_data_from_tavisys_msg_channel(sock, server::handle_request);
            close_tavisys_msg_channel(sock);
        }
    }
    int listener_;
    std::thread thread_{[this] { run(); }};
};

// A number of this process's status, KiB.
double status_kib(const char *name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(name))
            return atof(line.c_str() + strlen(name) + 1);
    return 0;
}

// The most that a reply takes, over its body's size.
double memory_of_reply() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins anew: proc(5)
    const double before = status_kib("VmRSS");
    BODY_T body;
    if (!ask_handler(&body))
        abort();
    return (status_kib("VmHWM") - before) * 1024 / body.length;
}

void measure(benchmark::State &state, const BODY_T &body, const std::function<double()> &work) {
    const BLOCKS_T strings(body, false);
    const BLOCKS_T records(body, true);
    double strings_alone = 0;
    double with_records = 0;
    double spent = 0;
    for (auto _ : state) {
        strings_alone += copy(strings);
        with_records += copy(records);
        malloc_trim(0);
        const double once = work();
        spent += once;
        state.SetIterationTime(once);
    }
    state.counters["ratio"] = spent / strings_alone;
    state.counters["to_records"] = spent / with_records;
}

// The first movies of the library as those of one partition.
size_t publish_partition(const std::string &root, server::STORE_T *store) {
    server::STORE_T loaded;
    server::SCANNER_T scanner(root, "", std::thread::hardware_concurrency(), &loaded);
    scanner.start();
    while (loaded.status().status != SYSRUN_STATUS_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // the scanner has no one to tell
    std::vector<server::MOVIE_PTR> movies = loaded.snapshot()->movies();
    movies.resize(std::min(movies.size(), MOVIES));
    const auto count = static_cast<UINT32_T>(movies.size());
    const server::DISK_T disk{WHICH.hddevname, "serial", {{WHICH.ptdevname, "uuid", "/", {count, count, 0}}}};
    store->publish(std::make_shared<const server::CATALOGUE_T>(std::move(movies), std::span(&disk, 1)));
    return count;
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    const char *data = getenv("TAVISYS_DATA");
    if (data == nullptr)
        puts("TAVISYS_DATA names no folder of movie documents: fetching the sample library");
    server::STORE_T store;
    const server::IDENTITY_T identity{"", "", ""};
    server::answer_from(&store, &identity);
    const size_t movies = publish_partition(data == nullptr ? SAMPLE_LIBRARY : data, &store);
    const double memory = memory_of_reply();
    BODY_T body;
    if (!ask_handler(&body))
        return EXIT_FAILURE;
    printf("%zu movies, body of %d bytes; memory of the reply %.2f times the body\n", movies, body.length,
           memory);

    const ANSWERS_T answers;
    const auto add = [&](const char *name, const std::function<double()> &work) {
        benchmark::RegisterBenchmark(name,
                                     [&body, work](benchmark::State &state) { measure(state, body, work); })
            ->UseManualTime()
            ->Repetitions(9)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMillisecond);
    };
    add("encode", encode);
    add("decode", [&body] { return decode(body); });
    add("fetch", fetch);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
