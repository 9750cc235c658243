// Moving bytes over a socket within a deadline; what the socket helpers and the TRLV framing share.
#ifndef TAVISYS_SUPPORT_TRANSFER_H
#define TAVISYS_SUPPORT_TRANSFER_H

#include <cstddef>
#include <cstdint>

#include "support/deadline.h"
#include "support/owner.h"

struct iovec;

namespace tavisys {

// Receives up to `length` bytes: fewer when the stream ends or the time is up.
// Returns the bytes received, or -1 when an error or the time limit came before any byte.
int64_t receive_bytes(int sock, void *buffer, size_t length, DEADLINE_T &deadline);

// Receives `length` bytes, at least one, into memory that doubles as it fills, from 1 MiB on: what a peer
// claims costs no more before its bytes arrive. `spare` bytes follow them.
// Returns the bytes received. Fewer than `length` are handed over only when the memory for the whole had
// been taken by then; the rest of it is zero. Else MEMORY_SHORT, or RECEIVED_NOTHING for an error, the time
// limit before any byte, or an end before the memory had grown to the whole: the body stays as it was.
constexpr int64_t RECEIVED_NOTHING = -1;
constexpr int64_t MEMORY_SHORT = -2;
int64_t receive_growing(int sock, size_t length, size_t spare, INT32_T timeout, OWNED_BODY_T *body);

// Sends the pieces in one go as far as the socket takes them. Returns the bytes sent, also when the
// connection broke or the peer was too slow before the end.
int64_t send_pieces(int sock, iovec *pieces, size_t count);

} // namespace tavisys

#endif
