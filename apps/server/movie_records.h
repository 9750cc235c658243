// The wire record of a movie in detail, on loan from the catalogue.
#ifndef TAVISYS_SERVER_MOVIE_RECORDS_H
#define TAVISYS_SERVER_MOVIE_RECORDS_H

#include <string_view>

#include "codec_detail_movinfo.h"
#include "movie.h"
#include "on_loan.h"

namespace server {

// A path of a movie's document, which is relative to the document, below the library folder. Addresses and
// absolute paths stay as they are; NULL and "" give NULL.
INT8_T *path_on_loan(ARENA_T *arena, std::string_view folder, const INT8_T *relative);

// Everything about one movie.
class DETAIL_RECORD_T {
public:
    explicit DETAIL_RECORD_T(const MOVIE_T &movie);
    const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *get() const { return &detail_; }

private:
    template <class NODE>
    TP_MOVIE_FILTER_KVP_INFORMATION_T *labelled(const INT8_T *label, const NODE *list);
    void fill_videos(const MOVIE_T &movie);

    ARENA_T arena_;
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T detail_{};
};

} // namespace server

#endif
