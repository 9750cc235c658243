/** @file dbdata_partition.h
 *  Storage positions: the partitions of a hard disk with their movies.
 *
 *  Records are shared by `count`, and each list node owns one reference. A NULL argument gives
 *  NULL, 0 or nothing, unless said otherwise. */
#ifndef TAVISYS_DBDATA_PARTITION_H
#define TAVISYS_DBDATA_PARTITION_H

#include "dbdata_movie.h"
#include "dbdata_movie_stat.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A partition. */
typedef struct {
    INT32_T count;   /**< references; 1 after creation */
    INT32_T seqno;   /**< number of the partition on its disk */
    INT8_T *devname; /**< device name, such as "sda1", the key */
    INT8_T *uuid;    /**< UUID of its file system, or NULL */
    INT8_T *mntp;    /**< mount point, or NULL */
} DBDATA_PARTITION_INFORMATION_T;

/** A node of a partition list. */
typedef struct {
    PVOID next;                            /**< next node, or NULL */
    DBDATA_PARTITION_INFORMATION_T *info;  /**< the record; the node holds one reference */
    DBDATA_MOVIE_INFORMATION_LIST_T *list; /**< movies on the partition; owned */
    DBDATA_MOVIE_STAT_T movstat;           /**< how many there are */
} DBDATA_PARTITION_INFORMATION_LIST_T;

/** @param seqno   [in] number of the partition.
 *  @param devname [in] device name; copied.
 *  @param uuid    [in] UUID; copied. May be NULL; the field is NULL also when memory is short for it.
 *  @param mntp    [in] mount point, as `uuid`.
 *  @return a fresh record of count 1, or NULL: NULL device name, memory short. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_T *create_dbdata_partition_information(INT32_T seqno,
                                                                                const INT8_T *devname,
                                                                                const INT8_T *uuid,
                                                                                const INT8_T *mntp);

/** Release a reference. Surprise: the last one frees `uuid` and the record and clears the pointer;
 *  `devname` and `mntp` stay with whoever kept a pointer to them, and are lost if nobody did. Before the
 *  last reference the pointer stays as it is. release_dbdata_partition_information_list() frees all. */
TAVISYS_API void delete_dbdata_partition_information(DBDATA_PARTITION_INFORMATION_T **info);

/** @param info   [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list   [in] the movies, which pass to the node as well; may be NULL.
 *  @param movies [in] number of movies, the node's `movstat.total_movies`.
 *  @return a fresh node, or NULL: memory short, record and movies stay the caller's. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
create_dbdata_partition_information_list_node(DBDATA_PARTITION_INFORMATION_T *info,
                                              DBDATA_MOVIE_INFORMATION_LIST_T *list, INT32_T movies);

/** Create a record and a node that holds it.
 *  @return the node, or NULL with the movies still the caller's: NULL device name, which is not told; memory
 *          short for the record, told as "创建分区信息出错" on standard output, or for the node, whose line
 *          is followed by "创建分区信息链表节点出错". */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
create_dbdata_partition_information_list_node_ex(INT32_T seqno, const INT8_T *devname, const INT8_T *uuid,
                                                 const INT8_T *mntp, DBDATA_MOVIE_INFORMATION_LIST_T *list,
                                                 INT32_T movies);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared. A partition
 * has to have a UUID, and is told from others by its device name.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, or, for a list that is
 *          not empty, a node without a record or a UUID (it stays the caller's). 1 when the list has that
 *          device name already: nothing was added and the node stays the caller's. */
TAVISYS_API RTSTATUS add_node_to_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                                   DBDATA_PARTITION_INFORMATION_LIST_T *node);

/** @return the first node of that UUID, which stays in the list, or NULL. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
found_node_from_dbdata_partition_information_list_by_uuid(const DBDATA_PARTITION_INFORMATION_LIST_T *list,
                                                          const INT8_T *uuid);

/** An empty list and a NULL device name are logged at WARN through zlog's default category (dzlog).
 *  @return the first node of that device name, which stays in the list, or NULL. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
found_node_from_dbdata_partition_information_list_by_devname(const DBDATA_PARTITION_INFORMATION_LIST_T *list,
                                                             const INT8_T *devname);

/** Unlink the first node of that UUID. @return the node, which is the caller's then, or NULL. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
take_node_from_dbdata_partition_information_list_by_uuid(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                         const INT8_T *uuid);

/** Unlink the first node of that device name. @return the node, which is the caller's then, or NULL. */
TAVISYS_API DBDATA_PARTITION_INFORMATION_LIST_T *
take_node_from_dbdata_partition_information_list_by_devname(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                            const INT8_T *devname);

/** Release the node's record as delete_dbdata_partition_information() does it, delete its movies with
 *  delete_dbdata_movie_information_list(), free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_partition_information_list_node(DBDATA_PARTITION_INFORMATION_LIST_T **node);

/** Delete every node as delete_dbdata_partition_information_list_node() does it: what that leaves of a
 *  record or a movie is lost unless the caller kept a pointer to it. The head pointer is not cleared: it
 *  dangles afterwards. Use release_dbdata_partition_information_list() to free a list whole. */
TAVISYS_API void delete_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list);

/** Free every node with its movies, release its record, clear the head pointer. The last reference to a
 *  record or a movie frees it whole, an earlier one counts down. A node that was taken from its list is a
 *  list of one. */
TAVISYS_API void release_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list);

/** @return the sum of the nodes' `movstat.total_movies`. */
TAVISYS_API INT32_T
dbdata_get_movies_from_dbdata_partition_information_list(const DBDATA_PARTITION_INFORMATION_LIST_T *list);

/** Print the list to standard output.
 *  @param list   [in] may be NULL.
 *  @param indent [in] nesting level, see show_indent(). */
TAVISYS_API void show_dbdata_partition_information_list(const DBDATA_PARTITION_INFORMATION_LIST_T *list,
                                                        INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
