/** @file dbdata_movie.h
 *  The movie records of the catalogue: one per movie found on a partition of a hard disk of some host.
 *
 *  A movie is shared by every list that holds it: `count` counts the references, and each list node owns
 *  one. Movies may be created from any number of threads at once. A NULL argument gives NULL, 0 or nothing,
 *  unless said otherwise. Duplicates and a NULL movie in the filter are logged through zlog's default
 *  category (dzlog). */
#ifndef TAVISYS_DBDATA_MOVIE_H
#define TAVISYS_DBDATA_MOVIE_H

#include "dbdata_actor.h"
#include "dbdata_area.h"
#include "dbdata_category.h"
#include "dbdata_dimension.h"
#include "dbdata_director.h"
#include "dbdata_kind.h"
#include "dbdata_resolution.h"
#include "dbdata_video.h"
#include "dbdata_year.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Code and titles of a movie. */
typedef struct {
    INT8_T *movie_code;    /**< movie code, the key */
    INT8_T *movie_name_ch; /**< Chinese title */
    INT8_T *movie_name_en; /**< English title, or NULL */
} DBDATA_BASIC_MOVIE_INFORMATION_T;

/** Paths of a movie's posters; each may be NULL. */
typedef struct {
    INT8_T *big;                  /**< large poster */
    INT8_T *middle;               /**< medium poster */
    INT8_T *small;                /**< small poster */
    INT8_T *relative_big_path;    /**< at first a copy of big */
    INT8_T *relative_middle_path; /**< at first a copy of middle */
    INT8_T *relative_small_path;  /**< at first a copy of middle, not of small */
    INT8_T *tv_big;               /**< large poster of the television layout */
    INT8_T *tv_middle;            /**< medium poster of the television layout */
    INT8_T *tv_small;             /**< small poster of the television layout */
} DBDATA_POSTER_INFORMATION_T;

/** A movie. All that it points to belongs to it. */
typedef struct {
    INT32_T count;                          /**< references; 1 after creation */
    INT32_T id;                             /**< movie id, see create_dbdata_movie_information() */
    DBDATA_BASIC_MOVIE_INFORMATION_T *info; /**< code and titles */
    INT8_T *imdbvalue;                      /**< rating, as text */
    INT8_T *acronym;                        /**< abbreviation of the title */
    DBDATA_DIMENSION_INFORMATION_LIST_T *dimension_list;   /**< dimensions */
    DBDATA_RESOLUTION_INFORMATION_LIST_T *resolution_list; /**< resolutions */
    DBDATA_CATEGORY_INFORMATION_LIST_T *category_list;     /**< categories */
    DBDATA_KIND_INFORMATION_LIST_T *kind_list;             /**< kinds */
    DBDATA_AREA_INFORMATION_LIST_T *area_list;             /**< areas */
    DBDATA_DIRECTOR_INFORMATION_LIST_T *director_list;     /**< directors */
    DBDATA_ACTOR_INFORMATION_LIST_T *actor_list;           /**< actors */
    DBDATA_YEAR_INFORMATION_LIST_T *year_list;             /**< publishing years */
    INT32_T put_time;     /**< day on which the movie was put on the shelf, YYYYMMDD */
    INT32_T publish_time; /**< day of publishing, YYYYMMDD */
    INT32_T putin_time;   /**< when the movie was put into the catalogue; for the server program */
    INT32_T duration;     /**< running time, minutes */
    DBDATA_POSTER_INFORMATION_T *posters;        /**< posters */
    INT8_T *summary;                             /**< short synopsis */
    INT8_T *description;                         /**< detailed synopsis, or NULL */
    INT32_T episodes;                            /**< number of episodes */
    DBDATA_VIDEO_INFORMATION_LIST_T *video_list; /**< videos */
    INT32_T type;      /**< an EVENT_HOST_TYPE_E: what kind of host; for the server program */
    INT8_T *ipaddr;    /**< address of the host that holds the movie */
    INT8_T *hddevname; /**< device name of the hard disk */
    INT8_T *ptdevname; /**< device name of the partition */
} DBDATA_MOVIE_INFORMATION_T;

/** A node of a movie list. */
typedef struct {
    PVOID next;                       /**< next node, or NULL */
    DBDATA_MOVIE_INFORMATION_T *info; /**< the movie; the node holds one reference */
} DBDATA_MOVIE_INFORMATION_LIST_T;

/** @param movie_code    [in] movie code; copied.
 *  @param movie_name_ch [in] Chinese title; copied.
 *  @param movie_name_en [in] English title; copied. May be NULL.
 *  @return a fresh record, or NULL: NULL code or Chinese title, memory short. */
TAVISYS_API DBDATA_BASIC_MOVIE_INFORMATION_T *
create_dbdata_basic_movie_information(const INT8_T *movie_code, const INT8_T *movie_name_ch,
                                      const INT8_T *movie_name_en);

/** Free the record with its strings, clear the pointer. */
TAVISYS_API void delete_dbdata_basic_movie_information(DBDATA_BASIC_MOVIE_INFORMATION_T **info);

/** Make a poster record; the television posters stay NULL. relative_small_path gets the medium path.
 *  @param big, middle, small [in] paths; copied.
 *  @return a fresh record, or NULL: NULL argument, memory short. */
TAVISYS_API DBDATA_POSTER_INFORMATION_T *
create_dbdata_poster_information(const INT8_T *big, const INT8_T *middle, const INT8_T *small);

/** Make a poster record with the television posters alone.
 *  @param big, middle, small [in] paths; copied.
 *  @return a fresh record, or NULL: NULL argument, memory short. */
TAVISYS_API DBDATA_POSTER_INFORMATION_T *
create_dbdata_tv_poster_information(const INT8_T *big, const INT8_T *middle, const INT8_T *small);

/** Free the record with its strings, clear the pointer. */
TAVISYS_API void delete_dbdata_poster_information(DBDATA_POSTER_INFORMATION_T **info);

/** Make an empty movie with the next movie id: a counter from 1, plus 50000 times the last number of the
 *  address of eth0, so that the ids of servers with different addresses lie apart. As long as eth0 has no
 *  address the plain counter is the id. An address that has been found is printed to standard output.
 *  @return a fresh record of count 1, every other field NULL or 0; NULL: memory short, no id is used up. */
TAVISYS_API DBDATA_MOVIE_INFORMATION_T *create_dbdata_movie_information(void);

/** Add a reference. @return the movie that was given. */
TAVISYS_API DBDATA_MOVIE_INFORMATION_T *duplicate_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T *info);

/** Release a reference. Surprise: the last one does not free everything. It frees the basic information,
 *  the rating, the acronym, the posters, the summary and all lists but the years, then clears the pointer;
 *  `year_list`, `description`, `ipaddr`, `hddevname`, `ptdevname` and the record itself stay with whoever
 *  kept a pointer to the record, and are lost if nobody did. Before the last reference the pointer stays
 *  as it is. Use release_dbdata_movie_information() unless you take those over. */
TAVISYS_API void delete_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T **info);

/** Release a reference and clear the pointer; the last reference frees the movie whole. */
TAVISYS_API void release_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T **info);

/** @param info [in] the movie, whose reference passes from the caller to the node; may be NULL.
 *  @return a fresh node, or NULL: memory short, the reference stays the caller's. Its line on standard output
 *          has a blank before 字节 and no line end. */
TAVISYS_API DBDATA_MOVIE_INFORMATION_LIST_T *
create_dbdata_movie_information_list_node(DBDATA_MOVIE_INFORMATION_T *info);

/** Append a node at the tail; the list owns it then. The walk compares every movie in the list: n appends
 *  cost n squared. Whoever builds a long list keeps a pointer to its last node and sets `next`.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, or, for a list that is
 *          not empty, a node without a record or without basic information (it stays the caller's).
 *          1 when the list has that movie code on that disk and partition already, see
 *          found_node_from_dbdata_movie_information_list_by_movie_code(): nothing was added and the
 *          caller must delete the node. */
TAVISYS_API RTSTATUS add_node_to_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                               DBDATA_MOVIE_INFORMATION_LIST_T *node);

/** As add_node_to_dbdata_movie_information_list(); a duplicate is logged once more, at INFO. */
TAVISYS_API RTSTATUS add_single_node_to_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                                      DBDATA_MOVIE_INFORMATION_LIST_T *node);

/** Look for a movie's duplicate: the same movie code, disk device and partition device. The same code
 *  elsewhere is another movie. A duplicate is logged at INFO.
 *  @param slist [in] list to look into.
 *  @param tlist [in] node that holds the movie to look for.
 *  @return the first duplicate's node, which stays in the list, or NULL: none, NULL argument, a movie to
 *          look for without a code. */
TAVISYS_API DBDATA_MOVIE_INFORMATION_LIST_T *
found_node_from_dbdata_movie_information_list_by_movie_code(const DBDATA_MOVIE_INFORMATION_LIST_T *slist,
                                                            const DBDATA_MOVIE_INFORMATION_LIST_T *tlist);

/** @return the first node whose movie has that id, which stays in the list, or NULL. */
TAVISYS_API DBDATA_MOVIE_INFORMATION_LIST_T *
found_node_from_dbdata_movie_information_list_by_mid(const DBDATA_MOVIE_INFORMATION_LIST_T *list,
                                                     INT32_T mid);

/** Unlink and delete the first node whose movie has that code; the movie is released as
 *  delete_dbdata_movie_information() does it. */
TAVISYS_API void
delete_node_from_dbdata_movie_information_list_by_movie_code(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                             const INT8_T *movie_code);

/** Unlink and delete the first node whose movie lies on that disk; the movie is released as
 *  delete_dbdata_movie_information() does it. */
TAVISYS_API void
delete_node_from_dbdata_movie_information_list_by_harddisk_devname(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                                   const INT8_T *devname);

/** Release the node's movie as delete_dbdata_movie_information() does it, free the node, clear the
 *  pointer. */
TAVISYS_API void delete_dbdata_movie_information_list_node(DBDATA_MOVIE_INFORMATION_LIST_T **node);

/** Delete every node as delete_dbdata_movie_information_list_node() does it: what that leaves of a movie
 *  is lost unless the caller kept a pointer to it. The head pointer is not cleared: it dangles afterwards.
 *  Use release_dbdata_movie_information_list() to free a list whole. */
TAVISYS_API void delete_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list);

/** Free every node, release its movie with release_dbdata_movie_information(), clear the head pointer. */
TAVISYS_API void release_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list);

/** @return number of nodes whose movie has a movie code. */
TAVISYS_API INT32_T
dbdata_get_number_from_dbdata_movie_information_list(const DBDATA_MOVIE_INFORMATION_LIST_T *list);

/** Judge a movie by its attributes' ids; 0 stands for any.
 *  @param movinfo [in] the movie; NULL is logged at WARN.
 *  @param aid     [in] id that one of its areas must have.
 *  @param yid     [in] id that one of its years must have: the year's id, not the year.
 *  @param did     [in] id that one of its dimensions must have.
 *  @return 0 when the movie passes, else -1. */
TAVISYS_API RTSTATUS filter_movie_by_condition(const DBDATA_MOVIE_INFORMATION_T *movinfo, INT32_T aid,
                                               INT32_T yid, INT32_T did);

/** Print code and titles to standard output. */
TAVISYS_API void show_tavinfo_basic_movie_information(const DBDATA_BASIC_MOVIE_INFORMATION_T *info);

/** Print the paths of the three ordinary posters to standard output. */
TAVISYS_API void show_tavinfo_movie_posters_information(const DBDATA_POSTER_INFORMATION_T *info);

/** Prints nothing: the listings of attributes and storage positions call it and stay free of movies. */
TAVISYS_API void show_dbdata_movie_information(const DBDATA_MOVIE_INFORMATION_T *info);

/** Calls show_dbdata_movie_information() for every movie.
 *  @param list   [in] may be NULL.
 *  @param indent [in] ignored. */
TAVISYS_API void show_dbdata_movie_information_list(const DBDATA_MOVIE_INFORMATION_LIST_T *list,
                                                    INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
