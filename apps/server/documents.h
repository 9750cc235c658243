// Finding and reading the metadata documents of a library folder.
#ifndef TAVISYS_SERVER_DOCUMENTS_H
#define TAVISYS_SERVER_DOCUMENTS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue.h"
#include "storage.h"

namespace server {

// What tells whether a document is still the one that was loaded. Its ctime doesn't: a hard link, a mode or
// an owner changes that, and not what is in it.
struct SIGNATURE_T {
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modified_ns = 0;
    bool operator==(const SIGNATURE_T &) const = default;
};

// What tells whether a folder still has the entries that it had.
struct FOLDER_SIGNATURE_T {
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t modified_ns = 0;
    bool operator==(const FOLDER_SIGNATURE_T &) const = default;
};

constexpr uint32_t UNKNOWN = UINT32_MAX;

// A document of the library: DIR/<disk>/<partition>/<folder...>/metadata.xml.
struct DOCUMENT_T {
    std::string_view folder;   // below the library folder: "sda/sda1/TV1993-0001"; among the library's names
    uint16_t disk_length;      // of "sda" in it
    uint16_t partition_length; // of "sda1" behind the first slash
    uint32_t before = UNKNOWN; // its place among the documents of the last walk
    // Of a folder without folders that had last changed well before it was read. Else of no folder.
    FOLDER_SIGNATURE_T leaf;
    SIGNATURE_T seen; // as this walk has seen it; of none where nothing is known of it from before

    std::string disk() const { return std::string(folder.substr(0, disk_length)); }
    std::string partition() const { return std::string(folder.substr(disk_length + 1, partition_length)); }
};

// A folder of the library that was passed over.
struct PASSED_OVER_T {
    std::string folder; // below the library folder, "." for itself
    const char *reason; // a static text
};

struct LIBRARY_T {
    std::vector<DISK_T> disks;         // by name, partitions as well; totals are filled
    std::vector<DOCUMENT_T> documents; // by disk, partition and path
    std::vector<PASSED_OVER_T> passed_over;
    std::vector<std::unique_ptr<std::pmr::monotonic_buffer_resource>>
        names; // those of the documents' folders
};

// Walks the library's partitions with so many threads; the documents come in the order of their paths
// all the same. Symbolic links are not followed. What can't be read is passed over. Ends early, with what it
// has, when `stop` is set. `before`: the documents of the last walk; those of their folders that have no
// others in them are read again only when they have changed.
LIBRARY_T find_documents(const std::string &path, size_t threads, const std::atomic<bool> &stop,
                         std::span<const DOCUMENT_T> before = {});

// Reads whole documents into a buffer that is used again.
class DOCUMENT_READER_T {
public:
    explicit DOCUMENT_READER_T(const std::string &root) : root_(root) {}

    // Opens the document and tells its signature. Returns NULL, or a static text: why it can't be loaded. A
    // signature that is told all the same is that of a document for which this holds as long as it stays so.
    const char *open(const DOCUMENT_T &document, SIGNATURE_T *signature);
    // Reads the open document. Returns as open() does.
    const char *read();
    const char *data() const { return buffer_.data(); }
    INT32_T length() const { return static_cast<INT32_T>(length_); }
    void close();
    ~DOCUMENT_READER_T();
    DOCUMENT_READER_T(const DOCUMENT_READER_T &) = delete;
    DOCUMENT_READER_T &operator=(const DOCUMENT_READER_T &) = delete;

private:
    bool enter(const DOCUMENT_T &document);

    const std::string &root_;
    std::string partition_; // whose folder is open
    int folder_ = -1;
    std::string path_; // of the document, from there
    std::vector<char> buffer_;
    size_t length_ = 0;
    int file_ = -1;
};

} // namespace server

#endif
