/** @file codec_harddisk_information.h
 *  The hard disks of a server with their partitions, the reply body of request 3000.
 *
 *  Lists are held by the address of their head; an empty list is NULL. In a list of disks and in the
 *  partitions of a disk no device name may stand twice; NULL is a name like others. */
#ifndef TAVISYS_CODEC_HARDDISK_INFORMATION_H
#define TAVISYS_CODEC_HARDDISK_INFORMATION_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One partition. The record owns its strings. */
typedef struct {
    INT32_T seqno;   /**< number of the partition */
    INT8_T *devname; /**< device name */
    INT8_T *uuid;    /**< UUID of the file system */
    INT8_T *mntp;    /**< mount point; may be NULL */
} TP_TAVISYS_PARTITION_INFORMATION_T;

/** Node of a list of partitions. The node owns its record. */
typedef struct {
    PVOID next;                               /**< next node or NULL */
    TP_TAVISYS_PARTITION_INFORMATION_T *info; /**< the partition */
} TP_TAVISYS_PARTITION_INFORMATION_LIST_T;

/** One hard disk. */
typedef struct {
    INT8_T *devname;  /**< device name */
    INT8_T *serialno; /**< serial number */
} TP_TAVISYS_HARDDISK_INFORMATION_T;

/** Node of a list of hard disks. The partitions stand beside the disk's record, not in it. */
typedef struct {
    PVOID next;                                    /**< next node or NULL */
    TP_TAVISYS_HARDDISK_INFORMATION_T *info;       /**< the disk */
    TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list; /**< the disk's partitions */
} TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_PARTITION_INFORMATION_T *create_tavisys_partition_information(void);
/** @return a record with copies of the strings; or NULL: `devname` or `uuid` NULL, memory short. `mntp` may
 *          be NULL, and is NULL in the record when memory is short for its copy alone. */
TAVISYS_API TP_TAVISYS_PARTITION_INFORMATION_T *create_tavisys_partition_information_ex(INT32_T seqno,
                                                                                        const INT8_T *devname,
                                                                                        const INT8_T *uuid,
                                                                                        const INT8_T *mntp);
/** Free a record with its strings and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_partition_information(TP_TAVISYS_PARTITION_INFORMATION_T **info);
/** @return a node that has taken over the record, or NULL with a line on standard output and the record
 *          still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_PARTITION_INFORMATION_LIST_T *
create_tavisys_partition_information_list_node(TP_TAVISYS_PARTITION_INFORMATION_T *info);
/** @return a node with a record as create_tavisys_partition_information_ex() makes it, or NULL. */
TAVISYS_API TP_TAVISYS_PARTITION_INFORMATION_LIST_T *
create_tavisys_partition_information_list_node_ex(INT32_T seqno, const INT8_T *devname, const INT8_T *uuid,
                                                  const INT8_T *mntp);
/** Free a node with its record and clear the pointer to it. A NULL address or pointer is ignored. */
TAVISYS_API void
delete_tavisys_partition_information_list_node(TP_TAVISYS_PARTITION_INFORMATION_LIST_T **node);
/** Free every node with its record. The caller's head pointer is left as it was: clear it afterwards. */
TAVISYS_API void delete_tavisys_partition_information_list(TP_TAVISYS_PARTITION_INFORMATION_LIST_T **list);
/** Append a node, which the list takes over unless it is refused. It walks the list: n appends cost n
 *  squared. A first node is taken as it is, also without a record.
 *  @return 0; 1 with the node still the caller's: its device name is in the list; -1 likewise: NULL
 *          argument, a further node without a record. */
TAVISYS_API INT32_T add_node_to_tavisys_partition_information_list(
    TP_TAVISYS_PARTITION_INFORMATION_LIST_T **list, TP_TAVISYS_PARTITION_INFORMATION_LIST_T *node);

/** @return a zeroed record, or NULL: memory short. */
TAVISYS_API TP_TAVISYS_HARDDISK_INFORMATION_T *create_tavisys_harddisk_information(void);
/** @return a record with copies of the strings; or NULL: either NULL, memory short. */
TAVISYS_API TP_TAVISYS_HARDDISK_INFORMATION_T *create_tavisys_harddisk_information_ex(const INT8_T *devname,
                                                                                      const INT8_T *serialno);
/** Free a record with its device name, but not its serial number, and clear the pointer to it: callers keep
 *  `serialno` as the disk's identity, and free it with safe_free(). A NULL address or pointer is ignored. */
TAVISYS_API void delete_tavisys_harddisk_information(TP_TAVISYS_HARDDISK_INFORMATION_T **info);
/** @return a node that has taken over the record and the partitions, or NULL with a line on standard output
 *          and both still the caller's: memory short. */
TAVISYS_API TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *
create_tavisys_harddisk_information_list_node(TP_TAVISYS_HARDDISK_INFORMATION_T *info,
                                              TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list);
/** @return a node with a record as create_tavisys_harddisk_information_ex() makes it, which has taken over
 *          the partitions; or NULL with the partitions still the caller's. */
TAVISYS_API TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *
create_tavisys_harddisk_information_list_node_ex(const INT8_T *devname, const INT8_T *serialno,
                                                 TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list);
/** Free a node with its record, but not the serial number, and with its first partition, but not those
 *  behind it, and clear the pointer to it. A NULL address or pointer is ignored. For all of a list, such as
 *  a decoded one, use release_tavisys_harddisk_information_list(). */
TAVISYS_API void delete_tavisys_harddisk_information_list_node(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **node);
/** Free every node as delete_tavisys_harddisk_information_list_node() does. The caller's head pointer is
 *  left as it was: clear it afterwards. For all of a list use release_tavisys_harddisk_information_list(). */
TAVISYS_API void delete_tavisys_harddisk_information_list(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list);
/** Free a list whole, with serial numbers and all partitions, and clear the pointer to it. A NULL address
 *  or pointer is ignored. */
TAVISYS_API void release_tavisys_harddisk_information_list(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list);
/** As add_node_to_tavisys_partition_information_list(), for disks. */
TAVISYS_API INT32_T add_node_to_tavisys_harddisk_information_list(
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list, TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *node);

/** Encode a list into a fresh body, which the caller frees with safe_free(). A disk without partitions
 *  can't travel: leave it out.
 *  @return 0, or -1 with the out-arguments untouched: NULL argument, a node without a record, a disk whose
 *          `list` is NULL, memory short. */
TAVISYS_API RTSTATUS encode_tavisys_harddisk_information_list_to_message(
    const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen);
/** Decode a body into a fresh list (NULL for a count of 0), which the caller releases. Of disks with the
 *  same device name the first is kept, and likewise of partitions of a disk.
 *  @return bytes consumed, or -1 with *list untouched: NULL argument, body cut short or malformed,
 *          memory short. */
TAVISYS_API INT32_T decode_tavisys_harddisk_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list);

/** Print a line on standard output. */
TAVISYS_API void show_tp_tavisys_partition_information(const TP_TAVISYS_PARTITION_INFORMATION_T *info);
/** Print a line for each partition. */
TAVISYS_API void
show_tp_tavisys_partition_information_list(const TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list);
/** Print a line on standard output. */
TAVISYS_API void show_tp_tavisys_harddisk_information(const TP_TAVISYS_HARDDISK_INFORMATION_T *info);
/** Print a line for each disk and, indented, for each of its partitions. */
TAVISYS_API void
show_tp_tavisys_harddisk_information_list(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list);

#ifdef __cplusplus
}
#endif

#endif
