// Hard disks and their partitions: who may join a list, what a delete leaves, and what repeats cost.
#include "codec_harddisk_information.h"
#include "record_family.h"

using namespace harness;

namespace {

using DISKS_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
using PARTITIONS_T = TP_TAVISYS_PARTITION_INFORMATION_LIST_T;
using Storage = LEAK_CHECKED_T;

constexpr auto ENCODE = encode_tavisys_harddisk_information_list_to_message;
constexpr auto DECODE = decode_tavisys_harddisk_information_list_from_message;
constexpr auto RELEASE = release_tavisys_harddisk_information_list;
constexpr auto NEW_DISK = create_tavisys_harddisk_information_list_node_ex;

PARTITIONS_T *new_partition(const char *name) {
    return create_tavisys_partition_information_list_node_ex(1, name, "u", nullptr);
}

std::string listing_of(const DISKS_T *list) {
    return said_by([&] { show_tp_tavisys_harddisk_information_list(list); });
}
std::string disk_line(const char *name, const char *serial) {
    return std::string("硬盘设备名: ") + name + ". 硬盘序列号: " + serial + "\n";
}
std::string line(int number, const char *name, const char *uuid = "", const char *mount = "") {
    return "\t分区序号: " + std::to_string(number) + ". 分区设备号: " + name + ". UUID: " + uuid +
           ". 分区挂载点: " + mount + "\n";
}

} // namespace

const std::vector<FAMILY_T> harness::FAMILIES = {family<ENCODE, DECODE, RELEASE>(
    "disks", wire(2, "sda", "SN1", 2, 1, "sda1", "uuid", "/mnt", 2, nullptr, nullptr, nullptr) +
                 wire("sdb", nullptr, 1, -1, "sda1", "", ""))};

TEST_F(Storage, ANameJoinsAListOnceAndAFirstNodeAlways) {
    const auto add = add_node_to_tavisys_partition_information_list;
    PARTITIONS_T *list = nullptr;
    PARTITIONS_T *repeat = new_partition("sda1");
    PARTITIONS_T *empty = create_tavisys_partition_information_list_node(nullptr);
    EXPECT_EQ(-1, add(nullptr, repeat));
    EXPECT_EQ(-1, add(&list, nullptr));
    EXPECT_EQ(0, add(&list, new_partition("sda1")));
    EXPECT_EQ(0, add(&list, new_partition("SDA1")));
    EXPECT_EQ(1, add(&list, repeat));
    EXPECT_EQ(-1, add(&list, empty));
    DISKS_T *disks = nullptr;
    DISKS_T *same = NEW_DISK("sda", "other", nullptr);
    EXPECT_EQ(0, add_node_to_tavisys_harddisk_information_list(&disks, NEW_DISK("sda", "SN", list)));
    EXPECT_EQ(1, add_node_to_tavisys_harddisk_information_list(&disks, same));
    EXPECT_EQ(disk_line("sda", "SN") + line(1, "sda1", "u", "(null)") + line(1, "SDA1", "u", "(null)"),
              listing_of(disks));
    EXPECT_EQ(wire(1, "sda", "SN", 2, 1, "sda1", "u", nullptr, 1, "SDA1", "u", nullptr),
              encoded(ENCODE, disks));
    static_cast<PARTITIONS_T *>(list->next)->next = empty;
    EXPECT_EQ("", encoded(ENCODE, disks)) << "a partition without a record";
    EXPECT_EQ("", encoded(ENCODE, same)) << "a disk without partitions";
    for (DISKS_T **node : {&disks, &same, &same})
        RELEASE(node);
    list = nullptr;
    empty = create_tavisys_partition_information_list_node(nullptr);
    EXPECT_EQ(0, add(&list, empty)); // the first is taken as it is
    EXPECT_EQ(0, add(&list, repeat));
    same = create_tavisys_harddisk_information_list_node(nullptr, list);
    EXPECT_EQ("", encoded(ENCODE, same)) << "a disk without a record";
    RELEASE(&same);
}

TEST_F(Storage, DeletesLeaveSerialNumbersAndFurtherPartitions) {
    const long live = live_allocations();
    PARTITIONS_T *partitions = new_partition("sda1");
    PARTITIONS_T *further = new_partition("sda2");
    add_node_to_tavisys_partition_information_list(&partitions, further);
    DISKS_T *list = NEW_DISK("sda", "SN", partitions);
    INT8_T *serialno = list->info->serialno;
    delete_tavisys_harddisk_information_list(&list);
    EXPECT_NE(nullptr, list) << "the head pointer stays";
    EXPECT_EQ(live + 1 + 4, live_allocations()); // the serial number and one partition
    EXPECT_STREQ("SN", serialno);
    safe_free(serialno);
    delete_tavisys_partition_information_list(&further);
    EXPECT_NE(nullptr, further);
}

TEST_F(Storage, RecordsAreMadeWithTheirNamesOnly) {
    EXPECT_EQ(nullptr, create_tavisys_partition_information_ex(1, nullptr, "u", "/m"));
    EXPECT_EQ(nullptr, create_tavisys_partition_information_ex(1, "sda1", nullptr, "/m"));
    EXPECT_EQ(nullptr, create_tavisys_harddisk_information_ex(nullptr, "SN"));
    EXPECT_EQ(nullptr, create_tavisys_harddisk_information_ex("sda", nullptr));
}

TEST_F(Storage, OfANameThatRepeatsTheFirstIsKeptAndTheRestReleased) {
    const struct {
        std::string body;
        std::string listing;
    } CASES[] = {
        {wire(-1), ""},
        {wire(1, "sda", "SN", 0), disk_line("sda", "SN")},
        {wire(1, nullptr, "", 5, 1, "b", "u", "m", 2, "a", "", "", 3, "b") +
             wire(nullptr, nullptr, 4, nullptr, "", "", 5, nullptr, "", ""),
         disk_line("(null)", "") + line(1, "b", "u", "m") + line(2, "a") + line(4, "(null)")},
        {wire(4, "sdb", "1", 1, 1, "x", "", "", "sda", "2", 0, "sdb", "3", 1, 1, "y", "", "", "sda", "4", 0),
         disk_line("sdb", "1") + line(1, "x") + disk_line("sda", "2")},
    };
    for (const auto &c : CASES) {
        DISKS_T *list = nullptr;
        EXPECT_EQ(static_cast<INT32_T>(c.body.size()),
                  DECODE(c.body.data(), static_cast<INT32_T>(c.body.size()), &list));
        EXPECT_EQ(c.listing, listing_of(list));
        RELEASE(&list);
    }
}

// Sorting takes some log2(MANY) comparisons for each name, comparing each with each MANY / 2.
TEST_F(Storage, DroppingRepeatsTakesFewComparisonsWhateverTheNamesAre) {
    constexpr int MANY = 2000;
    for (int kinds : {MANY, 1, 9}) {
        std::string disks = wire(MANY);
        std::string partitions = wire(1, "sda", "SN", MANY);
        for (int i = 0; i < MANY; i++) {
            const std::string name = std::to_string((MANY - i) % kinds);
            disks += wire(name.c_str(), nullptr, 0);
            partitions += wire(i, name.c_str(), nullptr, nullptr);
        }
        for (const std::string &body : {disks, partitions}) {
            DISKS_T *list = nullptr;
            const auto length = static_cast<INT32_T>(body.size());
            const long before = string_comparisons();
            EXPECT_EQ(length, DECODE(body.data(), length, &list));
            EXPECT_LT(before + MANY, string_comparisons());
            EXPECT_GT(before + 50 * MANY, string_comparisons());
            RELEASE(&list);
        }
    }
}
