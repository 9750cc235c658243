/** @file dbdata_category.h
 *  Categories of the catalogue, and the captions of a category's fields. The contract is that of
 *  dbdata_resolution.h, but for the ids, which are fixed: 1 电影, 2 电视剧, 3 音乐, 4 综艺, 5 兴趣爱好,
 *  6 醇音乐. Any other name gets the id 1. */
#ifndef TAVISYS_DBDATA_CATEGORY_H
#define TAVISYS_DBDATA_CATEGORY_H

#include "dbdata_kind.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A category. */
typedef struct {
    INT32_T count; /**< references; 1 after creation */
    INT32_T id;    /**< 1 to 6 */
    INT8_T *name;  /**< the key, such as "电影" */
} DBDATA_CATEGORY_INFORMATION_T;

/** A node of a category list. */
typedef struct {
    PVOID next;                               /**< next node, or NULL */
    DBDATA_CATEGORY_INFORMATION_T *info;      /**< the record; the node holds one reference */
    DBDATA_KIND_INFORMATION_LIST_T *kindlist; /**< the category's kinds, or NULL; not owned */
} DBDATA_CATEGORY_INFORMATION_LIST_T;

/** @param name [in] the key, such as "电影"; copied.
 *  @return a fresh record of count 1, or NULL: NULL key, memory short. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_T *create_dbdata_category_information(const INT8_T *name);

/** Add a reference. @return the record that was given. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_T *
duplicate_dbdata_category_information(DBDATA_CATEGORY_INFORMATION_T *info);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_category_information(DBDATA_CATEGORY_INFORMATION_T **info);

/** @param info [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list [in] the node's `kindlist`.
 *  @return a fresh node, or NULL: memory short, the reference stays the caller's. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_LIST_T *
create_dbdata_category_information_list_node(DBDATA_CATEGORY_INFORMATION_T *info, PVOID list);

/** Create a record and a node that holds it. @return the node, or NULL: no record, memory short. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_LIST_T *
create_dbdata_category_information_list_node_ex(const INT8_T *name, PVOID list);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, a node without a record
 *          for a list that is not empty (the node stays the caller's). 1 when the list has that key
 *          already: nothing was added and the caller must delete the node. */
TAVISYS_API INT32_T add_node_to_dbdata_category_information_list(DBDATA_CATEGORY_INFORMATION_LIST_T **list,
                                                                 DBDATA_CATEGORY_INFORMATION_LIST_T *node);

/** @return the first node of that name, which stays in the list, or NULL. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_LIST_T *
found_node_from_dbdata_category_information_list_by_name(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                                         const INT8_T *name);

/** @return the first node whose record has that id, which stays in the list, or NULL. */
TAVISYS_API DBDATA_CATEGORY_INFORMATION_LIST_T *
found_node_from_dbdata_category_information_list_by_id(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                                       INT32_T id);

/** Unlink and delete the first node of that name. */
TAVISYS_API void
delete_node_from_dbdata_category_information_list_by_name(DBDATA_CATEGORY_INFORMATION_LIST_T **list,
                                                          const INT8_T *name);

/** Walk the list: take the first kind without movies off each category's `kindlist`, then unlink and
 *  delete the first category whose `kindlist` is NULL, and stop there: the categories behind it stay as
 *  they are. To be called when a disk is gone and its movies have been taken off the kinds; the serial
 *  number must not be NULL and is not compared with anything. */
TAVISYS_API void delete_node_from_dbdata_category_information_list_by_harddisk_serialno(
    DBDATA_CATEGORY_INFORMATION_LIST_T **list, const INT8_T *serialno);

/** Release the node's record, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_category_information_list_node(DBDATA_CATEGORY_INFORMATION_LIST_T **node);

/** Delete every node. The head pointer is not cleared: it dangles afterwards. */
TAVISYS_API void delete_dbdata_category_information_list(DBDATA_CATEGORY_INFORMATION_LIST_T **list);

/** Print the record to standard output. */
TAVISYS_API void show_dbdata_category_information(const DBDATA_CATEGORY_INFORMATION_T *info);

/** Print every record of the list, and after each its kinds.
 *  @param list       [in] may be NULL.
 *  @param show_movie [in] ignored. */
TAVISYS_API void show_dbdata_category_information_list(const DBDATA_CATEGORY_INFORMATION_LIST_T *list,
                                                       INT32_T show_movie);

/* Captions that a client shows for a field of a movie. An id that is no category's gives "未知". The texts
 * are static and must not be changed. */

/** @return the caption of the directors of a movie of that category. */
TAVISYS_API INT8_T *get_director_desc_by_cid(INT32_T cid);

/** @return the caption of the actors of a movie of that category. */
TAVISYS_API INT8_T *get_actor_desc_by_cid(INT32_T cid);

/** @return the caption of the kinds of a movie of that category. */
TAVISYS_API INT8_T *get_kind_desc_by_cid(INT32_T cid);

/** @return the caption of the running time of a movie of that category. */
TAVISYS_API INT8_T *get_duration_desc_by_cid(INT32_T cid);

/** @return the caption of the synopsis of a movie of that category. */
TAVISYS_API INT8_T *get_descript_desc_by_cid(INT32_T cid);

#ifdef __cplusplus
}
#endif

#endif
