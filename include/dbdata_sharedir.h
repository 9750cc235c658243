/** @file dbdata_sharedir.h
 *  Storage positions beside the tree of hosts: shared directories with their movies.
 *
 *  Records are shared by `count`, and each list node owns one reference. A NULL argument gives
 *  NULL, 0 or nothing, unless said otherwise. */
#ifndef TAVISYS_DBDATA_SHAREDIR_H
#define TAVISYS_DBDATA_SHAREDIR_H

#include "dbdata_movie.h"
#include "dbdata_movie_stat.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A shared directory. */
typedef struct {
    INT32_T count;    /**< references; 1 after creation */
    INT8_T *sharedir; /**< path of the directory, the key */
} DBDATA_SHAREDIR_INFORMATION_T;

/** A node of a shared directory list. */
typedef struct {
    PVOID next;                            /**< next node, or NULL */
    DBDATA_SHAREDIR_INFORMATION_T *info;   /**< the record; the node holds one reference */
    DBDATA_MOVIE_INFORMATION_LIST_T *list; /**< movies in the directory; owned */
    DBDATA_MOVIE_STAT_T movstat;           /**< how many there are */
} DBDATA_SHAREDIR_INFORMATION_LIST_T;

/** @param sharedir [in] path; copied.
 *  @return a fresh record of count 1, or NULL: NULL path, memory short. */
TAVISYS_API DBDATA_SHAREDIR_INFORMATION_T *create_dbdata_sharedir_information(const INT8_T *sharedir);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_sharedir_information(DBDATA_SHAREDIR_INFORMATION_T **info);

/** @param info   [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list   [in] the movies, which pass to the node as well; may be NULL.
 *  @param movies [in] number of movies, the node's `movstat.total_movies`.
 *  @return a fresh node, or NULL: memory short, record and movies stay the caller's. */
TAVISYS_API DBDATA_SHAREDIR_INFORMATION_LIST_T *
create_dbdata_sharedir_information_list_node(DBDATA_SHAREDIR_INFORMATION_T *info,
                                             DBDATA_MOVIE_INFORMATION_LIST_T *list, INT32_T movies);

/** Insert a node before the first one whose path begins with a greater byte; the list owns it then. The
 *  bytes are compared as signed 8-bit values: a path that begins with Chinese text stands before all that
 *  begin with ASCII. Paths with the same first byte stay in the order in which they were added. It walks the
 *  list: n insertions cost n squared.
 *  @return 0 when it was inserted, or when there was nothing to do: NULL argument, or, for a list that is
 *          not empty, a node without a record or a path (it stays the caller's). 1 when the list has that
 *          path already: nothing was inserted and the node stays the caller's. */
TAVISYS_API RTSTATUS add_node_to_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list,
                                                                  DBDATA_SHAREDIR_INFORMATION_LIST_T *node);

/** @return the first node of that path, which stays in the list, or NULL. */
TAVISYS_API DBDATA_SHAREDIR_INFORMATION_LIST_T *
found_node_from_dbdata_sharedir_information_list_by_sharedir(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list,
                                                             const INT8_T *sharedir);

/** Unlink the first node of that path. @return the node, which is the caller's then, or NULL. */
TAVISYS_API DBDATA_SHAREDIR_INFORMATION_LIST_T *
take_node_from_dbdata_sharedir_information_list_by_sharedir(DBDATA_SHAREDIR_INFORMATION_LIST_T **list,
                                                            const INT8_T *sharedir);

/** Release the node's record, delete its movies with delete_dbdata_movie_information_list(), which leaves
 *  parts of them, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_sharedir_information_list_node(DBDATA_SHAREDIR_INFORMATION_LIST_T **node);

/** Delete every node as delete_dbdata_sharedir_information_list_node() does it. The head pointer is not
 *  cleared: it dangles afterwards. Use release_dbdata_sharedir_information_list() to free a list whole. */
TAVISYS_API void delete_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list);

/** Free every node with its movies, release its record, clear the head pointer. The last reference to a
 *  record or a movie frees it whole, an earlier one counts down. A node that was taken from its list is a
 *  list of one. */
TAVISYS_API void release_dbdata_sharedir_information_list(DBDATA_SHAREDIR_INFORMATION_LIST_T **list);

/** @return number of nodes whose record has a path: directories, not movies. */
TAVISYS_API INT32_T
dbdata_get_number_from_dbdata_sharedir_information_list(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list);

/** Print the list to standard output.
 *  @param list   [in] may be NULL.
 *  @param indent [in] nesting level, see show_indent(). */
TAVISYS_API void show_dbdata_sharedir_information_list(const DBDATA_SHAREDIR_INFORMATION_LIST_T *list,
                                                       INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
