// What the functions that make replies are given, and what they share.
#ifndef TAVISYS_SERVER_QUESTION_H
#define TAVISYS_SERVER_QUESTION_H

#include <cstring>
#include <vector>

#include "replies.h"
#include "tavisystype.h"

namespace server {

struct REQUEST_T {
    const STORE_T &store;
    const IDENTITY_T &identity;
    const void *body;
    INT32_T length;

    // The request record; its length has been checked.
    template <class RECORD>
    RECORD as() const {
        RECORD record{};
        memcpy(&record, body, sizeof record);
        return record;
    }
};

// Where the body goes, which the caller owns then, and its length.
struct REPLY_T {
    PVOID *body;
    INT32_T *length;
};

// The result of an encoder as the client gets it.
inline RTSTATUS encoded(RTSTATUS result) {
    return result < 0 ? TAVISYS_RESULT_SERVER_ERROR : 0;
}

// A copy of the bytes.
RTSTATUS reply_bytes(const void *bytes, size_t count, const REPLY_T &reply);

// The body of a list without entries: the list encoders take none.
RTSTATUS reply_empty_list(const REPLY_T &reply);

// Chains the records, which may borrow their texts, and has them encoded.
template <class NODE, class RECORDS, class ENCODE>
RTSTATUS reply_list(RECORDS &records, ENCODE encode, const REPLY_T &reply) {
    if (records.empty())
        return reply_empty_list(reply);
    std::vector<NODE> nodes(records.size());
    for (size_t i = 0; i < records.size(); i++)
        nodes[i] = {i + 1 < records.size() ? &nodes[i + 1] : nullptr, &records[i]};
    return encoded(encode(nodes.data(), reply.body, reply.length));
}

// Storage and transfer
RTSTATUS reply_disks(const REQUEST_T &request, const REPLY_T &reply);
RTSTATUS reply_partitions(const REQUEST_T &request, const REPLY_T &reply);
RTSTATUS reply_movie_count(const REQUEST_T &request, const REPLY_T &reply);
RTSTATUS reply_partition_movies(const REQUEST_T &request, const REPLY_T &reply);
RTSTATUS reply_movies_by_code(const REQUEST_T &request, const REPLY_T &reply);

} // namespace server

#endif
