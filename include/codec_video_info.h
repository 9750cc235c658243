/** @file codec_video_info.h
 *  The videos of a movie, the last item of a detail record: a count, then id, sequence number, name and
 *  path of each.
 *
 *  A list is held by the address of its head; an empty list is NULL. Each node owns its record. */
#ifndef TAVISYS_CODEC_VIDEO_INFO_H
#define TAVISYS_CODEC_VIDEO_INFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One video file of a movie. Both strings may be NULL. */
typedef struct {
    INT32_T id;    /**< video id */
    INT32_T seqno; /**< sequence number, the episode */
    INT8_T *name;  /**< name */
    INT8_T *mp4;   /**< path of the file to play */
} TP_TAVISYS_VIDEO_INFORMATION_T;

/** Node of a video list. */
typedef struct {
    PVOID next;                           /**< next node or NULL */
    TP_TAVISYS_VIDEO_INFORMATION_T *info; /**< the video */
} TP_TAVISYS_VIDEO_INFORMATION_LIST_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_VIDEO_INFORMATION_T *create_tavisys_video_information(void);

/** Free a record with its strings and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_video_information(TP_TAVISYS_VIDEO_INFORMATION_T **info);

/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_VIDEO_INFORMATION_LIST_T *
create_tavisys_video_information_list_node(TP_TAVISYS_VIDEO_INFORMATION_T *info);

/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void add_node_to_tavisys_video_information_list(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list,
                                                            TP_TAVISYS_VIDEO_INFORMATION_LIST_T *node);

/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_video_information_list_node(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **node);

/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_tavisys_video_information_list(TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list);

/** Length of an encoded list, nodes without a record left out.
 *  @param list   [in]  may be NULL.
 *  @param number [out] receives the number of records; may be NULL.
 *  @return bytes; 0 for NULL, -1 for a list that no body can hold. */
TAVISYS_API INT32_T calc_encode_video_information_list_length(const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list,
                                                              INT32_T *number);

/** Encode a list into a buffer of the caller's, nodes without a record left out.
 *  @param list    [in]  the videos.
 *  @param message [out] destination.
 *  @param length  [in]  bytes in the destination.
 *  @return bytes written, or -1: NULL argument, an empty list, too little room. The buffer stays the
 *          caller's either way. */
TAVISYS_API INT32_T encode_tavisys_video_information_list_to_buffer(
    const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list, PVOID message, INT32_T length);

/** Encode a list into a fresh body, which the caller frees with safe_free(). Nodes without a record are
 *  left out.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, an empty list, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_video_information_list_to_message(
    const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);

/** Decode a list (NULL for a count of 0), which the caller deletes.
 *  @return bytes consumed, or -1 with *list untouched: NULL argument, source cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_video_information_list_from_buffer(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_VIDEO_INFORMATION_LIST_T **list);

#ifdef __cplusplus
}
#endif

#endif
