#include "server.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

#include "error.h"
#include "messages.h"
#include "support_memory.h"
#include "support_socket.h"
#include "tavisys_comm.h"
#include "text.h"
#include "tp_trlv.h"

namespace client {

namespace {

struct RESULT_TEXT_T {
    TEXT_T text;
    RTSTATUS result;
    bool away = false; // it may go well the next time
};

constexpr RESULT_TEXT_T RESULT_TEXTS[] = {
    {messages::REFUSED_OR_MALFORMED, -1}, // the agent's own failure and a server's -1 look alike
    {messages::NO_MEMORY, -TRLV_TP_ERRCODE_MALLOC_FAIL},
    {messages::NO_ANSWER, -TRLV_TP_ERRCODE_RECEIVE_MSGHEAD_FAIL, true},
    {messages::ANSWER_CUT_SHORT, -TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL, true},
    {messages::REQUEST_NOT_SENT, -TRLV_TP_ERRCODE_SEND_MSGHEAD_FAIL, true},
    {messages::REQUEST_NOT_SENT, -TRLV_TP_ERRCODE_SEND_MSGBODY_FAIL, true},
    {messages::ANSWER_MALFORMED, -TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH},
    {messages::ANSWER_MALFORMED, -TRLV_TP_ERRCODE_RECEIVE_INVALID_MESSAGE},
    {messages::REFUSED_TYPE, TAVISYS_RESULT_UNKNOWN_TYPE},
    {messages::REFUSED_REQUEST, TAVISYS_RESULT_BAD_REQUEST},
    {messages::REFUSED_MOVIE, TAVISYS_RESULT_NO_SUCH_MOVIE},
    {messages::REFUSED_POSITION, TAVISYS_RESULT_NO_SUCH_POSITION},
    {messages::REFUSED_BY_ERROR, TAVISYS_RESULT_SERVER_ERROR},
};

constexpr const char *HERE = TAVISYS_LOCAL_SERVER_ADDRESS;

// Results of the question for a poster, which are the channel's codes at other times.
constexpr RTSTATUS NO_POSTER = -2;
constexpr RTSTATUS POSTER_DOES_NOT_FIT = -3;

// A connection, closed with its object. It is there unless nobody listens.
class CONNECTION_T {
public:
    CONNECTION_T(const std::string &host, INT32_T port) {
        create_tcp_client_socket(host.c_str(), port, &sock_); // leaves the -1 where it fails
    }
    ~CONNECTION_T() { close_tcp_socket(sock_); }
    CONNECTION_T(const CONNECTION_T &) = delete;
    CONNECTION_T &operator=(const CONNECTION_T &) = delete;
    bool is_there() const { return sock_ >= 0; }
    INT32_T sock() const { return sock_; }

private:
    INT32_T sock_ = -1;
};

[[noreturn]] void fail_to_reach(const std::string &host, INT32_T port) {
    throw SERVER_AWAY_T(fill(messages::UNREACHABLE, {host, std::to_string(port)}));
}

[[noreturn]] void fail(const TEXT_T &message, RTSTATUS result) {
    throw CLIENT_ERROR_T(EXIT_FAILED, fill(message, {std::to_string(result)}));
}

// A -1 alone doesn't tell whether anybody listens, so that is tried once more.
[[noreturn]] void fail_with_result(RTSTATUS result, const std::string &host = HERE) {
    if (result == -1 && !CONNECTION_T(host, TAVISYS_MSG_CHANNEL_PORT).is_there())
        fail_to_reach(host, TAVISYS_MSG_CHANNEL_PORT);
    for (const RESULT_TEXT_T &known : RESULT_TEXTS) {
        if (known.result == result && known.away)
            throw SERVER_AWAY_T(known.text);
    }
    throw CLIENT_ERROR_T(EXIT_FAILED, refusal(result));
}

constexpr INT32_T REPLY_TIMEOUT = 10; // seconds, for a message of any type

// A body from the channel, freed with its object.
using BODY_T = std::unique_ptr<void, decltype(&safe_free)>;

std::string bytes_of(const BODY_T &body, INT32_T length) {
    return body == nullptr
               ? ""
               : std::string(static_cast<const char *>(body.get()), static_cast<std::size_t>(length));
}

RAW_REPLY_T exchange_binary(INT32_T sock, const RAW_QUESTION_T &question) {
    TRLV_MESSAGE_HEAD head{question.type, 0, static_cast<INT32_T>(question.body.size())};
    const INT32_T sent = send_data_to_tavisys_msg_channel(sock, &head, sizeof head, question.body.data());
    if (sent < 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, refusal(sent));
    PVOID received = nullptr;
    const INT32_T got =
        receive_data_from_tavisys_msg_channel(sock, &head, sizeof head, &received, REPLY_TIMEOUT);
    const BODY_T body{received, safe_free};
    if (got < 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, refusal(got));
    return {head.type, head.result, head.length, bytes_of(body, head.length)};
}

RAW_REPLY_T exchange_text(INT32_T sock, const RAW_QUESTION_T &question) {
    TP_MESSAGE_HEAD head{question.type, 0, static_cast<INT32_T>(question.body.size())};
    if (send_data_to_net_communication_channel(sock, &head, sizeof head, question.body.data()) < 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, messages::REQUEST_NOT_SENT);
    std::array<INT8_T, TAVISYS_NET_CHANNEL_HEAD_LENGTH + 1> text{}; // and the NUL
    if (receive_data_from_tcp_socket(sock, text.data(), TAVISYS_NET_CHANNEL_HEAD_LENGTH, REPLY_TIMEOUT) !=
        TAVISYS_NET_CHANNEL_HEAD_LENGTH)
        throw CLIENT_ERROR_T(EXIT_FAILED, messages::NO_ANSWER);
    if (parse_header_file(text.data(), &head) != 0 || head.length < 0)
        throw CLIENT_ERROR_T(EXIT_FAILED, messages::ANSWER_MALFORMED);
    if (head.length == 0)
        return {head.type, head.result, 0, ""};
    INT8_T *received = nullptr;
    const INT32_T got = receive_text_from_tcp_socket(sock, &received, head.length, REPLY_TIMEOUT);
    const BODY_T body{received, safe_free};
    return {head.type, head.result, head.length, bytes_of(body, got)};
}

// Whether an answer came is told by the record, not by the result: the running status is a success of 20,
// and a version that can't be decoded is a 0 without a record.
template <class OWNER, class ASK>
OWNER fetch_record(ASK ask) {
    typename OWNER::pointer record = nullptr;
    const RTSTATUS result = ask(&record);
    if (record == nullptr && result == 0)
        fail(messages::ANSWER_MALFORMED, result);
    if (record == nullptr)
        fail_with_result(result);
    return OWNER{record};
}

template <class OWNER, class ASK>
OWNER fetch_list(ASK ask) {
    typename OWNER::pointer list = nullptr;
    const RTSTATUS result = ask(&list);
    if (result != 0)
        fail_with_result(result);
    return OWNER{list};
}

// Where the result is the length of the reply, an empty list is as long as its count. Any other result
// without a list is the server's own.
template <class OWNER, class ASK>
OWNER fetch_counted_list(const std::string &host, ASK ask) {
    constexpr RTSTATUS EMPTY_LIST = sizeof(INT32_T);
    typename OWNER::pointer list = nullptr;
    const RTSTATUS result = ask(&list);
    if (list == nullptr && result != EMPTY_LIST)
        fail_with_result(result, host);
    return OWNER{list};
}

} // namespace

VERSION_T fetch_version() {
    return fetch_record<VERSION_T>(tavisysapi_get_software_version_information);
}

INFO_T fetch_info() {
    return fetch_record<INFO_T>(tavisysapi_get_system_information);
}

STATUS_T fetch_status() {
    return fetch_record<STATUS_T>(tavisysapi_get_system_running_status);
}

std::string fetch_uuid() {
    std::array<INT8_T, 256> uuid{}; // room for more than a uuid, to show what another server has instead
    const RTSTATUS result = tavisysapi_get_uuid_infomation(uuid.data(), static_cast<INT32_T>(uuid.size()));
    if (result != 0)
        fail_with_result(result);
    return uuid.data();
}

CATEGORIES_T fetch_categories() {
    return fetch_list<CATEGORIES_T>(tavisysapi_get_category_information_list);
}

FILTERS_T fetch_filters(INT32_T cid, INT32_T type) {
    return fetch_list<FILTERS_T>(
        [=](auto **list) { return tavisysapi_get_movie_filter_information_list(cid, type, list); });
}

PAGE_T fetch_page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request, PAGE_FORM_T form) {
    const auto ask = form == PAGE_FORM_T::TOUCH ? touchscreen_get_movie_basic_ext_information
                                                : tavisysapi_get_movie_basic_ext_information;
    return fetch_record<PAGE_T>([&](auto **page) { return ask(&request, page); });
}

MOVIE_T fetch_movie(INT32_T cid, INT32_T mid) {
    const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T request{cid, mid};
    return fetch_record<MOVIE_T>(
        [&](auto **movie) { return tavisysapi_get_movie_detail_information(&request, movie); });
}

std::string fetch_poster() {
    constexpr INT32_T LONGEST_PATH = 64 * 1024; // far beyond what a file system takes
    std::vector<INT8_T> poster(LONGEST_PATH + 1);
    const RTSTATUS result = tavisysapi_random_get_movie_poster(poster.data(), LONGEST_PATH);
    if (result == NO_POSTER)
        fail(messages::NO_POSTER, result);
    if (result == POSTER_DOES_NOT_FIT)
        fail(messages::POSTER_DOES_NOT_FIT, result);
    if (result != 0)
        fail_with_result(result);
    return poster.data();
}

std::string find_address(const std::string &server) {
    in_addr address{};
    if (server.empty())
        return HERE;
    if (inet_pton(AF_INET, server.c_str(), &address) == 1)
        return server;
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const int failure = getaddrinfo(server.c_str(), nullptr, &wanted, &found);
    if (failure != 0)
        throw SERVER_AWAY_T(fill(messages::UNKNOWN_HOST, {server, gai_strerror(failure)}));
    std::array<char, INET_ADDRSTRLEN> text{};
    getnameinfo(found->ai_addr, found->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
    freeaddrinfo(found);
    return text.data();
}

DISKS_T fetch_disks(const std::string &host) {
    return fetch_counted_list<DISKS_T>(
        host, [&](auto **list) { return tavisysapi_get_vod_harddisk_information(host.c_str(), list); });
}

INT32_T fetch_movie_count(const POSITION_T &position) {
    INT32_T count = 0;
    const RTSTATUS result = tavisysapi_get_movies_from_server(position.host.c_str(), position.disk.c_str(),
                                                              position.partition.c_str(), &count);
    if (result != 0)
        fail_with_result(result, position.host);
    return count;
}

MOVIE_RECORDS_T fetch_movie_records(const POSITION_T &position) {
    return fetch_counted_list<MOVIE_RECORDS_T>(position.host, [&](auto **list) {
        return tavisysapi_get_movie_metadata_from_server(position.host.c_str(), position.disk.c_str(),
                                                         position.partition.c_str(), list);
    });
}

std::string refusal(RTSTATUS result) {
    const auto *known = std::find_if(std::begin(RESULT_TEXTS), std::end(RESULT_TEXTS),
                                     [result](const RESULT_TEXT_T &text) { return text.result == result; });
    return fill(known == std::end(RESULT_TEXTS) ? messages::REFUSED : known->text, {std::to_string(result)});
}

RAW_REPLY_T exchange(const RAW_QUESTION_T &question, HEAD_FORM_T form) {
    const CONNECTION_T connection{question.host, question.port};
    if (!connection.is_there())
        fail_to_reach(question.host, question.port);
    return form == HEAD_FORM_T::TEXT ? exchange_text(connection.sock(), question)
                                     : exchange_binary(connection.sock(), question);
}

} // namespace client
