#include "codec_sysinfo.h"

#include <cstdio>

#include "codec/wire.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct SYSTEM_WIRE {
    using RECORD = TP_TAVISYS_SYSTEM_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::hdnum), integer(&RECORD::movnum));
};

} // namespace

TP_TAVISYS_SYSTEM_INFORMATION_T *create_tavisys_system_information(INT32_T hdnum, INT32_T movnum) {
    auto *info = allocate<TP_TAVISYS_SYSTEM_INFORMATION_T>();
    if (info != nullptr)
        *info = {hdnum, movnum};
    return info;
}

void delete_tavisys_system_information(TP_TAVISYS_SYSTEM_INFORMATION_T **info) {
    delete_record<SYSTEM_WIRE>(info);
}

RTSTATUS encode_tavisys_system_information_to_message(const TP_TAVISYS_SYSTEM_INFORMATION_T *info,
                                                      PVOID *msgdata, INT32_T *msglen) {
    return encode_record_to_message<SYSTEM_WIRE>(info, msgdata, msglen);
}

INT32_T decode_tavisys_system_information_from_message(const void *msgdata, INT32_T msglen,
                                                       TP_TAVISYS_SYSTEM_INFORMATION_T **info) {
    return decode_record_from_message<SYSTEM_WIRE>(msgdata, msglen, info);
}

void show_tavisys_system_information(const TP_TAVISYS_SYSTEM_INFORMATION_T *info) {
    if (info != nullptr)
        printf("系统共有%d个硬盘,%d部影片\n", info->hdnum, info->movnum);
}
