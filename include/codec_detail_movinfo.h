/** @file codec_detail_movinfo.h
 *  Everything that a detail page shows of one movie, the reply body of request 1007.
 *
 *  Lists are held by the address of their head; an empty list is NULL. */
#ifndef TAVISYS_CODEC_DETAIL_MOVINFO_H
#define TAVISYS_CODEC_DETAIL_MOVINFO_H

#include "codec_video_info.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Dimension of a movie. */
typedef struct {
    INT32_T id;   /**< dimension id */
    INT8_T *name; /**< "2D", "3D"; may be NULL */
} TP_MOVIE_DIMENSION_INFORMATION_T;

/** One value of an attribute with several: a director, an actor, a kind. */
typedef struct {
    INT8_T *name; /**< may be NULL */
} TP_MOVIE_FILTER_INFORMATION_T;

/** Node of a list of values. The node owns its record. */
typedef struct {
    PVOID next;                          /**< next node or NULL */
    TP_MOVIE_FILTER_INFORMATION_T *info; /**< the value */
} TP_MOVIE_FILTER_INFORMATION_LIST_T;

/** A labelled list of values. */
typedef struct {
    INT8_T *desc;                             /**< the label, such as "导演"; may be NULL */
    TP_MOVIE_FILTER_INFORMATION_LIST_T *list; /**< the values */
} TP_MOVIE_FILTER_KVP_INFORMATION_T;

/** A labelled single value. */
typedef struct {
    INT8_T *desc;  /**< the label; may be NULL */
    INT8_T *value; /**< the value; may be NULL */
} TP_MOVIE_SINGLE_KVP_INFORMATION_T;

/** A movie in detail. Every pointer may be NULL; the record owns all that it points to. */
typedef struct {
    INT8_T *name;                                     /**< title */
    INT32_T year;                                     /**< year of publishing */
    TP_MOVIE_DIMENSION_INFORMATION_T *dimension_info; /**< dimension */
    INT8_T *poster;                                   /**< path of the poster */
    TP_MOVIE_FILTER_KVP_INFORMATION_T *director_info; /**< directors */
    TP_MOVIE_FILTER_KVP_INFORMATION_T *actor_info;    /**< actors */
    TP_MOVIE_FILTER_KVP_INFORMATION_T *kind_info;     /**< kinds */
    TP_MOVIE_SINGLE_KVP_INFORMATION_T *duration_info; /**< running time as text */
    TP_MOVIE_SINGLE_KVP_INFORMATION_T *summary_info;  /**< synopsis */
    INT32_T videos;                                   /**< number of videos, as the server set it */
    TP_TAVISYS_VIDEO_INFORMATION_LIST_T *video_list;  /**< the videos */
} TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_MOVIE_DIMENSION_INFORMATION_T *create_movie_dimension_information(void);
/** Free a dimension with its name and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_movie_dimension_information(TP_MOVIE_DIMENSION_INFORMATION_T **info);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_MOVIE_FILTER_INFORMATION_T *create_movie_filter_information(void);
/** Free a value with its name and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_movie_filter_information(TP_MOVIE_FILTER_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_MOVIE_FILTER_INFORMATION_LIST_T *
create_movie_filter_information_list_node(TP_MOVIE_FILTER_INFORMATION_T *info);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void add_node_to_movie_filter_information_list(TP_MOVIE_FILTER_INFORMATION_LIST_T **list,
                                                           TP_MOVIE_FILTER_INFORMATION_LIST_T *node);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_movie_filter_information_list_node(TP_MOVIE_FILTER_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_movie_filter_information_list(TP_MOVIE_FILTER_INFORMATION_LIST_T **list);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_MOVIE_FILTER_KVP_INFORMATION_T *create_movie_filter_kvp_information(void);
/** Free a labelled list with its values, but not its label, and clear the pointer to it: callers take
 *  `desc` over, or keep a label there that isn't theirs to free. A NULL address or pointer is ignored.
 *  A decoded record owns its labels: release_tavisys_detail_movie_information() frees them, too. */
TAVISYS_API void delete_movie_filter_kvp_information(TP_MOVIE_FILTER_KVP_INFORMATION_T **info);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_MOVIE_SINGLE_KVP_INFORMATION_T *create_movie_single_kvp_information(void);
/** Free a labelled value with both strings and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_movie_single_kvp_information(TP_MOVIE_SINGLE_KVP_INFORMATION_T **info);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *create_tavisys_detail_movie_information(void);
/** Free a record with all that it holds but the labels of its three labelled lists (see
 *  delete_movie_filter_kvp_information()) and clear the pointer to it. A NULL address or pointer is
 *  ignored. For a decoded record use release_tavisys_detail_movie_information(). */
TAVISYS_API void delete_tavisys_detail_movie_information(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info);
/** Free a record whole, labels included, and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void release_tavisys_detail_movie_information(TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info);

/** Encode a record into a fresh body, which the caller frees with safe_free(). Nodes without a record are
 *  left out.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, a NULL `video_list`, a labelled list
 *          that is there but has a NULL `list`, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_detail_movie_information_to_message(
    const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *info, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh record, which the caller releases. The body is not kept.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_detail_movie_information_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T **info);

#ifdef __cplusplus
}
#endif

#endif
