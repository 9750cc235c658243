#include "support_trlv.h"

#include <cstddef>
#include <sys/uio.h>

#include "support/codec_primitive.h"
#include "support/owner.h"
#include "support/transfer.h"

using namespace tavisys;

namespace {

constexpr size_t HEAD_LENGTH = sizeof(TRLV_MESSAGE_HEAD);
static_assert(HEAD_LENGTH == 12 && offsetof(TRLV_MESSAGE_HEAD, type) == 0 &&
              offsetof(TRLV_MESSAGE_HEAD, result) == 4 && offsetof(TRLV_MESSAGE_HEAD, length) == 8);

bool is_head_length(INT32_T length) {
    return length == static_cast<INT32_T>(HEAD_LENGTH);
}

void store_head(INT8_T *to, const TRLV_MESSAGE_HEAD *head) {
    store_integer(to, head->type);
    store_integer(to + offsetof(TRLV_MESSAGE_HEAD, result), head->result);
    store_integer(to + offsetof(TRLV_MESSAGE_HEAD, length), head->length);
}

void load_head(const INT8_T *from, TRLV_MESSAGE_HEAD *head) {
    head->type = load_integer(from);
    head->result = load_integer(from + offsetof(TRLV_MESSAGE_HEAD, result));
    head->length = load_integer(from + offsetof(TRLV_MESSAGE_HEAD, length));
}

} // namespace

INT32_T send_trlv_data_to_tcp_communication_channel(INT32_T sock, const TRLV_MESSAGE_HEAD *head,
                                                    INT32_T headlen, const void *body, INT32_T length) {
    if (sock < 0 || head == nullptr || !is_head_length(headlen) || length < 0 ||
        (length > 0 && body == nullptr) || length > LONGEST_BODY - static_cast<INT32_T>(HEAD_LENGTH))
        return -TRLV_TP_ERRCODE_INVALID_ARGS;

    INT8_T wire[HEAD_LENGTH];
    store_head(wire, head);
    iovec pieces[] = {{wire, HEAD_LENGTH}, {const_cast<void *>(body), static_cast<size_t>(length)}};
    const int64_t sent = send_pieces(sock, pieces, length > 0 ? 2 : 1);
    if (sent < static_cast<int64_t>(HEAD_LENGTH))
        return -TRLV_TP_ERRCODE_SEND_MSGHEAD_FAIL;
    if (sent < static_cast<int64_t>(HEAD_LENGTH) + length)
        return -TRLV_TP_ERRCODE_SEND_MSGBODY_FAIL;
    return static_cast<INT32_T>(sent);
}

INT32_T receive_trlv_data_from_tcp_communication_channel(INT32_T sock, TRLV_MESSAGE_HEAD *head,
                                                         INT32_T headlen, PVOID *body, INT32_T timeout) {
    if (sock < 0 || head == nullptr || !is_head_length(headlen) || body == nullptr)
        return -TRLV_TP_ERRCODE_INVALID_ARGS;

    INT8_T wire[HEAD_LENGTH];
    DEADLINE_T deadline(timeout);
    if (receive_bytes(sock, wire, HEAD_LENGTH, deadline) != HEAD_LENGTH)
        return -TRLV_TP_ERRCODE_RECEIVE_MSGHEAD_FAIL;
    load_head(wire, head);
    // The byte count that a success returns has to fit as well.
    if (head->length < 0 || head->length > LONGEST_BODY - static_cast<INT32_T>(HEAD_LENGTH))
        return -TRLV_TP_ERRCODE_RECEIVE_INVALID_MESSAGE;

    if (head->length > 0) {
        OWNED_BODY_T received;
        const auto length = static_cast<size_t>(head->length);
        const int64_t count = receive_growing(sock, length, 0, timeout, &received);
        if (count == MEMORY_SHORT)
            return -TRLV_TP_ERRCODE_MALLOC_FAIL;
        if (count != head->length)
            return -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL;
        *body = received.release();
    }
    return static_cast<INT32_T>(HEAD_LENGTH) + head->length;
}
