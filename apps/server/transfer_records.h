// The transfer records of movies, which carry everything that another server needs.
#ifndef TAVISYS_SERVER_TRANSFER_RECORDS_H
#define TAVISYS_SERVER_TRANSFER_RECORDS_H

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "codec_dbdata_movinfo.h"
#include "dbdata_movie.h"
#include "on_loan.h"

namespace server {

// One movie as a list of one, on loan from the catalogue.
class TRANSFER_RECORD_T {
public:
    explicit TRANSFER_RECORD_T(const DBDATA_MOVIE_INFORMATION_T &movie);
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *get() const { return &node_; }

private:
    ARENA_T arena_;
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T record_{};
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T node_{nullptr, &record_};
};

// The body of a transfer list, built movie by movie: each is read while it is in the caches, and a reply
// takes little more memory than its body.
class TRANSFER_BODY_T {
public:
    // Asks for room for so many movies at once: pages that are never written to are never there.
    explicit TRANSFER_BODY_T(size_t expected);
    // Throws std::bad_alloc when memory is short or the body would become too long to travel.
    void append(const DBDATA_MOVIE_INFORMATION_T &movie);
    // Hands the body over to the caller.
    PVOID release(INT32_T *length);

private:
    struct FREE_T {
        void operator()(INT8_T *memory) const { free(memory); }
    };
    void make_room(size_t count);

    std::unique_ptr<INT8_T, FREE_T> body_;
    size_t length_;
    size_t size_ = 0;
    INT32_T movies_ = 0;
};

} // namespace server

#endif
