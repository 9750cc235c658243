#include "replies.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "codec_category_info.h"
#include "codec_filter_info.h"
#include "codec_kind_info.h"
#include "codec_sysinfo.h"
#include "codec_version_info.h"
#include "log.h"
#include "movie_records.h"
#include "support_codec.h"

namespace server {

namespace {

constexpr INT32_T LARGEST_PAGE = 1000;

const STORE_T *s_store = nullptr;
const IDENTITY_T *s_identity = nullptr;

struct REQUEST_T {
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

struct REPLY_T {
    PVOID *body;
    INT32_T *length;
};

// The result of an encoder as the client gets it.
RTSTATUS encoded(RTSTATUS result) {
    return result < 0 ? TAVISYS_RESULT_SERVER_ERROR : 0;
}

// The body of a list without entries: the list encoders take none.
RTSTATUS reply_empty_list(const REPLY_T &reply) {
    const INT32_T length = calc_codec_int_data_length();
    PVOID body = calloc(1, static_cast<size_t>(length));
    if (body == nullptr)
        return TAVISYS_RESULT_SERVER_ERROR;
    encode_int_data_to_buffer(0, body, length);
    *reply.body = body;
    *reply.length = length;
    return 0;
}

// Chains the records, which borrow their names, and has them encoded.
template <class NODE, class RECORDS, class ENCODE>
RTSTATUS reply_list(RECORDS &records, ENCODE encode, const REPLY_T &reply) {
    if (records.empty())
        return reply_empty_list(reply);
    std::vector<NODE> nodes(records.size());
    for (size_t i = 0; i < records.size(); i++)
        nodes[i] = {i + 1 < records.size() ? &nodes[i + 1] : nullptr, &records[i]};
    return encoded(encode(nodes.data(), reply.body, reply.length));
}

RTSTATUS reply_version(const REQUEST_T &, const REPLY_T &reply) {
    const TP_TAVISYS_VERSION_INFORMATION_T info{on_loan(s_identity->version.c_str()),
                                                on_loan(s_identity->name.c_str()),
                                                on_loan(s_identity->uuid.c_str())};
    return encoded(encode_tavisys_version_information_to_message(&info, reply.body, reply.length));
}

RTSTATUS reply_status(const REQUEST_T &, const REPLY_T &reply) {
    const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T status = s_store->status();
    return encoded(encode_tavisys_sysrun_status_information_to_message(&status, reply.body, reply.length));
}

RTSTATUS reply_system(const REQUEST_T &, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    const TP_TAVISYS_SYSTEM_INFORMATION_T info{catalogue->disks(),
                                               static_cast<INT32_T>(catalogue->movies().size())};
    return encoded(encode_tavisys_system_information_to_message(&info, reply.body, reply.length));
}

RTSTATUS reply_uuid(const REQUEST_T &, const REPLY_T &reply) {
    *reply.body = strdup(s_identity->uuid.c_str());
    if (*reply.body == nullptr)
        return TAVISYS_RESULT_SERVER_ERROR;
    *reply.length = static_cast<INT32_T>(s_identity->uuid.size() + 1); // the terminator travels, too
    return 0;
}

RTSTATUS reply_categories(const REQUEST_T &, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    std::vector<TP_TAVISYS_CATEGORY_INFORMATION_T> records;
    for (const auto &[id, category] : catalogue->categories())
        if (id != ALL_CATEGORIES)
            records.push_back({id, on_loan(category.name),
                               static_cast<INT32_T>(category.movies[TP_ORDER_BY_PUT_TIME].size())});
    return reply_list<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T>(
        records, encode_tavisys_category_information_list_to_message, reply);
}

using ID_AND_VALUE_T = std::pair<INT32_T, const VALUE_T *>;

// As a menu shows them: the value that means all first; then years from the latest on, everything else
// by the number of its movies.
bool shown_before(const ID_AND_VALUE_T &left, const ID_AND_VALUE_T &right) {
    if (left.second->means_all != right.second->means_all)
        return left.second->means_all;
    if (left.second->year != right.second->year)
        return left.second->year > right.second->year;
    if (left.second->movies != right.second->movies)
        return left.second->movies > right.second->movies;
    return left.first < right.first;
}

std::vector<ID_AND_VALUE_T> values_of(const CATALOGUE_T &catalogue, INT32_T cid, INT32_T type) {
    std::vector<ID_AND_VALUE_T> values;
    const CATEGORY_T *category = catalogue.category(cid);
    if (category == nullptr)
        return values;
    for (const auto &[id, value] : category->values[static_cast<size_t>(type)])
        values.emplace_back(id, &value);
    std::sort(values.begin(), values.end(), shown_before);
    return values;
}

INT8_T *name_of(const VALUE_T &value, TEXTS_T *texts) {
    if (value.means_all)
        return on_loan(TAVISYS_NAME_OF_ALL);
    return value.name != nullptr ? on_loan(value.name) : texts->keep(std::to_string(value.year));
}

RTSTATUS reply_kinds(const REQUEST_T &request, const REPLY_T &reply) {
    INT32_T cid = ALL_CATEGORIES; // a request without a body asks for all of them
    if (request.length > 0) {
        const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T>();
        if (args.type != TP_FILTER_TYPE_KIND)
            return TAVISYS_RESULT_BAD_REQUEST;
        cid = args.cid;
    }
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    std::vector<TP_TAVISYS_KIND_INFORMATION_T> records;
    for (const auto &[id, value] : values_of(*catalogue, cid, TP_FILTER_TYPE_KIND))
        records.push_back({id, on_loan(value->name), value->movies});
    return reply_list<TP_TAVISYS_KIND_INFORMATION_LIST_T>(
        records, encode_tavisys_kind_information_list_to_message, reply);
}

RTSTATUS reply_filter(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T>();
    if (args.type < TP_FILTER_TYPE_KIND || args.type > TP_FILTER_TYPE_DIMENSION)
        return TAVISYS_RESULT_BAD_REQUEST;
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    TEXTS_T texts;
    std::vector<TP_TAVISYS_FILTER_INFORMATION_T> records;
    for (const auto &[id, value] : values_of(*catalogue, args.cid, args.type)) {
        records.push_back({id, name_of(*value, &texts)});
    }
    return reply_list<TP_TAVISYS_FILTER_INFORMATION_LIST_T>(
        records, encode_tavisys_filter_information_list_to_message, reply);
}

RTSTATUS reply_page(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T>();
    if (args.pagenum < 1 || args.pagesize < 1 || args.pagesize > LARGEST_PAGE ||
        args.orderby < TP_ORDER_BY_PUT_TIME || args.orderby > TP_ORDER_BY_NAME)
        return TAVISYS_RESULT_BAD_REQUEST;
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    const PAGE_RECORD_T page(*catalogue, catalogue->page(args), args);
    return encoded(
        encode_tavisys_basic_movie_ext_information_to_message(page.get(), reply.body, reply.length));
}

RTSTATUS reply_detail(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T>();
    const SNAPSHOT_PTR catalogue = s_store->snapshot();
    const MOVIE_T *movie = catalogue->movie(args.mid);
    if (movie == nullptr || (args.cid != ALL_CATEGORIES && args.cid != category_id_of(*movie->record)))
        return TAVISYS_RESULT_NO_SUCH_MOVIE;
    const DETAIL_RECORD_T detail(*movie);
    return encoded(
        encode_tavisys_detail_movie_information_to_message(detail.get(), reply.body, reply.length));
}

constexpr INT32_T FILTER_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T);
constexpr INT32_T PAGE_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T);
constexpr INT32_T DETAIL_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T);

struct QUESTION_T {
    INT32_T type;
    INT32_T length; // of the request body
    bool may_be_empty;
    RTSTATUS (*reply)(const REQUEST_T &, const REPLY_T &);
};
constexpr QUESTION_T QUESTIONS[] = {
    {TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION, 0, true, reply_version},
    {TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS, 0, true, reply_status},
    {TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION, 0, true, reply_system},
    {TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, 0, true, reply_categories},
    {TAVISYS_MSGTYPE_REQUEST_KIND_LIST, FILTER_LENGTH, true, reply_kinds},
    {TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, FILTER_LENGTH, false, reply_filter},
    {TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, PAGE_LENGTH, false, reply_page},
    {TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, DETAIL_LENGTH, false, reply_detail},
    {TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, 0, true, reply_uuid},
};

RTSTATUS answer(INT32_T type, const REQUEST_T &request, const REPLY_T &reply) try {
    for (const QUESTION_T &question : QUESTIONS) {
        if (question.type != type)
            continue;
        if (request.length != question.length && !(request.length == 0 && question.may_be_empty))
            return TAVISYS_RESULT_BAD_REQUEST;
        return question.reply(request, reply);
    }
    return TAVISYS_RESULT_UNKNOWN_TYPE;
} catch (const std::bad_alloc &) {
    return TAVISYS_RESULT_SERVER_ERROR;
}

const char *reason_of(RTSTATUS result) {
    switch (result) {
    case TAVISYS_RESULT_UNKNOWN_TYPE:
        return "不支持的消息类型";
    case TAVISYS_RESULT_BAD_REQUEST:
        return "消息体长度或内容有误";
    case TAVISYS_RESULT_NO_SUCH_MOVIE:
        return "没有这部影片";
    default:
        return "内存不足或无法编码";
    }
}

} // namespace

void answer_from(const STORE_T *store, const IDENTITY_T *identity) {
    s_store = store;
    s_identity = identity;
}

RTSTATUS handle_request(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    const RTSTATUS result = answer(type, REQUEST_T{body, length}, REPLY_T{reply, replylen});
    if (result < 0)
        SERVER_INFO("请求未能回应: 消息类型(%d), 消息体长度(%d), 结果(%d): %s", type, length, result,
                    reason_of(result));
    return result;
}

} // namespace server
