#include "devices.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <libmount/libmount.h>
#include <libudev.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "log.h"

namespace server {

namespace {

template <auto UNREF>
struct UNREF_T {
    template <class OBJECT>
    void operator()(OBJECT *object) const {
        UNREF(object);
    }
};
template <class OBJECT, auto UNREF>
using OWNED_T = std::unique_ptr<OBJECT, UNREF_T<UNREF>>;

// What the system knows of the file system that holds a folder; "" for what it doesn't.
struct FACTS_T {
    std::string serial; // of the disk
    std::string uuid;   // of the file system
    std::string mount_point;
};

std::string text_or_empty(const char *text) {
    return text == nullptr ? "" : text;
}

// The first of the device's properties and attributes, in the order of their worth, that is known.
std::string serial_of(udev_device *disk) {
    for (const char *property : {"ID_SERIAL_SHORT", "ID_SERIAL"}) // from the database that udevd keeps
        if (const char *value = udev_device_get_property_value(disk, property); value != nullptr)
            return value;
    for (const char *attribute : {"serial", "device/serial"}) // from sysfs: virtio disks, NVMe
        if (const char *value = udev_device_get_sysattr_value(disk, attribute); value != nullptr)
            return value;
    return "";
}

class SYSTEM_T {
public:
    explicit SYSTEM_T(const std::string &library)
        : library_(library), mounts_(mnt_new_table()), tags_(mnt_new_cache()), udev_(udev_new()) {
        if (mounts_ == nullptr || mnt_table_parse_mtab(mounts_.get(), nullptr) != 0) {
            SERVER_WARN("无法读取挂载表 /proc/self/mountinfo, 硬盘序列号和分区UUID将由名称生成");
            mounts_.reset();
        }
    }

    FACTS_T facts_of(const std::string &folder) const {
        FACTS_T facts;
        libmnt_fs *mount = mounts_ == nullptr
                               ? nullptr
                               : mnt_table_find_mountpoint(mounts_.get(), folder.c_str(), MNT_ITER_BACKWARD);
        if (mount == nullptr || !is_of_library(text_or_empty(mnt_fs_get_target(mount))))
            return facts;
        read_device(mount, &facts);
        if (!facts.uuid.empty() || !facts.serial.empty()) // else it is a network's or none at all
            facts.mount_point = mnt_fs_get_target(mount);
        return facts;
    }

private:
    // Else it is the system's own disk, of which the library is but a folder.
    bool is_of_library(std::string_view target) const {
        return target.starts_with(library_) &&
               (target.size() == library_.size() || target[library_.size()] == '/');
    }

    // The number of the block device. The mount table has it, but for file systems that may span several
    // devices, where only the one that was mounted tells.
    static dev_t device_of(libmnt_fs *mount) {
        const dev_t number = mnt_fs_get_devno(mount);
        const char *path = mnt_fs_get_srcpath(mount);
        struct stat status {};
        if (major(number) == 0 && path != nullptr && stat(path, &status) == 0 && S_ISBLK(status.st_mode))
            return status.st_rdev;
        return number;
    }

    void read_device(libmnt_fs *mount, FACTS_T *facts) const {
        const dev_t number = device_of(mount);
        if (udev_ == nullptr || major(number) == 0)
            return;
        const OWNED_T<udev_device, udev_device_unref> device(
            udev_device_new_from_devnum(udev_.get(), 'b', number));
        if (device == nullptr)
            return;
        udev_device *disk = // the device's own, not to be released
            udev_device_get_parent_with_subsystem_devtype(device.get(), "block", "disk");
        facts->serial = serial_of(disk == nullptr ? device.get() : disk);
        facts->uuid = text_or_empty(udev_device_get_property_value(device.get(), "ID_FS_UUID"));
        const char *path = mnt_fs_get_srcpath(mount);
        if (facts->uuid.empty() && path != nullptr && tags_ != nullptr &&
            mnt_cache_read_tags(tags_.get(), path) >= 0) // without udevd, for whoever may read the device
            facts->uuid = text_or_empty(mnt_cache_find_tag_value(tags_.get(), path, "UUID"));
    }

    const std::string &library_;
    OWNED_T<libmnt_table, mnt_unref_table> mounts_;
    OWNED_T<libmnt_cache, mnt_unref_cache> tags_;
    OWNED_T<udev, udev_unref> udev_;
};

// 64 bits by FNV-1a (Fowler, Noll, Vo; the constants are theirs).
uint64_t hash_of(std::string_view text) {
    uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return hash;
}

std::string made_up_serial(const std::string &name) {
    std::array<char, sizeof "TAVI0123456789ABCDEF"> text{};
    snprintf(text.data(), text.size(), "TAVI%016llX", static_cast<unsigned long long>(hash_of(name)));
    return text.data();
}

// A UUID of version 8, whose content is the maker's own (RFC 9562).
std::string made_up_uuid(const std::string &name) {
    const uint64_t high = hash_of(name);
    const uint64_t low = hash_of(name + '/');
    std::array<char, sizeof "01234567-89ab-8def-8123-456789abcdef"> text{};
    snprintf(text.data(), text.size(), "%08llx-%04llx-8%03llx-%04llx-%012llx",
             static_cast<unsigned long long>(high >> 32U),
             static_cast<unsigned long long>(high >> 16U & 0xffffU),
             static_cast<unsigned long long>(high & 0xfffU),
             static_cast<unsigned long long>((low >> 48U & 0x3fffU) | 0x8000U),
             static_cast<unsigned long long>(low & 0xffffffffffffU));
    return text.data();
}

void fill_if_empty(std::string *text, const std::string &value) {
    if (text->empty())
        *text = value;
}

} // namespace

void identify_devices(const std::string &library, const std::string &machine, std::vector<DISK_T> *disks) {
    const SYSTEM_T system(library);
    for (DISK_T &disk : *disks) {
        const std::string folder = library + '/' + disk.name;
        disk.serial = system.facts_of(folder).serial;
        for (PARTITION_T &partition : disk.partitions) {
            const std::string path = folder + '/' + partition.name;
            const FACTS_T facts = system.facts_of(path);
            fill_if_empty(&disk.serial, facts.serial);
            partition.uuid = facts.uuid;
            fill_if_empty(&partition.uuid, made_up_uuid(machine + '/' + disk.name + '/' + partition.name));
            partition.mount_point = facts.mount_point;
            fill_if_empty(&partition.mount_point, path);
        }
        fill_if_empty(&disk.serial, made_up_serial(machine + '/' + disk.name));
    }
}

} // namespace server
