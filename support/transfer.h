// Moving bytes over a socket within a deadline; what the socket helpers and the TRLV framing share.
#ifndef TAVISYS_SUPPORT_TRANSFER_H
#define TAVISYS_SUPPORT_TRANSFER_H

#include <cstddef>
#include <cstdint>

#include "support/deadline.h"

struct iovec;

namespace tavisys {

// Receives up to `length` bytes: fewer when the stream ends or the time is up.
// Returns the bytes received, or -1 when an error or the time limit came before any byte.
int64_t receive_bytes(int sock, void *buffer, size_t length, DEADLINE_T &deadline);

// Sends the pieces in one go as far as the socket takes them. Returns the bytes sent, also when the
// connection broke or the peer was too slow before the end.
int64_t send_pieces(int sock, iovec *pieces, size_t count);

} // namespace tavisys

#endif
