#include "tavisys_comm.h"

#include <cstdio>

#include "support/log.h"
#include "support_memory.h"
#include "support_socket.h"
#include "support_trlv.h"

namespace {

constexpr const char *LOG_FILE = "comm/tavisys_comm.c";
constexpr INT32_T HEAD_LENGTH = sizeof(TRLV_MESSAGE_HEAD);
constexpr INT32_T REQUEST_TIMEOUT = 2; // seconds that a server waits for a client's request

} // namespace

INT32_T svr_open_tavisys_msg_channel(void) {
    const INT32_T sock = create_tcp_server_socket(TAVISYS_MSG_CHANNEL_PORT);
    return sock < 0 ? -1 : sock;
}

INT32_T agent_open_tavisys_msg_channel(void) {
    INT32_T sock = -1;
    if (create_tcp_client_socket(TAVISYS_LOCAL_SERVER_ADDRESS, TAVISYS_MSG_CHANNEL_PORT, &sock) < 0)
        return -1;
    return sock;
}

INT32_T monitor_tavisys_msg_channel(INT32_T sock) {
    const INT32_T accepted = create_tcp_accept_socket(sock);
    return accepted < 0 ? -1 : accepted;
}

RTSTATUS close_tavisys_msg_channel(INT32_T sock) {
    return close_tcp_socket(sock);
}

// Sending and receiving refuse the socket -1 alone: callers use it for "not open", and every other bad
// value is left to the layer below, whose code then says so.
INT32_T send_data_to_tavisys_msg_channel(INT32_T sock, const TRLV_MESSAGE_HEAD *head, INT32_T headlen,
                                         const void *body) {
    if (sock == -1 || head == nullptr)
        return -1;
    return send_trlv_data_to_tcp_communication_channel(sock, head, headlen, body, head->length);
}

INT32_T receive_data_from_tavisys_msg_channel(INT32_T sock, TRLV_MESSAGE_HEAD *head, INT32_T headlen,
                                              PVOID *body, INT32_T timeout) {
    if (sock == -1 || head == nullptr)
        return -1;
    return receive_trlv_data_from_tcp_communication_channel(sock, head, headlen, body, timeout);
}

RTSTATUS exchange_data_in_tavisys_msg_channel(INT32_T sock, INT32_T type, const void *body, INT32_T length,
                                              PVOID *reply, INT32_T *replylen, INT32_T timeout) {
    if (sock < 0)
        return -1;
    const TRLV_MESSAGE_HEAD request{type, 0, length};
    const INT32_T sent = send_data_to_tavisys_msg_channel(sock, &request, HEAD_LENGTH, body);
    if (sent < 0) {
        LOG_WARN("error, send data lens : %d\n", sent);
        return sent;
    }

    TRLV_MESSAGE_HEAD head{};
    PVOID received = nullptr;
    const INT32_T result =
        receive_data_from_tavisys_msg_channel(sock, &head, HEAD_LENGTH, &received, timeout);
    if (result < 0) {
        LOG_WARN("(%d) failed to receive_data_from_tavisys_msg_channel", result);
        return result;
    }
    if (head.type != type) {
        LOG_WARN("发送的消息类型%d与接收的消息类型%d不匹配\n", type, head.type);
        safe_free(received);
        return -TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH;
    }
    if (head.result != 0) {
        LOG_WARN("出错, 接受结果(%d)", head.result);
        safe_free(received);
        return head.result;
    }
    if (reply != nullptr)
        *reply = received;
    else
        safe_free(received);
    if (replylen != nullptr)
        *replylen = head.length;
    return 0;
}

INT32_T deal_data_from_tavisys_msg_channel(INT32_T sock, TRLV_MESSAGE_CB handler) {
    if (handler == nullptr || sock < 0) {
        printf("传入值出错，cb=%p, sock=%d\n", reinterpret_cast<void *>(handler), sock);
        return -1;
    }
    TRLV_MESSAGE_HEAD head{};
    PVOID request = nullptr;
    const INT32_T received =
        receive_data_from_tavisys_msg_channel(sock, &head, HEAD_LENGTH, &request, REQUEST_TIMEOUT);
    if (received < 0)
        return received;
    LOG_INFO("影柜系统消息通道: 接收消息,消息类型(%d), 消息体长度(%d)\n", head.type, head.length);

    PVOID reply = nullptr;
    INT32_T replylen = 0;
    const RTSTATUS result = handler(head.type, request, head.length, &reply, &replylen);
    const TRLV_MESSAGE_HEAD answer{head.type, result, replylen};
    LOG_INFO("影柜系统消息通道: 回应消息,消息类型(%d), 消息体长度(%d), 消息结果(%d)\n", answer.type,
             answer.length, answer.result);

    // The reply body travels also beside a result other than 0; the client drops it.
    const INT32_T sent = send_data_to_tavisys_msg_channel(sock, &answer, HEAD_LENGTH, reply);
    safe_free(request);
    safe_free(reply);
    return sent;
}
