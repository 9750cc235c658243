#include "codec_harddisk_information.h"

#include "codec/wire.h"
#include "support/show.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct PARTITION_WIRE {
    using RECORD = TP_TAVISYS_PARTITION_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::seqno), string(&RECORD::devname),
                                                   string(&RECORD::uuid), string(&RECORD::mntp));
    static const INT8_T *key(const RECORD &record) { return record.devname; }
};

struct DISK_WIRE {
    using RECORD = TP_TAVISYS_HARDDISK_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(string(&RECORD::devname),
                        label(&RECORD::serialno)); // callers keep it, so the family's delete leaves it
};

// A node holds both the disk and its partitions, so that the nodes are what the list consists of.
struct DISK_NODE_WIRE {
    using RECORD = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
    static constexpr auto FIELDS = std::make_tuple(
        owned<DISK_WIRE>(&RECORD::info), list<PARTITION_WIRE>(&RECORD::list, EMPTY_NODE_T::REFUSED));
    static RECORD *create() { return allocate_node<RECORD>(); }
    static const INT8_T *key(const RECORD &record) { return record.info->devname; }
};

// Appends a node unless its device name is in the list: 0, 1 for such a repeat, -1 for a bad argument.
template <class NODE>
INT32_T add_distinct_node(NODE **list, NODE *node) {
    if (list == nullptr || node == nullptr)
        return -1;
    if (*list != nullptr && node->info == nullptr)
        return -1;
    const auto *same = find_node(*list, [&](const NODE *other) {
        return other->info != nullptr && safe_strcmp(other->info->devname, node->info->devname) == 0;
    });
    if (same != nullptr)
        return 1;
    append_node(list, node);
    return 0;
}

} // namespace

TP_TAVISYS_PARTITION_INFORMATION_T *create_tavisys_partition_information(void) {
    return allocate<TP_TAVISYS_PARTITION_INFORMATION_T>();
}

TP_TAVISYS_PARTITION_INFORMATION_T *create_tavisys_partition_information_ex(INT32_T seqno,
                                                                            const INT8_T *devname,
                                                                            const INT8_T *uuid,
                                                                            const INT8_T *mntp) {
    auto *info = allocate<TP_TAVISYS_PARTITION_INFORMATION_T>();
    if (info == nullptr)
        return nullptr;
    info->seqno = seqno;
    info->mntp = safe_strdup(mntp); // a partition that isn't mounted has none
    if (!store_copy(info->devname, devname) || !store_copy(info->uuid, uuid))
        delete_record<PARTITION_WIRE>(&info);
    return info;
}

void delete_tavisys_partition_information(TP_TAVISYS_PARTITION_INFORMATION_T **info) {
    delete_record<PARTITION_WIRE>(info);
}

TP_TAVISYS_PARTITION_INFORMATION_LIST_T *
create_tavisys_partition_information_list_node(TP_TAVISYS_PARTITION_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_PARTITION_INFORMATION_LIST_T>(info);
}

TP_TAVISYS_PARTITION_INFORMATION_LIST_T *
create_tavisys_partition_information_list_node_ex(INT32_T seqno, const INT8_T *devname, const INT8_T *uuid,
                                                  const INT8_T *mntp) {
    return node_for<PARTITION_WIRE>(create_tavisys_partition_information_ex(seqno, devname, uuid, mntp),
                                    create_tavisys_partition_information_list_node);
}

void delete_tavisys_partition_information_list_node(TP_TAVISYS_PARTITION_INFORMATION_LIST_T **node) {
    delete_list_node<PARTITION_WIRE>(node);
}

void delete_tavisys_partition_information_list(TP_TAVISYS_PARTITION_INFORMATION_LIST_T **list) {
    delete_list<PARTITION_WIRE>(list);
}

INT32_T add_node_to_tavisys_partition_information_list(TP_TAVISYS_PARTITION_INFORMATION_LIST_T **list,
                                                       TP_TAVISYS_PARTITION_INFORMATION_LIST_T *node) {
    return add_distinct_node(list, node);
}

TP_TAVISYS_HARDDISK_INFORMATION_T *create_tavisys_harddisk_information(void) {
    return allocate<TP_TAVISYS_HARDDISK_INFORMATION_T>();
}

TP_TAVISYS_HARDDISK_INFORMATION_T *create_tavisys_harddisk_information_ex(const INT8_T *devname,
                                                                          const INT8_T *serialno) {
    auto *info = allocate<TP_TAVISYS_HARDDISK_INFORMATION_T>();
    if (info != nullptr && (!store_copy(info->devname, devname) || !store_copy(info->serialno, serialno)))
        delete_record<DISK_WIRE, true>(&info);
    return info;
}

void delete_tavisys_harddisk_information(TP_TAVISYS_HARDDISK_INFORMATION_T **info) {
    delete_record<DISK_WIRE>(info);
}

TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *
create_tavisys_harddisk_information_list_node(TP_TAVISYS_HARDDISK_INFORMATION_T *info,
                                              TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list) {
    auto *node = create_node<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T>(info);
    if (node != nullptr)
        node->list = list;
    return node;
}

TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *
create_tavisys_harddisk_information_list_node_ex(const INT8_T *devname, const INT8_T *serialno,
                                                 TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list) {
    return node_for<DISK_WIRE>(create_tavisys_harddisk_information_ex(devname, serialno), [list](auto *info) {
        return create_tavisys_harddisk_information_list_node(info, list);
    });
}

// Of the partitions it frees the first alone: callers that keep a disk's further partitions walk from that
// one to them before.
void delete_tavisys_harddisk_information_list_node(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **node) {
    if (node == nullptr || *node == nullptr)
        return;
    delete_list_node<PARTITION_WIRE>(&(*node)->list);
    delete_list_node<DISK_NODE_WIRE>(node);
}

void delete_tavisys_harddisk_information_list(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    delete_nodes(list, delete_tavisys_harddisk_information_list_node);
}

void release_tavisys_harddisk_information_list(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    if (list == nullptr)
        return;
    delete_list<DISK_NODE_WIRE, true>(list);
    *list = nullptr;
}

INT32_T add_node_to_tavisys_harddisk_information_list(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list,
                                                      TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *node) {
    return add_distinct_node(list, node);
}

RTSTATUS
encode_tavisys_harddisk_information_list_to_message(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list,
                                                    PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<DISK_NODE_WIRE>(list, EMPTY_NODE_T::REFUSED, msgdata, msglen);
}

INT32_T
decode_tavisys_harddisk_information_list_from_message(const void *msgdata, INT32_T msglen,
                                                      TP_TAVISYS_HARDDISK_INFORMATION_LIST_T **list) {
    return decode_list_from_message<DISK_NODE_WIRE>(msgdata, msglen, list);
}

void show_tp_tavisys_partition_information(const TP_TAVISYS_PARTITION_INFORMATION_T *info) {
    if (info != nullptr)
        printf("\t分区序号: %d. 分区设备号: %s. UUID: %s. 分区挂载点: %s\n", info->seqno,
               shown(info->devname), shown(info->uuid), shown(info->mntp));
}

void show_tp_tavisys_partition_information_list(const TP_TAVISYS_PARTITION_INFORMATION_LIST_T *list) {
    show_each<show_tp_tavisys_partition_information>(list);
}

void show_tp_tavisys_harddisk_information(const TP_TAVISYS_HARDDISK_INFORMATION_T *info) {
    if (info != nullptr)
        printf("硬盘设备名: %s. 硬盘序列号: %s\n", shown(info->devname), shown(info->serialno));
}

void show_tp_tavisys_harddisk_information_list(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list) {
    for (const auto *node : nodes_of(list)) {
        show_tp_tavisys_harddisk_information(node->info);
        show_tp_tavisys_partition_information_list(node->list);
    }
}
