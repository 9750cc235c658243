// The storage positions. What a delete leaves to its caller is freed by the tests, so that the fixture
// sees whatever else is left.
#include <algorithm>
#include <gtest/gtest.h>

#include "dbdata_host.h"
#include "dbdata_sharedir.h"
#include "harness.h"
#include "support_memory.h"

using namespace harness;
using HOST_T = DBDATA_HOST_INFORMATION_LIST_T;
using DISK_T = DBDATA_HARDDISK_INFORMATION_LIST_T;
using PARTITION_T = DBDATA_PARTITION_INFORMATION_LIST_T;
using SHAREDIR_T = DBDATA_SHAREDIR_INFORMATION_LIST_T;
using MOVIES_T = DBDATA_MOVIE_INFORMATION_LIST_T;

namespace {

using StoragePosition = LEAK_CHECKED_T;

HOST_T *host(const INT8_T *ipaddr, DISK_T *disks = nullptr) {
    return create_dbdata_host_information_list_node_ex(EVENT_HOST_TYPE_NFSVOD, ipaddr, disks, 7);
}
DISK_T *disk(const INT8_T *devname, const INT8_T *serialno, PARTITION_T *partitions = nullptr) {
    return create_dbdata_harddisk_information_list_node_ex(devname, serialno, partitions, 50);
}
PARTITION_T *partition(const INT8_T *devname, const INT8_T *uuid, MOVIES_T *movies = nullptr) {
    return create_dbdata_partition_information_list_node_ex(3, devname, uuid, "/mnt", movies, 5);
}
SHAREDIR_T *sharedir(const INT8_T *path) {
    return create_dbdata_sharedir_information_list_node(create_dbdata_sharedir_information(path), nullptr, 2);
}
HOST_T *tree() {
    MOVIES_T *movies = create_dbdata_movie_information_list_node(create_dbdata_movie_information());
    movies->info->hddevname = safe_strdup("sda"); // one of the fields that a delete of the movie leaves
    return host("10.0.0.1", disk("sda", "S", partition("sda1", "U", movies)));
}

// The keys of a list, in order.
std::string key_of(const DBDATA_HOST_INFORMATION_T &info) {
    return info.ipaddr;
}
std::string key_of(const DBDATA_SHAREDIR_INFORMATION_T &info) {
    return info.sharedir;
}
std::string key_of(const auto &info) {
    return info.devname;
}
std::string keys_of(const auto *list) {
    std::string keys;
    for (const auto *node : nodes_of(list))
        keys += (keys.empty() ? "" : " ") + key_of(*node->info);
    return keys;
}

// Adds the nodes and returns the results in a row, behind those without a list and without a node. A node
// that the list has not taken is released.
template <class NODE>
std::string add_all(NODE **list, RTSTATUS (*add)(NODE **, NODE *), void (*release)(NODE **),
                    std::initializer_list<NODE *> nodes) {
    std::string results =
        std::to_string(add(nullptr, *nodes.begin())) + std::to_string(add(list, nullptr)) + ' ';
    for (NODE *node : nodes) {
        results += std::to_string(add(list, node));
        const auto taken = nodes_of(*list);
        if (std::find(taken.begin(), taken.end(), node) == taken.end())
            release(&node);
    }
    return results;
}

} // namespace

TEST_F(StoragePosition, ADeleteLeavesDeviceNamesAndMountPointsToTheCaller) {
    HOST_T *list = tree();
    const auto *place = list->list->list->info;
    INT8_T *const left[] = {list->list->info->devname, place->devname, place->mntp};
    auto *film = duplicate_dbdata_movie_information(list->list->list->list->info);
    delete_dbdata_host_information_list(&list);
    EXPECT_NE(nullptr, list); // the head is not cleared
    for (INT8_T *string : left)
        safe_free(string);
    release_dbdata_movie_information(&film);
}

TEST_F(StoragePosition, TheLastReleaseFreesAllAnEarlierOneCountsDown) {
    HOST_T *list = tree();
    list->next = tree();
    auto *host_info = list->info;
    auto *place = list->list->list->info;
    host_info->count = 3;
    place->count = 2;
    release_dbdata_host_information_list(&list);
    EXPECT_EQ(nullptr, list);
    EXPECT_STREQ("/mnt", place->mntp);
    PARTITION_T *partitions = create_dbdata_partition_information_list_node(place, nullptr, 0);
    release_dbdata_partition_information_list(&partitions);
    delete_dbdata_host_information(&host_info);
    EXPECT_EQ(1, host_info->count); // still there, and so is the pointer
    delete_dbdata_host_information(&host_info);
    EXPECT_EQ(nullptr, host_info);
}

TEST_F(StoragePosition, AnAddedHostDropsThoseBeforeTheFirstGreaterAddressAnInsertedOneKeepsThem) {
    for (const bool inserts : {false, true}) {
        HOST_T *list = nullptr;
        HOST_T *first = host("10.0.0.5");
        EXPECT_EQ(inserts ? "-1-1 000001-1" : "00 0000010",
                  add_all(&list,
                          inserts ? insert_node_to_dbdata_host_information_list
                                  : add_node_to_dbdata_host_information_list,
                          release_dbdata_host_information_list,
                          {first, host("10.0.0.9"), host("10.0.0.7"), host("10.0.0.10"), host("9.255.0.0"),
                           host("10.0.0.9"), create_dbdata_host_information_list_node(nullptr, nullptr, 0)}));
        EXPECT_EQ(inserts ? "9.255.0.0 10.0.0.5 10.0.0.7 10.0.0.9 10.0.0.10" // by number, not as text
                          : "9.255.0.0 10.0.0.7 10.0.0.9 10.0.0.10",
                  keys_of(list));
        release_dbdata_host_information_list(&list);
        if (inserts)
            continue;
        first->next = nullptr; // was in the list
        release_dbdata_host_information_list(&first);
    }
}

TEST_F(StoragePosition, DisksAndPartitionsNeedAnIdUnlessAtTheHeadButAreToldApartByName) {
    DISK_T *disks = nullptr;
    EXPECT_EQ("00 00001", add_all(&disks, add_node_to_dbdata_harddisk_information_list,
                                  release_dbdata_harddisk_information_list,
                                  {disk("sda", nullptr), disk("sdb", nullptr), disk("sdc", "S"),
                                   disk("sdd", "S"), disk("sda", "S4")}));
    EXPECT_EQ("sda sdc sdd", keys_of(disks));
    EXPECT_EQ(nullptr, found_node_from_dbdata_harddisk_information_list_by_serialno(disks, nullptr));
    EXPECT_EQ(2, dbdata_get_harddisks_from_dbdata_harddisk_information_list(disks));
    EXPECT_EQ("00 00001", add_all(&disks->list, add_node_to_dbdata_partition_information_list,
                                  release_dbdata_partition_information_list,
                                  {partition("sda1", nullptr), partition("sda2", nullptr),
                                   partition("sda3", "U"), partition("sda4", "U"), partition("sda1", "U4")}));
    EXPECT_EQ("sda1 sda3 sda4", keys_of(disks->list));
    EXPECT_EQ(15, dbdata_get_movies_from_dbdata_partition_information_list(disks->list));
    EXPECT_EQ(15, dbdata_get_movies_from_dbdata_harddisk_information_list(disks)); // not the disks' 50 each
    release_dbdata_harddisk_information_list(&disks);
    EXPECT_EQ(nullptr, host(nullptr));
    EXPECT_EQ(nullptr, disk(nullptr, "S"));
    EXPECT_EQ(nullptr, partition(nullptr, "U"));
}

TEST_F(StoragePosition, DirectoriesAreOrderedByTheirFirstByteAsASignedOne) {
    SHAREDIR_T *list = nullptr;
    EXPECT_EQ("00 0000010", add_all(&list, add_node_to_dbdata_sharedir_information_list,
                                    release_dbdata_sharedir_information_list,
                                    {sharedir("/b"), sharedir("/a"), sharedir("!"), sharedir("影片"),
                                     sharedir("0"), sharedir("/a"), sharedir(nullptr)}));
    EXPECT_EQ("影片 ! /b /a 0", keys_of(list));
    EXPECT_EQ(5, dbdata_get_number_from_dbdata_sharedir_information_list(list));
    EXPECT_EQ(list, found_node_from_dbdata_sharedir_information_list_by_sharedir(list, "影片"));
    SHAREDIR_T *taken = take_node_from_dbdata_sharedir_information_list_by_sharedir(&list, "/b");
    EXPECT_EQ("/b", keys_of(taken)); // unlinked on both sides
    EXPECT_EQ("影片 ! /a 0", keys_of(list));
    delete_dbdata_sharedir_information_list_node(&taken);
    delete_dbdata_sharedir_information_list(&list);
}

TEST_F(StoragePosition, LookupsAndRemovalsTakeTheFirstMatch) {
    HOST_T *hosts = tree();
    DISK_T *&disks = hosts->list;
    disks->next = disk("sdb", "S2");
    static_cast<DISK_T *>(disks->next)->next = disk("sdc", "S3");
    PARTITION_T *&partitions = disks->list;
    partitions->next = partition("sda2", "U2");
    EXPECT_EQ(hosts, found_node_from_dbdata_host_information_list_by_ipaddr(hosts, "10.0.0.1"));
    DISK_T *second = found_node_from_dbdata_harddisk_information_list_by_serialno(disks, "S2");
    DISK_T *third = found_node_from_dbdata_harddisk_information_list_by_devname(disks, "sdc");
    EXPECT_EQ("sdb sdc", keys_of(second));
    EXPECT_EQ(partitions->next, found_node_from_dbdata_partition_information_list_by_uuid(partitions, "U2"));
    EXPECT_EQ(partitions, found_node_from_dbdata_partition_information_list_by_devname(partitions, "sda1"));
    EXPECT_EQ("", logged());
    EXPECT_EQ(nullptr, found_node_from_dbdata_partition_information_list_by_devname(nullptr, "sda1"));
    EXPECT_EQ(nullptr, found_node_from_dbdata_partition_information_list_by_devname(partitions, nullptr));
    const std::string function = "found_node_from_dbdata_partition_information_list_by_devname";
    EXPECT_EQ(function + " 80 参数获取出错,list((nil)) devname(0x)\n" + function +
                  " 80 参数获取出错,list(0x) devname((nil))\n",
              logged("dbdata_position/dbdata_partition.c"));

    PARTITION_T *taken = take_node_from_dbdata_partition_information_list_by_uuid(&partitions, "U2");
    taken->next = take_node_from_dbdata_partition_information_list_by_devname(&partitions, "sda1");
    EXPECT_EQ("sda2 sda1", keys_of(taken));
    release_dbdata_partition_information_list(&taken);
    INT8_T *const left[] = {second->info->devname, third->info->devname};
    delete_node_from_dbdata_harddisk_information_list_by_devname(&disks, "sdc");
    EXPECT_EQ("删除硬盘节点: S\n", said_by([&] { // a delete says nothing
                  delete_node_from_dbdata_harddisk_information_list_by_serialno(&disks, "S2");
                  DISK_T *first = take_node_from_dbdata_harddisk_information_list_by_serialno(&disks, "S");
                  EXPECT_EQ("sda", keys_of(first));
                  release_dbdata_harddisk_information_list(&first);
              }));
    EXPECT_EQ(nullptr, disks);
    for (INT8_T *devname : left)
        safe_free(devname);
    HOST_T *last = take_node_from_dbdata_host_information_list_by_ipaddr(&hosts, "10.0.0.1");
    EXPECT_EQ(nullptr, hosts);
    release_dbdata_host_information_list(&last);
}

TEST_F(StoragePosition, TheListingIndentsEachLevelAndSkipsWhatHasNoRecord) {
    HOST_T *list = tree();
    list->list->list->movstat = {9, 8, 1};
    SHAREDIR_T *directories = sharedir("/a");
    const std::string stat = "影片信息: 影片共有7部. 已解析0部, 解析失败0部\n";
    const std::string address = "主机IP地址: 10.0.0.1\n" + stat;
    EXPECT_EQ("主机类型: 本机\n" + address +
                  "    硬盘设备名: sda\t硬盘序列号: S\n"
                  "    影片信息: 影片共有50部. 已解析0部, 解析失败0部\n"
                  "        分区序号: 3. 分区设备名: sda1. 分区UUID: U. 分区挂载点: /mnt\n"
                  "        影片信息: 影片共有9部. 已解析8部, 解析失败1部\n"
                  "主机类型: NFSVOD服务器\n" +
                  address + "主机类型: HDVOD服务器\n" + address + "主机类型: " + address + "    " + stat +
                  "    共享目录: /a\n    影片信息: 影片共有2部. 已解析0部, 解析失败0部\n",
              said_by([&] {
                  for (const int type : {0, 1, 2, 3}) { // the last is no type, and its line doesn't end
                      list->info->type = static_cast<EVENT_HOST_TYPE_E>(type);
                      show_dbdata_host_information_list(list, 0);
                      release_dbdata_harddisk_information_list(&list->list);
                  }
                  delete_dbdata_host_information(&list->info);
                  show_dbdata_host_information_list(list, 1);
                  show_dbdata_sharedir_information_list(directories, 1);
              }));
    release_dbdata_host_information_list(&list);
    release_dbdata_sharedir_information_list(&directories);
}
