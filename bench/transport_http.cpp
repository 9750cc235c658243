// HTTP/1.1 with JSON, with and without a kept connection.
#include <httplib.h>
#include <string>
#include <sys/socket.h>
#include <thread>

#include "codecs.h"
#include "transports.h"

namespace bench {

namespace {

class HTTP_CLIENT_T : public CLIENT_T {
public:
    HTTP_CLIENT_T(int port, bool kept) : client_("127.0.0.1", port) {
        client_.set_keep_alive(kept);
        client_.set_tcp_nodelay(true);
    }
    bool exchange(QUESTION_T question) override {
        const auto reply = client_.Get(question == QUESTION_T::VERSION ? "/version" : "/page");
        if (!reply || reply->status != 200)
            return false;
        BODY_T body(reply->body.size());
        memcpy(body.data(), reply->body.data(), body.length());
        if (question == QUESTION_T::VERSION) {
            auto *version = json_codec<TP_TAVISYS_VERSION_INFORMATION_T>().decode(body);
            delete_tavisys_version_information(&version);
            return true;
        }
        PAGE_T *page = json_codec<PAGE_T>().decode(body);
        release(&page);
        return true;
    }

private:
    httplib::Client client_;
};

class HTTP_T : public TRANSPORT_T {
public:
    explicit HTTP_T(bool kept) : kept_(kept) {
        server_.new_task_queue = [] { return new httplib::ThreadPool(SERVERS); };
        server_.set_tcp_nodelay(true);
        server_.set_keep_alive_max_count(1U << 30);
        server_.Get("/version", [](const httplib::Request &, httplib::Response &reply) {
            say(json_codec<TP_TAVISYS_VERSION_INFORMATION_T>().encode(answers().version, 0), &reply);
        });
        server_.Get("/page", [](const httplib::Request &, httplib::Response &reply) {
            say(json_codec<PAGE_T>().encode(*answers().page, 0), &reply);
        });
        int listener = -1;
        server_.set_socket_options([&](int sock) { listener = sock; });
        port_ = server_.bind_to_any_port("127.0.0.1");
        listen(listener, SOMAXCONN); // its own backlog of 5 drops connections, which wait for seconds then
        thread_ = std::thread([this] { server_.listen_after_bind(); });
    }
    ~HTTP_T() override {
        server_.stop();
        thread_.join();
    }
    const char *name() const override { return kept_ ? "http_kept" : "http"; }
    std::unique_ptr<CLIENT_T> connect() override { return std::make_unique<HTTP_CLIENT_T>(port_, kept_); }

private:
    static void say(const BODY_T &body, httplib::Response *reply) {
        reply->set_content(std::string(body.data(), body.length()), "application/json");
    }
    bool kept_;
    httplib::Server server_;
    int port_ = 0;
    std::thread thread_;
};

} // namespace

std::unique_ptr<TRANSPORT_T> start_http() {
    return std::make_unique<HTTP_T>(false);
}
std::unique_ptr<TRANSPORT_T> start_http_kept() {
    return std::make_unique<HTTP_T>(true);
}

} // namespace bench
