// The movies of another server's partition on their way into a library.
#ifndef TAVISYS_CLIENT_FETCHED_H
#define TAVISYS_CLIENT_FETCHED_H

#include <optional>
#include <string>
#include <vector>

#include "codec_dbdata_movinfo.h"
#include "library_folder.h"

namespace client {

struct SKIPPED_MOVIE_T {
    INT32_T mid;
    std::optional<std::string> movcode;
    std::string reason;
};

// What has become of the movies.
struct FETCHED_T {
    std::string folder;
    INT32_T movies = 0;
    INT32_T written = 0;
    std::vector<SKIPPED_MOVIE_T> skipped;
};

// Writes a document for each movie, with a progress bar on standard error where that is a terminal. One that
// no document can hold is skipped with a line there. Throws a CLIENT_ERROR_T when a document can't be written
// and, between two documents, of EXIT_INTERRUPTED.
FETCHED_T write_documents(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list,
                          const LIBRARY_FOLDER_T &folder);

} // namespace client

#endif
