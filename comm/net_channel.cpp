// The text-headed channel: the messages of tavisys_comm.cpp for peers that read a head of text.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

#include "support/log.h"
#include "support/owner.h"
#include "support_socket.h"
#include "tavisys_comm.h"

using namespace tavisys;

namespace {

constexpr const char *LOG_FILE = "comm/tavisys_comm.c";
constexpr INT32_T HEAD_TIMEOUT = 1; // seconds

// The head's fields, in order, each followed by a separator.
struct FIELD_T {
    INT32_T TP_MESSAGE_HEAD::*value;
    size_t width; // characters
};
constexpr FIELD_T FIELDS[] = {
    {&TP_MESSAGE_HEAD::type, 4}, {&TP_MESSAGE_HEAD::result, 4}, {&TP_MESSAGE_HEAD::length, 8}};
constexpr size_t LONGEST_FIELD = 8;
constexpr INT32_T FIELD_COUNT = std::size(FIELDS);
constexpr char SEPARATOR[] = "|";

// The room that snprintf() may need for three integers of any value; what is sent is always HEAD_LENGTH.
constexpr size_t FORMATTED_LENGTH = 3 * sizeof "-2147483648|";
constexpr INT32_T HEAD_LENGTH = TAVISYS_NET_CHANNEL_HEAD_LENGTH;

// Reads a number as far as it is one.
bool read_number(const INT8_T *text, size_t length, INT32_T *value) {
    INT8_T field[LONGEST_FIELD + 1] = {};
    memcpy(field, text, length);
    INT8_T *end = nullptr;
    *value = static_cast<INT32_T>(strtol(field, &end, 10)); // 8 characters always fit
    return end != field;
}

// Splits the text into fields and reads them. Returns how many could be split: a field is 1 to `width`
// characters up to a separator or the end of the text.
INT32_T split(const INT8_T *text, TP_MESSAGE_HEAD *head, bool *all_numbers) {
    *all_numbers = true;
    for (INT32_T count = 0; count < FIELD_COUNT; count++) {
        const size_t length = strcspn(text, SEPARATOR);
        if (length == 0 || length > FIELDS[count].width)
            return count;
        *all_numbers = read_number(text, length, &(head->*FIELDS[count].value)) && *all_numbers;
        text += length + (text[length] == '\0' ? 0 : 1);
    }
    return FIELD_COUNT;
}

// Receives the reply's head; logs what is wrong with it.
RTSTATUS receive_head(INT32_T sock, TP_MESSAGE_HEAD *head) {
    constexpr const char *FUNCTION = "exchange_data_in_net_communication_channel";
    INT8_T text[HEAD_LENGTH + 1] = {};
    const INT32_T count = receive_data_from_tcp_socket(sock, text, HEAD_LENGTH, HEAD_TIMEOUT);
    if (count < 0)
        return -1;
    if (count != HEAD_LENGTH) {
        TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_WARN, "接收的长度(%d)与约定大小(%d)不匹配", count, HEAD_LENGTH);
        return -1;
    }
    if (parse_header_file(text, head) != 0) {
        TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_WARN, "解析头文件出错!");
        return -1;
    }
    return 0;
}

} // namespace

RTSTATUS parse_header_file(const INT8_T *msghead, TP_MESSAGE_HEAD *head) {
    if (msghead == nullptr || head == nullptr)
        return -1;
    TP_MESSAGE_HEAD parsed{};
    bool all_numbers = false;
    INT32_T count = split(msghead, &parsed, &all_numbers);
    if (count == FIELD_COUNT && all_numbers) {
        *head = parsed;
        return 0;
    }
    if (count == 0)
        count = -1; // callers take 0 for success
    LOG_WARN("%d. invalid message head: %s\n", count, msghead);
    return count;
}

INT32_T send_data_to_net_communication_channel(INT32_T sock, const TP_MESSAGE_HEAD *head, INT32_T /*headlen*/,
                                               const INT8_T *body) {
    if (head == nullptr || head->length > std::numeric_limits<INT32_T>::max() - HEAD_LENGTH)
        return -1;
    INT8_T text[FORMATTED_LENGTH];
    snprintf(text, sizeof text, "%04d|%04d|%08d|", head->type, head->result, head->length);
    const INT32_T head_sent = send_data_to_tcp_socket(sock, text, HEAD_LENGTH);
    if (head_sent < 0)
        return -1;
    if (head->length == 0 || body == nullptr)
        return head_sent;
    const INT32_T body_sent = send_data_to_tcp_socket(sock, body, head->length);
    return body_sent < 0 ? -1 : head_sent + body_sent;
}

RTSTATUS exchange_data_in_net_communication_channel(INT32_T sock, INT32_T type, const INT8_T *sndmsg,
                                                    INT32_T sndlen, PVOID *rcvmsg, INT32_T *rcvlen,
                                                    INT32_T timeout) {
    TP_MESSAGE_HEAD head{type, 0, sndlen};
    const INT32_T sent = send_data_to_net_communication_channel(sock, &head, HEAD_LENGTH, sndmsg);
    if (sent < 0) {
        LOG_WARN("error, send data lens : %d\n", sent);
        return sent;
    }
    if (receive_head(sock, &head) != 0)
        return -1;
    if (head.type != type) {
        LOG_WARN("发送的消息类型%d与接收的消息类型%d不匹配", type, head.type);
        return -TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH;
    }

    INT8_T *text = nullptr;
    INT32_T received = 0;
    if (head.length != 0)
        received = receive_text_from_tcp_socket(sock, &text, head.length, timeout);
    OWNED_BODY_T body{text};
    if (received == -TRLV_TP_ERRCODE_MALLOC_FAIL || received == -TRLV_TP_ERRCODE_INVALID_ARGS)
        LOG_WARN("创建失败!"); // there is no memory of a negative length either
    if (received < 0)
        return -1;
    // A body that ended early is handed over as it is: callers read it as text, up to its first NUL.
    LOG_INFO("接收大小%d", HEAD_LENGTH + received);
    if (head.result != 0) {
        LOG_WARN("出错, 接收结果(%d)", head.result);
        return head.result;
    }
    if (rcvmsg != nullptr)
        *rcvmsg = body.release();
    if (rcvlen != nullptr)
        *rcvlen = head.length;
    return 0;
}
