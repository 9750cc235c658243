// The bodies of pages. A movie looks the same on every page but for its place there: so its part of a body is
// encoded once, when a snapshot is made, and the library puts a page together of such parts.
#ifndef TAVISYS_SERVER_PAGE_BODY_H
#define TAVISYS_SERVER_PAGE_BODY_H

#include <string>
#include <string_view>

#include "dbdata_movie.h"
#include "tavisystype.h"

namespace server {

class CATALOGUE_T;
struct PAGE_T;

enum class PAGE_FORM_T {
    PLAIN,
    TOUCH // with the number of videos and their duration
};

// `serial`: the serial number of the movie's disk. Throws std::bad_alloc.
std::string page_part_of(const DBDATA_MOVIE_INFORMATION_T &movie, std::string_view folder,
                         const INT8_T *serial);

// The body of the page that the request has selected, which the caller frees. NULL: memory short, too long.
PVOID page_body_of(const CATALOGUE_T &catalogue, const PAGE_T &page,
                   const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, PAGE_FORM_T form,
                   INT32_T *length);

} // namespace server

#endif
