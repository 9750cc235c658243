/** @file codec_category_info.h
 *  Category list, the reply body of request 1003: a count, then id, name and number of movies of each.
 *
 *  A list is held by the address of its head; an empty list is NULL. Each node owns its record. */
#ifndef TAVISYS_CODEC_CATEGORY_INFO_H
#define TAVISYS_CODEC_CATEGORY_INFO_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One category. */
typedef struct {
    INT32_T id;     /**< category id */
    INT8_T *name;   /**< its name, may be NULL */
    INT32_T movies; /**< number of movies under it */
} TP_TAVISYS_CATEGORY_INFORMATION_T;

/** Node of a category list. */
typedef struct {
    PVOID next;                              /**< next node or NULL */
    TP_TAVISYS_CATEGORY_INFORMATION_T *info; /**< the category */
} TP_TAVISYS_CATEGORY_INFORMATION_LIST_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_CATEGORY_INFORMATION_T *create_tavisys_category_information(void);

/** @return a record with a copy of the name, or NULL: NULL name, memory short. */
TAVISYS_API TP_TAVISYS_CATEGORY_INFORMATION_T *
create_tavisys_category_information_ex(INT32_T id, const INT8_T *name, INT32_T movies);

/** Free a record with its name and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_category_information(TP_TAVISYS_CATEGORY_INFORMATION_T **info);

/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *
create_tavisys_category_information_list_node(TP_TAVISYS_CATEGORY_INFORMATION_T *info);

/** Record and node in one. @return the node, or NULL: NULL name, memory short. */
TAVISYS_API TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *
create_tavisys_category_information_list_node_ex(INT32_T id, const INT8_T *name, INT32_T movies);

/** Append a node, which the list takes over; no duplicate check. It walks the list: n appends cost n
 *  squared. NULL arguments are ignored. */
TAVISYS_API void add_node_to_tavisys_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list,
                                                               TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *node);

/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_category_information_list_node(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **node);

/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_tavisys_category_information_list(TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list);

/** Encode a list into a fresh body, which the caller frees with safe_free().
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, an empty list, a node without a
 *          record, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_category_information_list_to_message(
    const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);

/** Decode a body into a fresh list (NULL for a count of 0), which the caller deletes.
 *  @return bytes consumed, or -1 with *list untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_category_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_CATEGORY_INFORMATION_LIST_T **list);

/** Print a headline and a line for each category to standard output. */
TAVISYS_API void show_tavisys_category_information_list(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list);

#ifdef __cplusplus
}
#endif

#endif
