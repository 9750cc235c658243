// What the benchmarks work on: the movies of the folder that TAVISYS_DATA names, or else of the sample
// library.
#ifndef TAVISYS_BENCH_CORPUS_H
#define TAVISYS_BENCH_CORPUS_H

#include <cstddef>
#include <thread>

#include "body.h"
#include "records.h"
#include "store.h"

namespace bench {

// The one partition of publish_partition().
constexpr TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T PARTITION{"", "sda", "sda1"};
constexpr TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T FIRST_PAGE{0, 0, 0, 0, 0, 1, 24, 0};

// The folder; says on standard output if it is the sample library.
const char *library_folder();
// Loads a whole library.
void load(const char *folder, server::STORE_T *store, unsigned threads = std::thread::hardware_concurrency());
// Publishes the first movies of a loaded library as those of one partition; returns how many they are.
size_t publish_partition(const server::STORE_T &loaded, size_t most, server::STORE_T *store);
// The handler's reply; the program ends when there is none.
BODY_T ask(const server::STORE_T &store, INT32_T type, const void *request, size_t length);

// The records of a loaded library, which are never freed.
struct CORPUS_T {
    PAGE_T *page;     // of 24 movies
    MOVIES_T *movies; // as many as wanted, some repeated when there are fewer
    DETAIL_T *detail;
    DISKS_T *disks;
};
CORPUS_T make_corpus(const server::STORE_T &loaded, size_t movies);

} // namespace bench

#endif
