#include "dbdata_version.h"

#include "support/owner.h"
#include "support_memory.h"

using namespace tavisys;

DBDATA_VERSION_INFORMATION_T *create_dbdata_version_information(const INT8_T *version, const INT8_T *name,
                                                                const INT8_T *devid) {
    OWNED_T<DBDATA_VERSION_INFORMATION_T, delete_dbdata_version_information> record{
        allocate<DBDATA_VERSION_INFORMATION_T>()};
    const bool stored = record != nullptr && store_copy(record->version, version) &&
                        store_copy(record->name, name) && store_copy(record->devid, devid);
    return stored ? record.release() : nullptr;
}

void delete_dbdata_version_information(DBDATA_VERSION_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr)
        return;
    for (INT8_T *string : {(*info)->version, (*info)->name, (*info)->devid})
        safe_free(string);
    safe_free(*info);
    *info = nullptr;
}
