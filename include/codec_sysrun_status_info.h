/** @file codec_sysrun_status_info.h
 *  Running status of a server, the reply body of request 1001: five integers, 20 bytes. */
#ifndef TAVISYS_CODEC_SYSRUN_STATUS_INFO_H
#define TAVISYS_CODEC_SYSRUN_STATUS_INFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Phase of a server. */
typedef enum TAVISYS_32_BITS {
    SYSRUN_STATUS_INIT = 0,    /**< starting */
    SYSRUN_STATUS_WAITING = 1, /**< looking for movies; their total is not known yet */
    SYSRUN_STATUS_PARSING = 2, /**< reading the movies' metadata */
    SYSRUN_STATUS_READY = 3,   /**< all metadata is read, the catalogue is about to be complete */
    SYSRUN_STATUS_RUNNING = 4  /**< the whole catalogue is served */
} TAVISYS_SYSTEM_RUNNING_STATUS_E;

/** A server's progress in scanning its movies. */
typedef struct {
    TAVISYS_SYSTEM_RUNNING_STATUS_E status; /**< phase of the server */
    INT32_T total_movies;                   /**< movies found */
    INT32_T parseok_movies;                 /**< movies whose metadata parsed */
    INT32_T parseerr_movies;                /**< movies whose metadata failed */
    INT32_T left_movies;                    /**< movies still to parse */
} TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T *create_tavisys_sysrun_status_information(void);

/** Free a record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_sysrun_status_information(TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info);

/** Encode a record into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_sysrun_status_information_to_message(
    const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh record, which the caller deletes. The body is not kept.
 *  @return bytes consumed (20), or -1 with *info untouched: NULL argument, body too short, memory
 *          short. */
TAVISYS_API INT32_T decode_tavisys_sysrun_status_information_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T **info);

#ifdef __cplusplus
}
#endif

#endif
