/** @file codec_basic_movinfo.h
 *  One page of movies, the reply body of request 1006: five paging integers, then a counted list of short
 *  movie descriptions. */
#ifndef TAVISYS_CODEC_BASIC_MOVINFO_H
#define TAVISYS_CODEC_BASIC_MOVINFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A counted array of attribute ids. */
typedef struct {
    INT32_T num;  /**< number of ids */
    INT32_T *ids; /**< the ids, owned by the record */
} BASIC_MOVIE_IDS_T;

/** One movie in a page. The record owns its strings and ids records, each of which may be NULL. */
typedef struct {
    INT32_T movid;                     /**< movie id */
    INT8_T *movcode;                   /**< movie code, by which duplicates are recognised */
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
    INT8_T *hdsn;       /**< serial number of the hard disk that holds the movie, or its device name */
    INT32_T index;      /**< tavisys-server: place in the whole result, from 1 */
    INT32_T totalvideo; /**< number of videos; touch-screen form only, else 0 */
    INT32_T duration;   /**< minutes; touch-screen form only, else 0 */
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
    TP_PAGE_INFORMATION pageinfo;
    TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T *list; /**< owned by the record */
} TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;

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

/** Append a node unless a movie of the same code, in upper or lower case, is in the list. A duplicate is
 *  logged at INFO and deleted, with its record and whatever is chained behind it: the caller's pointer
 *  must not be used afterwards, whichever way it went. NULL arguments are ignored. */
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

#ifdef __cplusplus
}
#endif

#endif
