#include "codec_version_info.h"

#include <cstdio>

#include "codec/wire.h"
#include "support/show.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct VERSION_WIRE {
    using RECORD = TP_TAVISYS_VERSION_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(string(&RECORD::version), string(&RECORD::name), string(&RECORD::devid));
};

} // namespace

TP_TAVISYS_VERSION_INFORMATION_T *create_tavisys_version_information(void) {
    return allocate<TP_TAVISYS_VERSION_INFORMATION_T>();
}

void delete_tavisys_version_information(TP_TAVISYS_VERSION_INFORMATION_T **info) {
    delete_record<VERSION_WIRE>(info);
}

RTSTATUS encode_tavisys_version_information_to_message(const TP_TAVISYS_VERSION_INFORMATION_T *info,
                                                       PVOID *msgdata, INT32_T *msglen) {
    return encode_record_to_message<VERSION_WIRE>(info, msgdata, msglen);
}

INT32_T decode_tavisys_version_information_from_message(const void *msgdata, INT32_T msglen,
                                                        TP_TAVISYS_VERSION_INFORMATION_T **info) {
    return decode_record_from_message<VERSION_WIRE>(msgdata, msglen, info);
}

void show_tavisys_version_information(const TP_TAVISYS_VERSION_INFORMATION_T *info) {
    if (info == nullptr)
        return;
    printf("影柜系统版本号: %s\n", shown(info->version));
    printf("影柜设备名称: %s\n", shown(info->name));
    printf("影柜设备编码: %s\n", shown(info->devid));
}
