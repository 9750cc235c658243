#include "codec_detail_movinfo.h"

#include "codec/video_wire.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct DIMENSION_WIRE {
    using RECORD = TP_MOVIE_DIMENSION_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::id), string(&RECORD::name));
};

struct VALUE_WIRE {
    using RECORD = TP_MOVIE_FILTER_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(string(&RECORD::name));
};

struct LABELLED_LIST_WIRE {
    using RECORD = TP_MOVIE_FILTER_KVP_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(label(&RECORD::desc), // callers take it over, so the family's delete leaves it
                        list<VALUE_WIRE>(&RECORD::list, EMPTY_NODE_T::SKIPPED));
};

struct LABELLED_VALUE_WIRE {
    using RECORD = TP_MOVIE_SINGLE_KVP_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(string(&RECORD::desc), string(&RECORD::value));
};

struct DETAIL_WIRE {
    using RECORD = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(
        string(&RECORD::name), integer(&RECORD::year), optional<DIMENSION_WIRE>(&RECORD::dimension_info),
        string(&RECORD::poster), optional<LABELLED_LIST_WIRE>(&RECORD::director_info),
        optional<LABELLED_LIST_WIRE>(&RECORD::actor_info), optional<LABELLED_LIST_WIRE>(&RECORD::kind_info),
        optional<LABELLED_VALUE_WIRE>(&RECORD::duration_info),
        optional<LABELLED_VALUE_WIRE>(&RECORD::summary_info), integer(&RECORD::videos),
        list<VIDEO_WIRE>(&RECORD::video_list, EMPTY_NODE_T::SKIPPED));
};

} // namespace

TP_MOVIE_DIMENSION_INFORMATION_T *create_movie_dimension_information(void) {
    return allocate<TP_MOVIE_DIMENSION_INFORMATION_T>();
}

void delete_movie_dimension_information(TP_MOVIE_DIMENSION_INFORMATION_T **info) {
    delete_record<DIMENSION_WIRE>(info);
}

TP_MOVIE_FILTER_INFORMATION_T *create_movie_filter_information(void) {
    return allocate<TP_MOVIE_FILTER_INFORMATION_T>();
}

void delete_movie_filter_information(TP_MOVIE_FILTER_INFORMATION_T **info) {
    delete_record<VALUE_WIRE>(info);
}

TP_MOVIE_FILTER_INFORMATION_LIST_T *
create_movie_filter_information_list_node(TP_MOVIE_FILTER_INFORMATION_T *info) {
    return create_node<TP_MOVIE_FILTER_INFORMATION_LIST_T>(info);
}

void add_node_to_movie_filter_information_list(TP_MOVIE_FILTER_INFORMATION_LIST_T **list,
                                               TP_MOVIE_FILTER_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

void delete_movie_filter_information_list_node(TP_MOVIE_FILTER_INFORMATION_LIST_T **node) {
    delete_list_node<VALUE_WIRE>(node);
}

void delete_movie_filter_information_list(TP_MOVIE_FILTER_INFORMATION_LIST_T **list) {
    delete_list<VALUE_WIRE>(list);
}

TP_MOVIE_FILTER_KVP_INFORMATION_T *create_movie_filter_kvp_information(void) {
    return allocate<TP_MOVIE_FILTER_KVP_INFORMATION_T>();
}

void delete_movie_filter_kvp_information(TP_MOVIE_FILTER_KVP_INFORMATION_T **info) {
    delete_record<LABELLED_LIST_WIRE>(info);
}

TP_MOVIE_SINGLE_KVP_INFORMATION_T *create_movie_single_kvp_information(void) {
    return allocate<TP_MOVIE_SINGLE_KVP_INFORMATION_T>();
}

void delete_movie_single_kvp_information(TP_MOVIE_SINGLE_KVP_INFORMATION_T **info) {
    delete_record<LABELLED_VALUE_WIRE>(info);
}

TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *create_tavisys_detail_movie_information(void) {
    return allocate<TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T>();
}

void delete_tavisys_detail_movie_information(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    delete_record<DETAIL_WIRE>(info);
}

void release_tavisys_detail_movie_information(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    delete_record<DETAIL_WIRE, true>(info);
}

RTSTATUS encode_tavisys_detail_movie_information_to_message(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *info,
                                                            PVOID *msgdata, INT32_T *msglen) {
    return encode_record_to_message<DETAIL_WIRE>(info, msgdata, msglen);
}

INT32_T decode_tavisys_detail_movie_information_from_message(const void *msgdata, INT32_T msglen,
                                                             TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info) {
    return decode_record_from_message<DETAIL_WIRE>(msgdata, msglen, info);
}
