#include "bodies.h"

#include <algorithm>
#include <cstring>

#include "json.h"
#include "messages.h"
#include "show.h"
#include "support_codec.h"
#include "table.h"
#include "text.h"

namespace client {

namespace {

using RESULT_T = std::optional<DECODED_T>;

INT32_T size_of(const std::string &body) {
    return static_cast<INT32_T>(body.size());
}

// A list is handed on as the pointer to its first node, which may be NULL, a record as itself.
template <class OWNER>
decltype(auto) content_of(const OWNER &owner) {
    if constexpr (requires { owner->next; })
        return owner.get();
    else
        return *owner;
}

std::string show_nothing(const LOOK_T &look) {
    return look.json ? nothing_to_json() : std::string(messages::NO_BODY);
}

// The members of a document one below the other, for records that no command but this shows.
std::string show_members(const std::string &document, const LOOK_T &look) {
    return look.json ? document : lay_out_fields(members_of(document), look.width);
}

template <class OWNER, auto DECODE>
RESULT_T decode_as(const std::string &body, const LOOK_T &look) {
    typename OWNER::pointer record = nullptr;
    const INT32_T used = DECODE(body.data(), size_of(body), &record);
    const OWNER owner{record};
    if (used < 0)
        return std::nullopt;
    return DECODED_T{look.json ? to_json(content_of(owner)) : show(content_of(owner), look.width), used};
}

template <auto DECODE, PAGE_FORM_T FORM>
RESULT_T decode_page(const std::string &body, const LOOK_T &look) {
    PAGE_T::pointer record = nullptr;
    const INT32_T used = DECODE(body.data(), size_of(body), &record);
    const PAGE_T page{record};
    if (used < 0)
        return std::nullopt;
    NAME_BOOK_T names{NAMES_FROM_T::NOWHERE};
    return DECODED_T{look.json ? to_json(*page, FORM) : show(*page, look.width, FORM, ALL, names), used};
}

RESULT_T decode_count(const std::string &body, const LOOK_T &look) {
    INT32_T movies = 0;
    const INT32_T used = decode_int_data_from_buffer(body.data(), size_of(body), &movies);
    if (used < 0)
        return std::nullopt;
    return DECODED_T{look.json ? movie_count_to_json(movies) : show_movie_count(movies, look.width), used};
}

// A poster's path is the whole body; one without a character says that there is none.
RESULT_T decode_poster(const std::string &body, const LOOK_T &look) {
    if (body.find('\0') != std::string::npos)
        return std::nullopt;
    return DECODED_T{look.json ? poster_to_json(body) : printable(body) + "\n", size_of(body)};
}

RESULT_T decode_uuid(const std::string &body, const LOOK_T &look) {
    const std::size_t end = body.find('\0');
    if (end == std::string::npos)
        return std::nullopt;
    const std::string uuid = body.substr(0, end);
    return DECODED_T{look.json ? uuid_to_json(uuid) : printable(uuid) + "\n", static_cast<INT32_T>(end + 1)};
}

RESULT_T decode_nothing(const std::string & /*body*/, const LOOK_T &look) {
    return DECODED_T{show_nothing(look), 0};
}

// A request that travels as it lies in memory.
template <class REQUEST>
RESULT_T decode_request(const std::string &body, const LOOK_T &look) {
    REQUEST request{};
    if (body.size() < sizeof request)
        return std::nullopt;
    memcpy(&request, body.data(), sizeof request);
    return DECODED_T{show_members(to_json(request), look), sizeof request};
}

using FILTERS_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T;

RESULT_T decode_kinds_request(const std::string &body, const LOOK_T &look) {
    return body.empty() ? decode_nothing(body, look) : decode_request<FILTERS_REQUEST_T>(body, look);
}

RESULT_T decode_codes_request(const std::string &body, const LOOK_T &look) {
    using OWNER_T = OWNED_T<TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T,
                            delete_tp_tavisys_movieinfo_request_information>;
    OWNER_T::pointer record = nullptr;
    const INT32_T used = decode_movinfo_request_information_from_buffer(body.data(), size_of(body), &record);
    const OWNER_T request{record};
    if (used < 0)
        return std::nullopt;
    return DECODED_T{request == nullptr ? show_nothing(look) : show_members(to_json(*request), look), used};
}

using KINDS_T = OWNED_T<TP_TAVISYS_KIND_INFORMATION_LIST_T, delete_tavisys_kind_information_list>;

constexpr DECODE_BODY_T PAGE_REQUEST = decode_request<TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T>;
constexpr DECODE_BODY_T DETAIL_REQUEST = decode_request<TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T>;
constexpr DECODE_BODY_T POSITION_REQUEST = decode_request<TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T>;
constexpr DECODE_BODY_T DETAIL_REPLY =
    decode_as<MOVIE_T, decode_tavisys_detail_movie_information_from_message>;
constexpr DECODE_BODY_T DISKS_REPLY =
    decode_as<DISKS_T, decode_tavisys_harddisk_information_list_from_message>;
constexpr DECODE_BODY_T RECORDS_REPLY =
    decode_as<MOVIE_RECORDS_T, decode_tp_tavisys_dbdata_movie_information_list_from_message>;

constexpr MESSAGE_T MESSAGES[] = {
    {TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, "version", decode_nothing,
     decode_as<VERSION_T, decode_tavisys_version_information_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, "status", decode_nothing,
     decode_as<STATUS_T, decode_tavisys_sysrun_status_information_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, "info", decode_nothing,
     decode_as<INFO_T, decode_tavisys_system_information_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, "categories", decode_nothing,
     decode_as<CATEGORIES_T, decode_tavisys_category_information_list_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_KIND_LIST, "kinds", decode_kinds_request,
     decode_as<KINDS_T, decode_tavisys_kind_information_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, "filters", decode_request<FILTERS_REQUEST_T>,
     decode_as<FILTERS_T, decode_tavisys_filter_information_list_from_message>},
    {TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, "movies", PAGE_REQUEST,
     decode_page<decode_tavisys_basic_movie_ext_information_from_message, PAGE_FORM_T::PLAIN>},
    {TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, "movie", DETAIL_REQUEST, DETAIL_REPLY},
    {TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO, "poster", decode_nothing, decode_poster},
    {TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO, "disks", decode_nothing, DISKS_REPLY},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_INFO, "disk", POSITION_REQUEST, DISKS_REPLY},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES, "count", POSITION_REQUEST, decode_count},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO, "transfer", POSITION_REQUEST, RECORDS_REPLY},
    {TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, "uuid", decode_nothing, decode_uuid},
    {AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE, "codes", decode_codes_request, RECORDS_REPLY},
    {TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, "touch", PAGE_REQUEST,
     decode_page<decode_touchscreen_basic_movie_ext_information_from_message, PAGE_FORM_T::TOUCH>},
    {TOUCHSCREEM_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, "touch-movie", DETAIL_REQUEST, DETAIL_REPLY},
};

template <class IS_MEANT>
const MESSAGE_T *find_message_if(IS_MEANT is_meant) {
    const auto *found = std::find_if(std::begin(MESSAGES), std::end(MESSAGES), is_meant);
    return found == std::end(MESSAGES) ? nullptr : found;
}

} // namespace

std::span<const MESSAGE_T> all_messages() {
    return MESSAGES;
}

const MESSAGE_T *find_message(const std::string &word_or_number) {
    return find_message_if([&word_or_number](const MESSAGE_T &message) {
        return message.word == word_or_number || std::to_string(message.type) == word_or_number;
    });
}

const MESSAGE_T *find_message(INT32_T type) {
    return find_message_if([type](const MESSAGE_T &message) { return message.type == type; });
}

} // namespace client
