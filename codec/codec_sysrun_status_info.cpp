#include "codec_sysrun_status_info.h"

#include "codec/wire.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct STATUS_WIRE {
    using RECORD = TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(
        integer(&RECORD::status), integer(&RECORD::total_movies), integer(&RECORD::parseok_movies),
        integer(&RECORD::parseerr_movies), integer(&RECORD::left_movies));
};

} // namespace

TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T *create_tavisys_sysrun_status_information(void) {
    return allocate<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T>();
}

void delete_tavisys_sysrun_status_information(TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info) {
    delete_record<STATUS_WIRE>(info);
}

RTSTATUS
encode_tavisys_sysrun_status_information_to_message(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T *info,
                                                    PVOID *msgdata, INT32_T *msglen) {
    return encode_record_to_message<STATUS_WIRE>(info, msgdata, msglen);
}

INT32_T decode_tavisys_sysrun_status_information_from_message(const void *msgdata, INT32_T msglen,
                                                              TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info) {
    return decode_record_from_message<STATUS_WIRE>(msgdata, msglen, info);
}
