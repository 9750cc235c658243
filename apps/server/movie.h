// A movie of the library: its record and the folder of the document that it was read from.
#ifndef TAVISYS_SERVER_MOVIE_H
#define TAVISYS_SERVER_MOVIE_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>

#include "dbdata_movie.h"
#include "movie_memory.h"

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
class MOVIE_T {
public:
    MOVIE_T(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view of_folder, SLAB_T *slab,
            std::span<std::byte> bytes, size_t record_bytes); // for make_movie()
    MOVIE_T(const MOVIE_T &) = delete;
    MOVIE_T &operator=(const MOVIE_T &) = delete;
    ~MOVIE_T() { slab_->leave(bytes_.size()); }

    DBDATA_MOVIE_INFORMATION_T *record = nullptr;
    std::string_view folder;
    // All of it, for whoever has it fetched ahead of a look at the record.
    std::span<const std::byte> bytes() const { return bytes_; }
    // Whether its memory is kept for it and few others: a copy would let it go.
    bool lies_among_gaps() const { return slab_->is_mostly_empty(); }

private:
    SLAB_T *slab_;
    std::span<std::byte> bytes_;
};
using MOVIE_PTR = std::shared_ptr<const MOVIE_T>;

// Copies the record. `folder` is the document's, below the library folder: "sda/sda1/TV1993-0001". Throws
// std::bad_alloc.
MOVIE_PTR make_movie(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view folder = "");

} // namespace server

#endif
