/** @file codec_version_info.h
 *  Version information, the reply body of request 1000: three strings. */
#ifndef TAVISYS_CODEC_VERSION_INFO_H
#define TAVISYS_CODEC_VERSION_INFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Software and device of a server. Every string may be NULL. */
typedef struct {
    INT8_T *version; /**< software version */
    INT8_T *name;    /**< device name */
    INT8_T *devid;   /**< device code */
} TP_TAVISYS_VERSION_INFORMATION_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_VERSION_INFORMATION_T *create_tavisys_version_information(void);

/** Free a record with its strings and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_version_information(TP_TAVISYS_VERSION_INFORMATION_T **info);

/** Encode a record into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_version_information_to_message(
    const TP_TAVISYS_VERSION_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh record, which the caller deletes. The body is not kept.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_version_information_from_message(const void *msgdata, INT32_T msglen,
                                                                    TP_TAVISYS_VERSION_INFORMATION_T **info);

/** Print version, name and code, a line each, to standard output. */
TAVISYS_API void show_tavisys_version_information(const TP_TAVISYS_VERSION_INFORMATION_T *info);

#ifdef __cplusplus
}
#endif

#endif
