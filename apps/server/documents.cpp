#include "documents.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fts.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "log.h"

namespace server {

namespace {

constexpr const char *DOCUMENT_NAME = "metadata.xml";
constexpr off_t LARGEST_DOCUMENT = 4 * 1024 * 1024;

// Levels of the walk: the library folder, disks, partitions, and what lies in them.
constexpr int DISK_LEVEL = 1;
constexpr int PARTITION_LEVEL = 2;

struct CLOSE_WALK_T {
    void operator()(FTS *walk) const { fts_close(walk); }
};

int by_name(const FTSENT **left, const FTSENT **right) {
    return strcmp((*left)->fts_name, (*right)->fts_name);
}

bool is_directory(const FTSENT &entry) {
    return entry.fts_info == FTS_D || entry.fts_info == FTS_DP || entry.fts_info == FTS_DNR;
}

// The folder that holds the entry, below the library folder.
std::string folder_of(const FTSENT &entry, size_t root_length) {
    const std::string path(entry.fts_path, entry.fts_pathlen);
    const size_t end = path.rfind('/');
    return path.substr(root_length + 1, end - root_length - 1);
}

class WALK_T {
public:
    WALK_T(const std::string &root, LIBRARY_T *library) : root_length_(root.size()), library_(library) {}

    // Looks at one entry; tells whether to leave out what lies below it.
    bool skips(const FTSENT &entry) {
        if (entry.fts_info == FTS_DNR || entry.fts_info == FTS_ERR || entry.fts_info == FTS_NS)
            SERVER_WARN("无法读取 %s: %s", entry.fts_path, strerrordesc_np(entry.fts_errno));
        if (entry.fts_info == FTS_DP)
            return false;
        if (entry.fts_level == DISK_LEVEL && is_directory(entry))
            library_->disks++;
        if (entry.fts_level <= PARTITION_LEVEL || strcmp(entry.fts_name, DOCUMENT_NAME) != 0)
            return false;
        add(entry);
        return true; // a folder of that name is no document; the reader says so
    }

private:
    void add(const FTSENT &entry) {
        DOCUMENT_T document{folder_of(entry, root_length_), 0, 0};
        document.disk_length = document.folder.find('/');
        const size_t end = document.folder.find('/', document.disk_length + 1);
        document.partition_length = std::min(end, document.folder.size()) - document.disk_length - 1;
        library_->documents.push_back(std::move(document));
    }

    size_t root_length_;
    LIBRARY_T *library_;
};

} // namespace

LIBRARY_T find_documents(const std::string &root, const std::atomic<bool> &stop) {
    LIBRARY_T library;
    std::string path = root;
    char *roots[] = {path.data(), nullptr};
    const std::unique_ptr<FTS, CLOSE_WALK_T> walk(
        fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR | FTS_NOSTAT, by_name));
    if (walk == nullptr) {
        SERVER_WARN("无法读取 %s: %s", root.c_str(), strerrordesc_np(errno));
        return library;
    }
    WALK_T look(root, &library);
    while (!stop) {
        FTSENT *entry = fts_read(walk.get());
        if (entry == nullptr)
            break;
        if (look.skips(*entry))
            fts_set(walk.get(), entry, FTS_SKIP);
    }
    return library;
}

const char *DOCUMENT_READER_T::system_reason() {
    const int error = errno;
    snprintf(reason_, sizeof reason_, "%s", strerrordesc_np(error));
    return reason_;
}

const char *DOCUMENT_READER_T::open(const DOCUMENT_T &document, SIGNATURE_T *signature) {
    close();
    path_.assign(root_).append("/").append(document.folder).append("/").append(DOCUMENT_NAME);
    // Neither a link nor a pipe that nobody writes to may lead or hold the scan.
    file_ = ::open(path_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file_ < 0)
        return errno == ELOOP ? "是符号链接" : system_reason();
    struct stat status {};
    if (fstat(file_, &status) < 0)
        return system_reason();
    if (!S_ISREG(status.st_mode))
        return "不是普通文件";
    if (status.st_size > LARGEST_DOCUMENT)
        return "超过4 MiB";
    *signature = {status.st_ino, status.st_size,
                  status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec,
                  status.st_ctim.tv_sec * 1000000000LL + status.st_ctim.tv_nsec};
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
            return system_reason();
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
