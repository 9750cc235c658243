// The text-headed channel against a peer that sends anything and closes. The first byte picks who receives,
// the second how; the rest is what the peer sends.
//
// What has to come of it is worked out here from the bytes alone.
#include <algorithm>
#include <climits>
#include <cstdlib>

#include "peer.h"
#include "support_memory.h"
#include "support_socket.h"
#include "tavisys_comm.h"

using namespace fuzz;

namespace {

constexpr size_t HEAD_LENGTH = TAVISYS_NET_CHANNEL_HEAD_LENGTH;
constexpr INT32_T TIMEOUT = 2; // seconds; nothing here waits

// A number as far as the text is one.
bool number_in(std::string_view text, INT32_T *number) {
    const size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    text.remove_prefix(start);
    const bool is_negative = text.starts_with('-');
    if (is_negative || text.starts_with('+'))
        text.remove_prefix(1);
    int value = 0;
    size_t digits = 0;
    for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; digits++)
        value = value * 10 + (text[digits] - '0');
    *number = is_negative ? -value : value;
    return digits > 0;
}

// What parse_header_file() has to make of a text without a NUL.
RTSTATUS parse(std::string_view text, TP_MESSAGE_HEAD *head) {
    constexpr size_t WIDTHS[] = {4, 4, 8};
    INT32_T numbers[3] = {};
    bool all_numbers = true;
    RTSTATUS count = 0;
    for (const size_t width : WIDTHS) {
        const std::string_view field = text.substr(0, text.find('|'));
        if (field.empty() || field.size() > width)
            return count == 0 ? -1 : count;
        all_numbers = number_in(field, &numbers[count++]) && all_numbers;
        text.remove_prefix(std::min(text.size(), field.size() + 1));
    }
    if (!all_numbers)
        return count;
    *head = {numbers[0], numbers[1], numbers[2]};
    return 0;
}

std::string_view up_to_nul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// A reply, and what the exchange has to return for it when the reply's type is the request's.
struct REPLY_T {
    RTSTATUS result = -1;
    TP_MESSAGE_HEAD head{};
    bool has_head = false;
    std::string body; // as it is handed over, without the NUL behind it
};

REPLY_T reply_in(std::string_view stream) {
    REPLY_T reply;
    reply.has_head =
        stream.size() >= HEAD_LENGTH && parse(up_to_nul(stream.substr(0, HEAD_LENGTH)), &reply.head) == 0;
    // A body above the first room has to fill it at least, which no input is long enough for.
    if (!reply.has_head || reply.head.length < 0 || reply.head.length > static_cast<INT32_T>(FIRST_ROOM))
        return reply;
    const auto length = static_cast<size_t>(reply.head.length);
    reply.body = stream.substr(HEAD_LENGTH, length);
    reply.body.resize(length); // an early end is no failure
    reply.result = reply.head.result;
    return reply;
}

void exchange(uint8_t how, std::string_view stream) {
    const PEER_T peer(stream);
    const REPLY_T expected = reply_in(stream);
    const INT32_T type = (how & 1) == 0 ? expected.head.type : 5006;
    const std::string request(how >> 3, 'r');
    INT8_T mark = 0;
    PVOID reply = &mark;
    INT32_T length = -77;
    forget_allocations();
    const RTSTATUS result = exchange_data_in_net_communication_channel(
        peer.socket(), type, request.data(), static_cast<INT32_T>(request.size()),
        (how & 2) == 0 ? &reply : nullptr, (how & 4) == 0 ? &length : nullptr, TIMEOUT);
    require_receiver_memory(int64_t{expected.head.length} + 1, stream.size());
    const bool is_other = expected.has_head && expected.head.type != type;
    const RTSTATUS wanted = is_other ? -TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH : expected.result;
    require(result == wanted, "another result of the exchange");
    require(length == (wanted == 0 && (how & 4) == 0 ? expected.head.length : -77), "another length");
    if (wanted != 0 || (how & 2) != 0) {
        require(reply == &mark, "a reply of a failure");
        return;
    }
    require((reply == nullptr) == expected.body.empty(), "a body, or none");
    require(expected.body.empty() || memcmp(reply, expected.body.c_str(), expected.body.size() + 1) == 0,
            "another body");
    safe_free(reply);
}

void parse_head(uint8_t, std::string_view text) {
    const std::string head_text(up_to_nul(text));
    TP_MESSAGE_HEAD expected{7, 7, 7};
    TP_MESSAGE_HEAD head = expected;
    const RTSTATUS wanted = parse(head_text, &expected);
    require(parse_header_file(head_text.c_str(), &head) == wanted, "another result of parsing");
    require(memcmp(&head, &expected, sizeof head) == 0, "another head");
}

// Numbers that fit into the head come back from it.
void send_head(uint8_t how, std::string_view input) {
    INPUT_T numbers(reinterpret_cast<const uint8_t *>(input.data()), input.size());
    TP_MESSAGE_HEAD head{numbers.integer(), numbers.integer(), 0};
    const std::string body(numbers.rest());
    const bool has_body = (how & 1) == 0;
    const bool is_negative = (how & 2) != 0;
    head.length = is_negative ? -1 - how : static_cast<INT32_T>(body.size());
    const PEER_T peer("");
    const INT32_T result =
        send_data_to_net_communication_channel(peer.socket(), &head, 0, has_body ? body.data() : nullptr);
    const std::string sent = peer.received();
    const std::string sent_body = has_body && !is_negative ? body : "";
    require(sent.size() == HEAD_LENGTH + sent_body.size() && sent.ends_with(sent_body),
            "sent something else");
    require(result == (has_body && is_negative ? -1 : static_cast<INT32_T>(sent.size())), "another result");
    const auto fits = [](INT32_T value) { return value >= -999 && value <= 9999; };
    if (!fits(head.type) || !fits(head.result))
        return;
    TP_MESSAGE_HEAD again{};
    require(parse_header_file(sent.substr(0, HEAD_LENGTH).c_str(), &again) == 0 &&
                memcmp(&again, &head, sizeof head) == 0,
            "the head does not come back");
}

void receive(uint8_t how, std::string_view input) {
    INPUT_T pieces(reinterpret_cast<const uint8_t *>(input.data()), input.size());
    INT32_T length = pieces.integer();
    length = (how & 2) != 0 ? static_cast<INT32_T>(static_cast<uint32_t>(length) % LONGEST_INPUT) : length;
    const std::string_view stream = pieces.rest();
    const PEER_T peer(stream);
    std::string expected(stream.substr(0, length < 0 ? 0 : static_cast<size_t>(length)));
    const auto count = static_cast<INT32_T>(expected.size());
    INT8_T *text = nullptr;
    if ((how & 1) == 0) {
        text = static_cast<INT8_T *>(calloc(1, LONGEST_INPUT));
        const INT32_T wanted = length < 1 ? -1 : std::min<INT32_T>(count, LONGEST_INPUT);
        length = std::min<INT32_T>(length, LONGEST_INPUT);
        require(receive_data_from_tcp_socket(peer.socket(), text, length, TIMEOUT) == wanted,
                "another number of bytes");
        require(wanted < 0 || memcmp(text, expected.data(), static_cast<size_t>(wanted)) == 0, "other bytes");
    } else {
        const bool is_long = length > static_cast<INT32_T>(FIRST_ROOM);
        const INT32_T wanted = length < 1 ? -TRLV_TP_ERRCODE_INVALID_ARGS
                               : is_long  ? -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL
                                          : count;
        forget_allocations();
        require(receive_text_from_tcp_socket(peer.socket(), &text, length, TIMEOUT) == wanted,
                "another number of bytes");
        require_receiver_memory(int64_t{length} + 1, stream.size());
        require((text == nullptr) == (wanted < 0), "a text of a failure, or none of a success");
        expected.resize(text == nullptr ? 0 : static_cast<size_t>(length));
        require(text == nullptr || memcmp(text, expected.c_str(), expected.size() + 1) == 0, "another text");
    }
    safe_free(text);
}

constexpr void (*ROLES[])(uint8_t how, std::string_view stream) = {exchange, parse_head, send_head, receive};

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
