/** @file codec_dbdata_movinfo.h
 *  Whole catalogue movies as they travel from server to server, the reply body of request 3003, and the
 *  bodies that name movies and videos by code or id.
 *
 *  Lists are held by the address of their head; an empty list is NULL. Records own their strings, any of
 *  which may be NULL, and their lists; nodes own their records. */
#ifndef TAVISYS_CODEC_DBDATA_MOVINFO_H
#define TAVISYS_CODEC_DBDATA_MOVINFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One value of an attribute: a dimension, resolution, category, kind or area. */
typedef struct {
    INT8_T *name; /**< name */
} TP_TAVISYS_DBDATA_FILTER_INFORMATION_T;

/** One director or actor. */
typedef struct {
    INT8_T *code; /**< code of the person */
    INT8_T *name; /**< name */
} TP_TAVISYS_DBDATA_PERSON_INFORMATION_T;

/** One year. */
typedef struct {
    INT32_T year; /**< year */
} TP_TAVISYS_DBDATA_YEAR_INFORMATION_T;

/** The posters of a movie. */
typedef struct {
    INT8_T *big;    /**< address of the large poster */
    INT8_T *middle; /**< of the medium one */
    INT8_T *small;  /**< of the small one */
} TP_TAVISYS_DBDATA_POSTER_INFORMATION_T;

/** One video file of a movie. */
typedef struct {
    INT32_T vid;      /**< video id */
    INT32_T seqno;    /**< episode */
    INT8_T *name;     /**< name */
    INT8_T *filepath; /**< path of the video file */
    INT8_T *mp4;      /**< path of its MP4 version */
} TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T;

/** Node of a list of values. */
typedef struct {
    PVOID next;                                   /**< next node or NULL */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *info; /**< the value */
} TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;

/** Node of a list of persons. */
typedef struct {
    PVOID next;                                   /**< next node or NULL */
    TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *info; /**< the person */
} TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;

/** Node of a list of years. */
typedef struct {
    PVOID next;                                 /**< next node or NULL */
    TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *info; /**< the year */
} TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T;

/** Node of a list of videos. */
typedef struct {
    PVOID next;                                  /**< next node or NULL */
    TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *info; /**< the video */
} TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T;

/** One movie, in the order of the wire. */
typedef struct {
    INT32_T mid;                                                  /**< movie id */
    INT8_T *movcode;                                              /**< movie code */
    INT8_T *movnamech;                                            /**< Chinese title */
    INT8_T *movnameen;                                            /**< English title */
    INT8_T *imdbvalue;                                            /**< score, as text */
    INT8_T *acronym;                                              /**< initials of the title */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *dimension_list;  /**< dimensions */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *resolution_list; /**< resolutions */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *category_list;   /**< categories */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *kind_list;       /**< kinds */
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *area_list;       /**< areas */
    TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *director_list;   /**< directors */
    TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *actor_list;      /**< actors */
    TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *year_list;         /**< years */
    INT32_T puttime;                                              /**< put into storage */
    INT32_T pubtime;                                              /**< published */
    INT32_T putintime;                                            /**< put on the shelf */
    INT32_T duration;                                             /**< running time, minutes */
    TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *posters;              /**< posters; may be NULL */
    INT8_T *summary;                                              /**< synopsis */
    INT32_T episodes;                                             /**< number of episodes */
    TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *video_list;       /**< videos */
} TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;

/** Node of a list of movies. */
typedef struct {
    PVOID next;                                  /**< next node or NULL */
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *info; /**< the movie */
} TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *create_tp_tavisys_dbdata_filter_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_filter_information(TP_TAVISYS_DBDATA_FILTER_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_filter_information_list_node(TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *info);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tp_tavisys_dbdata_filter_information_list_node(TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tp_tavisys_dbdata_filter_information_list(TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tp_tavisys_dbdata_filter_information_list(TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **list,
                                                      TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *node);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *create_tp_tavisys_dbdata_person_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_person_information(TP_TAVISYS_DBDATA_PERSON_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_person_information_list_node(TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *info);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tp_tavisys_dbdata_person_information_list_node(TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tp_tavisys_dbdata_person_information_list(TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tp_tavisys_dbdata_person_information_list(TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **list,
                                                      TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *node);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *create_tp_tavisys_dbdata_year_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_year_information(TP_TAVISYS_DBDATA_YEAR_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_year_information_list_node(TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *info);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tp_tavisys_dbdata_year_information_list_node(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tp_tavisys_dbdata_year_information_list(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tp_tavisys_dbdata_year_information_list(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **list,
                                                    TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *node);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *create_tp_tavisys_dbdata_poster_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_poster_information(TP_TAVISYS_DBDATA_POSTER_INFORMATION_T **info);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *create_tp_tavisys_dbdata_video_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_video_information(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_video_information_list_node(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *info);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tp_tavisys_dbdata_video_information_list_node(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tp_tavisys_dbdata_video_information_list(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tp_tavisys_dbdata_video_information_list(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **list,
                                                     TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *node);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *create_tp_tavisys_dbdata_movie_information(void);
/** Free a record with all that it holds and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void delete_tp_tavisys_dbdata_movie_information(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_movie_information_list_node(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *info);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tp_tavisys_dbdata_movie_information_list_node(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void
delete_tp_tavisys_dbdata_movie_information_list(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void
add_node_to_tp_tavisys_dbdata_movie_information_list(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                     TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *node);

/** Encode a list of movies into a fresh body, which the caller frees with safe_free(). Nodes without a
 *  record are left out. The length of the body is told on standard output: "编码后信息长度为(length)".
 *
 *  A body of several movies can't be decoded: each further movie is written at a smaller offset, as far
 *  behind the start of the one before as that one's video list is long, over its tail. Peers know the body
 *  of one movie only. For more use encode_tp_tavisys_dbdata_movie_information_list_to_message_packed().
 *
 *  @return 0, or -1 with lines on standard output and the out-arguments untouched: NULL list, a movie
 *          whose `director_list`, `actor_list`, `year_list` or `video_list` is NULL (an empty one is a
 *          node without a record), memory short: "分配(length)字节内存空间出错.错误原因: ...". -1 without
 *          a line: NULL out-argument. */
TAVISYS_API RTSTATUS encode_tp_tavisys_dbdata_movie_information_list_to_message(
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);

/** As encode_tp_tavisys_dbdata_movie_information_list_to_message(), but several movies lie one behind the
 *  other, as the decoder reads them, and neither the length nor any failure but a movie's missing list is
 *  told. For one movie both bodies are the same. */
TAVISYS_API RTSTATUS encode_tp_tavisys_dbdata_movie_information_list_to_message_packed(
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh list of movies (NULL for a count of 0), which the caller deletes. A decoded
 *  list that was empty is NULL, so that a decoded movie can't always be encoded again.
 *  @return bytes consumed, or -1 with *list untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tp_tavisys_dbdata_movie_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list);

/* Listings on standard output. */

/** Print the name and a blank. */
TAVISYS_API void
show_tp_tavisys_dbdata_filter_information(const TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *info);
/** Print the title, each name and the end of the line. */
TAVISYS_API void
show_tp_tavisys_dbdata_filter_information_list(const INT8_T *title,
                                               const TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *list);
/** Print code and name in parentheses. */
TAVISYS_API void
show_tp_tavisys_dbdata_person_information(const TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *info);
/** Print the title, each person and the end of the line. */
TAVISYS_API void
show_tp_tavisys_dbdata_person_information_list(const INT8_T *title,
                                               const TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *list);
/** Print the year and a blank. */
TAVISYS_API void show_tp_tavisys_dbdata_year_information(const TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *info);
/** Print the title, each year and the end of the line. */
TAVISYS_API void
show_tp_tavisys_dbdata_year_information_list(const INT8_T *title,
                                             const TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *list);
/** Print a headline and a line for each poster that is there. */
TAVISYS_API void
show_tp_tavisys_dbdata_poster_information(const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *info);
/** Print a line with episode, name and paths. */
TAVISYS_API void show_tp_tavisys_dbdata_video_information(const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *info);
/** Print the title on a line of its own and a line for each video. */
TAVISYS_API void
show_tp_tavisys_dbdata_video_information_list(const INT8_T *title,
                                              const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *list);
/** Print all of a movie but its id. */
TAVISYS_API void show_tp_tavisys_dbdata_movie_information(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *info);
/** Print each movie. */
TAVISYS_API void
show_tp_tavisys_dbdata_movie_information_list(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list);

/** A movie code. */
typedef struct {
    INT8_T *movcode; /**< movie code */
} TP_MOVCODE_INFORMATION_T;

/** Node of a list of movie codes. A node without a record travels, too. */
typedef struct {
    PVOID next;                     /**< next node or NULL */
    TP_MOVCODE_INFORMATION_T *info; /**< the code; may be NULL */
} TP_MOVCODE_INFORMATION_LIST_T;

/** Body of request 3005: which movies are asked for, by code. Unlike the other request records it is
 *  encoded. */
typedef struct {
    INT8_T *deviceid;                    /**< the asking device */
    INT8_T *hddevname;                   /**< device name of the hard disk */
    INT8_T *ptdevname;                   /**< device name of the partition */
    TP_MOVCODE_INFORMATION_LIST_T *list; /**< the movie codes; may be NULL */
} TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T;

/** @return a record with a copy of the code, which may be NULL; or NULL: memory short. */
TAVISYS_API TP_MOVCODE_INFORMATION_T *create_tp_movcode_information(const INT8_T *movcode);
/** Free a record with its code and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tp_movcode_information(TP_MOVCODE_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with the record still the caller's: memory
 *          short. Nothing is printed. */
TAVISYS_API TP_MOVCODE_INFORMATION_LIST_T *
create_tp_movcode_information_list_node(TP_MOVCODE_INFORMATION_T *info);
/** @return a node with a fresh record that has a copy of the code, which may be NULL; or NULL: memory short.
 *          Nothing is printed. */
TAVISYS_API TP_MOVCODE_INFORMATION_LIST_T *create_tp_movcode_information_list_node_ex(const INT8_T *movcode);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tp_movcode_information_list_node(TP_MOVCODE_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_tp_movcode_information_list(TP_MOVCODE_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void add_node_to_tp_movcode_information_list(TP_MOVCODE_INFORMATION_LIST_T **list,
                                                         TP_MOVCODE_INFORMATION_LIST_T *node);

/** @return a request with copies of the strings, each of which may be NULL, that has taken over the list;
 *          or NULL with the list still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T *
create_tp_tavisys_movcode_information(const INT8_T *deviceid, const INT8_T *hddevname,
                                      const INT8_T *ptdevname, TP_MOVCODE_INFORMATION_LIST_T *list);
/** Free a request with its strings and its list and clear the pointer to it. A NULL address or pointer is
 *  ignored. */
TAVISYS_API void
delete_tp_tavisys_movieinfo_request_information(TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T **info);
/** Encode a request, which may be NULL, into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL out-argument, memory short. */
TAVISYS_API RTSTATUS encode_movinfo_request_information_to_message(
    const TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T *info, PVOID *msgdata, INT32_T *msglen);
/** Decode a body into a fresh request, or NULL for an encoded NULL, which the caller deletes. Nothing is
 *  printed.
 *  @return bytes consumed, or -1 with *info untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_movinfo_request_information_from_buffer(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T **info);

/* The pair of movie and video id, and the answer to it. The decoders expect an integer in front, the length
 * of the rest, that the encoders don't write: a program that sends one of these bodies to such a decoder
 * writes it itself and the items behind it, with the functions named ..._argument_to_buffer. */

/** Encode the two ids into a buffer of the caller's. Either may be NULL.
 *  @param mid     [in]  movie id.
 *  @param vid     [in]  video id.
 *  @param message [out] destination.
 *  @param length  [in]  bytes in the destination.
 *  @return bytes written, or -1: NULL destination, too little room. */
TAVISYS_API INT32_T encode_mid_vid_argument_to_buffer(const INT8_T *mid, const INT8_T *vid, PVOID message,
                                                      INT32_T length);
/** Encode the two ids into a fresh body, which the caller frees with safe_free(). Either may be NULL.
 *  @return 0, or -1 with the out-arguments untouched: NULL out-argument, memory short. */
TAVISYS_API INT32_T encode_mid_vid_to_buffer(const INT8_T *mid, const INT8_T *vid, PVOID *msgdata,
                                             INT32_T *msglen);
/** Decode (despite the name) an integer and, unless it is 0, the two ids, which the caller frees with
 *  safe_free(), also *mid when the call failed behind it: clear both before the call.
 *  @return bytes consumed, or -1: NULL argument, body cut short or malformed, memory short. When the integer
 *          is 0: 4, whatever the out-arguments are, and both are left as they were. */
TAVISYS_API INT32_T decode_mid_vid_to_buffer(const void *msgdata, INT32_T msglen, INT8_T **mid, INT8_T **vid);

/** Encode an answer into a buffer of the caller's: two integers and four strings, any of which may be
 *  NULL.
 *  @param index     [in]  index.
 *  @param duration  [in]  minutes.
 *  @param hdsn      [in]  serial number of the hard disk.
 *  @param name      [in]  title.
 *  @param movsn     [in]  movie code.
 *  @param dimension [in]  dimension.
 *  @param message [out] destination.
 *  @param length  [in]  bytes in the destination.
 *  @return bytes written, or -1: NULL destination, too little room. */
TAVISYS_API INT32_T encode_basic_movie_argument_to_buffer(INT32_T index, INT32_T duration, const INT8_T *hdsn,
                                                          const INT8_T *name, const INT8_T *movsn,
                                                          const INT8_T *dimension, PVOID message,
                                                          INT32_T length);
/** Always fails: the body that it makes has room for the four strings but not for the two integers, so
 *  that the last of them don't fit. It stands for callers that handle the failure; answers are made with
 *  encode_basic_movie_argument_to_buffer().
 *  @return -1 with the out-arguments untouched. */
TAVISYS_API INT32_T encode_basic_movie_return(INT32_T index, INT32_T duration, const INT8_T *hdsn,
                                              const INT8_T *name, const INT8_T *movsn,
                                              const INT8_T *dimension, PVOID *msgdata, INT32_T *msglen);
/** Decode (despite the name) an integer and, unless it is 0, an answer, whose strings the caller frees with
 *  safe_free(), also those that were decoded before the call failed: clear them before the call. The
 *  integers may have been written by then, too.
 *  @param msgdata   [in]  the body.
 *  @param msglen    [in]  the address of the number of bytes in the body.
 *  @param index     [out] receives the index.
 *  @param duration  [out] receives the minutes.
 *  @param hdsn      [out] receives the serial number of the hard disk.
 *  @param name      [out] receives the title.
 *  @param movsn     [out] receives the movie code.
 *  @param dimension [out] receives the dimension.
 *  @return bytes consumed, or -1: NULL argument, body cut short or malformed, memory short. When the integer
 *          is 0: 4, whatever the out-arguments are, and all are left as they were. */
TAVISYS_API INT32_T decode_basic_movie_to_buffer(const void *msgdata, const INT32_T *msglen, INT32_T *index,
                                                 INT32_T *duration, INT8_T **hdsn, INT8_T **name,
                                                 INT8_T **movsn, INT8_T **dimension);

/* The path of a video for the peer that processes it: the device of its partition, and the path there. */

/** @return bytes of an encoded path, either part of which may be NULL; -1 for one that no body can hold. */
TAVISYS_API int calc_ffmpegc_movie_path_length(const INT8_T *ptdev, const INT8_T *video_rpath);
/** Encode a path, either part of which may be NULL, into a fresh body, which the caller frees with
 *  safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL out-argument, memory short, with
 *          "创建内存失败.." on standard output. */
TAVISYS_API INT32_T encode_ffmpegc_movie_path_to_buffer(const INT8_T *ptdev, const INT8_T *video_rpath,
                                                        PVOID *msgdata, INT32_T *msglen);
/** Decode a path, whose parts the caller frees with safe_free(), also *ptdev when the call failed behind
 *  it: clear both before the call.
 *  @return bytes consumed; 0, not -1, for a NULL body; -1 with "failed to decode_ptr_data_from_buffer" on
 *          standard output: NULL out-argument, body cut short or malformed, memory short. */
TAVISYS_API INT32_T decode_ffmpegc_movie_path_from_buffer(const void *msgdata, INT32_T msglen, INT8_T **ptdev,
                                                          INT8_T **video_rpath);

#ifdef __cplusplus
}
#endif

#endif
