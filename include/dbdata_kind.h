/** @file dbdata_kind.h
 *  Kinds of the catalogue (动作, 爱情, ...), which belong to a category. The contract is that of
 *  dbdata_resolution.h, but for the ids:
 *
 *  The first kind of a category that the process has not met before gets the id 1. Every later kind,
 *  whatever its category, is numbered among the kinds of the category that was met first. (1, A), (2, B),
 *  (2, C), (1, C) as the first kinds of a process thus get 1, 1, 2, 2. */
#ifndef TAVISYS_DBDATA_KIND_H
#define TAVISYS_DBDATA_KIND_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A kind. */
typedef struct {
    INT32_T count; /**< references; 1 after creation */
    INT32_T id;    /**< id of the key, from 1 */
    INT8_T *name;  /**< the key, such as "动作" */
} DBDATA_KIND_INFORMATION_T;

/** A node of a kind list. */
typedef struct {
    PVOID next;                      /**< next node, or NULL */
    DBDATA_KIND_INFORMATION_T *info; /**< the record; the node holds one reference */
    PVOID movlist; /**< DBDATA_MOVIE_INFORMATION_LIST_T * of the movies with this value, or NULL; not owned */
} DBDATA_KIND_INFORMATION_LIST_T;

/** @param category_id [in] category of the kind, for the id; any number. It is not kept.
 *  @param name        [in] the key, such as "动作"; copied.
 *  @return a fresh record of count 1, or NULL: NULL key, memory short. */
TAVISYS_API DBDATA_KIND_INFORMATION_T *create_dbdata_kind_information(INT32_T category_id,
                                                                      const INT8_T *name);

/** Add a reference. @return the record that was given. */
TAVISYS_API DBDATA_KIND_INFORMATION_T *duplicate_dbdata_kind_information(DBDATA_KIND_INFORMATION_T *info);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_kind_information(DBDATA_KIND_INFORMATION_T **info);

/** @param info [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list [in] the node's `movlist`.
 *  @return a fresh node, or NULL: memory short, the reference stays the caller's. */
TAVISYS_API DBDATA_KIND_INFORMATION_LIST_T *
create_dbdata_kind_information_list_node(DBDATA_KIND_INFORMATION_T *info, PVOID list);

/** Create a record and a node that holds it. @return the node, or NULL: no record, memory short. */
TAVISYS_API DBDATA_KIND_INFORMATION_LIST_T *
create_dbdata_kind_information_list_node_ex(INT32_T category_id, const INT8_T *name, PVOID list);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, a node without a record
 *          for a list that is not empty (the node stays the caller's). 1 when the list has that key
 *          already: nothing was added and the caller must delete the node. */
TAVISYS_API RTSTATUS add_node_to_dbdata_kind_information_list(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                              DBDATA_KIND_INFORMATION_LIST_T *node);

/** @return the first node of that name, which stays in the list, or NULL. */
TAVISYS_API DBDATA_KIND_INFORMATION_LIST_T *
found_node_from_dbdata_kind_information_list_by_name(const DBDATA_KIND_INFORMATION_LIST_T *list,
                                                     const INT8_T *name);

/** Unlink and delete the first node of that name. */
TAVISYS_API void delete_node_from_dbdata_kind_information_list_by_name(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                                       const INT8_T *name);

/** Unlink and delete the first node without movies (`movlist` NULL), one at most. To be called when a disk
 *  is gone and its movies have been taken off the nodes; the serial number must not be NULL and is not
 *  compared with anything. */
TAVISYS_API void
delete_node_from_dbdata_kind_information_list_by_harddisk_serialno(DBDATA_KIND_INFORMATION_LIST_T **list,
                                                                   const INT8_T *serialno);

/** Release the node's record, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_kind_information_list_node(DBDATA_KIND_INFORMATION_LIST_T **node);

/** Delete every node. The head pointer is not cleared: it dangles afterwards. */
TAVISYS_API void delete_dbdata_kind_information_list(DBDATA_KIND_INFORMATION_LIST_T **list);

/** Print the record to standard output. */
TAVISYS_API void show_dbdata_kind_information(const DBDATA_KIND_INFORMATION_T *info);

/** Print every record of the list, and after each its movies when show_movie is not 0. */
TAVISYS_API void show_dbdata_kind_information_list(const DBDATA_KIND_INFORMATION_LIST_T *list,
                                                   INT32_T show_movie);

#ifdef __cplusplus
}
#endif

#endif
