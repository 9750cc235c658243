// A movie of the library: its record and the document that it was read from.
#ifndef TAVISYS_SERVER_MOVIE_H
#define TAVISYS_SERVER_MOVIE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "dbdata_movie.h"

namespace server {

// What tells whether a document is still the one that was loaded.
struct SIGNATURE_T {
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modified_ns = 0;
    int64_t changed_ns = 0;
    bool operator==(const SIGNATURE_T &) const = default;
};

// The references to records are plain counts, and the last reader of a snapshot, whichever thread that is,
// gives up those of the snapshot: whoever adds or gives up references holds this.
inline std::mutex references_mutex;

// A loaded movie. But for the count of its references it is never changed once it is loaded, so that any
// number of snapshots may share it.
struct MOVIE_T {
    explicit MOVIE_T(DBDATA_MOVIE_INFORMATION_T *owned) : record(owned) {}
    MOVIE_T(const MOVIE_T &) = delete;
    MOVIE_T &operator=(const MOVIE_T &) = delete;
    ~MOVIE_T() {
        const std::lock_guard lock(references_mutex);
        release_dbdata_movie_information(&record);
    }

    DBDATA_MOVIE_INFORMATION_T *record;
    std::string folder; // of the document, below the library folder: "sda/sda1/TV1993-0001"
    SIGNATURE_T signature;
};
using MOVIE_PTR = std::shared_ptr<const MOVIE_T>;

} // namespace server

#endif
