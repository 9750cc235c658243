#include "tavisys_agent_api.h"

#include <cstddef>
#include <cstring>

#include "support/owner.h"
#include "support_codec.h"
#include "support_socket.h"
#include "tavisys_comm.h"

using namespace tavisys;

namespace {

constexpr INT32_T REPLY_TIMEOUT = 5;     // seconds
constexpr INT32_T TRANSFER_TIMEOUT = 10; // for the movies of a whole partition

struct QUESTION_T {
    INT32_T type;
    const void *body = nullptr;
    INT32_T length = 0;
    INT32_T timeout = REPLY_TIMEOUT;
    const INT8_T *server = nullptr; // address; null for the server of this machine
};

struct REPLY_T {
    OWNED_BODY_T body;
    INT32_T length = 0;
};

// The connected socket, or -1.
INT32_T open_channel(const INT8_T *server) {
    if (server == nullptr)
        return agent_open_tavisys_msg_channel();
    INT32_T sock = -1;
    return create_tcp_client_socket(server, TAVISYS_MSG_CHANNEL_PORT, &sock) < 0 ? -1 : sock;
}

// One question over an open channel, which is closed whatever the result.
RTSTATUS ask_and_close(INT32_T sock, const QUESTION_T &question, REPLY_T *reply) {
    PVOID body = nullptr;
    const RTSTATUS result = exchange_data_in_tavisys_msg_channel(
        sock, question.type, question.body, question.length, &body, &reply->length, question.timeout);
    close_tavisys_msg_channel(sock);
    reply->body.reset(static_cast<INT8_T *>(body));
    return result;
}

RTSTATUS ask(const QUESTION_T &question, REPLY_T *reply) {
    const INT32_T sock = open_channel(question.server);
    return sock < 0 ? -1 : ask_and_close(sock, question, reply);
}

template <class RESULT>
using DECODE_T = INT32_T (*)(const void *, INT32_T, RESULT **);

// Asks and decodes. The decoder's own value, bytes consumed or negative, goes to *decoded; the result is
// the exchange's. A reply without a body decodes to a failure.
template <class RESULT>
RTSTATUS ask_and_decode(const QUESTION_T &question, DECODE_T<RESULT> decode, RESULT **result,
                        INT32_T *decoded) {
    REPLY_T reply;
    const RTSTATUS status = ask(question, &reply);
    if (status == 0)
        *decoded = decode(reply.body.get(), reply.length, result);
    return status;
}

// The usual form: 0, or the first failure of the exchange and the decoder.
template <class RESULT>
RTSTATUS query(const QUESTION_T &question, DECODE_T<RESULT> decode, RESULT **result) {
    if (result == nullptr)
        return -1;
    INT32_T decoded = 0;
    const RTSTATUS status = ask_and_decode(question, decode, result, &decoded);
    return status == 0 && decoded < 0 ? decoded : status;
}

// The form of the calls whose callers take any value that isn't negative as success: the number of bytes
// decoded, or the first failure.
template <class RESULT>
RTSTATUS query_length(const QUESTION_T &question, DECODE_T<RESULT> decode, RESULT **result) {
    if (result == nullptr)
        return -1;
    INT32_T decoded = 0;
    const RTSTATUS status = ask_and_decode(question, decode, result, &decoded);
    return status == 0 ? decoded : status;
}

using PARTITION_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T;

// False for a name that doesn't fit with its NUL.
template <size_t ROOM>
bool store_name(INT8_T (&field)[ROOM], const INT8_T *name) {
    const size_t length = strnlen(name, ROOM);
    memcpy(field, name, length);
    return length < ROOM;
}

bool name_partition(PARTITION_REQUEST_T *request, const INT8_T *hddevname, const INT8_T *ptdevname) {
    return store_name(request->hddevname, hddevname) && store_name(request->ptdevname, ptdevname);
}

} // namespace

RTSTATUS tavisysapi_get_uuid_infomation(INT8_T *uuid, INT32_T len) {
    if (uuid == nullptr)
        return -1;
    REPLY_T reply;
    const RTSTATUS status = ask({TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO}, &reply);
    if (reply.length > len)
        return -1;
    if (status != 0)
        return status;
    // The copy follows the terminator, so there has to be one within the reply.
    const size_t room = static_cast<size_t>(reply.length);
    const size_t length = reply.body == nullptr ? 0 : strnlen(reply.body.get(), room);
    if (length == room)
        return -1;
    memcpy(uuid, reply.body.get(), length + 1);
    return status;
}

RTSTATUS tavisysapi_get_system_information(TP_TAVISYS_SYSTEM_INFORMATION_T **info) {
    return query({TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION}, decode_tavisys_system_information_from_message,
                 info);
}

RTSTATUS tavisysapi_get_software_version_information(TP_TAVISYS_VERSION_INFORMATION_T **info) {
    if (info == nullptr)
        return -1;
    // Callers test *info: a reply that doesn't decode is a 0 as well.
    INT32_T decoded = 0;
    return ask_and_decode({TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION},
                          decode_tavisys_version_information_from_message, info, &decoded);
}

RTSTATUS tavisysapi_get_system_running_status(TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info) {
    return query_length({TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS},
                        decode_tavisys_sysrun_status_information_from_message, info);
}

RTSTATUS tavisysapi_get_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list) {
    return query({TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST},
                 decode_tavisys_category_information_list_from_message, list);
}

RTSTATUS tavisysapi_get_movie_filter_information_list(INT32_T cid, INT32_T type,
                                                      TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    if (list == nullptr)
        return -1;
    // The arguments come as (cid, type) and travel as (type, cid).
    const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T request{static_cast<TP_FILTER_TYPE_E>(type), cid};
    return query({TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, &request, sizeof request},
                 decode_tavisys_filter_information_list_from_message, list);
}

RTSTATUS
tavisysapi_get_movie_basic_ext_information(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T *request,
                                           TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    if (request == nullptr)
        return -1;
    return query({TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, request, sizeof *request},
                 decode_tavisys_basic_movie_ext_information_from_message, info);
}

RTSTATUS
touchscreen_get_movie_basic_ext_information(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T *request,
                                            TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    if (request == nullptr)
        return -1;
    return query({TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, request, sizeof *request},
                 decode_touchscreen_basic_movie_ext_information_from_message, info);
}

RTSTATUS
tavisysapi_get_movie_detail_information(const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
                                        TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return query({TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, request, sizeof *request},
                 decode_tavisys_detail_movie_information_from_message, info);
}

// Touch screens ask the same question: the type of their own is not used here.
RTSTATUS touch_screenapi_get_movie_detail_information(
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return tavisysapi_get_movie_detail_information(request, info);
}

RTSTATUS tavisysapi_random_get_movie_poster(INT8_T *poster, INT32_T length) {
    if (poster == nullptr)
        return -1;
    REPLY_T reply;
    const RTSTATUS status = ask({TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO}, &reply);
    if (status != 0)
        return status;
    if (reply.length == 0)
        return -2;
    if (reply.length + 1 > length)
        return -3;
    // Callers give length + 1 bytes: all of them are written.
    memset(poster, 0, static_cast<size_t>(length) + 1);
    memcpy(poster, reply.body.get(), static_cast<size_t>(reply.length));
    return 0;
}

RTSTATUS tavisysapi_get_vod_harddisk_information(const INT8_T *ipaddr,
                                                 TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    if (ipaddr == nullptr)
        return -1;
    return query_length({TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO, nullptr, 0, REPLY_TIMEOUT, ipaddr},
                        decode_tavisys_harddisk_information_list_from_message, list);
}

RTSTATUS tavisysapi_get_movies_from_server(const INT8_T *ipaddr, const INT8_T *hddevname,
                                           const INT8_T *ptdevname, INT32_T *movies) {
    if (ipaddr == nullptr || hddevname == nullptr || ptdevname == nullptr || movies == nullptr)
        return -1;
    // Connect first: the server sees that it was asked, whatever the names are.
    const INT32_T sock = open_channel(ipaddr);
    if (sock < 0)
        return -1;
    PARTITION_REQUEST_T request{};
    if (!name_partition(&request, hddevname, ptdevname)) {
        close_tavisys_msg_channel(sock);
        return -1;
    }
    REPLY_T reply;
    const QUESTION_T question{TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES, &request, sizeof request};
    const RTSTATUS status = ask_and_close(sock, question, &reply);
    if (status != 0)
        return status;
    return decode_int_data_from_buffer(reply.body.get(), reply.length, movies) < 0 ? -1 : 0;
}

RTSTATUS tavisysapi_get_movie_metadata_from_server(const INT8_T *ipaddr, const INT8_T *hddevname,
                                                   const INT8_T *ptdevname,
                                                   TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    PARTITION_REQUEST_T request{};
    if (ipaddr == nullptr || hddevname == nullptr || ptdevname == nullptr ||
        !name_partition(&request, hddevname, ptdevname))
        return -1;
    return query_length(
        {TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO, &request, sizeof request, TRANSFER_TIMEOUT, ipaddr},
        decode_tp_tavisys_dbdata_movie_information_list_from_message, list);
}
