// Pairs of movie id and video id, alone or behind a uuid.
#include "codec_basic_movinfo.h"

#include "codec/logged_body.h"
#include "codec/wire_items.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct MOVIE_ID_WIRE {
    using RECORD = TP_TAVISYS_MOVIE_ID_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::mid), integer(&RECORD::vid));
    static RECORD *create() { return create_tavisys_movie_id_information(); }
};

constexpr const char *ANNOUNCED = "解析的个数";

bool encode_ids(WRITER_T &to, const TP_TAVISYS_MOVIE_ID_INFORMATION_T *list) {
    return encode_list<MOVIE_ID_WIRE>(to, list, EMPTY_NODE_T::SKIPPED);
}

} // namespace

TP_TAVISYS_MOVIE_ID_INFORMATION_T *create_tavisys_movie_id_information(void) {
    return allocate_node<TP_TAVISYS_MOVIE_ID_INFORMATION_T>();
}

void add_node_to_tavisys_movie_id_information_list(TP_TAVISYS_MOVIE_ID_INFORMATION_T **list,
                                                   TP_TAVISYS_MOVIE_ID_INFORMATION_T *node) {
    append_node(list, node);
}

void delete_tavisys_movie_id_information(TP_TAVISYS_MOVIE_ID_INFORMATION_T **list) {
    delete_list<MOVIE_ID_WIRE>(list);
}

// The reported length counts one integer more than the pairs take. Peers send and expect that many bytes
// and stop reading behind the last pair, so the integer stays, as zeros of the same block.
RTSTATUS encode_tavisys_movie_id_information_to_message(const TP_TAVISYS_MOVIE_ID_INFORMATION_T *list,
                                                        PVOID *msgdata, INT32_T *msglen) {
    if (!are_given(__func__, list, msgdata, msglen))
        return -1;
    return encode_to_message(
        list_length<MOVIE_ID_WIRE>(list) + INTEGER_LENGTH, msgdata, msglen,
        [&](WRITER_T &to) { return encode_ids(to, list); }, LOGGED_T{__func__, ""});
}

INT32_T decode_tavisys_movie_id_information_to_message(const void *msgdata, INT32_T msglen,
                                                       TP_TAVISYS_MOVIE_ID_INFORMATION_T **info) {
    if (msgdata == nullptr || info == nullptr)
        return -1;
    READER_T from(msgdata, msglen);
    return decode_announced_list<MOVIE_ID_WIRE>(from, info, __func__, ANNOUNCED) ? from.passed() : -1;
}

RTSTATUS encode_movid_info_to_buffer(const INT8_T *uuid, INT32_T rid,
                                     const TP_TAVISYS_MOVIE_ID_INFORMATION_T *list, PVOID *msgdata,
                                     INT32_T *msglen) {
    if (!are_given(__func__, list, msgdata, msglen, uuid != nullptr))
        return -1;
    return encode_to_message(
        items_length(uuid, rid) + list_length<MOVIE_ID_WIRE>(list), msgdata, msglen,
        [&](WRITER_T &to) { return encode_items(to, uuid, rid) && encode_ids(to, list); },
        LOGGED_T{__func__, ""});
}

INT32_T decode_movid_info_to_buffer(const void *msgdata, INT32_T msglen, INT8_T **uuid, INT32_T *rid,
                                    TP_TAVISYS_MOVIE_ID_INFORMATION_T **info) {
    if (msgdata == nullptr || info == nullptr)
        return -1;
    READER_T from(msgdata, msglen);
    const bool is_whole = decode_items(from, uuid, rid) &&
                          decode_announced_list<MOVIE_ID_WIRE>(from, info, __func__, ANNOUNCED);
    return is_whole ? from.passed() : -1;
}
