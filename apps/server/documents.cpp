#include "documents.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <linux/magic.h>
#include <linux/openat2.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "share_work.h"
#include "system_error_text.h"

namespace server {

namespace {

constexpr const char *DOCUMENT_NAME = "metadata.xml";
constexpr off_t LARGEST_DOCUMENT = 4 * 1024 * 1024;

constexpr size_t DEEPEST = 64; // levels of folders: each holds a descriptor while it is looked at

// Opens what lies below the folder. No part of the path may be a symbolic link, also one that has come there
// since the walk: the server reads nothing but its library.
int open_below(int folder, const char *path, int flags) {
    open_how how{};
    how.flags = static_cast<uint64_t>(flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    const auto file = static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how));
    if (file >= 0 || (errno != ENOSYS && errno != EPERM))
        return file;
    return openat(folder, path, flags | O_NOFOLLOW); // before Linux 5.6, and where a container forbids it
}

// An open folder, closed with its object.
class FOLDER_T {
public:
    explicit FOLDER_T(const char *path)
        : file_(open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {}
    FOLDER_T(const FOLDER_T &parent, const char *path)
        : file_(open_below(parent.file(), path, O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    FOLDER_T(const FOLDER_T &) = delete;
    FOLDER_T &operator=(const FOLDER_T &) = delete;
    ~FOLDER_T() {
        if (file_ >= 0)
            close(file_);
    }
    int file() const { return file_; }

private:
    int file_;
};

// What the walk needs of a folder's content.
struct CONTENT_T {
    std::vector<std::string> folders; // in the order of their names
    bool has_document = false;        // whatever it is: the reader says what is wrong with it
};

constexpr int64_t SECOND = 1000000000; // ns

int64_t nanoseconds(const timespec &time) {
    return time.tv_sec * SECOND + time.tv_nsec;
}

SIGNATURE_T signature_of(const struct stat &status) {
    return {status.st_ino, status.st_size, nanoseconds(status.st_mtim)};
}

FOLDER_SIGNATURE_T signature_of_folder(const struct stat &status) {
    return {status.st_dev, status.st_ino, nanoseconds(status.st_mtim)};
}

// The coarsest clock of a file system steps by two seconds: a folder that has changed since may show it by no
// later time.
bool has_settled(const FOLDER_SIGNATURE_T &folder) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const int64_t age = nanoseconds(now) - folder.modified_ns;
    return age > 2 * SECOND;
}

// Whether a folder's number of links tells how many folders are in it, two standing for none.
bool links_count_folders(int folder) {
    struct statfs system {};
    if (fstatfs(folder, &system) < 0)
        return false;
    switch (system.f_type) {
    case EXT4_SUPER_MAGIC: // of ext2 and ext3, too
    case XFS_SUPER_MAGIC:
    case TMPFS_MAGIC:
        return true;
    default: // others count names as well, or always say two
        return false;
    }
}

// The order of a walk: a folder before what is in it, folders of one folder by name.
bool is_walked_before(std::string_view left, std::string_view right) {
    const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (l == left.end() || r == right.end())
        return r != right.end();
    const auto rank = [](char c) { return c == '/' ? 0 : 1 + static_cast<unsigned char>(c); };
    return rank(*l) < rank(*r);
}

// What a walk finds in a partition.
struct FOUND_T {
    std::vector<DOCUMENT_T> documents;
    std::vector<PASSED_OVER_T> passed_over;
    std::unique_ptr<std::pmr::monotonic_buffer_resource> names =
        std::make_unique<std::pmr::monotonic_buffer_resource>();
};

// Walks one partition at a time.
class WALK_T {
public:
    WALK_T(const FOLDER_T &root, const std::atomic<bool> &stop, std::span<const DOCUMENT_T> before)
        : root_(root), stop_(stop), before_(before) {}

    // The names of the folders in a folder above the partitions, which is named below the library folder.
    std::vector<std::string> folders_in(const char *path) {
        const FOLDER_T folder(root_, path);
        CONTENT_T content;
        read(folder, path, &content);
        if (content.has_document)
            found_.passed_over.push_back({path, "其中的metadata.xml不属于任何分区, 应放在 硬盘/分区/ 之下"});
        return std::move(content.folders);
    }

    FOUND_T documents_in(const std::string &partition) {
        found_ = {};
        disk_length_ = static_cast<uint16_t>(partition.find('/'));
        partition_length_ = static_cast<uint16_t>(partition.size() - disk_length_ - 1);
        path_ = partition;
        const auto is_earlier = [](const DOCUMENT_T &document, const std::string &path) {
            return is_walked_before(document.folder, path);
        };
        next_ = static_cast<size_t>(std::lower_bound(before_.begin(), before_.end(), path_, is_earlier) -
                                    before_.begin());
        const FOLDER_T folder(root_, path_.c_str());
        struct stat status {};
        links_count_ = fstat(folder.file(), &status) == 0 && links_count_folders(folder.file());
        device_ = status.st_dev;
        look_into(folder, 1, place_before());
        return std::move(found_);
    }

    std::vector<PASSED_OVER_T> passed_over() { return std::move(found_.passed_over); }

private:
    void look_into(const FOLDER_T &folder, size_t level, uint32_t before) {
        struct stat status {};
        const bool is_there = fstat(folder.file(), &status) == 0; // before it is read
        CONTENT_T content;
        if (!read(folder, path_.c_str(), &content))
            return;
        if (content.has_document) {
            const FOLDER_SIGNATURE_T signature = signature_of_folder(status);
            const bool may_be_relied_on = is_there && content.folders.empty() && has_settled(signature);
            SIGNATURE_T seen;
            if (before != UNKNOWN)
                look_at(folder.file(), DOCUMENT_NAME, &seen);
            add(may_be_relied_on ? signature : FOLDER_SIGNATURE_T{}, before, seen);
        }
        if (level == DEEPEST && !content.folders.empty()) {
            found_.passed_over.push_back({path_, "目录层次过深, 其下的目录不再查找"});
            return;
        }
        const size_t length = path_.size();
        for (const std::string &name : content.folders) {
            if (stop_)
                return;
            path_.append("/").append(name);
            const uint32_t place = place_before();
            if (!add_leaf(folder, name, place))
                look_into(FOLDER_T(folder, name.c_str()), level + 1, place);
            path_.resize(length);
        }
    }

    void add(const FOLDER_SIGNATURE_T &leaf, uint32_t before, const SIGNATURE_T &seen) {
        auto *name = static_cast<char *>(found_.names->allocate(path_.size(), 1));
        path_.copy(name, path_.size());
        found_.documents.push_back(
            {{name, path_.size()}, disk_length_, partition_length_, before, leaf, seen});
    }

    // False when there is nothing of that name. What isn't a file has no signature.
    static bool look_at(int folder, const char *name, SIGNATURE_T *seen) {
        struct stat status {};
        if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) < 0)
            return errno != ENOENT;
        if (S_ISREG(status.st_mode))
            *seen = signature_of(status);
        return true;
    }

    // Adds the document of a folder without folders, when it can be told that there are none without reading
    // the folder. False when it can't.
    bool add_leaf(const FOLDER_T &parent, const std::string &name, uint32_t before) {
        struct stat status {};
        if (fstatat(parent.file(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) < 0)
            return false;
        const FOLDER_SIGNATURE_T signature = signature_of_folder(status);
        const bool is_as_before = before != UNKNOWN && before_[before].leaf == signature;
        const bool has_no_folders =
            links_count_ && S_ISDIR(status.st_mode) && status.st_nlink == 2 && status.st_dev == device_;
        if (!is_as_before && !has_no_folders)
            return false;
        name_.assign(name).append("/").append(DOCUMENT_NAME);
        SIGNATURE_T seen;
        if (look_at(parent.file(), name_.c_str(), &seen))
            add(is_as_before || has_settled(signature) ? signature : FOLDER_SIGNATURE_T{}, before, seen);
        return true;
    }

    // Of the folder among the documents of the last walk. Both walks go the same way: each is asked for once.
    uint32_t place_before() {
        for (; next_ < before_.size(); next_++) {
            if (before_[next_].folder == path_) // as nearly always
                return static_cast<uint32_t>(next_++);
            if (!is_walked_before(before_[next_].folder, path_))
                break;
        }
        return UNKNOWN;
    }

    bool read(const FOLDER_T &folder, const char *path, CONTENT_T *content) {
        ssize_t size = folder.file();
        while (size >= 0 && (size = getdents64(folder.file(), buffer_.data(), buffer_.size())) > 0) {
            const dirent64 *entry = nullptr;
            for (ssize_t at = 0; at < size; at += entry->d_reclen) {
                entry = reinterpret_cast<const dirent64 *>(buffer_.data() + at);
                take(folder, *entry, content);
            }
        }
        if (size < 0)
            found_.passed_over.push_back({path, system_error_text(errno, WANTED_T::READ_FOLDER)});
        std::sort(content->folders.begin(), content->folders.end());
        return size == 0;
    }

    static void take(const FOLDER_T &folder, const dirent64 &entry, CONTENT_T *content) {
        if (strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0)
            return;
        if (strcmp(entry.d_name, DOCUMENT_NAME) == 0)
            content->has_document = true;
        else if (is_folder(folder, entry))
            content->folders.emplace_back(entry.d_name);
    }

    static bool is_folder(const FOLDER_T &folder, const dirent64 &entry) {
        if (entry.d_type != DT_UNKNOWN)
            return entry.d_type == DT_DIR;
        struct stat status {}; // some file systems don't tell
        return fstatat(folder.file(), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(status.st_mode);
    }

    const FOLDER_T &root_;
    const std::atomic<bool> &stop_;
    const std::span<const DOCUMENT_T> before_;
    size_t next_ = 0; // in it
    FOUND_T found_;   // in the partition
    std::string path_;
    std::string name_;         // of a document, from its folder's parent on
    bool links_count_ = false; // on this device
    dev_t device_ = 0;
    uint16_t disk_length_ = 0; // names have 255 bytes at most
    uint16_t partition_length_ = 0;
    alignas(dirent64) std::array<char, size_t{64} * 1024> buffer_{};
};

} // namespace

LIBRARY_T find_documents(const std::string &path, size_t threads, const std::atomic<bool> &stop,
                         std::span<const DOCUMENT_T> before) {
    const FOLDER_T root(path.c_str());
    LIBRARY_T library;
    std::vector<std::string> partitions;
    const auto top = std::make_unique<WALK_T>(root, stop, before); // its buffer is large for a stack
    for (const std::string &name : top->folders_in(".")) {
        DISK_T &disk = library.disks.emplace_back();
        disk.name = name;
        for (const std::string &partition : top->folders_in(name.c_str())) {
            disk.partitions.push_back({partition, "", "", {}});
            partitions.emplace_back(name).append("/").append(partition);
        }
    }

    library.passed_over = top->passed_over();
    std::vector<FOUND_T> found(partitions.size());
    share_work(threads, partitions.size(), [&](size_t i) {
        found[i] = std::make_unique<WALK_T>(root, stop, before)->documents_in(partitions[i]);
    });
    size_t documents = 0;
    for (const FOUND_T &in_partition : found)
        documents += in_partition.documents.size();
    library.documents.reserve(documents);
    auto in_partition = found.begin();
    for (DISK_T &disk : library.disks)
        for (PARTITION_T &partition : disk.partitions) {
            FOUND_T part = std::move(*in_partition++); // freed before the next is taken
            partition.stat.total_movies = static_cast<UINT32_T>(part.documents.size());
            std::move(part.documents.begin(), part.documents.end(), std::back_inserter(library.documents));
            std::move(part.passed_over.begin(), part.passed_over.end(),
                      std::back_inserter(library.passed_over));
            library.names.push_back(std::move(part.names));
        }
    return library;
}

DOCUMENT_READER_T::~DOCUMENT_READER_T() {
    close();
    if (folder_ >= 0)
        ::close(folder_);
}

// The partition's folder stays open from one document to the next: the way to it is longer than the rest.
bool DOCUMENT_READER_T::enter(const DOCUMENT_T &document) {
    const size_t length = document.disk_length + 1 + document.partition_length;
    if (folder_ < 0 || document.folder.compare(0, length, partition_) != 0) {
        if (folder_ >= 0)
            ::close(folder_);
        partition_.assign(document.folder, 0, length);
        folder_ =
            open_below(FOLDER_T(root_.c_str()).file(), partition_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    }
    path_.clear();
    if (document.folder.size() > length)
        path_.append(document.folder.substr(length + 1)).append("/");
    path_.append(DOCUMENT_NAME);
    return folder_ >= 0;
}

const char *DOCUMENT_READER_T::open(const DOCUMENT_T &document, SIGNATURE_T *signature) {
    close();
    if (!enter(document))
        return system_error_text(errno, WANTED_T::READ_FILE);
    // A pipe that nobody writes to may not hold the scan.
    file_ = open_below(folder_, path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file_ < 0)
        return errno == ELOOP ? "是符号链接" : system_error_text(errno, WANTED_T::READ_FILE);
    struct stat status {};
    if (fstat(file_, &status) < 0)
        return system_error_text(errno, WANTED_T::READ_FILE);
    if (!S_ISREG(status.st_mode))
        return "不是普通文件";
    *signature = signature_of(status);
    if (status.st_size == 0)
        return "是空文件";
    if (status.st_size > LARGEST_DOCUMENT)
        return "超过4 MiB";
    buffer_.resize(std::max(buffer_.size(), static_cast<size_t>(status.st_size)));
    length_ = static_cast<size_t>(status.st_size);
    return nullptr;
}

const char *DOCUMENT_READER_T::read() {
    size_t have = 0;
    while (have < length_) {
        const ssize_t count = ::read(file_, buffer_.data() + have, length_ - have);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return system_error_text(errno, WANTED_T::READ_FILE);
        if (count == 0)
            break; // it has become shorter: what is there decides
        have += static_cast<size_t>(count);
    }
    length_ = have;
    return nullptr;
}

void DOCUMENT_READER_T::close() {
    if (file_ >= 0)
        ::close(file_);
    file_ = -1;
}

} // namespace server
