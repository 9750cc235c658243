#include "codec_player_status_info.h"

#include "codec/wire.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct PLAYER_WIRE {
    using RECORD = TP_TAVISYS_PLAYER_STATUS_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(integer(&RECORD::status), string(&RECORD::filename), string(&RECORD::filepath),
                        integer(&RECORD::playtime), integer(&RECORD::duration), integer(&RECORD::mute),
                        integer(&RECORD::volume), integer(&RECORD::movid), integer(&RECORD::videoid),
                        integer(&RECORD::seqno), integer(&RECORD::category_id));
};

} // namespace

TP_TAVISYS_PLAYER_STATUS_INFORMATION_T *create_tavisys_player_status_information(void) {
    return allocate<TP_TAVISYS_PLAYER_STATUS_INFORMATION_T>();
}

void delete_tavisys_player_status_information(TP_TAVISYS_PLAYER_STATUS_INFORMATION_T **info) {
    delete_record<PLAYER_WIRE>(info);
}

RTSTATUS
encode_tavisys_player_status_information_to_message(const TP_TAVISYS_PLAYER_STATUS_INFORMATION_T *info,
                                                    PVOID *msgdata, INT32_T *msglen) {
    return encode_record_to_message<PLAYER_WIRE>(info, msgdata, msglen);
}

INT32_T decode_tavisys_player_status_information_from_message(const void *msgdata, INT32_T msglen,
                                                              TP_TAVISYS_PLAYER_STATUS_INFORMATION_T **info) {
    return decode_record_from_message<PLAYER_WIRE>(msgdata, msglen, info);
}
