#include "tavisys_agent_api.h"

#include <cstring>

#include "support/owner.h"
#include "support_memory.h"
#include "tavisys_comm.h"

using namespace tavisys;

namespace {

constexpr INT32_T REPLY_TIMEOUT = 5; // seconds

struct REPLY_T {
    OWNED_BODY_T body;
    INT32_T length = 0;
};

// One question to the server of this machine. The connection is closed whatever the result.
RTSTATUS ask(INT32_T type, const void *request, INT32_T length, REPLY_T *reply) {
    const INT32_T sock = agent_open_tavisys_msg_channel();
    if (sock < 0)
        return -1;
    PVOID body = nullptr;
    const RTSTATUS result = exchange_data_in_tavisys_msg_channel(sock, type, request, length, &body,
                                                                 &reply->length, REPLY_TIMEOUT);
    close_tavisys_msg_channel(sock);
    reply->body.reset(static_cast<INT8_T *>(body));
    return result;
}

// Asks and decodes. The decoder's own value, bytes consumed or negative, goes to *decoded; the result is
// the exchange's. A reply without a body decodes to a failure.
template <class RESULT>
RTSTATUS ask_and_decode(INT32_T type, const void *request, INT32_T length,
                        INT32_T (*decode)(const void *, INT32_T, RESULT **), RESULT **result,
                        INT32_T *decoded) {
    REPLY_T reply;
    const RTSTATUS status = ask(type, request, length, &reply);
    if (status == 0)
        *decoded = decode(reply.body.get(), reply.length, result);
    return status;
}

// The usual form: 0, or the first failure of the exchange and the decoder.
template <class RESULT>
RTSTATUS query(INT32_T type, const void *request, INT32_T length,
               INT32_T (*decode)(const void *, INT32_T, RESULT **), RESULT **result) {
    if (result == nullptr)
        return -1;
    INT32_T decoded = 0;
    const RTSTATUS status = ask_and_decode(type, request, length, decode, result, &decoded);
    return status == 0 && decoded < 0 ? decoded : status;
}

} // namespace

RTSTATUS tavisysapi_get_uuid_infomation(INT8_T *uuid, INT32_T len) {
    if (uuid == nullptr)
        return -1;
    REPLY_T reply;
    const RTSTATUS status = ask(TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, nullptr, 0, &reply);
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
    return query(TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, nullptr, 0,
                 decode_tavisys_system_information_from_message, info);
}

RTSTATUS tavisysapi_get_software_version_information(TP_TAVISYS_VERSION_INFORMATION_T **info) {
    if (info == nullptr)
        return -1;
    // Callers test *info: a reply that doesn't decode is a 0 as well.
    INT32_T decoded = 0;
    return ask_and_decode(TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, nullptr, 0,
                          decode_tavisys_version_information_from_message, info, &decoded);
}

RTSTATUS tavisysapi_get_system_running_status(TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info) {
    if (info == nullptr)
        return -1;
    // Callers take any value that isn't negative as success: it is the number of bytes decoded.
    INT32_T decoded = 0;
    const RTSTATUS status =
        ask_and_decode(TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, nullptr, 0,
                       decode_tavisys_sysrun_status_information_from_message, info, &decoded);
    return status == 0 ? decoded : status;
}

RTSTATUS tavisysapi_get_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list) {
    return query(TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, nullptr, 0,
                 decode_tavisys_category_information_list_from_message, list);
}

RTSTATUS tavisysapi_get_movie_filter_information_list(INT32_T cid, INT32_T type,
                                                      TP_TAVISYS_FILTER_INFORMATION_LIST_T **list) {
    if (list == nullptr)
        return -1;
    // The arguments come as (cid, type) and travel as (type, cid).
    const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T request{static_cast<TP_FILTER_TYPE_E>(type), cid};
    return query(TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, &request, sizeof request,
                 decode_tavisys_filter_information_list_from_message, list);
}

RTSTATUS
tavisysapi_get_movie_basic_ext_information(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T *request,
                                           TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    if (request == nullptr)
        return -1;
    return query(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, request, sizeof *request,
                 decode_tavisys_basic_movie_ext_information_from_message, info);
}

RTSTATUS
tavisysapi_get_movie_detail_information(const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
                                        TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return query(TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, request, sizeof *request,
                 decode_tavisys_detail_movie_information_from_message, info);
}

// Touch screens ask the same question: the type of their own is not used here.
RTSTATUS touch_screenapi_get_movie_detail_information(
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T *request,
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return tavisysapi_get_movie_detail_information(request, info);
}
