// The commands that look at single messages: decode, raw.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "bodies.h"
#include "command.h"
#include "error.h"
#include "hex.h"
#include "json.h"
#include "library_folder.h"
#include "messages.h"
#include "server.h"
#include "table.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

constexpr const char *STANDARD_INPUT = "-";

[[noreturn]] void fail_to_read(const std::string &name, int failure) {
    throw CLIENT_ERROR_T(EXIT_FAILED, fill(messages::FILE_NOT_READ, {name, std::strerror(failure)}));
}

std::string read_to_end(int file, const std::string &name) {
    std::string bytes;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t got = read(file, block.data(), block.size());
        if (got == 0)
            return bytes;
        if (got < 0 && errno != EINTR)
            fail_to_read(name, errno);
        if (got > 0)
            bytes.append(block.data(), static_cast<std::size_t>(got));
        if (bytes.size() > LONGEST_BODY)
            fail_to_read(name, EFBIG);
    }
}

std::string read_file(const std::string &name) {
    if (name == STANDARD_INPUT)
        return read_to_end(STDIN_FILENO, name);
    const DESCRIPTOR_T file{open(name.c_str(), O_RDONLY | O_CLOEXEC)};
    if (file.file() < 0)
        fail_to_read(name, errno);
    return read_to_end(file.file(), name);
}

std::string read_body(const ARGUMENTS_T &arguments) {
    std::string bytes = read_file(arguments.file);
    if (!arguments.hex)
        return bytes;
    const std::optional<std::string> body = bytes_of_hex(bytes);
    if (!body.has_value())
        throw CLIENT_ERROR_T(EXIT_FAILED, fill(messages::FILE_NOT_HEX, {arguments.file}));
    return *body;
}

// What receivers leave unread is worth a word.
void tell_of_rest(const std::string &body, const DECODED_T &decoded) {
    const std::size_t rest = body.size() - static_cast<std::size_t>(decoded.used);
    if (rest > 0)
        write_error(fill(messages::BYTES_LEFT, {std::to_string(rest)}));
}

INT32_T type_of(const std::string &word_or_number) {
    if (const MESSAGE_T *message = find_message(word_or_number); message != nullptr)
        return message->type;
    INT32_T type = 0;
    std::from_chars(word_or_number.data(), word_or_number.data() + word_or_number.size(), type);
    return type; // the command line has been checked
}

// The head of text has four characters for the type and eight for the length.
void check_text_head(const RAW_QUESTION_T &question) {
    constexpr INT32_T LARGEST_TYPE = 9999;
    constexpr INT32_T SMALLEST_TYPE = -999;
    constexpr std::size_t LARGEST_LENGTH = 99'999'999;
    if (question.type > LARGEST_TYPE || question.type < SMALLEST_TYPE ||
        question.body.size() > LARGEST_LENGTH)
        throw CLIENT_ERROR_T(EXIT_BAD_USAGE, messages::NOT_IN_TEXT_HEAD);
}

bool is_plain_text(const std::string &body) {
    return !body.empty() && printable(body) == body;
}

// Nothing where nobody can say what the body is.
std::optional<DECODED_T> decode_reply(const RAW_REPLY_T &reply, HEAD_FORM_T form, const LOOK_T &look) {
    if (form == HEAD_FORM_T::TEXT && is_plain_text(reply.body))
        return DECODED_T{look.json ? text_to_json(reply.body) : reply.body + "\n",
                         static_cast<INT32_T>(reply.body.size())};
    const MESSAGE_T *message = find_message(reply.type);
    return message == nullptr || reply.result != 0 ? std::nullopt : message->reply(reply.body, look);
}

std::string show_reply(const RAW_REPLY_T &reply, const std::optional<DECODED_T> &decoded, int width) {
    const MESSAGE_T *message = find_message(reply.type);
    const std::string word = message == nullptr ? "" : std::string(" ").append(message->word);
    std::string text = lay_out_fields({{messages::MESSAGE_TYPE, std::to_string(reply.type) + word},
                                       {messages::RESULT, std::to_string(reply.result)},
                                       {messages::LENGTH, std::to_string(reply.length)}},
                                      width);
    if (!reply.body.empty())
        text.append("\n").append(hex_dump(reply.body));
    if (decoded.has_value())
        text.append("\n").append(decoded->text);
    return text;
}

// What is wrong with a reply that has come; an empty text for nothing.
std::string fault_of(const RAW_REPLY_T &reply, const RAW_QUESTION_T &question, bool is_readable) {
    if (reply.type != question.type)
        return fill(messages::OTHER_TYPE, {std::to_string(reply.type), std::to_string(question.type)});
    if (reply.result != 0) // servers keep clear of the channel's own codes, other peers need not
        return reply.result <= TAVISYS_RESULT_UNKNOWN_TYPE
                   ? refusal(reply.result)
                   : fill(messages::REFUSED, {std::to_string(reply.result)});
    if (static_cast<std::size_t>(reply.length) > reply.body.size())
        return messages::ANSWER_CUT_SHORT;
    return is_readable ? std::string() : messages::ANSWER_MALFORMED;
}

} // namespace

std::string run_decode(const ARGUMENTS_T &arguments, int width) {
    const MESSAGE_T *message = find_message(arguments.message);
    const std::string body = read_body(arguments);
    const std::optional<DECODED_T> decoded =
        (arguments.request ? message->request : message->reply)(body, LOOK_T{arguments.json, width});
    if (!decoded.has_value()) {
        const TEXT_T &text = arguments.request ? messages::NO_SUCH_REQUEST : messages::NO_SUCH_REPLY;
        throw CLIENT_ERROR_T(EXIT_FAILED, fill(text, {std::to_string(body.size()), message->word}));
    }
    tell_of_rest(body, *decoded);
    return decoded->text;
}

std::string run_raw(const ARGUMENTS_T &arguments, int width) {
    const HEAD_FORM_T form = arguments.text_head ? HEAD_FORM_T::TEXT : HEAD_FORM_T::BINARY;
    const RAW_QUESTION_T question{find_address(arguments.server), arguments.port, type_of(arguments.message),
                                  bytes_of_hex(arguments.body).value_or("")};
    if (form == HEAD_FORM_T::TEXT)
        check_text_head(question);
    const RAW_REPLY_T reply = exchange(question, form);
    const std::optional<DECODED_T> decoded = decode_reply(reply, form, LOOK_T{arguments.json, width});
    std::string answer = arguments.json ? reply_to_json(reply, decoded.has_value() ? decoded->text : "")
                                        : show_reply(reply, decoded, width);
    // Behind a head of text a body may be whatever the two agree on.
    const bool is_free = form == HEAD_FORM_T::TEXT || find_message(reply.type) == nullptr;
    const std::string fault = fault_of(reply, question, decoded.has_value() || is_free);
    if (fault.empty()) {
        if (decoded.has_value())
            tell_of_rest(reply.body, *decoded);
        return answer;
    }
    write_output(answer);
    throw CLIENT_ERROR_T(EXIT_FAILED, fault);
}

} // namespace client
