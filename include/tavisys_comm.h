/** @file tavisys_comm.h
 *  The message channel: one request and one reply per TCP connection, on port 40001; and the text-headed
 *  channel, which carries the same messages to peers that read a head of text.
 *
 *  The channels keep no state: any number of threads may use them at once, each on a socket of its own.
 *  The failures of a client's exchange are logged through zlog's default category (dzlog) at WARN, the
 *  progress of a server's exchange at INFO; opening, sending and receiving say nothing. */
#ifndef TAVISYS_TAVISYS_COMM_H
#define TAVISYS_TAVISYS_COMM_H

#include "tp_trlv.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Answers one request; called by deal_data_from_tavisys_msg_channel() in the caller's thread.
 *  @param type     [in]  message type of the request.
 *  @param body     [in]  request body, or NULL; freed by the channel afterwards.
 *  @param length   [in]  bytes in the request body.
 *  @param reply    [out] NULL at the call; set it to a body from calloc() or malloc(), which the channel
 *                        sends and frees whatever the result, or leave it.
 *  @param replylen [out] 0 at the call; bytes in the reply body. When negative, or above 0 without a body, no
 *                        reply is sent: -2.
 *  @return the result that the reply's head carries: 0, or a code that the client's call returns. */
typedef RTSTATUS (*TRLV_MESSAGE_CB)(INT32_T type, PVOID body, INT32_T length, PVOID *reply,
                                    INT32_T *replylen);

/** Open the server's listening socket on port 40001. @return as create_tcp_server_socket(). */
TAVISYS_API INT32_T svr_open_tavisys_msg_channel(void);

/** Connect to the server of this machine, waiting at most 5 seconds. @return the socket, or -1 as
 *  create_tcp_client_socket() gives it. */
TAVISYS_API INT32_T agent_open_tavisys_msg_channel(void);

/** Wait for a client. @param sock [in] listening socket. @return as create_tcp_accept_socket(). */
TAVISYS_API INT32_T monitor_tavisys_msg_channel(INT32_T sock);

/** Close a socket of the channel. @return 0, or -1: not an open socket. */
TAVISYS_API RTSTATUS close_tavisys_msg_channel(INT32_T sock);

/** Send one message.
 *  @param sock    [in] connected socket.
 *  @param head    [in] the head; `length` says how many bytes of body follow.
 *  @param headlen [in] sizeof(TRLV_MESSAGE_HEAD).
 *  @param body    [in] the body; may be NULL when the head's length is 0.
 *  @return bytes sent, or negative: -1 for the socket -1 or a NULL head, else the codes of
 *          send_trlv_data_to_tcp_communication_channel(), which also judges every other bad socket. */
TAVISYS_API INT32_T send_data_to_tavisys_msg_channel(INT32_T sock, const TRLV_MESSAGE_HEAD *head,
                                                     INT32_T headlen, const void *body);

/** Receive one message.
 *  @return bytes received, or negative: -1 for the socket -1 or a NULL head, else the codes of
 *          receive_trlv_data_from_tcp_communication_channel(), which has the same arguments. */
TAVISYS_API INT32_T receive_data_from_tavisys_msg_channel(INT32_T sock, TRLV_MESSAGE_HEAD *head,
                                                          INT32_T headlen, PVOID *body, INT32_T timeout);

/** Client side, one round trip: send a request, receive its reply. The socket stays open; one exchange
 *  is all that it serves.
 *  @param sock     [in]  connected socket.
 *  @param type     [in]  message type.
 *  @param body     [in]  request body; NULL when length is 0.
 *  @param length   [in]  bytes in the request body.
 *  @param reply    [out] receives the reply body (NULL when there is none), which the caller frees with
 *                        safe_free(); untouched on failure. When NULL, the reply body is dropped.
 *  @param replylen [out] receives the bytes in the reply body; untouched on failure. May be NULL.
 *  @param timeout  [in]  seconds, as receive_trlv_data_from_tcp_communication_channel() takes them.
 *  @return 0, or: -1 a negative socket, which alone is not logged; -8 a reply of another type; the
 *          reply's result when that is not 0, be it negative or positive; else the negative code of the
 *          send, logged as "error, send data lens : (code)", or of the receive, logged as "(code) failed to
 *          receive_data_from_tavisys_msg_channel". */
TAVISYS_API RTSTATUS exchange_data_in_tavisys_msg_channel(INT32_T sock, INT32_T type, const void *body,
                                                          INT32_T length, PVOID *reply, INT32_T *replylen,
                                                          INT32_T timeout);

/** Server side, one request: receive it within 2 seconds, have it answered, send the reply. The socket
 *  stays open.
 *  @param sock    [in] accepted socket.
 *  @param handler [in] answers the request.
 *  @return bytes sent, or negative: -1 for a negative socket or a NULL handler, with the line
 *          "传入值出错，cb=..., sock=..." on standard output, else the code of the receive or the send,
 *          which is not logged. */
TAVISYS_API INT32_T deal_data_from_tavisys_msg_channel(INT32_T sock, TRLV_MESSAGE_CB handler);

/** Bytes in the head of the text-headed channel, "%04d|%04d|%08d|" of type, result and length. Types and
 *  results of more than 4 characters and lengths of more than 8 don't fit and can't travel on it. */
#define TAVISYS_NET_CHANNEL_HEAD_LENGTH 19

/** Read the head of the text-headed channel. What follows its third field is not looked at.
 *  @param msghead [in]  the head's text, NUL-terminated.
 *  @param head    [out] receives the numbers; untouched on failure.
 *  @return 0, or how many fields could be split, which is logged at WARN: 1 or 2; 3 when one of them is no
 *          number; -1 when there was none. A field that is empty or longer than its room (4, 4 and 8
 *          characters) can't be split. -1 also for a NULL argument, without a log line. */
TAVISYS_API RTSTATUS parse_header_file(const INT8_T *msghead, TP_MESSAGE_HEAD *head);

/** Send one message with a head of text.
 *  @param sock    [in] connected socket.
 *  @param head    [in] the head; its first 19 characters are sent, whatever the numbers are.
 *  @param headlen [in] ignored.
 *  @param body    [in] the head's `length` bytes; NULL sends the head alone.
 *  @return bytes sent (19 and the body's), or -1: NULL head, a length too large for the byte count that is
 *          returned, no connected socket, connection lost, peer too slow, a negative length with a body,
 *          whose head has gone out by then. */
TAVISYS_API INT32_T send_data_to_net_communication_channel(INT32_T sock, const TP_MESSAGE_HEAD *head,
                                                           INT32_T headlen, const INT8_T *body);

/** One round trip on the text-headed channel: send a request, receive its reply, whose head has to come
 *  within 1 second. The socket stays open. Failures are logged at WARN, those of memory as "创建失败!", but
 *  not a head or a body of which nothing comes in time; what was received at INFO.
 *  @param sock    [in]  connected socket.
 *  @param type    [in]  message type.
 *  @param sndmsg  [in]  request body; NULL sends the head alone, whatever `sndlen` is.
 *  @param sndlen  [in]  bytes in the request body.
 *  @param rcvmsg  [out] receives the reply body (NULL when there is none) with a NUL behind it, which the
 *                       caller frees with safe_free(); untouched on failure. When NULL, the reply body is
 *                       dropped. Surprise: a body that ends early is no failure, zeros stand for what is
 *                       missing; but of a body of more than 1 MiB at least the largest of 1, 2, 4, 8 ...
 *                       MiB below its length has to come.
 *  @param rcvlen  [out] receives the length that the reply's head states; untouched on failure. May be
 *                       NULL.
 *  @param timeout [in]  seconds for the body, as receive_data_from_tcp_socket() takes them.
 *  @return 0, or: -8 a reply of another type; the reply's result when that is not 0, be it negative or
 *          positive; -1 for every other failure. */
TAVISYS_API RTSTATUS exchange_data_in_net_communication_channel(INT32_T sock, INT32_T type,
                                                                const INT8_T *sndmsg, INT32_T sndlen,
                                                                PVOID *rcvmsg, INT32_T *rcvlen,
                                                                INT32_T timeout);

#ifdef __cplusplus
}
#endif

#endif
