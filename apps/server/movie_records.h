// The wire records of movies as clients browse them, on loan from the catalogue.
#ifndef TAVISYS_SERVER_MOVIE_RECORDS_H
#define TAVISYS_SERVER_MOVIE_RECORDS_H

#include <deque>
#include <string>
#include <vector>

#include "catalogue.h"
#include "codec_basic_movinfo.h"
#include "codec_detail_movinfo.h"
#include "on_loan.h"

namespace server {

// Texts that are made for one reply.
class TEXTS_T {
public:
    INT8_T *keep(std::string text) { return texts_.emplace_back(std::move(text)).data(); }
    // A path of the movie's document, which is relative to the document, below the library folder.
    // Addresses and absolute paths stay as they are; NULL and "" give NULL.
    INT8_T *path(const MOVIE_T &movie, const INT8_T *relative);

private:
    std::deque<std::string> texts_; // a deque: kept texts don't move
};

// One page of movies.
class PAGE_RECORD_T {
public:
    PAGE_RECORD_T(const CATALOGUE_T &catalogue, const PAGE_T &page,
                  const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request);
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *get() const { return &page_; }

private:
    void fill(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *to, const MOVIE_T &movie, INT32_T index);
    template <class NODE>
    BASIC_MOVIE_IDS_T *ids_of(const NODE *list);

    TEXTS_T texts_;
    std::deque<std::vector<INT32_T>> ids_;
    std::deque<BASIC_MOVIE_IDS_T> id_records_;
    std::vector<TP_TAVISYS_BASIC_MOVIE_INFORMATION_T> movies_;
    std::vector<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T> nodes_;
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T page_{};
};

// Everything about one movie.
class DETAIL_RECORD_T {
public:
    explicit DETAIL_RECORD_T(const MOVIE_T &movie);
    const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *get() const { return &detail_; }

private:
    struct LABELLED_LIST_T {
        std::deque<TP_MOVIE_FILTER_INFORMATION_T> values;
        std::deque<TP_MOVIE_FILTER_INFORMATION_LIST_T> nodes;
        TP_MOVIE_FILTER_KVP_INFORMATION_T record{};
    };
    template <class NODE>
    TP_MOVIE_FILTER_KVP_INFORMATION_T *labelled(LABELLED_LIST_T *to, const INT8_T *label, const NODE *list);
    void fill_videos(const MOVIE_T &movie);

    TEXTS_T texts_;
    TP_MOVIE_DIMENSION_INFORMATION_T dimension_{};
    LABELLED_LIST_T directors_, actors_, kinds_;
    TP_MOVIE_SINGLE_KVP_INFORMATION_T duration_{}, summary_{};
    std::deque<TP_TAVISYS_VIDEO_INFORMATION_T> videos_;
    std::deque<TP_TAVISYS_VIDEO_INFORMATION_LIST_T> video_nodes_;
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T detail_{};
};

} // namespace server

#endif
