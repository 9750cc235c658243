// The message channel against a peer that sends anything and closes. The first byte picks who receives, the
// second how; the rest is what the peer sends.
//
// What has to come of it is worked out here from the bytes alone: the result, what is handed over, what is
// sent back.
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "peer.h"
#include "support_memory.h"
#include "support_trlv.h"
#include "tavisys_comm.h"

using namespace fuzz;

namespace {

constexpr INT32_T HEAD_LENGTH = sizeof(TRLV_MESSAGE_HEAD);
constexpr INT32_T TIMEOUT = 2; // seconds; nothing here waits

// One message at the beginning of a stream.
struct MESSAGE_T {
    INT32_T result = 0; // of receiving it: 0, or the negated code
    TRLV_MESSAGE_HEAD head{};
    std::string_view body;
};

INT32_T integer_at(std::string_view bytes, size_t at) {
    INPUT_T input(reinterpret_cast<const uint8_t *>(bytes.data()) + at, bytes.size() - at);
    return input.integer();
}

MESSAGE_T message_in(std::string_view stream) {
    if (stream.size() < HEAD_LENGTH)
        return {-TRLV_TP_ERRCODE_RECEIVE_MSGHEAD_FAIL, {}, {}};
    const TRLV_MESSAGE_HEAD head{integer_at(stream, 0), integer_at(stream, 4), integer_at(stream, 8)};
    if (head.length < 0 || head.length > INT_MAX - HEAD_LENGTH)
        return {-TRLV_TP_ERRCODE_RECEIVE_INVALID_MESSAGE, head, {}};
    const std::string_view rest = stream.substr(HEAD_LENGTH);
    if (rest.size() < static_cast<size_t>(head.length))
        return {-TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL, head, {}};
    return {0, head, rest.substr(0, static_cast<size_t>(head.length))};
}

std::string wire(const TRLV_MESSAGE_HEAD &head, std::string_view body) {
    std::string bytes;
    for (const INT32_T value : {head.type, head.result, head.length})
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>(static_cast<uint32_t>(value) >> shift));
    return bytes.append(body);
}

// The body that was handed over; frees it.
void require_body(PVOID body, std::string_view expected) {
    require((body == nullptr) == expected.empty(), "a body, or none");
    require(expected.empty() || memcmp(body, expected.data(), expected.size()) == 0, "another body");
    safe_free(body);
}

// ---- Who receives

void receive_all(uint8_t how, std::string_view stream) {
    const PEER_T peer(stream);
    const auto receive = how % 2 == 0 ? receive_data_from_tavisys_msg_channel
                                      : receive_trlv_data_from_tcp_communication_channel;
    for (bool is_open = true; is_open;) {
        const MESSAGE_T expected = message_in(stream);
        INT8_T mark = 0;
        PVOID body = &mark;
        TRLV_MESSAGE_HEAD head{};
        forget_allocations();
        const INT32_T result = receive(peer.socket(), &head, HEAD_LENGTH, &body, TIMEOUT);
        require_receiver_memory(expected.head.length, stream.size());
        require(memcmp(&head, &expected.head, sizeof head) == 0, "another head");
        is_open = expected.result == 0;
        require(result == (is_open ? HEAD_LENGTH + head.length : expected.result), "another result");
        require((body == &mark) == expected.body.empty(), "out-argument of a failure, or none of a success");
        if (body != &mark)
            require_body(body, expected.body);
        stream.remove_prefix(std::min(stream.size(), HEAD_LENGTH + expected.body.size()));
    }
}

void exchange(uint8_t how, std::string_view stream) {
    const PEER_T peer(stream);
    const MESSAGE_T expected = message_in(stream);
    const INT32_T type = (how & 1) == 0 ? expected.head.type : TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION;
    const std::string request(how >> 3, 'r');
    INT8_T mark = 0;
    PVOID reply = &mark;
    INT32_T length = -77;
    forget_allocations();
    const RTSTATUS result = exchange_data_in_tavisys_msg_channel(
        peer.socket(), type, request.data(), static_cast<INT32_T>(request.size()),
        (how & 2) == 0 ? &reply : nullptr, (how & 4) == 0 ? &length : nullptr, TIMEOUT);
    require_receiver_memory(expected.head.length, stream.size());
    const bool is_other = expected.head.type != type;
    const RTSTATUS wanted = expected.result != 0 ? expected.result
                            : is_other           ? -TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH
                                                 : expected.head.result;
    require(result == wanted, "another result of the exchange");
    require(peer.received() == wire({type, 0, static_cast<INT32_T>(request.size())}, request),
            "another request");
    require(length == (wanted == 0 && (how & 4) == 0 ? expected.head.length : -77), "another length");
    if (wanted == 0 && (how & 2) == 0)
        require_body(reply, expected.body);
    else
        require(reply == &mark, "a reply of a failure");
}

// What the handler is asked, and how it answers.
struct ANSWER_T {
    const MESSAGE_T *expected;
    uint8_t how;
    bool was_asked;
    bool says_body() const { return (how & 1) == 0; }
    RTSTATUS result() const { return (how >> 1) - 64; }
};
ANSWER_T s_answer;

RTSTATUS handle(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    const MESSAGE_T &expected = *s_answer.expected;
    require(type == expected.head.type && length == expected.head.length, "another request came");
    require((body == nullptr) == (length == 0), "a request's body, or none");
    require(length == 0 || memcmp(body, expected.body.data(), expected.body.size()) == 0,
            "another body came");
    require(*reply == nullptr && *replylen == 0, "an answer before the answer");
    s_answer.was_asked = true;
    if (s_answer.says_body() && length > 0) { // the request goes back
        *reply = malloc(static_cast<size_t>(length));
        memcpy(*reply, body, static_cast<size_t>(length));
        *replylen = length;
    }
    return s_answer.result();
}

void deal(uint8_t how, std::string_view stream) {
    const PEER_T peer(stream);
    const MESSAGE_T expected = message_in(stream);
    s_answer = {&expected, how, false};
    forget_allocations();
    const INT32_T result = deal_data_from_tavisys_msg_channel(peer.socket(), handle);
    require_receiver_memory(expected.head.length, stream.size());
    const bool is_whole = expected.result == 0;
    require(s_answer.was_asked == is_whole, "the handler was asked, or wasn't");
    const std::string_view reply = s_answer.says_body() ? expected.body : std::string_view();
    const std::string sent =
        is_whole ? wire({expected.head.type, s_answer.result(), static_cast<INT32_T>(reply.size())}, reply)
                 : "";
    require(peer.received() == sent, "another answer");
    require(result == (is_whole ? static_cast<INT32_T>(sent.size()) : expected.result),
            "another result of dealing");
}

constexpr void (*ROLES[])(uint8_t how, std::string_view stream) = {receive_all, exchange, deal};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    start();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    INPUT_T input(data, size);
    const size_t role = input.byte();
    if (role >= std::size(ROLES) || size > LONGEST_INPUT)
        return -1;
    const uint8_t how = input.byte();
    ROLES[role](how, input.rest());
    return 0;
}
