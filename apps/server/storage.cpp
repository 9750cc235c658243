#include "storage.h"

#include <new>

#include "event_list.h"
#include "tavisystype.h"

namespace server {

namespace {

template <auto RELEASE>
struct RELEASE_LIST_T {
    template <class NODE>
    void operator()(NODE *list) const {
        RELEASE(&list);
    }
};
template <class NODE, auto RELEASE>
using OWNED_LIST_T = std::unique_ptr<NODE, RELEASE_LIST_T<RELEASE>>;

using MOVIES_T = OWNED_LIST_T<DBDATA_MOVIE_INFORMATION_LIST_T, release_dbdata_movie_information_list>;
using PARTITIONS_T =
    OWNED_LIST_T<DBDATA_PARTITION_INFORMATION_LIST_T, release_dbdata_partition_information_list>;
using DISKS_T = OWNED_LIST_T<DBDATA_HARDDISK_INFORMATION_LIST_T, release_dbdata_harddisk_information_list>;

// Builds an owned list at its tail. The library's add functions walk the list for repeats, of which a
// library folder has none: its entries are folders of different names.
template <class LIST>
class BUILDER_T {
public:
    using NODE_T = typename LIST::element_type;

    // Takes the node; one that found no memory ends the work.
    NODE_T *append(NODE_T *node) {
        if (node == nullptr)
            throw std::bad_alloc();
        if (tail_ == nullptr)
            list_.reset(node);
        else
            tail_->next = node;
        tail_ = node;
        return node;
    }
    LIST take() { return std::move(list_); }

private:
    LIST list_;
    NODE_T *tail_ = nullptr;
};

void add(DBDATA_MOVIE_STAT_T *sum, const DBDATA_MOVIE_STAT_T &stat) {
    sum->total_movies += stat.total_movies;
    sum->parseok_movies += stat.parseok_movies;
    sum->parseerr_movies += stat.parseerr_movies;
}

MOVIES_T movie_list(std::span<const MOVIE_PTR> movies) {
    BUILDER_T<MOVIES_T> list;
    for (const MOVIE_PTR &movie : movies) {
        // The node has the reference once there is a node.
        list.append(create_dbdata_movie_information_list_node(nullptr))->info =
            duplicate_dbdata_movie_information(movie->record);
    }
    return list.take();
}

// Hands the level below over to the node, which has been made without it: a node that finds no memory
// leaves it to its owner.
template <class NODE, class LIST>
void hand_over(NODE *node, LIST below, const DBDATA_MOVIE_STAT_T &stat) {
    node->list = below.release();
    node->movstat = stat;
}

// Takes the movies of the disk from the front of those that are left.
PARTITIONS_T partition_list(const DISK_T &disk, std::span<const MOVIE_PTR> *left) {
    BUILDER_T<PARTITIONS_T> list;
    INT32_T seqno = 0;
    for (const PARTITION_T &partition : disk.partitions) {
        const size_t count = partition.stat.parseok_movies;
        auto *node = list.append(create_dbdata_partition_information_list_node_ex(
            ++seqno, partition.name.c_str(), partition.uuid.c_str(), partition.mount_point.c_str(), nullptr,
            0));
        hand_over(node, movie_list(left->first(count)), partition.stat);
        *left = left->subspan(count);
    }
    return list.take();
}

DBDATA_MOVIE_STAT_T sum_of(const DISK_T &disk) {
    DBDATA_MOVIE_STAT_T sum{};
    for (const PARTITION_T &partition : disk.partitions)
        add(&sum, partition.stat);
    return sum;
}

DISKS_T disk_list(std::span<const DISK_T> disks, std::span<const MOVIE_PTR> movies) {
    BUILDER_T<DISKS_T> list;
    for (const DISK_T &disk : disks) {
        auto *node = list.append(create_dbdata_harddisk_information_list_node_ex(
            disk.name.c_str(), disk.serial.c_str(), nullptr, 0));
        hand_over(node, partition_list(disk, &movies), sum_of(disk));
    }
    return list.take();
}

} // namespace

STORAGE_T::STORAGE_T(std::span<const DISK_T> disks, std::span<const MOVIE_PTR> movies) {
    const std::lock_guard lock(references_mutex);
    DISKS_T list = disk_list(disks, movies);
    auto *host = create_dbdata_host_information_list_node_ex(EVENT_HOST_TYPE_LOCALHOST,
                                                             TAVISYS_LOCAL_SERVER_ADDRESS, nullptr, 0);
    if (host == nullptr)
        throw std::bad_alloc();
    DBDATA_MOVIE_STAT_T sum{};
    for (const DISK_T &disk : disks)
        add(&sum, sum_of(disk));
    hand_over(host, std::move(list), sum);
    insert_node_to_dbdata_host_information_list(&hosts_, host);
}

STORAGE_T::~STORAGE_T() {
    const std::lock_guard lock(references_mutex);
    release_dbdata_host_information_list(&hosts_);
}

const DBDATA_HARDDISK_INFORMATION_LIST_T *STORAGE_T::disk(const INT8_T *name) const {
    return found_node_from_dbdata_harddisk_information_list_by_devname(disks(), name);
}

const DBDATA_PARTITION_INFORMATION_LIST_T *STORAGE_T::partition(const INT8_T *disk,
                                                                const INT8_T *name) const {
    const DBDATA_HARDDISK_INFORMATION_LIST_T *found = this->disk(disk);
    if (found == nullptr || found->list == nullptr) // the search in an empty list would log a failure
        return nullptr;
    return found_node_from_dbdata_partition_information_list_by_devname(found->list, name);
}

} // namespace server
