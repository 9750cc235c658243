#include "replies.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>

#include "codec_category_info.h"
#include "codec_filter_info.h"
#include "codec_kind_info.h"
#include "codec_sysinfo.h"
#include "codec_version_info.h"
#include "log.h"
#include "movie_records.h"
#include "page_body.h"
#include "question.h"
#include "support_codec.h"

namespace server {

namespace {

constexpr INT32_T LARGEST_PAGE = 1000;

const STORE_T *s_store = nullptr;
const IDENTITY_T *s_identity = nullptr;

RTSTATUS reply_version(const REQUEST_T &request, const REPLY_T &reply) {
    const TP_TAVISYS_VERSION_INFORMATION_T info{on_loan(request.identity.version.c_str()),
                                                on_loan(request.identity.name.c_str()),
                                                on_loan(request.identity.uuid.c_str())};
    return encoded(encode_tavisys_version_information_to_message(&info, reply.body, reply.length));
}

RTSTATUS reply_status(const REQUEST_T &request, const REPLY_T &reply) {
    const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T status = request.store.status();
    return encoded(encode_tavisys_sysrun_status_information_to_message(&status, reply.body, reply.length));
}

RTSTATUS reply_system(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const TP_TAVISYS_SYSTEM_INFORMATION_T info{
        dbdata_get_harddisks_from_dbdata_harddisk_information_list(catalogue->storage().disks()),
        static_cast<INT32_T>(catalogue->movies().size())};
    return encoded(encode_tavisys_system_information_to_message(&info, reply.body, reply.length));
}

RTSTATUS reply_uuid(const REQUEST_T &request, const REPLY_T &reply) {
    const std::string &uuid = request.identity.uuid;
    return reply_bytes(uuid.c_str(), uuid.size() + 1, reply); // the terminator travels, too
}

RTSTATUS reply_categories(const REQUEST_T &request, const REPLY_T &reply) {
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    std::vector<TP_TAVISYS_CATEGORY_INFORMATION_T> records;
    for (const auto &[id, category] : catalogue->categories())
        if (id != ALL_CATEGORIES)
            records.push_back({id, on_loan(category.name), static_cast<INT32_T>(category.sorted.movies)});
    return reply_list<TP_TAVISYS_CATEGORY_INFORMATION_LIST_T>(
        records, encode_tavisys_category_information_list_to_message, reply);
}

const MENU_T &menu_of(const CATALOGUE_T &catalogue, INT32_T cid, INT32_T type) {
    static const MENU_T EMPTY;
    const CATEGORY_T *category = catalogue.category(cid);
    return category == nullptr ? EMPTY : category->menus[static_cast<size_t>(type)];
}

RTSTATUS reply_kinds(const REQUEST_T &request, const REPLY_T &reply) {
    INT32_T cid = ALL_CATEGORIES; // a request without a body asks for all of them
    if (request.length > 0) {
        const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T>();
        if (args.type != TP_FILTER_TYPE_KIND)
            return TAVISYS_RESULT_BAD_REQUEST;
        cid = args.cid;
    }
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    std::vector<TP_TAVISYS_KIND_INFORMATION_T> records;
    for (const auto *entry : menu_of(*catalogue, cid, TP_FILTER_TYPE_KIND))
        records.push_back({entry->first, on_loan(entry->second.name.c_str()),
                           static_cast<INT32_T>(entry->second.sorted.movies)});
    return reply_list<TP_TAVISYS_KIND_INFORMATION_LIST_T>(
        records, encode_tavisys_kind_information_list_to_message, reply);
}

RTSTATUS reply_filter(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T>();
    if (args.type < TP_FILTER_TYPE_KIND || args.type > TP_FILTER_TYPE_DIMENSION)
        return TAVISYS_RESULT_BAD_REQUEST;
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    std::vector<TP_TAVISYS_FILTER_INFORMATION_T> records;
    for (const auto *entry : menu_of(*catalogue, args.cid, args.type))
        records.push_back({entry->first, on_loan(entry->second.name.c_str())});
    return reply_list<TP_TAVISYS_FILTER_INFORMATION_LIST_T>(
        records, encode_tavisys_filter_information_list_to_message, reply);
}

template <PAGE_FORM_T FORM>
RTSTATUS reply_page(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T>();
    if (args.pagenum < 1 || args.pagesize < 1 || args.pagesize > LARGEST_PAGE ||
        args.orderby < TP_ORDER_BY_PUT_TIME || args.orderby > TP_ORDER_BY_NAME)
        return TAVISYS_RESULT_BAD_REQUEST;
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    PVOID body = page_body_of(*catalogue, catalogue->page(args), args, FORM, reply.length);
    if (body == nullptr)
        return TAVISYS_RESULT_SERVER_ERROR;
    *reply.body = body;
    return 0;
}

RTSTATUS reply_detail(const REQUEST_T &request, const REPLY_T &reply) {
    const auto args = request.as<TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T>();
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const MOVIE_T *movie = catalogue->movie(args.mid);
    if (movie == nullptr || (args.cid != ALL_CATEGORIES && args.cid != category_id_of(*movie->record)))
        return TAVISYS_RESULT_NO_SUCH_MOVIE;
    const DETAIL_RECORD_T detail(*movie);
    return encoded(
        encode_tavisys_detail_movie_information_to_message(detail.get(), reply.body, reply.length));
}

// Equally likely each; the path travels without a terminator.
RTSTATUS reply_random_poster(const REQUEST_T &request, const REPLY_T &reply) {
    thread_local std::minstd_rand random{std::random_device{}()};
    const SNAPSHOT_PTR catalogue = request.store.snapshot();
    const POSITIONS_T &positions = catalogue->with_poster();
    if (positions.empty())
        return 0; // clients take an empty reply for "there is none"
    const POSITION_T position =
        positions[std::uniform_int_distribution<size_t>(0, positions.size() - 1)(random)];
    const MOVIE_T &movie = *catalogue->movies()[position];
    ARENA_T arena;
    const INT8_T *path = path_on_loan(&arena, movie.folder, movie.record->posters->big);
    return reply_bytes(path, strlen(path), reply);
}

constexpr INT32_T FILTER_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T);
constexpr INT32_T PAGE_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T);
constexpr INT32_T DETAIL_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T);
constexpr INT32_T POSITION_LENGTH = sizeof(TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T);
constexpr INT32_T ANY_LENGTH = -1; // for a request that is encoded: its decoder decides

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
    {TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, PAGE_LENGTH, false, reply_page<PAGE_FORM_T::PLAIN>},
    {TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, DETAIL_LENGTH, false, reply_detail},
    {TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO, 0, true, reply_random_poster},
    {TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO, 0, true, reply_disks},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_INFO, POSITION_LENGTH, false, reply_partitions},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES, POSITION_LENGTH, false, reply_movie_count},
    {TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO, POSITION_LENGTH, false, reply_partition_movies},
    {TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO, 0, true, reply_uuid},
    {AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE, ANY_LENGTH, false, reply_movies_by_code},
    {TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, PAGE_LENGTH, false, reply_page<PAGE_FORM_T::TOUCH>},
    {TOUCHSCREEM_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, DETAIL_LENGTH, false, reply_detail},
};

RTSTATUS answer(INT32_T type, const REQUEST_T &request, const REPLY_T &reply) try {
    for (const QUESTION_T &question : QUESTIONS) {
        if (question.type != type)
            continue;
        const bool fits = question.length == ANY_LENGTH || request.length == question.length ||
                          (request.length == 0 && question.may_be_empty);
        if (!fits)
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
    case TAVISYS_RESULT_NO_SUCH_POSITION:
        return "没有这个硬盘或分区";
    default:
        return "内存不足或无法编码";
    }
}

} // namespace

RTSTATUS reply_bytes(const void *bytes, size_t count, const REPLY_T &reply) {
    PVOID body = malloc(count);
    if (body == nullptr)
        return TAVISYS_RESULT_SERVER_ERROR;
    memcpy(body, bytes, count);
    *reply.body = body;
    *reply.length = static_cast<INT32_T>(count);
    return 0;
}

RTSTATUS reply_empty_list(const REPLY_T &reply) {
    INT8_T count[sizeof(INT32_T)];
    encode_int_data_to_buffer(0, count, sizeof count);
    return reply_bytes(count, sizeof count, reply);
}

void answer_from(const STORE_T *store, const IDENTITY_T *identity) {
    s_store = store;
    s_identity = identity;
}

std::vector<INT32_T> answered_types() {
    std::vector<INT32_T> types;
    for (const QUESTION_T &question : QUESTIONS)
        types.push_back(question.type);
    return types;
}

RTSTATUS handle_request(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    const RTSTATUS result =
        answer(type, REQUEST_T{*s_store, *s_identity, body, length}, REPLY_T{reply, replylen});
    if (result < 0)
        SERVER_INFO("请求未能回应: 消息类型(%d), 消息体长度(%d), 结果(%d): %s", type, length, result,
                    reason_of(result));
    return result;
}

} // namespace server
