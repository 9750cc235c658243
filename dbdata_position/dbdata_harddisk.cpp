#include "dbdata_harddisk.h"

#include <cstdio>
#include <tuple>

#include "dbdata_position/position.h"
#include "support/show.h"

using namespace tavisys;

namespace {

struct DISK_T {
    using RECORD_T = DBDATA_HARDDISK_INFORMATION_T;
    using NODE_T = DBDATA_HARDDISK_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::devname;
    // Callers keep the device name of a disk that has gone: the movies of that name go next.
    static constexpr auto STRINGS = std::tuple{&RECORD_T::serialno};
    static constexpr auto LEFT = std::tuple{&RECORD_T::devname};
    static constexpr auto DELETE_BELOW = delete_dbdata_partition_information_list;
    static constexpr auto RELEASE_BELOW = release_dbdata_partition_information_list;
    static constexpr auto SHOW_BELOW = show_dbdata_partition_information_list;

    static void show(const RECORD_T &disk, INT32_T indent) {
        show_indent(indent);
        printf("硬盘设备名: %s\t硬盘序列号: %s\n", shown(disk.devname), shown(disk.serialno));
    }
};
constexpr auto DEVNAME = DISK_T::KEY;
constexpr auto SERIALNO = &DBDATA_HARDDISK_INFORMATION_T::serialno;

} // namespace

DBDATA_HARDDISK_INFORMATION_T *create_dbdata_harddisk_information(const INT8_T *devname,
                                                                  const INT8_T *serialno) {
    auto record = create_record<DISK_T>(devname);
    if (record == nullptr)
        return nullptr;
    record->serialno = safe_strdup(serialno);
    return record.release();
}

void delete_dbdata_harddisk_information(DBDATA_HARDDISK_INFORMATION_T **info) {
    release_record<DISK_T>(info);
}

DBDATA_HARDDISK_INFORMATION_LIST_T *
create_dbdata_harddisk_information_list_node(DBDATA_HARDDISK_INFORMATION_T *info,
                                             DBDATA_PARTITION_INFORMATION_LIST_T *list, INT32_T movies) {
    return create_position<DISK_T>(info, list, movies);
}

DBDATA_HARDDISK_INFORMATION_LIST_T *
create_dbdata_harddisk_information_list_node_ex(const INT8_T *devname, const INT8_T *serialno,
                                                DBDATA_PARTITION_INFORMATION_LIST_T *list, INT32_T movies) {
    if (devname == nullptr)
        return nullptr;
    auto *record = create_dbdata_harddisk_information(devname, serialno);
    if (record == nullptr) {
        printf("创建硬盘信息节点出错.硬盘序列号为%s\n", shown(serialno));
        return nullptr;
    }
    return create_position_ex<DISK_T>(record, list, movies, "创建硬盘信息链表节点出错");
}

// Callers know a disk by its serial number, without which it can't be told from its successor in the same
// slot, but name it by its device.
RTSTATUS add_node_to_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                      DBDATA_HARDDISK_INFORMATION_LIST_T *node) {
    return add_position<DISK_T, SERIALNO>(list, node);
}

DBDATA_HARDDISK_INFORMATION_LIST_T *
found_node_from_dbdata_harddisk_information_list_by_serialno(const DBDATA_HARDDISK_INFORMATION_LIST_T *list,
                                                             const INT8_T *serialno) {
    return find_by<SERIALNO>(list, serialno);
}

DBDATA_HARDDISK_INFORMATION_LIST_T *
found_node_from_dbdata_harddisk_information_list_by_devname(const DBDATA_HARDDISK_INFORMATION_LIST_T *list,
                                                            const INT8_T *devname) {
    return find_by<DEVNAME>(list, devname);
}

DBDATA_HARDDISK_INFORMATION_LIST_T *
take_node_from_dbdata_harddisk_information_list_by_serialno(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                            const INT8_T *serialno) {
    auto *node = take_by<SERIALNO>(list, serialno);
    if (node != nullptr)
        printf("删除硬盘节点: %s\n", serialno);
    return node;
}

void delete_node_from_dbdata_harddisk_information_list_by_serialno(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                                   const INT8_T *serialno) {
    delete_first_node(list, has_text<SERIALNO>(serialno), delete_position<DISK_T>);
}

void delete_node_from_dbdata_harddisk_information_list_by_devname(DBDATA_HARDDISK_INFORMATION_LIST_T **list,
                                                                  const INT8_T *devname) {
    delete_first_node(list, has_text<DEVNAME>(devname), delete_position<DISK_T>);
}

void delete_dbdata_harddisk_information_list_node(DBDATA_HARDDISK_INFORMATION_LIST_T **node) {
    delete_position<DISK_T>(node);
}

void delete_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list) {
    delete_position_list<DISK_T>(list);
}

void release_dbdata_harddisk_information_list(DBDATA_HARDDISK_INFORMATION_LIST_T **list) {
    release_position_list<DISK_T>(list);
}

INT32_T
dbdata_get_harddisks_from_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list) {
    return count_with<SERIALNO>(list);
}

INT32_T
dbdata_get_movies_from_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list) {
    UINT32_T movies = 0;
    for (const auto *node : nodes_of(list)) {
        movies += static_cast<UINT32_T>(dbdata_get_movies_from_dbdata_partition_information_list(node->list));
    }
    return static_cast<INT32_T>(movies);
}

void show_dbdata_harddisk_information_list(const DBDATA_HARDDISK_INFORMATION_LIST_T *list, INT32_T indent) {
    show_position_list<DISK_T>(list, indent);
}
