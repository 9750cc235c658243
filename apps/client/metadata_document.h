// From the record of a movie, as servers hand it on, to the document from which tavisys-server loads it.
#ifndef TAVISYS_CLIENT_METADATA_DOCUMENT_H
#define TAVISYS_CLIENT_METADATA_DOCUMENT_H

#include <stdexcept>
#include <string>

#include "codec_dbdata_movinfo.h"

namespace client {

// A record that no document can hold; what() says why.
struct UNFIT_RECORD_T : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A value as a document carries it: what XML can't hold is replaced, and what loading would cut off is cut.
std::string document_value(const INT8_T *value);

// The document. Loaded, it gives the movie back but for what no document holds: the ids, when the movie
// came into the other server's catalogue, and the MP4 renditions. Throws an UNFIT_RECORD_T.
std::string metadata_document(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T &movie);

} // namespace client

#endif
