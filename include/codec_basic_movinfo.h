/** @file codec_basic_movinfo.h
 *  One page of movies, the reply body of requests 1006 and 5006: five paging integers, then a counted list
 *  of short movie descriptions; and two bodies for programs that settle among themselves when to send
 *  them: pairs of movie and video ids, and videos by movie code.
 *
 *  What is logged goes to zlog's default category (dzlog). The WARN line of an encoder is
 *  "参数获取出错! ..." for a NULL argument and "创建内存失败.." when memory is short. */
#ifndef TAVISYS_CODEC_BASIC_MOVINFO_H
#define TAVISYS_CODEC_BASIC_MOVINFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A counted array of attribute ids. With a negative number, or one above 0 and no array, what holds it can't
 *  be encoded: a failure like the others. */
typedef struct {
    INT32_T num;  /**< number of ids */
    INT32_T *ids; /**< the ids, owned by the record */
} BASIC_MOVIE_IDS_T;

/** One movie in a page. The record owns its strings and ids records, each of which may be NULL. */
typedef struct {
    INT32_T movid;                     /**< movie id */
    INT8_T *movcode;                   /**< movie code, which tells duplicates; NULL is one like others */
    INT8_T *movname;                   /**< title */
    UINT32_T score;                    /**< score; tavisys-server sends tenths, 93 for 9.3 */
    INT32_T puttime;                   /**< put on the shelf; tavisys-server sends YYYYMMDD */
    INT32_T pubtime;                   /**< published; tavisys-server sends YYYYMMDD */
    INT8_T *nposter;                   /**< path of the medium poster */
    INT8_T *bposter;                   /**< path of the large poster */
    INT8_T *acronym;                   /**< initials of the title */
    INT32_T category_id;               /**< category id */
    INT32_T year_id;                   /**< id of the year, as the filter list has it */
    BASIC_MOVIE_IDS_T *kind_ids;       /**< kind ids */
    BASIC_MOVIE_IDS_T *area_ids;       /**< area ids */
    BASIC_MOVIE_IDS_T *dimension_ids;  /**< dimension ids */
    BASIC_MOVIE_IDS_T *resolution_ids; /**< resolution ids */
    INT8_T *hdsn;                      /**< serial number of the hard disk that holds the movie */
    INT32_T index;                     /**< tavisys-server: place in the whole result, from 1 */
    INT32_T totalvideo;                /**< number of videos; touch-screen form only, else 0 */
    INT32_T duration;                  /**< minutes; touch-screen form only, else 0 */
} TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;

/** Node of a movie list. The node owns its record. */
typedef struct {
    PVOID next;                                 /**< next node or NULL */
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *info; /**< the movie */
} TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T;

/** Where a page stands in the whole result. */
typedef struct {
    int pagenum;     /**< number of this page, from 1 */
    int pagesize;    /**< movies per page */
    int totalpages;  /**< pages in the whole result */
    int totalmovies; /**< movies in the whole result */
    int replymovies; /**< movies in this page */
} TP_PAGE_INFORMATION;

/** A page: its numbers and its movies. */
typedef struct {
    TP_PAGE_INFORMATION pageinfo;                    /**< its numbers */
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *list; /**< owned by the record */
} TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;

/** What all pages have in common that show a movie, encoded once; see
 *  encode_tavisys_basic_movie_information_to_part(). */
typedef struct {
    const void *bytes; /**< the part */
    INT32_T length;    /**< bytes in it */
} TP_TAVISYS_BASIC_MOVIE_PART_T;

/** One pair of ids, and the node of its list. */
typedef struct {
    int mid;    /**< movie id */
    int vid;    /**< video id */
    PVOID next; /**< next pair or NULL */
} TP_TAVISYS_MOVIE_ID_INFORMATION_T;

/** One video, and the node of its list, which owns the strings; both may be NULL. */
typedef struct {
    int index;       /**< index */
    INT8_T *hdsn;    /**< serial number of the hard disk */
    INT8_T *movname; /**< title */
    PVOID next;      /**< next video or NULL */
} TP_VIDEO_LIST;

/** The videos of one movie, and the node of a list of movies, which owns code and videos. */
typedef struct {
    INT8_T *movcode;     /**< movie code; may be NULL */
    TP_VIDEO_LIST *list; /**< its videos */
    PVOID next;          /**< next movie or NULL */
} TP_HARD_DISK_VIDEO_INFORMATION_T;

/** @return a record with a zeroed array of that many ids, or NULL: number below 1, memory short. */
TAVISYS_API BASIC_MOVIE_IDS_T *create_tavisys_basic_movie_ids_information(INT32_T number);

/** Free an ids record with its array and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_basic_movie_ids_information(BASIC_MOVIE_IDS_T **info);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *create_tavisys_basic_movie_information(void);

/** Free a record with its strings and ids and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tavisys_basic_movie_information(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T **info);

/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *
create_tavisys_basic_movie_information_list_node(TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *info);

/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tavisys_basic_movie_information_list(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list,
                                                 TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node);

/** Append a node unless a movie of the same code, in upper or lower case, is in the list. It compares every
 *  movie in the list: n appends cost n squared. A duplicate is logged at INFO and deleted, with its record
 *  and whatever is chained behind it: the caller's pointer must not be used afterwards, whichever way it
 *  went. NULL arguments are ignored. */
TAVISYS_API void
add_touchscreen_node_to_tavisys_basic_movie_information_list(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list,
                                                             TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *node);

/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tavisys_basic_movie_information_list_node(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **node);

/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tavisys_basic_movie_information_list(TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list);

/** @return a zeroed page, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *create_tavisys_basic_movie_ext_information(void);

/** Free a page with its list and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_basic_movie_ext_information(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info);

/** Encode a page into a fresh body, which the caller frees with safe_free(). Nodes without a record are
 *  left out; `totalvideo` and `duration` don't travel. A page whose list is NULL is refused: an empty
 *  page is sent as a list of one node without a record.
 *  @return 0, or -1 with a WARN line and the out-arguments untouched: NULL argument, NULL list, memory
 *          short. */
TAVISYS_API RTSTATUS encode_tavisys_basic_movie_ext_information_to_message(
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Encode a movie list alone into a fresh body, which the caller frees with safe_free(). Nodes without a
 *  record are left out.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, an empty list, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_basic_movie_information_list_to_message(
    const TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh page, which the caller deletes. The list of an empty page is NULL.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_basic_movie_ext_information_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info);

/** Decode a body into a fresh movie list (NULL for a count of 0), which the caller deletes.
 *  @return bytes consumed, or -1 with *list untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_basic_movie_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list);

/* The touch-screen form of a page, the reply body of request 5006: each movie is followed by `totalvideo`
 * and `duration`. Neither form carries a mark: a body must be decoded in the form that it was encoded in. */

/** As encode_tavisys_basic_movie_ext_information_to_message(), in the touch-screen form. */
TAVISYS_API RTSTATUS encode_touchscreen_basic_movie_ext_information_to_message(
    const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Encode what all pages have in common that show the movie, into a fresh part, which the caller frees with
 *  safe_free(). A server that sends the same movies on many pages encodes each of them once and puts pages
 *  together of their parts, for a fraction of what encoding their records takes. `index` is no part of it.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_basic_movie_information_to_part(
    const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T *info, PVOID *part, INT32_T *length);

/** Put a page together, in a fresh body, which the caller frees with safe_free(): the same that
 *  encode_tavisys_basic_movie_ext_information_to_message() makes of the records. No movies make an empty
 *  page.
 *  @param pageinfo [in]  the page's numbers; `replymovies` is the number of parts.
 *  @param index    [in]  of the first movie; each further one has the next.
 *  @param parts    [in]  of the movies; read only. May be NULL where there are none.
 *  @param msgdata  [out] receives the body.
 *  @param msglen   [out] receives the bytes in the body.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, a negative number of parts, a part that
 *          is NULL or too short for one, a page too long to travel, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_basic_movie_parts_to_message(const TP_PAGE_INFORMATION *pageinfo,
                                                                 INT32_T index,
                                                                 const TP_TAVISYS_BASIC_MOVIE_PART_T *parts,
                                                                 PVOID *msgdata, INT32_T *msglen);

/** As encode_tavisys_basic_movie_parts_to_message(), for touch screens: the same that
 *  encode_touchscreen_basic_movie_ext_information_to_message() makes of the records. */
TAVISYS_API RTSTATUS encode_touchscreen_basic_movie_parts_to_message(
    const TP_PAGE_INFORMATION *pageinfo, INT32_T index, const TP_TAVISYS_BASIC_MOVIE_PART_T *parts,
    PVOID *msgdata, INT32_T *msglen);

/** As decode_tavisys_basic_movie_ext_information_from_message(), of the touch-screen form. */
TAVISYS_API INT32_T decode_touchscreen_basic_movie_ext_information_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T **info);

/** As decode_tavisys_basic_movie_information_list_from_message(), of the touch-screen form. Movies of the
 *  same code are kept. */
TAVISYS_API INT32_T decode_touchscreen_basic_movie_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T **list);

/* Pairs of movie and video ids: a count, then the two ids of each. */

/** @return a zeroed pair, or NULL with a line on standard output: memory short. */
TAVISYS_API TP_TAVISYS_MOVIE_ID_INFORMATION_T *create_tavisys_movie_id_information(void);

/** Append a pair, which the list takes over. It walks the list: n appends cost n squared. NULL arguments
 *  are ignored. */
TAVISYS_API void add_node_to_tavisys_movie_id_information_list(TP_TAVISYS_MOVIE_ID_INFORMATION_T **list,
                                                               TP_TAVISYS_MOVIE_ID_INFORMATION_T *node);

/** Free every pair of a list. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_tavisys_movie_id_information(TP_TAVISYS_MOVIE_ID_INFORMATION_T **list);

/** Encode a list into a fresh body, which the caller frees with safe_free(). *msglen is 4 more than the
 *  list takes: the body ends with an integer 0, which decoders leave unread.
 *  @return 0, or -1 with a WARN line and the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_movie_id_information_to_message(
    const TP_TAVISYS_MOVIE_ID_INFORMATION_T *list, PVOID *msgdata, INT32_T *msglen);

/** Decode a body (despite the name) into a fresh list (NULL for a count of 0), which the caller deletes.
 *  The count is logged at INFO.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short, memory short. */
TAVISYS_API INT32_T decode_tavisys_movie_id_information_to_message(const void *msgdata, INT32_T msglen,
                                                                   TP_TAVISYS_MOVIE_ID_INFORMATION_T **info);

/** Encode a uuid, an integer and a list of pairs into a fresh body (despite the name), which the caller
 *  frees with safe_free(). *msglen is exact here.
 *  @return 0, or -1 with a WARN line and the out-arguments untouched: NULL argument, memory short. */
TAVISYS_API RTSTATUS encode_movid_info_to_buffer(const INT8_T *uuid, INT32_T rid,
                                                 const TP_TAVISYS_MOVIE_ID_INFORMATION_T *list,
                                                 PVOID *msgdata, INT32_T *msglen);

/** Decode a body (despite the name) with a uuid, an integer and a list of pairs (NULL for a count of 0).
 *  The caller frees the uuid with safe_free(), also when the call failed behind it, so clear *uuid
 *  before the call; *rid may have been written by then, too. The count is logged at INFO.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_movid_info_to_buffer(const void *msgdata, INT32_T msglen, INT8_T **uuid,
                                                INT32_T *rid, TP_TAVISYS_MOVIE_ID_INFORMATION_T **info);

/* Videos by movie code: a count of movies; of each its code, a count of videos and the videos. */

/** @return a video with copies of the strings, each of which may be NULL; or NULL: memory short, with the
 *          line of a list node, but on the log at WARN. */
TAVISYS_API TP_VIDEO_LIST *create_video_node(const INT8_T *hdsn, INT32_T index, const INT8_T *movname);

/** Append a video, which the list takes over. It walks the list: n appends cost n squared. NULL arguments
 *  are ignored. */
TAVISYS_API void add_node_to_video_list(TP_VIDEO_LIST **list, TP_VIDEO_LIST *node);

/** Free every video of a list. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_video_list(TP_VIDEO_LIST **list);

/** @return a movie with a copy of its code, which may be NULL, that has taken over the videos; or NULL
 *          with a line on standard output and the videos still the caller's: memory short. */
TAVISYS_API TP_HARD_DISK_VIDEO_INFORMATION_T *create_hard_disk_videonode(const INT8_T *movcode,
                                                                         TP_VIDEO_LIST *video_list);

/** Append a movie, which the list takes over. It walks the list: n appends cost n squared. NULL arguments
 *  are ignored. */
TAVISYS_API void add_node_to_mhard_disk_videolist(TP_HARD_DISK_VIDEO_INFORMATION_T **list,
                                                  TP_HARD_DISK_VIDEO_INFORMATION_T *node);

/** Free every movie of a list with its videos. The caller's head pointer is left as it was: clear it
 *  afterwards. */
TAVISYS_API void delete_hard_disk_videolist(TP_HARD_DISK_VIDEO_INFORMATION_T **list);

/** Encode a list of videos into a buffer of the caller's (despite the name). Length and count are logged
 *  at INFO.
 *  @param list    [in]  the videos; may be NULL.
 *  @param message [out] destination.
 *  @param length  [in]  bytes in the destination.
 *  @return bytes written, or -1 with a WARN line: NULL argument, length 0, too little room. The buffer
 *          stays the caller's either way. */
TAVISYS_API INT32_T encode_video_list_to_message(const TP_VIDEO_LIST *list, PVOID message, INT32_T length);

/** Encode a list of movies into a fresh body, which the caller frees with safe_free(). Numbers and lengths
 *  are logged at INFO.
 *  @return 0, or -1 with WARN lines and the out-arguments untouched: NULL argument, a movie without
 *          videos, memory short. */
TAVISYS_API RTSTATUS encode_hdvideo_list_to_message(const TP_HARD_DISK_VIDEO_INFORMATION_T *list,
                                                    PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh list of movies (NULL for a count of 0), which the caller deletes. The number
 *  of videos of each movie is logged at INFO, a video that finds no memory at WARN.
 *  @return 0, not the bytes consumed; or -1 with *info untouched: NULL argument, body cut short or
 *          malformed, memory short. */
TAVISYS_API RTSTATUS decode_hdvideo_list_information_from_message(const void *msgdata, INT32_T msglen,
                                                                  TP_HARD_DISK_VIDEO_INFORMATION_T **info);

#ifdef __cplusplus
}
#endif

#endif
