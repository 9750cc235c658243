// The transfer records of movies, which carry everything that another server needs, on loan from the
// catalogue.
#ifndef TAVISYS_SERVER_TRANSFER_RECORDS_H
#define TAVISYS_SERVER_TRANSFER_RECORDS_H

#include <memory_resource>

#include "codec_dbdata_movinfo.h"
#include "movie.h"
#include "on_loan.h"

namespace server {

class TRANSFER_LIST_T {
public:
    void append(const DBDATA_MOVIE_INFORMATION_T &movie);
    // NULL when nothing was appended.
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *get() const { return movies_.head; }

private:
    template <class NODE>
    struct LIST_T {
        NODE *head = nullptr;
        NODE *tail = nullptr;
    };
    template <class NODE, class RECORD>
    void append_to(LIST_T<NODE> *list, const RECORD &record);
    template <class NODE, class FROM, class CONVERT>
    NODE *list_of(const FROM *from, CONVERT convert);
    template <class NODE, class FROM, class CONVERT>
    NODE *list_or_empty_node(const FROM *from, CONVERT convert);

    std::pmr::monotonic_buffer_resource memory_{size_t{64} * 1024};
    LIST_T<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T> movies_;
};

} // namespace server

#endif
