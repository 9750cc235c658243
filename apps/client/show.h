// The records as text for people: labelled values and tables, laid out for a terminal of some width.
#ifndef TAVISYS_CLIENT_SHOW_H
#define TAVISYS_CLIENT_SHOW_H

#include <string>

#include "codec_dbdata_movinfo.h"
#include "codec_kind_info.h"
#include "names.h"
#include "server.h"

namespace client {

std::string show(const TP_TAVISYS_VERSION_INFORMATION_T &info, int width);
std::string show(const TP_TAVISYS_SYSTEM_INFORMATION_T &info, int width);
std::string show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, int width);
std::string show(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list, int width);
std::string show(const TP_TAVISYS_KIND_INFORMATION_LIST_T *list, int width);
std::string show(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list, int width,
                 const TEXT_T &label = messages::NAME);
std::string show(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie, int width);
std::string show(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks, int width);
std::string show(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies, int width);
std::string show_movie_count(INT32_T movies, int width);

// A page of a category, with names for the ids that its movies carry.
std::string show(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page, int width, PAGE_FORM_T form,
                 INT32_T cid, NAME_BOOK_T &names);

} // namespace client

#endif
