/** @file support_trlv.h
 *  One TRLV message over a socket: a 12-byte head, then the body. */
#ifndef TAVISYS_SUPPORT_TRLV_H
#define TAVISYS_SUPPORT_TRLV_H

#include "tp_trlv.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Send a head and its body in one go. The peer must take data as send_data_to_tcp_socket() says.
 *  @param sock    [in] socket.
 *  @param head    [in] the head; its three fields travel little-endian.
 *  @param headlen [in] sizeof(TRLV_MESSAGE_HEAD), 12.
 *  @param body    [in] the body; may be NULL when length is 0.
 *  @param length  [in] bytes of body, at least 0; the head's `length`, which is not compared with it.
 *  @return bytes sent (12 + length), or negative: -2 a negative socket, a NULL head, another `headlen`, no
 *          body, or a length that is negative or too large for the byte count that is returned, -6 the
 *          head could not be sent, -7 the body could not be sent whole. */
TAVISYS_API INT32_T send_trlv_data_to_tcp_communication_channel(INT32_T sock, const TRLV_MESSAGE_HEAD *head,
                                                                INT32_T headlen, const void *body,
                                                                INT32_T length);

/** Receive a head and its body.
 *  @param sock    [in]  socket.
 *  @param head    [out] receives the head once it has arrived whole, also when the body fails then.
 *  @param headlen [in]  sizeof(TRLV_MESSAGE_HEAD), 12.
 *  @param body    [out] receives a fresh body of the head's `length` bytes, which the caller frees with
 *                       safe_free(); untouched on failure and for a message without a body. Its memory
 *                       grows with what arrives, never with what the head claims.
 *  @param timeout [in]  seconds for the head, and for progress within the body; the whole body may take
 *                       that and a second for every 64 KiB. 0 or less: no limit.
 *  @return bytes received (12 + length), or negative: -2 a negative socket, a NULL argument, another
 *          `headlen`, -3 memory short, -4 no whole head in time, -5 no whole body in time, -12 a length in
 *          the head that is negative or too large for the byte count that is returned. */
TAVISYS_API INT32_T receive_trlv_data_from_tcp_communication_channel(INT32_T sock, TRLV_MESSAGE_HEAD *head,
                                                                     INT32_T headlen, PVOID *body,
                                                                     INT32_T timeout);

#ifdef __cplusplus
}
#endif

#endif
