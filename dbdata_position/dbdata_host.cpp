#include "dbdata_host.h"

#include <cstdio>
#include <tuple>

#include "dbdata_position/position.h"
#include "support/show.h"

using namespace tavisys;

namespace {

void show_host_type(EVENT_HOST_TYPE_E type) {
    printf("主机类型: ");
    switch (type) {
    case EVENT_HOST_TYPE_LOCALHOST:
        puts("本机");
        break;
    case EVENT_HOST_TYPE_NFSVOD:
        puts("NFSVOD服务器");
        break;
    case EVENT_HOST_TYPE_HDVOD:
        puts("HDVOD服务器");
        break;
    }
}

struct HOST_T {
    using RECORD_T = DBDATA_HOST_INFORMATION_T;
    using NODE_T = DBDATA_HOST_INFORMATION_LIST_T;
    static constexpr auto KEY = &RECORD_T::ipaddr;
    static constexpr auto STRINGS = std::tuple{&RECORD_T::ipaddr};
    static constexpr auto LEFT = std::tuple{};
    static constexpr auto DELETE_BELOW = delete_dbdata_harddisk_information_list;
    static constexpr auto RELEASE_BELOW = release_dbdata_harddisk_information_list;
    static constexpr auto SHOW_BELOW = show_dbdata_harddisk_information_list;

    static void show(const RECORD_T &host, INT32_T indent) {
        show_indent(indent);
        show_host_type(host.type);
        show_indent(indent);
        printf("主机IP地址: %s\n", shown(host.ipaddr));
    }
};
constexpr auto ADDRESS = HOST_T::KEY;

INT32_T compare_addresses(const HOST_T::NODE_T *left, const HOST_T::NODE_T *right) {
    return safe_ipcmp(text_of<ADDRESS>(left), text_of<ADDRESS>(right));
}

// Callers take what this list holds after an address out of order for the current hosts: those that the
// walk has passed drop out, and whoever needs them has pointers of their own.
RTSTATUS join_hosts(HOST_T::NODE_T **list, HOST_T::NODE_T *node) {
    for (auto *other : nodes_of(*list)) {
        const INT32_T order = compare_addresses(other, node);
        if (order == 0)
            return 1;
        if (order == 1) {
            node->next = other;
            *list = node;
            return 0;
        }
    }
    append_node(list, node);
    return 0;
}

} // namespace

DBDATA_HOST_INFORMATION_T *create_dbdata_host_information(EVENT_HOST_TYPE_E type, const INT8_T *ipaddr) {
    auto record = create_record<HOST_T>(ipaddr);
    if (record == nullptr)
        return nullptr;
    record->type = type;
    return record.release();
}

void delete_dbdata_host_information(DBDATA_HOST_INFORMATION_T **info) {
    release_record<HOST_T>(info);
}

DBDATA_HOST_INFORMATION_LIST_T *
create_dbdata_host_information_list_node(DBDATA_HOST_INFORMATION_T *info,
                                         DBDATA_HARDDISK_INFORMATION_LIST_T *list, INT32_T movies) {
    return create_position<HOST_T>(info, list, movies);
}

DBDATA_HOST_INFORMATION_LIST_T *
create_dbdata_host_information_list_node_ex(EVENT_HOST_TYPE_E type, const INT8_T *ipaddr,
                                            DBDATA_HARDDISK_INFORMATION_LIST_T *list, INT32_T movies) {
    if (ipaddr == nullptr)
        return nullptr;
    auto *record = create_dbdata_host_information(type, ipaddr);
    if (record == nullptr) {
        printf("创建主机信息节点出错.主机IP地址为%s\n", ipaddr);
        return nullptr;
    }
    return create_position_ex<HOST_T>(record, list, movies, "创建主机信息链表节点出错");
}

RTSTATUS add_node_to_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                  DBDATA_HOST_INFORMATION_LIST_T *node) {
    return head_or_join<ADDRESS>(list, node, [=] { return join_hosts(list, node); });
}

RTSTATUS insert_node_to_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                     DBDATA_HOST_INFORMATION_LIST_T *node) {
    if (list == nullptr || node == nullptr || text_of<ADDRESS>(node) == nullptr)
        return -1;
    return insert_in_order(list, node, [node](const auto *other) { return compare_addresses(other, node); });
}

DBDATA_HOST_INFORMATION_LIST_T *
found_node_from_dbdata_host_information_list_by_ipaddr(const DBDATA_HOST_INFORMATION_LIST_T *list,
                                                       const INT8_T *ipaddr) {
    return find_by<ADDRESS>(list, ipaddr);
}

DBDATA_HOST_INFORMATION_LIST_T *
take_node_from_dbdata_host_information_list_by_ipaddr(DBDATA_HOST_INFORMATION_LIST_T **list,
                                                      const INT8_T *ipaddr) {
    return take_by<ADDRESS>(list, ipaddr);
}

void delete_dbdata_host_information_list_node(DBDATA_HOST_INFORMATION_LIST_T **node) {
    delete_position<HOST_T>(node);
}

void delete_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list) {
    delete_position_list<HOST_T>(list);
}

void release_dbdata_host_information_list(DBDATA_HOST_INFORMATION_LIST_T **list) {
    release_position_list<HOST_T>(list);
}

void show_dbdata_host_information_list(const DBDATA_HOST_INFORMATION_LIST_T *list, INT32_T indent) {
    show_position_list<HOST_T>(list, indent);
}
