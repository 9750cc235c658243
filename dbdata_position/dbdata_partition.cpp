#include "dbdata_partition.h"

#include <cstdio>
#include <tuple>

#include "dbdata_position/position.h"
#include "support/log.h"
#include "support/show.h"

using namespace tavisys;

namespace {

constexpr const INT8_T *LOG_FILE = "dbdata_position/dbdata_partition.c";

struct PARTITION_T {
    using RECORD_T = DBDATA_PARTITION_INFORMATION_T;
    using NODE_T = DBDATA_PARTITION_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::devname;
    // Callers keep the device name and the mount point of a partition that has gone, to unmount it with.
    static constexpr auto STRINGS = std::tuple{&RECORD_T::uuid};
    static constexpr auto LEFT = std::tuple{&RECORD_T::devname, &RECORD_T::mntp};
    static constexpr auto DELETE_BELOW = delete_dbdata_movie_information_list;
    static constexpr auto RELEASE_BELOW = release_dbdata_movie_information_list;
    static constexpr auto SHOW_BELOW = show_dbdata_movie_information_list;

    static void show(const RECORD_T &partition, INT32_T indent) {
        show_indent(indent);
        printf("分区序号: %d. 分区设备名: %s. 分区UUID: %s. 分区挂载点: %s\n", partition.seqno,
               shown(partition.devname), shown(partition.uuid), shown(partition.mntp));
    }
};
constexpr auto DEVNAME = PARTITION_T::KEY;
constexpr auto UUID = &DBDATA_PARTITION_INFORMATION_T::uuid;

} // namespace

DBDATA_PARTITION_INFORMATION_T *create_dbdata_partition_information(INT32_T seqno, const INT8_T *devname,
                                                                    const INT8_T *uuid, const INT8_T *mntp) {
    auto record = create_record<PARTITION_T>(devname);
    if (record == nullptr)
        return nullptr;
    record->seqno = seqno;
    record->uuid = safe_strdup(uuid);
    record->mntp = safe_strdup(mntp);
    return record.release();
}

void delete_dbdata_partition_information(DBDATA_PARTITION_INFORMATION_T **info) {
    release_record<PARTITION_T>(info);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
create_dbdata_partition_information_list_node(DBDATA_PARTITION_INFORMATION_T *info,
                                              DBDATA_MOVIE_INFORMATION_LIST_T *list, INT32_T movies) {
    return create_position<PARTITION_T>(info, list, movies);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
create_dbdata_partition_information_list_node_ex(INT32_T seqno, const INT8_T *devname, const INT8_T *uuid,
                                                 const INT8_T *mntp, DBDATA_MOVIE_INFORMATION_LIST_T *list,
                                                 INT32_T movies) {
    if (devname == nullptr)
        return nullptr;
    auto *record = create_dbdata_partition_information(seqno, devname, uuid, mntp);
    if (record == nullptr) {
        puts("创建分区信息出错");
        return nullptr;
    }
    return create_position_ex<PARTITION_T>(record, list, movies, "创建分区信息链表节点出错");
}

// Callers know a partition by its UUID, which says that it can be mounted, but name it by its device.
RTSTATUS add_node_to_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                       DBDATA_PARTITION_INFORMATION_LIST_T *node) {
    return add_position<PARTITION_T, UUID>(list, node);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
found_node_from_dbdata_partition_information_list_by_uuid(const DBDATA_PARTITION_INFORMATION_LIST_T *list,
                                                          const INT8_T *uuid) {
    return find_by<UUID>(list, uuid);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
found_node_from_dbdata_partition_information_list_by_devname(const DBDATA_PARTITION_INFORMATION_LIST_T *list,
                                                             const INT8_T *devname) {
    if (list == nullptr || devname == nullptr) {
        LOG_WARN("参数获取出错,list(%p) devname(%p)", static_cast<const void *>(list),
                 static_cast<const void *>(devname));
        return nullptr;
    }
    return find_by<DEVNAME>(list, devname);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
take_node_from_dbdata_partition_information_list_by_uuid(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                         const INT8_T *uuid) {
    return take_by<UUID>(list, uuid);
}

DBDATA_PARTITION_INFORMATION_LIST_T *
take_node_from_dbdata_partition_information_list_by_devname(DBDATA_PARTITION_INFORMATION_LIST_T **list,
                                                            const INT8_T *devname) {
    return take_by<DEVNAME>(list, devname);
}

void delete_dbdata_partition_information_list_node(DBDATA_PARTITION_INFORMATION_LIST_T **node) {
    delete_position<PARTITION_T>(node);
}

void delete_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list) {
    delete_position_list<PARTITION_T>(list);
}

void release_dbdata_partition_information_list(DBDATA_PARTITION_INFORMATION_LIST_T **list) {
    release_position_list<PARTITION_T>(list);
}

INT32_T
dbdata_get_movies_from_dbdata_partition_information_list(const DBDATA_PARTITION_INFORMATION_LIST_T *list) {
    UINT32_T movies = 0;
    for (const auto *node : nodes_of(list))
        movies += node->movstat.total_movies;
    return static_cast<INT32_T>(movies);
}

void show_dbdata_partition_information_list(const DBDATA_PARTITION_INFORMATION_LIST_T *list, INT32_T indent) {
    show_position_list<PARTITION_T>(list, indent);
}
