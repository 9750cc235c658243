/** @file dbdata_harddisk.h
 *  Storage positions: the hard disks of a host with their partitions.
 *
 *  Records are shared by `count`, and each list node owns one reference. A NULL argument gives
 *  NULL, 0 or nothing, unless said otherwise. */
#ifndef TAVISYS_DBDATA_HARDDISK_H
#define TAVISYS_DBDATA_HARDDISK_H

#include "dbdata_movie_stat.h"
#include "dbdata_partition.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A hard disk. */
typedef struct {
    INT32_T count;    /**< references; 1 after creation */
    INT8_T *devname;  /**< device name, such as "sda", the key */
    INT8_T *serialno; /**< serial number, or NULL */
} DBDATA_HARDDISK_INFORMATION_T;

/** A node of a hard disk list. */
typedef struct {
    PVOID next;                                /**< next node, or NULL */
    DBDATA_HARDDISK_INFORMATION_T *info;       /**< the record; the node holds one reference */
    DBDATA_PARTITION_INFORMATION_LIST_T *list; /**< partitions of the disk; owned */
    DBDATA_MOVIE_STAT_T movstat;               /**< how many movies lie on the disk */
} DBDATA_HARDDISK_INFORMATION_LIST_T;

/** @param devname  [in] device name; copied.
 *  @param serialno [in] serial number; copied. May be NULL; the field is NULL also when memory is short
 *                       for it.
 *  @return a fresh record of count 1, or NULL: NULL device name, memory short. */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_T *create_dbdata_harddisk_information(const INT8_T *devname,
                                                                              const INT8_T *serialno);

/** Release a reference. Surprise: the last one frees `serialno` and the record and clears the pointer;
 *  `devname` stays with whoever kept a pointer to it, and is lost if nobody did. Before the last reference
 *  the pointer stays as it is. release_dbdata_harddisk_information_list() frees all. */
TAVISYS_API void delete_dbdata_harddisk_information(DBDATA_HARDDISK_INFORMATION_T **info);

/** @param info   [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list   [in] the partitions, which pass to the node as well; may be NULL.
 *  @param movies [in] number of movies, the node's `movstat.total_movies`.
 *  @return a fresh node, or NULL: memory short, record and partitions stay the caller's. */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_LIST_T *
create_dbdata_harddisk_information_list_node(DBDATA_HARDDISK_INFORMATION_T *info,
                                             DBDATA_PARTITION_INFORMATION_LIST_T *list, INT32_T movies);

/** Create a record and a node that holds it.
 *  @return the node, or NULL with the partitions still the caller's: NULL device name, which is not told;
 *          memory short for the record, told as "创建硬盘信息节点出错.硬盘序列号为(serialno)" on standard
 *          output, or for the node, whose line is followed by "创建硬盘信息链表节点出错". */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_LIST_T *
create_dbdata_harddisk_information_list_node_ex(const INT8_T *devname, const INT8_T *serialno,
                                                DBDATA_PARTITION_INFORMATION_LIST_T *list, INT32_T movies);

/** Append a node at the tail; the list owns it then. It walks the list: n appends cost n squared. A disk has
 * to have a serial number, and is told from others by its device name.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, or, for a list that is
 *          not empty, a node without a record or a serial number (it stays the caller's). 1 when the list
 *          has that device name already: nothing was added and the node stays the caller's. */
TAVISYS_API RTSTATUS add_node_to_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                                  DBDATA_HARDDISK_INFORMATION_LIST_T *node);

/** @return the first node of that serial number, which stays in the list, or NULL. */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_LIST_T *
found_node_from_dbdata_harddisk_information_list_by_serialno(const DBDATA_HARDDISK_INFORMATION_LIST_T *list,
                                                             const INT8_T *serialno);

/** @return the first node of that device name, which stays in the list, or NULL. */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_LIST_T *
found_node_from_dbdata_harddisk_information_list_by_devname(const DBDATA_HARDDISK_INFORMATION_LIST_T *list,
                                                            const INT8_T *devname);

/** Unlink the first node of that serial number and say so on standard output.
 *  @return the node, which is the caller's then, or NULL. */
TAVISYS_API DBDATA_HARDDISK_INFORMATION_LIST_T *
take_node_from_dbdata_harddisk_information_list_by_serialno(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                            const INT8_T *serialno);

/** Unlink the first node of that serial number and delete it as
 *  delete_dbdata_harddisk_information_list_node() does it. To free it whole, take it and give it to
 *  release_dbdata_harddisk_information_list(). */
TAVISYS_API void
delete_node_from_dbdata_harddisk_information_list_by_serialno(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                              const INT8_T *serialno);

/** As delete_node_from_dbdata_harddisk_information_list_by_serialno(), by the device name. */
TAVISYS_API void
delete_node_from_dbdata_harddisk_information_list_by_devname(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                             const INT8_T *devname);

/** Release the node's record as delete_dbdata_harddisk_information() does it, delete its partitions with
 *  delete_dbdata_partition_information_list(), free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_harddisk_information_list_node(DBDATA_HARDDISK_INFORMATION_LIST_T **node);

/** Delete every node as delete_dbdata_harddisk_information_list_node() does it: what that leaves of a
 *  record or a movie is lost unless the caller kept a pointer to it. The head pointer is not cleared: it
 *  dangles afterwards. Use release_dbdata_harddisk_information_list() to free a list whole. */
TAVISYS_API void delete_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list);

/** Free every node with all that lies below it, release its record, clear the head pointer. The last
 *  reference to a record or a movie frees it whole, an earlier one counts down. A node that was taken from
 *  its list is a list of one. */
TAVISYS_API void release_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list);

/** @return number of nodes whose record has a serial number. */
TAVISYS_API INT32_T
dbdata_get_harddisks_from_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list);

/** @return the sum of the movies of all partitions, see
 *          dbdata_get_movies_from_dbdata_partition_information_list(). The disks' own statistics are not
 *          used. */
TAVISYS_API INT32_T
dbdata_get_movies_from_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list);

/** Print the list with its partitions to standard output.
 *  @param list   [in] may be NULL.
 *  @param indent [in] nesting level, see show_indent(). */
TAVISYS_API void show_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list,
                                                       INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
