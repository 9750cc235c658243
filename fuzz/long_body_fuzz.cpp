// Bodies of some MiB, of which more or less comes than was claimed: where the memory for a body grows. The
// first byte picks who receives; then come the length that is claimed and the number of bytes that the peer
// sends before it closes.
//
// A target of its own, since moving megabytes takes a thousand times as long as everything else that the
// channels do with an input.
#include <algorithm>
#include <thread>

#include "peer.h"
#include "support_memory.h"
#include "support_socket.h"
#include "tavisys_comm.h"

using namespace fuzz;

namespace {

constexpr INT32_T HEAD_LENGTH = sizeof(TRLV_MESSAGE_HEAD);
constexpr INT32_T NO_LIMIT = 0; // nobody knows when the thread that sends has its turn

constexpr size_t MOST_ROOMS = 6;
constexpr size_t LONGEST_BODY = MOST_ROOMS * FIRST_ROOM;

// A peer that sends more than the socket's buffer holds, from a thread of its own, and then closes its side.
class LONG_PEER_T {
public:
    LONG_PEER_T(std::string_view head, std::string_view body) {
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) == 0, "no sockets");
        thread_ = std::thread([=, theirs = ends_[1]] {
            if (send_whole(theirs, head))
                send_whole(theirs, body);
            shutdown(theirs, SHUT_WR);
        });
    }
    LONG_PEER_T(const LONG_PEER_T &) = delete;
    LONG_PEER_T &operator=(const LONG_PEER_T &) = delete;
    ~LONG_PEER_T() {
        close(ends_[0]); // ends the thread's sending
        thread_.join();
        close(ends_[1]);
    }

    int socket() const { return ends_[0]; }

private:
    static bool send_whole(int socket, std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
        return true;
    }

    int ends_[2] = {-1, -1};
    std::thread thread_;
};

// A number of bytes around a whole MiB, where rooms end.
size_t length_from(INPUT_T *input) {
    const auto whole = static_cast<int64_t>(input->below(MOST_ROOMS) * FIRST_ROOM);
    const auto beside = static_cast<int16_t>(input->integer());
    return static_cast<size_t>(std::max<int64_t>(whole + beside, 0));
}

std::string_view body_of(size_t length) {
    static const std::string s_body = [] {
        std::string bytes(LONGEST_BODY, '\0');
        for (size_t i = 0; i < bytes.size(); i++)
            bytes[i] = static_cast<char>(i % 251);
        return bytes;
    }();
    return std::string_view(s_body).substr(0, length);
}

void receive_body(size_t claimed, std::string_view sent) {
    const INT32_T fields[] = {1000, 0, static_cast<INT32_T>(claimed)};
    std::string head;
    for (const INT32_T field : fields)
        for (unsigned shift = 0; shift < 32; shift += 8)
            head.push_back(static_cast<char>(static_cast<uint32_t>(field) >> shift));
    const LONG_PEER_T peer(head, sent);
    PVOID body = nullptr;
    TRLV_MESSAGE_HEAD received{};
    forget_allocations();
    const INT32_T result =
        receive_data_from_tavisys_msg_channel(peer.socket(), &received, HEAD_LENGTH, &body, NO_LIMIT);
    require_receiver_memory(static_cast<int64_t>(claimed), std::min(claimed, sent.size()));
    const bool is_whole = sent.size() >= claimed;
    require(result == (is_whole ? HEAD_LENGTH + received.length : -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL),
            "another result of a body");
    require((body != nullptr) == (is_whole && claimed > 0), "a body of a failure, or none of a success");
    require(body == nullptr || memcmp(body, sent.data(), claimed) == 0, "another body");
    safe_free(body);
}

void receive_text(size_t length, std::string_view sent) {
    const LONG_PEER_T peer("", sent);
    const size_t count = std::min(length, sent.size());
    size_t needed = 0; // the last room that is filled before the memory for the whole is taken
    for (size_t room = FIRST_ROOM; room < length; room *= 2)
        needed = room;
    const INT32_T wanted = length < 1       ? -TRLV_TP_ERRCODE_INVALID_ARGS
                           : count < needed ? -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL
                                            : static_cast<INT32_T>(count);
    INT8_T *text = nullptr;
    forget_allocations();
    const INT32_T result =
        receive_text_from_tcp_socket(peer.socket(), &text, static_cast<INT32_T>(length), NO_LIMIT);
    require_receiver_memory(static_cast<int64_t>(length) + 1, count);
    require(result == wanted, "another result of a text");
    require((text == nullptr) == (wanted < 0), "a text of a failure, or none of a success");
    if (text != nullptr) {
        std::string expected(sent.substr(0, count));
        expected.resize(length);
        require(memcmp(text, expected.c_str(), length + 1) == 0, "another text");
    }
    safe_free(text);
}

constexpr void (*ROLES[])(size_t claimed, std::string_view sent) = {receive_body, receive_text};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    start();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    INPUT_T input(data, size);
    const size_t role = input.byte();
    if (role >= std::size(ROLES))
        return -1;
    const size_t claimed = length_from(&input);
    ROLES[role](claimed, body_of(length_from(&input)));
    return 0;
}
