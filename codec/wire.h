// The record engine. A record family states its wire order once, as a WIRE description:
//
//     struct VIDEO_WIRE {
//         using RECORD = TP_TAVISYS_VIDEO_INFORMATION_T;
//         static constexpr auto FIELDS = std::make_tuple( // in the order of the wire
//             integer(&RECORD::id), integer(&RECORD::seqno), string(&RECORD::name), string(&RECORD::mp4));
//     };
//
// and length, encoder, decoder and delete follow from it:
//
//     integer(&R::field)            4 bytes: INT32_T, UINT32_T or a 32-bit enumeration
//     string(&R::field)             owned string, NULL allowed
//     label(&R::field)              as string, but the family's delete leaves it to its caller
//     record<WIRE>(&R::field)       a record held by value: its fields, one behind the other
//     owned<WIRE>(&R::field)        an owned record: its fields; NULL can't be encoded
//     optional<WIRE>(&R::field)     an owned record or NULL: a flag 1 and its fields, or a lone flag 0
//     sized<WIRE>(&R::field)        as optional, but the flag is the length of the fields that follow;
//                                   a decoder asks only whether it is 0
//     ids(&R::field)                an owned counted array of ids or NULL: the count, then the ids
//     list<WIRE>(&R::field, rules)  an owned list: the count of its records, then the records
//
// The rules of a list say what becomes of a node without a record (SKIPPED writes nothing and isn't
// counted; REFUSED fails the whole encoding) and of a list that is NULL (REFUSED fails the whole encoding;
// EMPTY writes a count of 0). A list is intrusive where its nodes are the records of its WIRE, carrying
// `next` themselves; else its nodes are {next, info}.
//
// A WIRE may also state
//
//     static RECORD *create()                      how a decoder makes a record, where that says something
//     static const INT8_T *key(const RECORD &)     what may not repeat in a decoded list: later ones go
//
// A family may have kinds of its own: each derives from one of the above and overloads, beside itself,
// what differs of field_length, encode_field, free_field and decode_field.
//
// Everything is resolved at compile time: a record's encoder is the straight-line code that one would
// write by hand, with one check of the room that is left for each field.
#ifndef TAVISYS_CODEC_WIRE_H
#define TAVISYS_CODEC_WIRE_H

#include <cstdint>
#include <tuple>
#include <type_traits>

#include "codec/cursor.h"
#include "codec_basic_movinfo.h"
#include "support/codec_primitive.h"
#include "support/distinct.h"
#include "support/list.h"
#include "support/owner.h"

namespace tavisys::wire {

// ---- What a description is made of

enum class EMPTY_NODE_T { SKIPPED, REFUSED };
enum class NULL_LIST_T { REFUSED, EMPTY };
enum class PRESENCE_T { FLAG, LENGTH };

template <class RECORD, class VALUE>
struct INTEGER_T {
    static_assert(sizeof(VALUE) == INTEGER_LENGTH && (std::is_integral_v<VALUE> || std::is_enum_v<VALUE>));
    VALUE RECORD::*member;
};
template <class RECORD>
struct STRING_T {
    INT8_T *RECORD::*member;
};
template <class RECORD>
struct LABEL_T {
    INT8_T *RECORD::*member;
};
template <class WIRE, class RECORD>
struct INNER_T {
    typename WIRE::RECORD RECORD::*member;
};
template <class WIRE, class RECORD>
struct OWNED_RECORD_T {
    typename WIRE::RECORD *RECORD::*member;
};
template <class WIRE, class RECORD>
struct OPTIONAL_T {
    typename WIRE::RECORD *RECORD::*member;
    PRESENCE_T presence;
};
template <class RECORD>
struct IDS_T {
    BASIC_MOVIE_IDS_T *RECORD::*member;
};
template <class WIRE, class RECORD, class NODE>
struct LIST_T {
    NODE *RECORD::*member;
    EMPTY_NODE_T empty_node;
    NULL_LIST_T null_list;
};

template <class RECORD, class VALUE>
constexpr INTEGER_T<RECORD, VALUE> integer(VALUE RECORD::*member) {
    return {member};
}
template <class RECORD>
constexpr STRING_T<RECORD> string(INT8_T *RECORD::*member) {
    return {member};
}
template <class RECORD>
constexpr LABEL_T<RECORD> label(INT8_T *RECORD::*member) {
    return {member};
}
template <class WIRE, class RECORD>
constexpr INNER_T<WIRE, RECORD> record(typename WIRE::RECORD RECORD::*member) {
    return {member};
}
template <class WIRE, class RECORD>
constexpr OWNED_RECORD_T<WIRE, RECORD> owned(typename WIRE::RECORD *RECORD::*member) {
    return {member};
}
template <class WIRE, class RECORD>
constexpr OPTIONAL_T<WIRE, RECORD> optional(typename WIRE::RECORD *RECORD::*member) {
    return {member, PRESENCE_T::FLAG};
}
template <class WIRE, class RECORD>
constexpr OPTIONAL_T<WIRE, RECORD> sized(typename WIRE::RECORD *RECORD::*member) {
    return {member, PRESENCE_T::LENGTH};
}
template <class RECORD>
constexpr IDS_T<RECORD> ids(BASIC_MOVIE_IDS_T *RECORD::*member) {
    return {member};
}
template <class WIRE, class RECORD, class NODE>
constexpr LIST_T<WIRE, RECORD, NODE> list(NODE *RECORD::*member,
                                          EMPTY_NODE_T empty_node = EMPTY_NODE_T::SKIPPED,
                                          NULL_LIST_T null_list = NULL_LIST_T::REFUSED) {
    return {member, empty_node, null_list};
}

// ---- The records of a list

template <class WIRE, class NODE>
constexpr bool IS_INTRUSIVE = std::is_same_v<std::remove_const_t<NODE>, typename WIRE::RECORD>;

template <class WIRE, class NODE>
auto *record_of(NODE *node) {
    if constexpr (IS_INTRUSIVE<WIRE, NODE>)
        return node;
    else
        return node->info;
}

template <class WIRE, class NODE>
INT32_T count_records(const NODE *list) {
    INT32_T count = 0;
    for (const NODE *node = list; node != nullptr; node = next_of(node))
        count += record_of<WIRE>(node) != nullptr ? 1 : 0;
    return count;
}

// ---- Smallest encoding: every field but a record without a flag takes at least one integer

template <class WIRE>
constexpr INT32_T smallest_length();

template <class FIELD>
constexpr INT32_T smallest_field(FIELD) {
    return INTEGER_LENGTH;
}
template <class WIRE, class RECORD>
constexpr INT32_T smallest_field(INNER_T<WIRE, RECORD>) {
    return smallest_length<WIRE>();
}
template <class WIRE, class RECORD>
constexpr INT32_T smallest_field(OWNED_RECORD_T<WIRE, RECORD>) {
    return smallest_length<WIRE>();
}
template <class WIRE>
constexpr INT32_T smallest_length() {
    return std::apply([](auto... field) { return (smallest_field(field) + ...); }, WIRE::FIELDS);
}

// ---- Length

template <class WIRE>
int64_t length_of(const typename WIRE::RECORD &record);

template <class WIRE, class NODE>
int64_t list_length(const NODE *list) {
    if (list == nullptr)
        return 0;
    int64_t length = INTEGER_LENGTH;
    for (const NODE *node = list; node != nullptr; node = next_of(node))
        if (const auto *info = record_of<WIRE>(node); info != nullptr)
            length += length_of<WIRE>(*info);
    return length;
}

template <class WIRE>
int64_t optional_length(const typename WIRE::RECORD *info) {
    return INTEGER_LENGTH + (info == nullptr ? 0 : length_of<WIRE>(*info));
}

template <class RECORD, class VALUE>
int64_t field_length(const RECORD &, INTEGER_T<RECORD, VALUE>) {
    return INTEGER_LENGTH;
}
template <class RECORD>
int64_t field_length(const RECORD &from, STRING_T<RECORD> field) {
    return string_length(from.*field.member);
}
template <class RECORD>
int64_t field_length(const RECORD &from, LABEL_T<RECORD> field) {
    return string_length(from.*field.member);
}
template <class WIRE, class RECORD>
int64_t field_length(const RECORD &from, INNER_T<WIRE, RECORD> field) {
    return length_of<WIRE>(from.*field.member);
}
template <class WIRE, class RECORD>
int64_t field_length(const RECORD &from, OWNED_RECORD_T<WIRE, RECORD> field) {
    const auto *info = from.*field.member;
    return info == nullptr ? 0 : length_of<WIRE>(*info);
}
template <class WIRE, class RECORD>
int64_t field_length(const RECORD &from, OPTIONAL_T<WIRE, RECORD> field) {
    return optional_length<WIRE>(from.*field.member);
}
template <class RECORD>
int64_t field_length(const RECORD &from, IDS_T<RECORD> field) {
    const BASIC_MOVIE_IDS_T *values = from.*field.member;
    return INTEGER_LENGTH * (1 + (values == nullptr ? int64_t{0} : values->num));
}
template <class WIRE, class RECORD, class NODE>
int64_t field_length(const RECORD &from, LIST_T<WIRE, RECORD, NODE> field) {
    if (field.null_list == NULL_LIST_T::EMPTY && from.*field.member == nullptr)
        return INTEGER_LENGTH;
    return list_length<WIRE>(from.*field.member);
}

template <class WIRE>
int64_t length_of(const typename WIRE::RECORD &record) {
    return std::apply([&](auto... field) { return (field_length(record, field) + ...); }, WIRE::FIELDS);
}

// ---- Encoding

template <class WIRE>
bool encode(WRITER_T &to, const typename WIRE::RECORD &record);

// The count is written when it is known: a list is walked once.
template <class WIRE, class NODE>
bool encode_list(WRITER_T &to, const NODE *list, EMPTY_NODE_T empty_node) {
    const INT32_T count_at = to.passed();
    if (list == nullptr || !to.integer(0))
        return false;
    INT32_T count = 0;
    for (const NODE *node = list; node != nullptr; node = next_of(node)) {
        const auto *info = record_of<WIRE>(node);
        if (info == nullptr && empty_node == EMPTY_NODE_T::REFUSED)
            return false;
        if (info == nullptr)
            continue;
        if (!encode<WIRE>(to, *info))
            return false;
        count++;
    }
    to.rewrite_integer(count_at, count);
    return true;
}
template <class WIRE>
bool encode_optional(WRITER_T &to, const typename WIRE::RECORD *info, PRESENCE_T presence) {
    if (info == nullptr)
        return to.integer(0);
    const int64_t mark = presence == PRESENCE_T::FLAG ? 1 : length_of<WIRE>(*info);
    return to.integer(static_cast<INT32_T>(mark)) && encode<WIRE>(to, *info);
}

template <class RECORD, class VALUE>
bool encode_field(WRITER_T &to, const RECORD &from, INTEGER_T<RECORD, VALUE> field) {
    return to.integer(static_cast<INT32_T>(from.*field.member));
}
template <class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, STRING_T<RECORD> field) {
    return to.string(from.*field.member);
}
template <class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, LABEL_T<RECORD> field) {
    return to.string(from.*field.member);
}
template <class WIRE, class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, INNER_T<WIRE, RECORD> field) {
    return encode<WIRE>(to, from.*field.member);
}
template <class WIRE, class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, OWNED_RECORD_T<WIRE, RECORD> field) {
    const auto *info = from.*field.member;
    return info != nullptr && encode<WIRE>(to, *info);
}
template <class WIRE, class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, OPTIONAL_T<WIRE, RECORD> field) {
    return encode_optional<WIRE>(to, from.*field.member, field.presence);
}
template <class RECORD>
bool encode_field(WRITER_T &to, const RECORD &from, IDS_T<RECORD> field) {
    const BASIC_MOVIE_IDS_T *values = from.*field.member;
    const INT32_T count = values == nullptr ? 0 : values->num;
    if (count < 0 || (count > 0 && values->ids == nullptr))
        return false;
    return to.integer(count) && (count == 0 || to.integers(values->ids, count));
}
template <class WIRE, class RECORD, class NODE>
bool encode_field(WRITER_T &to, const RECORD &from, LIST_T<WIRE, RECORD, NODE> field) {
    if (field.null_list == NULL_LIST_T::EMPTY && from.*field.member == nullptr)
        return to.integer(0);
    return encode_list<WIRE>(to, from.*field.member, field.empty_node);
}

template <class WIRE>
bool encode(WRITER_T &to, const typename WIRE::RECORD &record) {
    return std::apply([&](auto... field) { return (encode_field(to, record, field) && ...); }, WIRE::FIELDS);
}

// ---- Ids records

// A record with room for so many ids, at least one, that are still to be written; or NULL.
inline BASIC_MOVIE_IDS_T *new_ids(INT32_T count) {
    auto *values = static_cast<INT32_T *>(malloc(static_cast<size_t>(count) * sizeof(INT32_T)));
    if (values == nullptr)
        return nullptr;
    auto *info = allocate<BASIC_MOVIE_IDS_T>();
    if (info == nullptr) {
        free(values);
        return nullptr;
    }
    *info = {count, values};
    return info;
}
inline void delete_ids(BASIC_MOVIE_IDS_T *info) {
    if (info == nullptr)
        return;
    free(info->ids);
    free(info);
}

// ---- Delete. WHOLE frees all that a record owns; otherwise its labels stay, as the family's own delete
// leaves them.

template <class WIRE, bool WHOLE = false>
void delete_record(typename WIRE::RECORD **info);
template <class WIRE, bool WHOLE>
void free_fields(const typename WIRE::RECORD &record);

template <class WIRE, bool WHOLE = false, class NODE>
void delete_list_node(NODE **node) {
    if (node == nullptr || *node == nullptr)
        return;
    if constexpr (!IS_INTRUSIVE<WIRE, NODE>)
        delete_record<WIRE, WHOLE>(&(*node)->info);
    else
        free_fields<WIRE, WHOLE>(**node);
    free(*node);
    *node = nullptr;
}
template <class WIRE, bool WHOLE = false, class NODE>
[[gnu::flatten]] void delete_list(NODE **list) {
    delete_nodes(list, [](NODE **node) { delete_list_node<WIRE, WHOLE>(node); });
}

template <bool WHOLE, class RECORD, class VALUE>
void free_field(const RECORD &, INTEGER_T<RECORD, VALUE>) {}
template <bool WHOLE, class RECORD>
void free_field(const RECORD &of, STRING_T<RECORD> field) {
    free(of.*field.member);
}
template <bool WHOLE, class RECORD>
void free_field(const RECORD &of, LABEL_T<RECORD> field) {
    if constexpr (WHOLE)
        free(of.*field.member);
}
template <bool WHOLE, class WIRE, class RECORD>
void free_field(const RECORD &of, INNER_T<WIRE, RECORD> field) {
    free_fields<WIRE, WHOLE>(of.*field.member);
}
template <bool WHOLE, class WIRE, class RECORD>
void free_field(const RECORD &of, OWNED_RECORD_T<WIRE, RECORD> field) {
    auto *info = of.*field.member;
    delete_record<WIRE, WHOLE>(&info);
}
template <bool WHOLE, class WIRE, class RECORD>
void free_field(const RECORD &of, OPTIONAL_T<WIRE, RECORD> field) {
    auto *info = of.*field.member;
    delete_record<WIRE, WHOLE>(&info);
}
template <bool WHOLE, class RECORD>
void free_field(const RECORD &of, IDS_T<RECORD> field) {
    delete_ids(of.*field.member);
}
template <bool WHOLE, class WIRE, class RECORD, class NODE>
void free_field(const RECORD &of, LIST_T<WIRE, RECORD, NODE> field) {
    auto *nodes = of.*field.member;
    delete_list<WIRE, WHOLE>(&nodes);
}

template <class WIRE, bool WHOLE>
void free_fields(const typename WIRE::RECORD &record) {
    std::apply([&](auto... field) { (free_field<WHOLE>(record, field), ...); }, WIRE::FIELDS);
}
template <class WIRE, bool WHOLE>
void delete_record(typename WIRE::RECORD **info) {
    if (info == nullptr || *info == nullptr)
        return;
    free_fields<WIRE, WHOLE>(**info);
    free(*info);
    *info = nullptr;
}

// The node that make() puts a fresh record into. The record goes, whole, where there is none: nobody else
// has seen it.
template <class WIRE, class MAKE>
auto node_for(typename WIRE::RECORD *fresh, MAKE make) {
    auto *node = fresh == nullptr ? nullptr : make(fresh);
    if (node == nullptr)
        delete_record<WIRE, true>(&fresh);
    return node;
}

// ---- Decoding. What a failed decode has built is freed whole: nobody else can reach it.

template <class WIRE>
bool decode(READER_T &from, typename WIRE::RECORD &record);

template <class WIRE>
typename WIRE::RECORD *new_record() {
    if constexpr (requires { WIRE::create(); })
        return WIRE::create();
    else
        return allocate<typename WIRE::RECORD>();
}

template <class WIRE>
typename WIRE::RECORD *decode_new_record(READER_T &from) {
    if (from.left() < smallest_length<WIRE>())
        return nullptr; // before anything is allocated for it
    auto *info = new_record<WIRE>();
    if (info != nullptr && !decode<WIRE>(from, *info))
        delete_record<WIRE, true>(&info);
    return info;
}

template <class WIRE, class NODE>
NODE *decode_new_node(READER_T &from) {
    auto *info = decode_new_record<WIRE>(from);
    if constexpr (IS_INTRUSIVE<WIRE, NODE>)
        return info;
    else
        return node_for<WIRE>(info, create_node<NODE, typename WIRE::RECORD>);
}

// A negative count is an empty list, as a count of 0 is.
template <class WIRE, class NODE>
bool decode_records(READER_T &from, INT32_T count, NODE **list) {
    if (count > from.left() / smallest_length<WIRE>())
        return false;
    TAIL_T<NODE> tail;
    bool is_complete = true;
    for (INT32_T i = 0; i < count && is_complete; i++) {
        NODE *node = decode_new_node<WIRE, NODE>(from);
        is_complete = node != nullptr;
        if (is_complete)
            tail.append(node);
    }
    NODE *decoded = tail.head();
    if constexpr (requires(const typename WIRE::RECORD &record) { WIRE::key(record); })
        is_complete = is_complete &&
                      drop_repeats(
                          &decoded, count, [](const NODE *node) { return WIRE::key(*record_of<WIRE>(node)); },
                          delete_list_node<WIRE, true, NODE>);
    if (!is_complete) {
        delete_list<WIRE, true>(&decoded);
        return false;
    }
    *list = decoded;
    return true;
}
template <class WIRE, class NODE>
bool decode_list(READER_T &from, NODE **list) {
    INT32_T count = 0;
    return from.integer(&count) && decode_records<WIRE>(from, count, list);
}
template <class WIRE>
bool decode_optional(READER_T &from, typename WIRE::RECORD **info) {
    INT32_T mark = 0;
    if (!from.integer(&mark))
        return false;
    *info = mark == 0 ? nullptr : decode_new_record<WIRE>(from);
    return mark == 0 || *info != nullptr;
}

template <class RECORD, class VALUE>
bool decode_field(READER_T &from, RECORD &to, INTEGER_T<RECORD, VALUE> field) {
    INT32_T value = 0;
    if (!from.integer(&value))
        return false;
    to.*field.member = static_cast<VALUE>(value);
    return true;
}
template <class RECORD>
bool decode_field(READER_T &from, RECORD &to, STRING_T<RECORD> field) {
    return from.string(&(to.*field.member));
}
template <class RECORD>
bool decode_field(READER_T &from, RECORD &to, LABEL_T<RECORD> field) {
    return from.string(&(to.*field.member));
}
template <class WIRE, class RECORD>
bool decode_field(READER_T &from, RECORD &to, INNER_T<WIRE, RECORD> field) {
    return decode<WIRE>(from, to.*field.member);
}
template <class WIRE, class RECORD>
bool decode_field(READER_T &from, RECORD &to, OWNED_RECORD_T<WIRE, RECORD> field) {
    to.*field.member = decode_new_record<WIRE>(from);
    return to.*field.member != nullptr;
}
template <class WIRE, class RECORD>
bool decode_field(READER_T &from, RECORD &to, OPTIONAL_T<WIRE, RECORD> field) {
    return decode_optional<WIRE>(from, &(to.*field.member));
}
template <class RECORD>
bool decode_field(READER_T &from, RECORD &to, IDS_T<RECORD> field) {
    INT32_T count = 0;
    if (!from.integer(&count) || count < 0 || count > from.left() / INTEGER_LENGTH)
        return false;
    if (count == 0)
        return true;
    BASIC_MOVIE_IDS_T *values = new_ids(count);
    to.*field.member = values; // the record owns them from here on
    return values != nullptr && from.integers(values->ids, count);
}
template <class WIRE, class RECORD, class NODE>
bool decode_field(READER_T &from, RECORD &to, LIST_T<WIRE, RECORD, NODE> field) {
    return decode_list<WIRE>(from, &(to.*field.member));
}

template <class WIRE>
bool decode(READER_T &from, typename WIRE::RECORD &record) {
    return std::apply([&](auto... field) { return (decode_field(from, record, field) && ...); },
                      WIRE::FIELDS);
}

// ---- What the exported functions are made of

struct SILENT_T {
    void operator()(FAULT_T, int64_t) const {}
};

// Allocates a zeroed body of the given length, has it filled and hands it out whole. A failure is told to
// `say` with the length.
template <class FILL, class SAY = SILENT_T>
RTSTATUS encode_to_message(int64_t length, PVOID *msgdata, INT32_T *msglen, FILL fill, SAY say = {}) {
    if (length < 1 || length > LONGEST_BODY) {
        say(FAULT_T::LENGTH, length);
        return -1;
    }
    OWNED_BODY_T body(static_cast<INT8_T *>(calloc(1, static_cast<size_t>(length))));
    if (body == nullptr) {
        say(FAULT_T::MEMORY, length);
        return -1;
    }
    WRITER_T to(body.get(), static_cast<INT32_T>(length));
    if (!fill(to)) {
        say(FAULT_T::CONTENT, length);
        return -1;
    }
    *msgdata = body.release();
    *msglen = static_cast<INT32_T>(length);
    return 0;
}

// As encode_to_message(), without a walk over the records beforehand for the length. Every byte of the body
// has to be written, and in order. Flattened, all records of a body are written by one function, and the
// writer stays in registers: that is a tenth of the time.
template <class FILL>
[[gnu::flatten]] RTSTATUS encode_in_one_walk(PVOID *msgdata, INT32_T *msglen, FILL fill,
                                             FAULT_T *fault = nullptr) {
    GROWING_ROOM_T room;
    WRITER_T to(room);
    OWNED_BODY_T body;
    const bool is_whole = fill(to);
    if (is_whole)
        body = room.take(to);
    if (body == nullptr) {
        if (fault != nullptr)
            *fault = is_whole ? FAULT_T::MEMORY : room.fault();
        return -1;
    }
    *msgdata = body.release();
    *msglen = to.passed();
    return 0;
}

template <class WIRE>
RTSTATUS encode_record_to_message(const typename WIRE::RECORD *info, PVOID *msgdata, INT32_T *msglen) {
    if (info == nullptr || msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_in_one_walk(msgdata, msglen, [&](WRITER_T &to) { return encode<WIRE>(to, *info); });
}

template <class WIRE, class NODE>
RTSTATUS encode_list_to_message(const NODE *list, EMPTY_NODE_T empty_node, PVOID *msgdata, INT32_T *msglen) {
    if (list == nullptr || msgdata == nullptr || msglen == nullptr)
        return -1;
    return encode_in_one_walk(msgdata, msglen,
                              [&](WRITER_T &to) { return encode_list<WIRE>(to, list, empty_node); });
}

// The decoders, too, are flattened: a reader that no other function knows of stays in registers.
template <class WIRE>
[[gnu::flatten]] INT32_T decode_record_from_message(const void *message, INT32_T length,
                                                    typename WIRE::RECORD **info) {
    if (message == nullptr || info == nullptr)
        return -1;
    READER_T from(message, length);
    auto *decoded = decode_new_record<WIRE>(from);
    if (decoded == nullptr)
        return -1;
    *info = decoded;
    return from.passed();
}

template <class WIRE, class NODE>
[[gnu::flatten]] INT32_T decode_list_from_message(const void *message, INT32_T length, NODE **list) {
    if (message == nullptr || list == nullptr)
        return -1;
    READER_T from(message, length);
    return decode_list<WIRE>(from, list) ? from.passed() : -1;
}

} // namespace tavisys::wire

#endif
