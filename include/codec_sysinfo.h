/** @file codec_sysinfo.h
 *  System information, the reply body of request 1002: two integers, 8 bytes. */
#ifndef TAVISYS_CODEC_SYSINFO_H
#define TAVISYS_CODEC_SYSINFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a server holds. */
typedef struct {
    INT32_T hdnum;  /**< number of hard disks */
    INT32_T movnum; /**< number of movies */
} TP_TAVISYS_SYSTEM_INFORMATION_T;

/** @return a record with the two values, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_SYSTEM_INFORMATION_T *create_tavisys_system_information(INT32_T hdnum, INT32_T movnum);

/** Free a record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_system_information(TP_TAVISYS_SYSTEM_INFORMATION_T **info);

/** Encode a record into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_system_information_to_message(const TP_TAVISYS_SYSTEM_INFORMATION_T *info,
                                                                  PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh record, which the caller deletes. The body is not kept.
 *  @return bytes consumed (8), or -1 with *info untouched: NULL argument, body too short, memory short. */
TAVISYS_API INT32_T decode_tavisys_system_information_from_message(const void *msgdata, INT32_T msglen,
                                                                   TP_TAVISYS_SYSTEM_INFORMATION_T **info);

/** Print "系统共有%d个硬盘,%d部影片" to standard output. */
TAVISYS_API void show_tavisys_system_information(const TP_TAVISYS_SYSTEM_INFORMATION_T *info);

#ifdef __cplusplus
}
#endif

#endif
