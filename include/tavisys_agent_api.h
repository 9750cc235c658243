/** @file tavisys_agent_api.h
 *  The client side: one call for each question that a client asks the server of its own machine, and for
 *  those that a server asks another one.
 *
 *  Every call opens a connection of its own, waits at most 5 seconds to connect, 5 seconds for the reply
 *  to begin and to go on, and closes the connection. Calls keep no state: any number of threads may make
 *  them at once. Records and lists that a call hands out belong to the caller. On failure the
 *  out-argument is untouched.
 *
 *  Results that every call shares, called "a channel failure" below: -1 when the channel can't be opened,
 *  the negated transport codes of tp_trlv.h when the exchange fails (-8 for a reply of another type), and
 *  the server's own result when that is not 0 (TAVISYS_RESULT_E names those of tavisys-server). A failed
 *  exchange is logged, see tavisys_comm.h. A malformed reply is also one for which memory is short, but for
 *  its body: that is a channel failure, -3. */
#ifndef TAVISYS_TAVISYS_AGENT_API_H
#define TAVISYS_TAVISYS_AGENT_API_H

#include "codec_basic_movinfo.h"
#include "codec_category_info.h"
#include "codec_dbdata_movinfo.h"
#include "codec_detail_movinfo.h"
#include "codec_filter_info.h"
#include "codec_harddisk_information.h"
#include "codec_sysinfo.h"
#include "codec_sysrun_status_info.h"
#include "codec_version_info.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Ask for the server's uuid.
 *  @param uuid [out] receives the NUL-terminated uuid.
 *  @param len  [in]  bytes in the buffer; 37 hold a uuid.
 *  @return 0, or: -1 for a NULL buffer, a negative `len`, a reply of more than `len` bytes, or one without a
 *          NUL; a channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_uuid_infomation(INT8_T *uuid, INT32_T len);

/** Ask for the number of disks and movies.
 *  @param info [out] receives the record; free it with delete_tavisys_system_information().
 *  @return 0, or: -1 for a NULL argument or a malformed reply; a channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_system_information(TP_TAVISYS_SYSTEM_INFORMATION_T **info);

/** Ask for the software version. A 0 still needs a NULL test: a malformed reply gives 0, too, and leaves
 *  *info as it was, so set it to NULL before the call.
 *  @param info [out] receives the record; free it with delete_tavisys_version_information().
 *  @return 0, or: -1 for a NULL argument; a channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_software_version_information(TP_TAVISYS_VERSION_INFORMATION_T **info);

/** Ask how far the server's scan is. Success is any value above 0: the length of the reply.
 *  @param info [out] receives the record; free it with delete_tavisys_sysrun_status_information().
 *  @return 20, or: -1 for a NULL argument or a malformed reply; a channel failure. A positive result of
 *          the server, which tavisys-server never gives, is told from success by *info alone. */
TAVISYS_API RTSTATUS tavisysapi_get_system_running_status(TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info);

/** Ask for the categories.
 *  @param list [out] receives the list, NULL when there are none; free it with
 *                    delete_tavisys_category_information_list().
 *  @return 0, or: -1 for a NULL argument or a malformed reply; a channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list);

/** Ask for the values of one attribute.
 *  @param cid  [in]  category id; 0 means all categories.
 *  @param type [in]  a TP_FILTER_TYPE_E.
 *  @param list [out] receives the list, NULL when there are none; free it with
 *                    delete_tavisys_filter_information_list().
 *  @return 0, or: -1 for a NULL argument or a malformed reply; a channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_movie_filter_information_list(
    INT32_T cid, INT32_T type, TP_TAVISYS_FILTER_INFORMATION_LIST_T **list);

/** Ask for one page of movies.
 *  @param request [in]  what to filter and sort by, and which page.
 *  @param info    [out] receives the page; free it with delete_tavisys_basic_movie_ext_information().
 *  @return 0, or: -1 for a NULL argument or a malformed reply; a channel failure. */
TAVISYS_API RTSTATUS
tavisysapi_get_movie_basic_ext_information(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T *request,
                                           TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info);

/** Ask for one page of movies in the form of the touch screens.
 *  @param request [in]  what to filter and sort by, and which page.
 *  @param info    [out] receives the page; free it with delete_tavisys_basic_movie_ext_information().
 *  @return 0, or: -1 for a NULL argument or a malformed reply; a channel failure. */
TAVISYS_API RTSTATUS
touchscreen_get_movie_basic_ext_information(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T *request,
                                            TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info);

/** Ask for everything about one movie.
 *  @param request [in]  which movie.
 *  @param info    [out] receives the record; free it with release_tavisys_detail_movie_information().
 *  @return 0, or: -1 for a NULL `info` or a malformed reply; a channel failure, -2 for a NULL
 *          `request` among them, since there is no body to send. */
TAVISYS_API RTSTATUS
tavisysapi_get_movie_detail_information(const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
                                        TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info);

/** As tavisysapi_get_movie_detail_information(), which is the same question under a touch screen's name. */
TAVISYS_API RTSTATUS touch_screenapi_get_movie_detail_information(
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info);

/** Ask for the path of a poster that the server picks at random. Surprise: the buffer holds one byte more
 *  than `length` says, and all of them are written, those behind the path with zeros.
 *  @param poster [out] receives the path; untouched on failure.
 *  @param length [in]  bytes in the buffer less one; a path needs its own and one more.
 *  @return 0, or: -1 for a NULL buffer; -2 for a reply without a path; -3 for a path that doesn't fit; a
 *          channel failure, which may be -2 to -8 as well. */
TAVISYS_API RTSTATUS tavisysapi_random_get_movie_poster(INT8_T *poster, INT32_T length);

/** Ask a server for its hard disks with their partitions. Success is any value above 0: the length of the
 *  reply.
 *  @param ipaddr [in]  dotted IPv4 address of the server.
 *  @param list   [out] receives the list, NULL when there are none; free it with
 *                      release_tavisys_harddisk_information_list().
 *  @return bytes decoded, or: -1 for a NULL argument or a malformed reply; a channel failure. A positive
 *          result of the server is told from success by *list alone. */
TAVISYS_API RTSTATUS tavisysapi_get_vod_harddisk_information(const INT8_T *ipaddr,
                                                             TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list);

/** Ask a server for the number of movies on one of its partitions. The names are judged after the
 *  connection is made.
 *  @param ipaddr    [in]  dotted IPv4 address of the server.
 *  @param hddevname [in]  device name of the hard disk, at most 15 bytes.
 *  @param ptdevname [in]  device name of the partition, at most 15 bytes.
 *  @param movies    [out] receives the number.
 *  @return 0, or: -1 for a NULL argument, a name that is too long or a reply of fewer than 4 bytes; a
 *          channel failure. */
TAVISYS_API RTSTATUS tavisysapi_get_movies_from_server(const INT8_T *ipaddr, const INT8_T *hddevname,
                                                       const INT8_T *ptdevname, INT32_T *movies);

/** Ask a server for the whole records of all movies on one of its partitions. Waits 10 seconds instead of
 *  5 for the reply to begin and to go on. Success is any value above 0: the length of the reply.
 *  @param ipaddr    [in]  dotted IPv4 address of the server.
 *  @param hddevname [in]  device name of the hard disk, at most 15 bytes.
 *  @param ptdevname [in]  device name of the partition, at most 15 bytes.
 *  @param list      [out] receives the list, NULL when there are none; free it with
 *                         delete_tp_tavisys_dbdata_movie_information_list().
 *  @return bytes decoded, or: -1 for a NULL argument, a name that is too long or a malformed reply; a
 *          channel failure. A positive result of the server is told from success by *list alone. */
TAVISYS_API RTSTATUS tavisysapi_get_movie_metadata_from_server(
    const INT8_T *ipaddr, const INT8_T *hddevname, const INT8_T *ptdevname,
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list);

#ifdef __cplusplus
}
#endif

#endif
