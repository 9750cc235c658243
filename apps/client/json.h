// The records as JSON documents, for programs.
#ifndef TAVISYS_CLIENT_JSON_H
#define TAVISYS_CLIENT_JSON_H

#include <string>
#include <vector>

#include "codec_kind_info.h"
#include "fetched.h"
#include "server.h"
#include "table.h"

namespace client {

std::string to_json(const TP_TAVISYS_VERSION_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_SYSTEM_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &info);
std::string to_json(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list);
std::string to_json(const TP_TAVISYS_KIND_INFORMATION_LIST_T *list);
std::string to_json(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list);
std::string to_json(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page, PAGE_FORM_T form);
std::string to_json(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie);
std::string to_json(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks);
std::string to_json(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies);
std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T &request);
std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request);
std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T &request);
std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T &request);
std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T &request);
std::string to_json(const FETCHED_T &fetched);
std::string uuid_to_json(const std::string &uuid);
std::string poster_to_json(const std::string &path);
std::string player_name_to_json(const std::string &name);
std::string movie_count_to_json(INT32_T movies);
std::string nothing_to_json();
std::string text_to_json(const std::string &text);
std::string reply_to_json(const RAW_REPLY_T &reply, const std::string &decoded); // its body's document, or ""

// The members of such a document as labelled values, the elements of a list in one.
std::vector<FIELD_T> members_of(const std::string &document);

} // namespace client

#endif
