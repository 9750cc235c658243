// A movie of the library: its record and the folder of the document that it was read from.
#ifndef TAVISYS_SERVER_MOVIE_H
#define TAVISYS_SERVER_MOVIE_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>

#include "dbdata_movie.h"

namespace server {

// The references to records are plain counts, and the last reader of a snapshot, whichever thread that is,
// gives up those of the snapshot: whoever adds or gives up references holds this.
inline std::mutex references_mutex;

// A loaded movie. But for the count of its references it is never changed once it is loaded, so that any
// number of snapshots may share it.
//
// All that belongs to it lies in one block of memory: a movie has a hundred strings and nodes, and as many
// allocations take more room than what is in them: 3.3 times the bytes of the strings, the block 1.5 times.
// So nobody may free a part of the record, and it keeps one reference of its own until it is freed whole.
struct MOVIE_T {
    // Copies the record. `of_folder` is the document's, below the library folder: "sda/sda1/TV1993-0001".
    explicit MOVIE_T(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view of_folder = "");

    DBDATA_MOVIE_INFORMATION_T *record = nullptr;
    std::string_view folder;

private:
    std::unique_ptr<std::byte[]> block_;
};
using MOVIE_PTR = std::shared_ptr<const MOVIE_T>;

} // namespace server

#endif
