// What the server answers: for each message type how its request body looks and how the reply is made.
#ifndef TAVISYS_SERVER_REPLIES_H
#define TAVISYS_SERVER_REPLIES_H

#include <string>
#include <vector>

#include "store.h"
#include "tavisystype.h"

namespace server {

// What the server says of itself.
struct IDENTITY_T {
    std::string version;
    std::string name; // device name
    std::string uuid; // which is its device code, too
};

// Sets what handle_request() answers from. Both must outlive the last request.
void answer_from(const STORE_T *store, const IDENTITY_T *identity);

// The message types that handle_request() answers.
std::vector<INT32_T> answered_types();

// The channel's handler (a TRLV_MESSAGE_CB). A request that can't be answered gets a negative result, a
// TAVISYS_RESULT_E, and an INFO line that says why. Any number of threads may call it at once.
RTSTATUS handle_request(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen);

} // namespace server

#endif
