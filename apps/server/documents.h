// Finding and reading the metadata documents of a library folder.
#ifndef TAVISYS_SERVER_DOCUMENTS_H
#define TAVISYS_SERVER_DOCUMENTS_H

#include <atomic>
#include <string>
#include <vector>

#include "catalogue.h"
#include "storage.h"

namespace server {

// A document of the library: DIR/<disk>/<partition>/<folder...>/metadata.xml.
struct DOCUMENT_T {
    std::string folder;      // below the library folder: "sda/sda1/TV1993-0001"
    size_t disk_length;      // of "sda" in it
    size_t partition_length; // of "sda1" behind the first slash

    std::string disk() const { return folder.substr(0, disk_length); }
    std::string partition() const { return folder.substr(disk_length + 1, partition_length); }
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
};

// Walks the library's partitions with so many threads; the documents come in the order of their paths
// all the same. Symbolic links are not followed. What can't be read is passed over. Ends early, with what it
// has, when `stop` is set.
LIBRARY_T find_documents(const std::string &path, size_t threads, const std::atomic<bool> &stop);

// Reads whole documents into a buffer that is used again.
class DOCUMENT_READER_T {
public:
    explicit DOCUMENT_READER_T(const std::string &root) : root_(root) {}

    // Opens the document and tells its signature. Returns NULL, or why it can't be loaded.
    const char *open(const DOCUMENT_T &document, SIGNATURE_T *signature);
    // Reads the open document. Returns NULL, or why it can't be loaded.
    const char *read();
    const char *data() const { return buffer_.data(); }
    INT32_T length() const { return static_cast<INT32_T>(length_); }
    void close();
    ~DOCUMENT_READER_T() { close(); }
    DOCUMENT_READER_T(const DOCUMENT_READER_T &) = delete;
    DOCUMENT_READER_T &operator=(const DOCUMENT_READER_T &) = delete;

private:
    const char *system_reason();

    const std::string &root_;
    std::string path_;
    std::vector<char> buffer_;
    size_t length_ = 0;
    char reason_[128] = "";
    int file_ = -1;
};

} // namespace server

#endif
