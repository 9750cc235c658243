// The records as JSON documents, for programs.
#ifndef TAVISYS_CLIENT_JSON_H
#define TAVISYS_CLIENT_JSON_H

#include <string>

#include "server.h"

namespace client {

std::string to_json(const TP_TAVISYS_VERSION_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_SYSTEM_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list);
std::string to_json(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list);
std::string to_json(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page);
std::string to_json(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie);
std::string uuid_to_json(const std::string &uuid);

} // namespace client

#endif
