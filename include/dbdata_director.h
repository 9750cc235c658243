/** @file dbdata_director.h
 *  Directors of the catalogue (composers, for music). The contract is that of dbdata_actor.h. */
#ifndef TAVISYS_DBDATA_DIRECTOR_H
#define TAVISYS_DBDATA_DIRECTOR_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A director. */
typedef struct {
    INT32_T count; /**< references; 1 after creation */
    INT8_T *code;  /**< person code, the key */
    INT8_T *name;  /**< display name */
} DBDATA_DIRECTOR_INFORMATION_T;

/** A node of a director list. */
typedef struct {
    PVOID next;                          /**< next node, or NULL */
    DBDATA_DIRECTOR_INFORMATION_T *info; /**< the record; the node holds one reference */
    PVOID movlist; /**< DBDATA_MOVIE_INFORMATION_LIST_T * of the person's movies, or NULL; not owned */
} DBDATA_DIRECTOR_INFORMATION_LIST_T;

/** @param code [in] person code, the key; copied.
 *  @param name [in] display name; copied.
 *  @return a fresh record of count 1, or NULL: NULL argument, memory short. */
TAVISYS_API DBDATA_DIRECTOR_INFORMATION_T *create_dbdata_director_information(const INT8_T *code,
                                                                              const INT8_T *name);

/** Add a reference. @return the record that was given. */
TAVISYS_API DBDATA_DIRECTOR_INFORMATION_T *
duplicate_dbdata_director_information(DBDATA_DIRECTOR_INFORMATION_T *info);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_director_information(DBDATA_DIRECTOR_INFORMATION_T **info);

/** @param info [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list [in] the node's `movlist`.
 *  @return a fresh node, or NULL: memory short, the reference stays the caller's. */
TAVISYS_API DBDATA_DIRECTOR_INFORMATION_LIST_T *
create_dbdata_director_information_list_node(DBDATA_DIRECTOR_INFORMATION_T *info, PVOID list);

/** Create a record and a node that holds it. @return the node, or NULL: no record, memory short. */
TAVISYS_API DBDATA_DIRECTOR_INFORMATION_LIST_T *
create_dbdata_director_information_list_node_ex(const INT8_T *code, const INT8_T *name, PVOID list);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, a node without a record
 *          for a list that is not empty (the node stays the caller's). 1 when the list has that code
 *          already, be it under another name: nothing was added and the caller must delete the node. */
TAVISYS_API RTSTATUS add_node_to_dbdata_director_information_list(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                                  DBDATA_DIRECTOR_INFORMATION_LIST_T *node);

/** @param list [in] address of the head pointer, unlike in the attribute families.
 *  @param code [in] code of the person.
 *  @return the first node of that code, which stays in the list, or NULL. */
TAVISYS_API DBDATA_DIRECTOR_INFORMATION_LIST_T *
found_node_from_dbdata_director_information_list_by_code(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                         const INT8_T *code);

/** Unlink and delete the first node of that code. */
TAVISYS_API void
delete_node_from_dbdata_director_information_list_by_code(DBDATA_DIRECTOR_INFORMATION_LIST_T **list,
                                                          const INT8_T *code);

/** Release the node's record, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_director_information_list_node(DBDATA_DIRECTOR_INFORMATION_LIST_T **node);

/** Delete every node. The head pointer is not cleared: it dangles afterwards. */
TAVISYS_API void delete_dbdata_director_information_list(DBDATA_DIRECTOR_INFORMATION_LIST_T **list);

/** Print the record to standard output. */
TAVISYS_API void show_dbdata_director_information(const DBDATA_DIRECTOR_INFORMATION_T *info);

/** Print every record of the list, and after each its movies when show_movie is not 0. */
TAVISYS_API void show_dbdata_director_information_list(const DBDATA_DIRECTOR_INFORMATION_LIST_T *list,
                                                       INT32_T show_movie);

#ifdef __cplusplus
}
#endif

#endif
