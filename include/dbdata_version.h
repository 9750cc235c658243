/** @file dbdata_version.h
 *  The software version in the catalogue. */
#ifndef TAVISYS_DBDATA_VERSION_H
#define TAVISYS_DBDATA_VERSION_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Software version of the server. */
typedef struct {
    INT8_T *version; /**< software version */
    INT8_T *name;    /**< name of the software */
    INT8_T *devid;   /**< device id */
} DBDATA_VERSION_INFORMATION_T;

/** @param version, name, devid [in] the fields; copied.
 *  @return a fresh record, or NULL: NULL argument, memory short. */
TAVISYS_API DBDATA_VERSION_INFORMATION_T *
create_dbdata_version_information(const INT8_T *version, const INT8_T *name, const INT8_T *devid);

/** Free the record with its strings, clear the pointer. */
TAVISYS_API void delete_dbdata_version_information(DBDATA_VERSION_INFORMATION_T **info);

#ifdef __cplusplus
}
#endif

#endif
