// The library's channel, and the floor beneath it.
#include <atomic>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "transports.h"

namespace bench {

namespace {

ANSWERS_T s_answers;

// ---- The channel

// The types under which the channel alone is measured: the bytes are there, as for the floor.
constexpr INT32_T VERSION_BYTES = 1;
constexpr INT32_T PAGE_BYTES = 2;

RTSTATUS answer_bytes(const BODY_T &body, PVOID *reply, INT32_T *replylen) {
    *reply = malloc(body.length());
    memcpy(*reply, body.data(), body.length());
    *replylen = static_cast<INT32_T>(body.length());
    return 0;
}

RTSTATUS answer(INT32_T type, PVOID, INT32_T, PVOID *reply, INT32_T *replylen) {
    if (type == VERSION_BYTES)
        return answer_bytes(s_answers.version_body, reply, replylen);
    if (type == PAGE_BYTES)
        return answer_bytes(s_answers.page_body, reply, replylen);
    if (type == TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION)
        return encode_tavisys_version_information_to_message(&s_answers.version, reply, replylen);
    return encode_tavisys_basic_movie_ext_information_to_message(s_answers.page, reply, replylen);
}

constexpr TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T PAGE_REQUEST{0, 0, 0, 0, 0, 1, 24, 0};

class CHANNEL_CLIENT_T : public CLIENT_T {
public:
    bool exchange(QUESTION_T question) override {
        const int sock = agent_open_tavisys_msg_channel();
        PVOID reply = nullptr;
        INT32_T length = 0;
        const RTSTATUS status =
            question == QUESTION_T::VERSION
                ? exchange_data_in_tavisys_msg_channel(sock, VERSION_BYTES, nullptr, 0, &reply, &length, 5)
                : exchange_data_in_tavisys_msg_channel(sock, PAGE_BYTES, &PAGE_REQUEST, sizeof PAGE_REQUEST,
                                                       &reply, &length, 5);
        close_tavisys_msg_channel(sock);
        safe_free(reply);
        return status == 0;
    }
};

class AGENT_CLIENT_T : public CLIENT_T {
public:
    bool exchange(QUESTION_T question) override {
        if (question == QUESTION_T::VERSION) {
            TP_TAVISYS_VERSION_INFORMATION_T *version = nullptr;
            const RTSTATUS status = tavisysapi_get_software_version_information(&version);
            delete_tavisys_version_information(&version);
            return status == 0;
        }
        PAGE_T *page = nullptr;
        const RTSTATUS status = tavisysapi_get_movie_basic_ext_information(&PAGE_REQUEST, &page);
        const bool whole = status == 0 && page != nullptr;
        release(&page);
        return whole;
    }
};

// Threads that each wait for a connection, serve it and close it.
class POOL_T : public TRANSPORT_T {
public:
    using SERVE_T = void (*)(int listener);
    POOL_T(int listener, SERVE_T serve) : listener_(listener) {
        if (listener < 0) {
            perror("listening");
            exit(EXIT_FAILURE);
        }
        for (int i = 0; i < SERVERS; i++)
            threads_.emplace_back([this, serve] {
                while (!stop_)
                    serve(listener_);
            });
    }
    POOL_T(const POOL_T &) = delete;
    POOL_T &operator=(const POOL_T &) = delete;
    ~POOL_T() override {
        stop_ = true;
        shutdown(listener_, SHUT_RDWR);
        for (std::thread &thread : threads_)
            thread.join();
        close(listener_);
    }

private:
    int listener_;
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> threads_;
};

class CHANNEL_T : public POOL_T {
public:
    CHANNEL_T()
        : POOL_T(svr_open_tavisys_msg_channel(), [](int listener) {
              const int sock = monitor_tavisys_msg_channel(listener);
              if (sock < 0)
                  return;
              deal_data_from_tavisys_msg_channel(sock, answer);
              close_tavisys_msg_channel(sock);
          }) {}
    const char *name() const override { return "channel"; }
    std::unique_ptr<CLIENT_T> connect() override { return std::make_unique<CHANNEL_CLIENT_T>(); }
};

// Asks the channel's server, which has to be there.
class AGENT_T : public TRANSPORT_T {
public:
    const char *name() const override { return "agent"; }
    std::unique_ptr<CLIENT_T> connect() override { return std::make_unique<AGENT_CLIENT_T>(); }
};

// ---- The floor: the same bytes both ways, in one send() each. A version's request is a head alone, a
// page's has a body of 32 bytes.

struct MESSAGE_T {
    TRLV_MESSAGE_HEAD head;
    char body[16 * 1024];
};
constexpr size_t HEAD = sizeof(TRLV_MESSAGE_HEAD);

// Reads until the whole message is there.
bool receive(int sock, MESSAGE_T *message) {
    size_t received = 0;
    while (received < HEAD || received < HEAD + static_cast<size_t>(message->head.length)) {
        const ssize_t count =
            recv(sock, reinterpret_cast<char *>(message) + received, sizeof *message - received, 0);
        if (count <= 0)
            return false;
        received += static_cast<size_t>(count);
    }
    return true;
}
bool send_whole(int sock, const MESSAGE_T &message) {
    const size_t length = HEAD + static_cast<size_t>(message.head.length);
    return send(sock, &message, length, MSG_NOSIGNAL) == static_cast<ssize_t>(length);
}

MESSAGE_T s_version;
MESSAGE_T s_page;
sockaddr_in s_address{};

void serve_floor(int listener) {
    const int sock = accept(listener, nullptr, nullptr);
    if (sock < 0)
        return;
    MESSAGE_T request;
    if (receive(sock, &request))
        send_whole(sock, request.head.length == 0 ? s_version : s_page);
    close(sock);
}

class FLOOR_CLIENT_T : public CLIENT_T {
public:
    bool exchange(QUESTION_T question) override {
        const int sock = socket(AF_INET, SOCK_STREAM, 0);
        const bool whole =
            ::connect(sock, reinterpret_cast<const sockaddr *>(&s_address), sizeof s_address) == 0 &&
            send_whole(sock, question == QUESTION_T::VERSION ? small_ : large_) && receive(sock, &reply_);
        close(sock);
        return whole;
    }

private:
    MESSAGE_T small_{{TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, 0, 0}, {}};
    MESSAGE_T large_{{TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, 0,
                      sizeof(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T)},
                     {}};
    MESSAGE_T reply_{};
};

int listen_anywhere() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    s_address.sin_family = AF_INET;
    s_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof s_address;
    if (bind(listener, reinterpret_cast<const sockaddr *>(&s_address), size) < 0 ||
        listen(listener, SOMAXCONN) < 0 ||
        getsockname(listener, reinterpret_cast<sockaddr *>(&s_address), &size) < 0)
        return -1;
    return listener;
}

class FLOOR_T : public POOL_T {
public:
    FLOOR_T() : POOL_T(listen_anywhere(), serve_floor) {}
    const char *name() const override { return "floor"; }
    std::unique_ptr<CLIENT_T> connect() override { return std::make_unique<FLOOR_CLIENT_T>(); }
};

bool fill(MESSAGE_T *message, INT32_T type, const BODY_T &body) {
    if (body.length() > sizeof message->body) {
        fprintf(stderr, "a reply of %zu bytes is longer than the floor has room for\n", body.length());
        return false;
    }
    message->head = {type, 0, static_cast<INT32_T>(body.length())};
    memcpy(message->body, body.data(), body.length());
    return true;
}

} // namespace

const ANSWERS_T &answers() {
    return s_answers;
}

bool prepare(const PAGE_T *page) {
    static char version[] = "1.0.0";
    static char device[] = "cabinet";
    static char code[] = "cb69f1f5-9e1f-4f6b-8a57-0c2f7b5f3d11";
    s_answers.version = {version, device, code};
    s_answers.page = page;
    PVOID body = nullptr;
    INT32_T length = 0;
    if (encode_tavisys_version_information_to_message(&s_answers.version, &body, &length) != 0)
        return false;
    s_answers.version_body = BODY_T(body, static_cast<size_t>(length));
    if (encode_tavisys_basic_movie_ext_information_to_message(page, &body, &length) != 0)
        return false;
    s_answers.page_body = BODY_T(body, static_cast<size_t>(length));
    return fill(&s_version, TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, s_answers.version_body) &&
           fill(&s_page, TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, s_answers.page_body);
}

std::unique_ptr<TRANSPORT_T> start_floor() {
    return std::make_unique<FLOOR_T>();
}
std::unique_ptr<TRANSPORT_T> start_channel() {
    return std::make_unique<CHANNEL_T>();
}
std::unique_ptr<TRANSPORT_T> start_agent() {
    return std::make_unique<AGENT_T>();
}

} // namespace bench
