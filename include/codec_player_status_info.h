/** @file codec_player_status_info.h
 *  Status of a player: one integer, two strings, eight integers, in the order of the record. */
#ifndef TAVISYS_CODEC_PLAYER_STATUS_INFO_H
#define TAVISYS_CODEC_PLAYER_STATUS_INFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a player is doing. Both strings may be NULL. */
typedef struct {
    INT32_T status;      /**< player state */
    INT8_T *filename;    /**< file being played */
    INT8_T *filepath;    /**< its path */
    UINT32_T playtime;   /**< position reached */
    INT32_T duration;    /**< length of the file */
    INT32_T mute;        /**< mute flag */
    INT32_T volume;      /**< volume */
    INT32_T movid;       /**< movie id */
    INT32_T videoid;     /**< video (episode) id */
    INT32_T seqno;       /**< episode sequence number */
    INT32_T category_id; /**< category of the movie */
} TP_TAVISYS_PLAYER_STATUS_INFORMATION_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_PLAYER_STATUS_INFORMATION_T *create_tavisys_player_status_information(void);

/** Free a record with its strings and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_player_status_information(TP_TAVISYS_PLAYER_STATUS_INFORMATION_T **info);

/** Encode a record into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_player_status_information_to_message(
    const TP_TAVISYS_PLAYER_STATUS_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh record, which the caller deletes. The body is not kept.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_player_status_information_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_PLAYER_STATUS_INFORMATION_T **info);

#ifdef __cplusplus
}
#endif

#endif
