/** @file dbdata_host.h
 *  Storage positions: the hosts that hold movies, the local machine and video servers of the network, with
 *  their hard disks. The top of the tree host, hard disk, partition, movies.
 *
 *  Records are shared by `count`, and each list node owns one reference. A NULL argument gives
 *  NULL, 0 or nothing, unless said otherwise. */
#ifndef TAVISYS_DBDATA_HOST_H
#define TAVISYS_DBDATA_HOST_H

#include "dbdata_harddisk.h"
#include "dbdata_movie_stat.h"
#include "event_list.h"
#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A host. */
typedef struct {
    INT32_T count;          /**< references; 1 after creation */
    EVENT_HOST_TYPE_E type; /**< what kind of host */
    INT8_T *ipaddr;         /**< dotted IPv4 address, the key */
} DBDATA_HOST_INFORMATION_T;

/** A node of a host list. */
typedef struct {
    PVOID next;                               /**< next node, or NULL */
    DBDATA_HOST_INFORMATION_T *info;          /**< the record; the node holds one reference */
    DBDATA_HARDDISK_INFORMATION_LIST_T *list; /**< hard disks of the host; owned */
    DBDATA_MOVIE_STAT_T movstat;              /**< how many movies lie on the host */
} DBDATA_HOST_INFORMATION_LIST_T;

/** @param type   [in] what kind of host.
 *  @param ipaddr [in] dotted IPv4 address; copied.
 *  @return a fresh record of count 1, or NULL: NULL address, memory short. */
TAVISYS_API DBDATA_HOST_INFORMATION_T *create_dbdata_host_information(EVENT_HOST_TYPE_E type,
                                                                      const INT8_T *ipaddr);

/** Release a reference. The last one frees the record and clears the pointer; before that the pointer
 *  stays as it is. */
TAVISYS_API void delete_dbdata_host_information(DBDATA_HOST_INFORMATION_T **info);

/** @param info   [in] the record, whose reference passes from the caller to the node; may be NULL.
 *  @param list   [in] the hard disks, which pass to the node as well; may be NULL.
 *  @param movies [in] number of movies, the node's `movstat.total_movies`.
 *  @return a fresh node, or NULL: memory short, record and disks stay the caller's. */
TAVISYS_API DBDATA_HOST_INFORMATION_LIST_T *
create_dbdata_host_information_list_node(DBDATA_HOST_INFORMATION_T *info,
                                         DBDATA_HARDDISK_INFORMATION_LIST_T *list, INT32_T movies);

/** Create a record and a node that holds it.
 *  @return the node, or NULL with the disks still the caller's: NULL address, which is not told; memory
 *          short for the record, told as "创建主机信息节点出错.主机IP地址为(ipaddr)" on
 *          standard output, or for the node, whose line is followed by "创建主机信息链表节点出错". */
TAVISYS_API DBDATA_HOST_INFORMATION_LIST_T *
create_dbdata_host_information_list_node_ex(EVENT_HOST_TYPE_E type, const INT8_T *ipaddr,
                                            DBDATA_HARDDISK_INFORMATION_LIST_T *list, INT32_T movies);

/** Add a node; the list owns it then. Surprise: a node whose address is smaller than one in the list
 *  becomes the head, with the first greater address behind it, and the nodes before that one are no longer
 *  in the list: whoever has no pointer to them has lost them. No node is lost when every new address is
 *  greater, or every new address smaller, than all that are present. Use
 *  insert_node_to_dbdata_host_information_list() unless you count on that. Both walk the list: adding n
 *  nodes costs n squared.
 *  @return 0 when it was added, or when there was nothing to do: NULL argument, or, for a list that is
 *          not empty, a node without a record or an address (it stays the caller's). 1 when the walk met
 *          that address, see safe_ipcmp(): nothing was added and the node stays the caller's. */
TAVISYS_API RTSTATUS add_node_to_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                              DBDATA_HOST_INFORMATION_LIST_T *node);

/** Insert a node in ascending order of the addresses; the list owns it then and keeps every other node.
 *  @return 0 when it was inserted; 1 when the list has that address already; -1: NULL argument, a node
 *          without a record or an address. Unless it was inserted the node stays the caller's. */
TAVISYS_API RTSTATUS insert_node_to_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                                 DBDATA_HOST_INFORMATION_LIST_T *node);

/** @return the first node of that address, compared as text, which stays in the list, or NULL. */
TAVISYS_API DBDATA_HOST_INFORMATION_LIST_T *
found_node_from_dbdata_host_information_list_by_ipaddr(const DBDATA_HOST_INFORMATION_LIST_T *list,
                                                       const INT8_T *ipaddr);

/** Unlink the first node of that address, compared as text.
 *  @return the node, which is the caller's then, or NULL. */
TAVISYS_API DBDATA_HOST_INFORMATION_LIST_T *
take_node_from_dbdata_host_information_list_by_ipaddr(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                      const INT8_T *ipaddr);

/** Release the node's record, delete its disks with delete_dbdata_harddisk_information_list(), which leaves
 *  parts of them, free the node, clear the pointer. */
TAVISYS_API void delete_dbdata_host_information_list_node(DBDATA_HOST_INFORMATION_LIST_T **node);

/** Delete every node as delete_dbdata_host_information_list_node() does it: what that leaves of the levels
 *  below is lost unless the caller kept a pointer to it. The head pointer is not cleared: it dangles
 *  afterwards. Use release_dbdata_host_information_list() to free a tree whole. */
TAVISYS_API void delete_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list);

/** Free every node with all that lies below it, release its record, clear the head pointer. The last
 *  reference to a record or a movie frees it whole, an earlier one counts down. A node that was taken from
 *  its list is a list of one. */
TAVISYS_API void release_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list);

/** Print the tree to standard output.
 *  @param list   [in] may be NULL.
 *  @param indent [in] nesting level, see show_indent(). */
TAVISYS_API void show_dbdata_host_information_list(const DBDATA_HOST_INFORMATION_LIST_T *list,
                                                   INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
