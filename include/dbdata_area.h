/** @file dbdata_area.h
 *  Areas of the catalogue: where a movie was made. The contract is that of dbdata_resolution.h. */
#ifndef TAVISYS_DBDATA_AREA_H
#define TAVISYS_DBDATA_AREA_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** An area. */
typedef struct {
    INT32_T count; /**< references; 1 after creation */
    INT32_T id;    /**< id of the key, from 1 */
    INT8_T *name;  /**< the key, such as "美国" */
} DBDATA_AREA_INFORMATION_T;

/** A node of a area list. */
typedef struct {
    PVOID next;                      /**< next node, or NULL */
    DBDATA_AREA_INFORMATION_T *info; /**< the record; the node holds one reference */
    PVOID movlist; /**< DBDATA_MOVIE_INFORMATION_LIST_T * of the movies with this value, or NULL; not owned */
} DBDATA_AREA_INFORMATION_LIST_T;

/** @param name [in] the key, such as "美国"; copied.
 *  @return a fresh record of count 1, or NULL: NULL key, memory short. */
TAVISYS_API DBDATA_AREA_INFORMATION_T *create_dbdata_area_information(const INT8_T *name);

/** Add a reference. @return the record that was given. */
TAVISYS_API DBDATA_AREA_INFORMATION_T *duplicate_dbdata_area_information(DBDATA_AREA_INFORMATION_T *info);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_area_information(DBDATA_AREA_INFORMATION_T **info);

/** @param info [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list [in] the node's `movlist`.
 *  @return a fresh node, or NULL: memory short, the reference stays the caller's. */
TAVISYS_API DBDATA_AREA_INFORMATION_LIST_T *
create_dbdata_area_information_list_node(DBDATA_AREA_INFORMATION_T *info, PVOID list);

/** Create a record and a node that holds it. @return the node, or NULL: no record, memory short. */
TAVISYS_API DBDATA_AREA_INFORMATION_LIST_T *create_dbdata_area_information_list_node_ex(const INT8_T *name,
                                                                                        PVOID list);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, a node without a record
 *          for a list that is not empty (the node stays the caller's). 1 when the list has that key
 *          already: nothing was added and the caller must delete the node. */
TAVISYS_API RTSTATUS add_node_to_dbdata_area_information_list(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                              DBDATA_AREA_INFORMATION_LIST_T *node);

/** @return the first node of that name, which stays in the list, or NULL. */
TAVISYS_API DBDATA_AREA_INFORMATION_LIST_T *
found_node_from_dbdata_area_information_list_by_name(const DBDATA_AREA_INFORMATION_LIST_T *list,
                                                     const INT8_T *name);

/** Unlink and delete the first node of that name. */
TAVISYS_API void delete_node_from_dbdata_area_information_list_by_name(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                                       const INT8_T *name);

/** Unlink and delete the first node without movies (`movlist` NULL), one at most. To be called when a disk
 *  is gone and its movies have been taken off the nodes; the serial number must not be NULL and is not
 *  compared with anything. */
TAVISYS_API void
delete_node_from_dbdata_area_information_list_by_harddisk_serialno(DBDATA_AREA_INFORMATION_LIST_T **list,
                                                                   const INT8_T *serialno);

/** Release the node's record, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_area_information_list_node(DBDATA_AREA_INFORMATION_LIST_T **node);

/** Delete every node. The head pointer is not cleared: it dangles afterwards. */
TAVISYS_API void delete_dbdata_area_information_list(DBDATA_AREA_INFORMATION_LIST_T **list);

/** Print the record to standard output. */
TAVISYS_API void show_dbdata_area_information(const DBDATA_AREA_INFORMATION_T *info);

/** Print every record of the list, and after each its movies when show_movie is not 0. */
TAVISYS_API void show_dbdata_area_information_list(const DBDATA_AREA_INFORMATION_LIST_T *list,
                                                   INT32_T show_movie);

#ifdef __cplusplus
}
#endif

#endif
