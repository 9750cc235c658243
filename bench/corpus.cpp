#include "corpus.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "replies.h"
#include "scanner.h"

namespace bench {

namespace {

template <class RECORD, class DECODE>
RECORD *decoded(const BODY_T &body, DECODE decode) {
    RECORD *record = nullptr;
    if (decode(body.data(), static_cast<INT32_T>(body.length()), &record) < 0)
        abort();
    return record;
}

// Without one of these lists a movie is not encoded: a decoded list without entries is NULL.
bool has_all_lists(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T &movie) {
    return movie.director_list != nullptr && movie.actor_list != nullptr && movie.year_list != nullptr &&
           movie.video_list != nullptr;
}

// The movies of the list that can be encoded again, again and again, up to the wanted number.
MOVIES_T *repeated(const BODY_T &body, size_t wanted) {
    MOVIES_T *head = nullptr;
    PVOID *link = reinterpret_cast<PVOID *>(&head);
    for (size_t count = 0, before = 0; count < wanted; before = count) {
        *link = decoded<MOVIES_T>(body, decode_tp_tavisys_dbdata_movie_information_list_from_message);
        while (*link != nullptr && count < wanted) {
            auto *node = static_cast<MOVIES_T *>(*link);
            if (has_all_lists(*node->info)) {
                link = &node->next;
                count++;
            } else {
                *link = node->next;
                delete_tp_tavisys_dbdata_movie_information_list_node(&node);
            }
        }
        if (count == before) {
            fprintf(stderr, "%s: no movie can be transferred\n", library_folder());
            exit(EXIT_FAILURE);
        }
    }
    auto *rest = static_cast<MOVIES_T *>(*link);
    *link = nullptr;
    release(&rest);
    return head;
}

} // namespace

const char *library_folder() {
    const char *data = getenv("TAVISYS_DATA");
    if (data == nullptr)
        puts("TAVISYS_DATA names no folder of movie documents: the sample library stands in");
    return data == nullptr ? SAMPLE_LIBRARY : data;
}

void load(const char *folder, server::STORE_T *store, unsigned threads) {
    server::SCANNER_T scanner(folder, "", threads, store);
    scanner.start();
    while (store->status().status != SYSRUN_STATUS_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // the scanner has no one to tell
}

size_t publish_partition(const server::STORE_T &loaded, size_t most, server::STORE_T *store) {
    std::vector<server::MOVIE_PTR> movies = loaded.snapshot()->movies();
    movies.resize(std::min(movies.size(), most));
    const auto count = static_cast<UINT32_T>(movies.size());
    const server::DISK_T disk{
        PARTITION.hddevname, "serial", {{PARTITION.ptdevname, "uuid", "/", {count, count, 0}}}};
    store->publish(std::make_shared<const server::CATALOGUE_T>(std::move(movies), std::span(&disk, 1)));
    return count;
}

BODY_T ask(const server::STORE_T &store, INT32_T type, const void *request, size_t length) {
    static const server::IDENTITY_T identity{"1.0.0", "tavisys", "benchmark"};
    server::answer_from(&store, &identity);
    PVOID body = nullptr;
    INT32_T bodylen = 0;
    if (server::handle_request(type, const_cast<void *>(request), static_cast<INT32_T>(length), &body,
                               &bodylen) != 0) {
        fprintf(stderr, "the server has no answer to request %d\n", type);
        exit(EXIT_FAILURE);
    }
    return {body, static_cast<size_t>(bodylen)};
}

CORPUS_T make_corpus(const server::STORE_T &loaded, size_t movies) {
    if (loaded.snapshot()->movies().empty()) {
        fprintf(stderr, "%s holds no movie documents\n", library_folder());
        exit(EXIT_FAILURE);
    }
    CORPUS_T corpus{};
    corpus.page =
        decoded<PAGE_T>(ask(loaded, TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &FIRST_PAGE, sizeof FIRST_PAGE),
                        decode_tavisys_basic_movie_ext_information_from_message);
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T movie{0, corpus.page->list->info->movid};
    corpus.detail =
        decoded<DETAIL_T>(ask(loaded, TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, &movie, sizeof movie),
                          decode_tavisys_detail_movie_information_from_message);
    corpus.disks = decoded<DISKS_T>(ask(loaded, TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO, nullptr, 0),
                                    decode_tavisys_harddisk_information_list_from_message);
    server::STORE_T partition;
    publish_partition(loaded, 2 * movies, &partition);
    corpus.movies = repeated(
        ask(partition, TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO, &PARTITION, sizeof PARTITION), movies);
    return corpus;
}

} // namespace bench
