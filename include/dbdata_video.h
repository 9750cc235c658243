/** @file dbdata_video.h
 *  The playable files of a movie: one for a film, one per episode for a series.
 *
 *  A video belongs to the one list node that holds it, and is not shared. Videos may be created from any
 *  number of threads at once. A NULL argument gives NULL, 0 or nothing. */
#ifndef TAVISYS_DBDATA_VIDEO_H
#define TAVISYS_DBDATA_VIDEO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A video. */
typedef struct {
    INT32_T id;                /**< video id, see create_dbdata_video_information() */
    INT32_T seqno;             /**< number within the movie: the episode */
    INT8_T *name;              /**< name of the video */
    INT8_T *filepath;          /**< path of the video file */
    INT8_T *mp4;               /**< path of an MP4 rendition, or NULL */
    INT8_T *relative_mp4;      /**< at first a copy of mp4 */
    INT8_T *relative_filepath; /**< at first a copy of filepath */
} DBDATA_VIDEO_INFORMATION_T;

/** A node of a video list. */
typedef struct {
    PVOID next;                       /**< next node, or NULL */
    DBDATA_VIDEO_INFORMATION_T *info; /**< the record, owned */
} DBDATA_VIDEO_INFORMATION_LIST_T;

/** Make a video with the next video id: a counter from 1, plus 50000 times the last number of the
 *  address of eth0, so that the ids of servers with different addresses lie apart. As long as eth0 has no
 *  address the plain counter is the id.
 *  @param seqno    [in] number within the movie.
 *  @param name     [in] name; copied.
 *  @param filepath [in] path of the file; copied.
 *  @param mp4      [in] path of an MP4 rendition; copied. May be NULL.
 *  @return a fresh record, or NULL: NULL name or path, memory short; no id is used up then. */
TAVISYS_API DBDATA_VIDEO_INFORMATION_T *
create_dbdata_video_information(INT32_T seqno, const INT8_T *name, const INT8_T *filepath, const INT8_T *mp4);

/** Free the record with its strings, clear the pointer. */
TAVISYS_API void delete_dbdata_video_information(DBDATA_VIDEO_INFORMATION_T **info);

/** @param info [in] the record, which passes from the caller to the node; may be NULL.
 *  @return a fresh node, or NULL: memory short, the record stays the caller's. */
TAVISYS_API DBDATA_VIDEO_INFORMATION_LIST_T *
create_dbdata_video_information_list_node(DBDATA_VIDEO_INFORMATION_T *info);

/** Create a record and a node that holds it. @return the node, or NULL: no record; memory short for the
 *  node, the record's id is used up then. */
TAVISYS_API DBDATA_VIDEO_INFORMATION_LIST_T *
create_dbdata_video_information_list_node_ex(INT32_T seqno, const INT8_T *name, const INT8_T *filepath,
                                             const INT8_T *mp4);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared. A sequence
 * number or a path may stand in a list more than once.
 *  @return 0, always: also for a NULL argument, and for a node without a record and a list that is not
 *          empty, which is not added and stays the caller's. */
TAVISYS_API RTSTATUS add_node_to_dbdata_video_information_list(DBDATA_VIDEO_INFORMATION_LIST_T **list,
                                                               DBDATA_VIDEO_INFORMATION_LIST_T *node);

/** Free the node with its record, clear the pointer. */
TAVISYS_API void delete_dbdata_video_information_list_node(DBDATA_VIDEO_INFORMATION_LIST_T **node);

/** Delete every node. The head pointer is not cleared: it dangles afterwards. */
TAVISYS_API void delete_dbdata_video_information_list(DBDATA_VIDEO_INFORMATION_LIST_T **list);

/** Print the record to standard output. */
TAVISYS_API void show_dbdata_video_information(const DBDATA_VIDEO_INFORMATION_T *info);

/** Print every record of the list. */
TAVISYS_API void show_dbdata_video_information_list(const DBDATA_VIDEO_INFORMATION_LIST_T *list);

#ifdef __cplusplus
}
#endif

#endif
