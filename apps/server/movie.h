// A movie of the library: its record and the document that it was read from.
#ifndef TAVISYS_SERVER_MOVIE_H
#define TAVISYS_SERVER_MOVIE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>

#include "dbdata_movie.h"

namespace server {

// What tells whether a document is still the one that was loaded. Its ctime doesn't: a hard link, a mode or
// an owner changes that, and not what is in it.
struct SIGNATURE_T {
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modified_ns = 0;
    bool operator==(const SIGNATURE_T &) const = default;
};

// The references to records are plain counts, and the last reader of a snapshot, whichever thread that is,
// gives up those of the snapshot: whoever adds or gives up references holds this.
inline std::mutex references_mutex;

// A loaded movie. But for the count of its references it is never changed once it is loaded, so that any
// number of snapshots may share it.
//
// All that belongs to it lies in one block of memory: a movie has a hundred strings and nodes, and as many
// allocations would take more room than what is in them. So nobody may free a part of the record, and it
// keeps one reference of its own until it is freed whole.
struct MOVIE_T {
    // Copies the record. `of_folder` is the document's, below the library folder: "sda/sda1/TV1993-0001".
    explicit MOVIE_T(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view of_folder = "",
                     const SIGNATURE_T &of_document = {});

    DBDATA_MOVIE_INFORMATION_T *record = nullptr;
    std::string_view folder;
    SIGNATURE_T signature;

private:
    std::unique_ptr<std::byte[]> block_;
};
using MOVIE_PTR = std::shared_ptr<const MOVIE_T>;

} // namespace server

#endif
