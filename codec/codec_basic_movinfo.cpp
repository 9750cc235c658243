#include "codec_basic_movinfo.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "codec/logged_body.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

// What a movie shows on every page.
struct LASTING_WIRE {
    using RECORD = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(
        integer(&RECORD::movid), string(&RECORD::movcode), string(&RECORD::movname), integer(&RECORD::score),
        integer(&RECORD::puttime), integer(&RECORD::pubtime), string(&RECORD::nposter),
        string(&RECORD::bposter), string(&RECORD::acronym), integer(&RECORD::category_id),
        integer(&RECORD::year_id), ids(&RECORD::kind_ids), ids(&RECORD::area_ids),
        ids(&RECORD::dimension_ids), ids(&RECORD::resolution_ids), string(&RECORD::hdsn));
};

struct PLACE_WIRE {
    using RECORD = LASTING_WIRE::RECORD;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::index));
};

// A touch screen also shows how many videos there are and how long they take.
struct TOUCH_WIRE {
    using RECORD = LASTING_WIRE::RECORD;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::totalvideo), integer(&RECORD::duration));
};

struct BASIC_MOVIE_WIRE {
    using RECORD = LASTING_WIRE::RECORD;
    static constexpr auto FIELDS = std::tuple_cat(LASTING_WIRE::FIELDS, PLACE_WIRE::FIELDS);
};

struct TOUCH_MOVIE_WIRE {
    using RECORD = LASTING_WIRE::RECORD;
    static constexpr auto FIELDS = std::tuple_cat(BASIC_MOVIE_WIRE::FIELDS, TOUCH_WIRE::FIELDS);
};

// A movie without its place, in either form.
struct PART_WIRE {
    using RECORD = LASTING_WIRE::RECORD;
    static constexpr auto FIELDS = std::tuple_cat(LASTING_WIRE::FIELDS, TOUCH_WIRE::FIELDS);
};

struct PAGE_NUMBERS_WIRE {
    using RECORD = TP_PAGE_INFORMATION;
    static constexpr auto FIELDS =
        std::make_tuple(integer(&RECORD::pagenum), integer(&RECORD::pagesize), integer(&RECORD::totalpages),
                        integer(&RECORD::totalmovies), integer(&RECORD::replymovies));
};

// A page whose movies travel in the given form.
template <class MOVIE>
struct PAGE_WIRE {
    using RECORD = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(record<PAGE_NUMBERS_WIRE>(&RECORD::pageinfo),
                                                   list<MOVIE>(&RECORD::list, EMPTY_NODE_T::SKIPPED));
};

// The functions whose names the log lines of a page carry, one pair for each form.
struct PAGE_FUNCTIONS_T {
    const char *page;
    const char *list;
};
constexpr PAGE_FUNCTIONS_T PLAIN_FUNCTIONS = {"encode_tavisys_basic_movie_ext_information_to_message",
                                              "encode_tavisys_basic_movie_information_list_to_buffer"};
constexpr PAGE_FUNCTIONS_T TOUCH_FUNCTIONS = {
    "encode_touchscreen_basic_movie_ext_information_to_message",
    "encode_touchscreen_tavisys_basic_movie_information_list_to_buffer"};

template <class MOVIE>
bool encode_page_list(WRITER_T &to, const TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *list,
                      const char *function) {
    if (list == nullptr) {
        TAVISYS_LOG_AS(function, ZLOG_LEVEL_WARN, "参数获取出错! list(%p) message(%p)",
                       static_cast<const void *>(list), static_cast<const void *>(to.at()));
        return false;
    }
    if (!encode_list<MOVIE>(to, list, EMPTY_NODE_T::SKIPPED)) {
        TAVISYS_LOG_AS(function, ZLOG_LEVEL_WARN,
                       "failed to encode_tavisys_basic_movie_information_to_buffer");
        return false;
    }
    return true;
}

template <class MOVIE>
RTSTATUS encode_page(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen,
                     const PAGE_FUNCTIONS_T &functions) {
    if (!are_given(functions.page, info, msgdata, msglen))
        return -1;
    const LOGGED_T say{functions.page, "出错.."};
    FAULT_T fault{};
    const auto fill = [&](WRITER_T &to) { return encode<PAGE_WIRE<MOVIE>>(to, *info); };
    if (encode_in_one_walk(msgdata, msglen, fill, &fault) == 0)
        return 0;
    if (fault == FAULT_T::MEMORY) {
        say(fault, 0);
        return -1;
    }
    // Once more, step by step, for the lines that say what it failed at.
    const auto fill_saying = [&](WRITER_T &to) {
        return encode<PAGE_NUMBERS_WIRE>(to, info->pageinfo) &&
               encode_page_list<MOVIE>(to, info->list, functions.list);
    };
    return encode_to_message(length_of<PAGE_WIRE<MOVIE>>(*info), msgdata, msglen, fill_saying, say);
}

// Integers only: the smallest encoding is the only one.
constexpr INT32_T PLACE_LENGTH = smallest_length<PLACE_WIRE>();
constexpr INT32_T TOUCH_LENGTH = smallest_length<TOUCH_WIRE>();

bool is_part(const TP_TAVISYS_BASIC_MOVIE_PART_T &part) {
    return part.bytes != nullptr && part.length >= smallest_length<PART_WIRE>();
}

// With many movies their parts are in none of the caches. Asking for all of a page before any is needed takes
// hardly longer than waiting for one. The second level can wait for far more lines at once than the first,
// and a part that begins inside a line ends in one more.
void prefetch(const TP_TAVISYS_BASIC_MOVIE_PART_T &part) {
    constexpr INT32_T CACHE_LINE = 64;
    constexpr int SECOND_LEVEL = 2;
    const auto *bytes = static_cast<const INT8_T *>(part.bytes);
    for (INT32_T at = 0; at < part.length; at += CACHE_LINE)
        __builtin_prefetch(bytes + at, 0, SECOND_LEVEL);
    __builtin_prefetch(bytes + part.length - 1, 0, SECOND_LEVEL);
}

bool copy_bytes(WRITER_T &to, const INT8_T *from, INT32_T count) {
    INT8_T *room = to.at();
    if (!to.skip(count))
        return false;
    memcpy(room, from, static_cast<size_t>(count));
    return true;
}

bool encode_part(WRITER_T &to, const TP_TAVISYS_BASIC_MOVIE_PART_T &part, INT32_T index, bool is_touch) {
    const auto *bytes = static_cast<const INT8_T *>(part.bytes);
    const INT32_T lasting = part.length - TOUCH_LENGTH;
    PLACE_WIRE::RECORD place{};
    place.index = index;
    return copy_bytes(to, bytes, lasting) && encode<PLACE_WIRE>(to, place) &&
           (!is_touch || copy_bytes(to, bytes + lasting, TOUCH_LENGTH));
}

RTSTATUS encode_parts(const TP_PAGE_INFORMATION *pageinfo, INT32_T index,
                      const TP_TAVISYS_BASIC_MOVIE_PART_T *parts, bool is_touch, PVOID *msgdata,
                      INT32_T *msglen) {
    if (pageinfo == nullptr || msgdata == nullptr || msglen == nullptr || pageinfo->replymovies < 0 ||
        (parts == nullptr && pageinfo->replymovies > 0))
        return -1;
    const std::span movies(parts, static_cast<size_t>(pageinfo->replymovies));
    int64_t length = length_of<PAGE_NUMBERS_WIRE>(*pageinfo) + INTEGER_LENGTH;
    for (const auto &movie : movies) {
        if (!is_part(movie))
            return -1;
        prefetch(movie);
        length += movie.length + PLACE_LENGTH - (is_touch ? 0 : TOUCH_LENGTH);
    }
    int64_t place = index; // behind a last page it may be as large as it likes
    return encode_to_message(length, msgdata, msglen, [&](WRITER_T &to) {
        const auto encode_next = [&](const TP_TAVISYS_BASIC_MOVIE_PART_T &movie) {
            return encode_part(to, movie, static_cast<INT32_T>(place++), is_touch);
        };
        return encode<PAGE_NUMBERS_WIRE>(to, *pageinfo) && to.integer(pageinfo->replymovies) &&
               std::all_of(movies.begin(), movies.end(), encode_next);
    });
}

bool has_code(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node, const INT8_T *movcode) {
    return node->info != nullptr && safe_strcasecmp(node->info->movcode, movcode) == 0;
}

} // namespace

BASIC_MOVIE_IDS_T *create_tavisys_basic_movie_ids_information(INT32_T number) {
    BASIC_MOVIE_IDS_T *info = number < 1 ? nullptr : new_ids(number);
    if (info != nullptr)
        std::fill_n(info->ids, number, 0);
    return info;
}

void delete_tavisys_basic_movie_ids_information(BASIC_MOVIE_IDS_T **info) {
    if (info == nullptr)
        return;
    delete_ids(*info);
    *info = nullptr;
}

TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *create_tavisys_basic_movie_information(void) {
    return allocate<TP_TAVISYS_BASIC_MOVIE_INFORMATION_T>();
}

void delete_tavisys_basic_movie_information(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T **info) {
    delete_record<BASIC_MOVIE_WIRE>(info);
}

TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *
create_tavisys_basic_movie_information_list_node(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T>(info);
}

void add_node_to_tavisys_basic_movie_information_list(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list,
                                                      TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void add_touchscreen_node_to_tavisys_basic_movie_information_list(
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list, TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node) {
    if (list == nullptr || node == nullptr)
        return;
    if (*list == nullptr) {
        *list = node;
        return;
    }
    const INT8_T *movcode = node->info == nullptr ? nullptr : node->info->movcode;
    const auto *same = find_node(*list, [&](const auto *other) { return has_code(other, movcode); });
    if (node->info == nullptr || same == nullptr) {
        append_node(list, node);
        return;
    }
    LOG_INFO("查找到相同 (%s)movcode(%s) 无需加入列表..",
             node->info->movname == nullptr ? "" : node->info->movname, movcode == nullptr ? "" : movcode);
    delete_list<BASIC_MOVIE_WIRE>(&node);
}

void delete_tavisys_basic_movie_information_list_node(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **node) {
    delete_list_node<BASIC_MOVIE_WIRE>(node);
}

void delete_tavisys_basic_movie_information_list(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list) {
    delete_list<BASIC_MOVIE_WIRE>(list);
}

TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *create_tavisys_basic_movie_ext_information(void) {
    return allocate<TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T>();
}

void delete_tavisys_basic_movie_ext_information(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    delete_record<PAGE_WIRE<BASIC_MOVIE_WIRE>>(info);
}

RTSTATUS
encode_tavisys_basic_movie_ext_information_to_message(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *info,
                                                      PVOID *msgdata, INT32_T *msglen) {
    return encode_page<BASIC_MOVIE_WIRE>(info, msgdata, msglen, PLAIN_FUNCTIONS);
}

RTSTATUS
encode_tavisys_basic_movie_information_list_to_message(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *list,
                                                       PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<BASIC_MOVIE_WIRE>(list, EMPTY_NODE_T::SKIPPED, msgdata, msglen);
}

INT32_T
decode_tavisys_basic_movie_ext_information_from_message(const void *msgdata, INT32_T msglen,
                                                        TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    return decode_record_from_message<PAGE_WIRE<BASIC_MOVIE_WIRE>>(msgdata, msglen, info);
}

INT32_T
decode_tavisys_basic_movie_information_list_from_message(const void *msgdata, INT32_T msglen,
                                                         TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list) {
    return decode_list_from_message<BASIC_MOVIE_WIRE>(msgdata, msglen, list);
}

RTSTATUS
encode_touchscreen_basic_movie_ext_information_to_message(
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen) {
    return encode_page<TOUCH_MOVIE_WIRE>(info, msgdata, msglen, TOUCH_FUNCTIONS);
}

INT32_T
decode_touchscreen_basic_movie_ext_information_from_message(const void *msgdata, INT32_T msglen,
                                                            TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info) {
    return decode_record_from_message<PAGE_WIRE<TOUCH_MOVIE_WIRE>>(msgdata, msglen, info);
}

INT32_T decode_touchscreen_basic_movie_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list) {
    return decode_list_from_message<TOUCH_MOVIE_WIRE>(msgdata, msglen, list);
}

RTSTATUS encode_tavisys_basic_movie_information_to_part(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *info,
                                                        PVOID *part, INT32_T *length) {
    return encode_record_to_message<PART_WIRE>(info, part, length);
}

RTSTATUS encode_tavisys_basic_movie_parts_to_message(const TP_PAGE_INFORMATION *pageinfo, INT32_T index,
                                                     const TP_TAVISYS_BASIC_MOVIE_PART_T *parts,
                                                     PVOID *msgdata, INT32_T *msglen) {
    return encode_parts(pageinfo, index, parts, false, msgdata, msglen);
}

RTSTATUS encode_touchscreen_basic_movie_parts_to_message(const TP_PAGE_INFORMATION *pageinfo, INT32_T index,
                                                         const TP_TAVISYS_BASIC_MOVIE_PART_T *parts,
                                                         PVOID *msgdata, INT32_T *msglen) {
    return encode_parts(pageinfo, index, parts, true, msgdata, msglen);
}
