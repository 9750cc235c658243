// Where the movies of a snapshot lie: the tree host, hard disks, partitions, movies, with the statistics of
// each level.
#ifndef TAVISYS_SERVER_STORAGE_H
#define TAVISYS_SERVER_STORAGE_H

#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "dbdata_host.h"
#include "movie.h"

namespace server {

// A partition of the library and what has been found on it.
struct PARTITION_T {
    std::string name; // of its folder: "sda1"
    std::string uuid;
    std::string mount_point;
    DBDATA_MOVIE_STAT_T stat;
    bool operator==(const PARTITION_T &other) const {
        const auto key = [](const PARTITION_T &of) {
            return std::tie(of.name, of.uuid, of.mount_point, of.stat.total_movies, of.stat.parseok_movies,
                            of.stat.parseerr_movies);
        };
        return key(*this) == key(other);
    }
};

struct DISK_T {
    std::string name; // of its folder: "sda"
    std::string serial;
    std::vector<PARTITION_T> partitions;
    bool operator==(const DISK_T &) const = default;
};

class STORAGE_T {
public:
    // The movies are those that have been parsed, by disk and partition. Each node of the tree holds a
    // reference to its movie.
    STORAGE_T(std::span<const DISK_T> disks, std::span<const MOVIE_PTR> movies);
    STORAGE_T(const STORAGE_T &) = delete;
    STORAGE_T &operator=(const STORAGE_T &) = delete;
    ~STORAGE_T();

    const DBDATA_HOST_INFORMATION_LIST_T *hosts() const { return hosts_; } // this machine alone
    const DBDATA_HARDDISK_INFORMATION_LIST_T *disks() const { return hosts_->list; }
    // NULL when there is none of that name.
    const DBDATA_HARDDISK_INFORMATION_LIST_T *disk(const INT8_T *name) const;
    const DBDATA_PARTITION_INFORMATION_LIST_T *partition(const INT8_T *disk, const INT8_T *name) const;

private:
    DBDATA_HOST_INFORMATION_LIST_T *hosts_ = nullptr;
};

} // namespace server

#endif
