/** @file support_socket.h
 *  TCP sockets over IPv4. Sockets are closed on exec, send without delay and never raise SIGPIPE; an
 *  interrupted call goes on. A socket must not be used by two threads at a time.
 *
 *  A bad argument is a NULL pointer or a length below the least; what is no connected socket fails as a lost
 *  connection does. */
#ifndef TAVISYS_SUPPORT_SOCKET_H
#define TAVISYS_SUPPORT_SOCKET_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Open a listening socket on all IPv4 interfaces.
 *  @param port [in] 0 to 65535; 0 takes any free port.
 *  @return the socket, or -1 with errno set: port out of range, in use or not permitted, out of
 *          descriptors. */
TAVISYS_API INT32_T create_tcp_server_socket(INT32_T port);

/** Connect to a server, waiting at most 5 seconds. What a caller sends by itself through the blocking socket
 *  waits no longer either: its SO_SNDTIMEO is set.
 *  @param ipaddr [in]  dotted IPv4 address.
 *  @param port   [in]  1 to 65535.
 *  @param sock   [out] receives the connected socket; untouched on failure.
 *  @return 0, or -1 with errno set: NULL argument, no such address or port, refused, not reachable in
 *          time, out of descriptors. */
TAVISYS_API INT32_T create_tcp_client_socket(const INT8_T *ipaddr, INT32_T port, INT32_T *sock);

/** Wait for a connection and accept it.
 *  @param listener [in] listening socket.
 *  @return the accepted socket, or -1 with errno set: no listening socket, out of descriptors. A
 *          connection that its peer gave up before it was accepted is passed over. */
TAVISYS_API INT32_T create_tcp_accept_socket(INT32_T listener);

/** Close a socket. @return 0, or -1: not an open descriptor. */
TAVISYS_API RTSTATUS close_tcp_socket(INT32_T sock);

/** Send all of the data. Fails when the peer takes nothing for 5 seconds, or takes it so slowly that the
 *  whole needs more than 5 seconds and a second for every 64 KiB taken.
 *  @param sock   [in] socket.
 *  @param data   [in] the bytes.
 *  @param length [in] bytes of data, at least 0, which sends nothing and asks nothing of the socket.
 *  @return bytes sent (length), or -1: bad argument, connection lost, peer too slow. */
TAVISYS_API INT32_T send_data_to_tcp_socket(INT32_T sock, const void *data, INT32_T length);

/** Receive until the wanted length has come, the stream ends or the time is up.
 *  @param sock    [in]  socket.
 *  @param buffer  [out] receives the bytes.
 *  @param length  [in]  bytes wanted, at least 1.
 *  @param timeout [in]  seconds to wait for progress; the whole may take that and a second for every
 *                       64 KiB received. 0 or less: no limit.
 *  @return bytes received, also fewer than wanted; 0 when the peer closed before any byte; -1: bad
 *          argument, nothing came in time, connection lost before any byte. */
TAVISYS_API INT32_T receive_data_from_tcp_socket(INT32_T sock, PVOID buffer, INT32_T length, INT32_T timeout);

/** Receive a text of a known length into fresh memory, which grows with what arrives, never with what a
 *  peer claims.
 *  @param sock    [in]  socket.
 *  @param text    [out] receives `length` + 1 bytes, which the caller frees with safe_free(): what came,
 *                       then zeros. Untouched on failure.
 *  @param length  [in]  bytes wanted, at least 1.
 *  @param timeout [in]  as receive_data_from_tcp_socket() takes it.
 *  @return bytes received, also fewer than wanted when the stream ends or the time is up: of a text of up
 *          to 1 MiB any number, of a longer one at least the largest of 1, 2, 4, 8 ... MiB that is below
 *          its length. Else negative: -2 bad argument, -3 memory short, -5 nothing came in time,
 *          connection lost, or too little of a long text. */
TAVISYS_API INT32_T receive_text_from_tcp_socket(INT32_T sock, INT8_T **text, INT32_T length,
                                                 INT32_T timeout);

#ifdef __cplusplus
}
#endif

#endif
