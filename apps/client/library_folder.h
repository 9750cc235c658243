// The folder of a partition in a library of documents, as tavisys-server --library reads it:
// LIBRARY/<disk>/<partition>/<folder>/metadata.xml.
#ifndef TAVISYS_CLIENT_LIBRARY_FOLDER_H
#define TAVISYS_CLIENT_LIBRARY_FOLDER_H

#include <string>
#include <string_view>

namespace client {

// The name of the folder for a movie code, which a peer has made up: one plain component of a path, the same
// for the same code and for no other.
std::string folder_name(std::string_view code);

// An open file or folder, closed with its object.
class DESCRIPTOR_T {
public:
    explicit DESCRIPTOR_T(int descriptor) : file_(descriptor) {}
    DESCRIPTOR_T(const DESCRIPTOR_T &) = delete;
    DESCRIPTOR_T &operator=(const DESCRIPTOR_T &) = delete;
    ~DESCRIPTOR_T() { static_cast<void>(close()); }
    int file() const { return file_; }
    int close(); // 0, or the errno of the failure, where a full disk may show

private:
    int file_;
};

// Makes the folders that are missing. Neither it nor what lies in it is reached through a symbolic link,
// which would lead elsewhere. What fails throws a CLIENT_ERROR_T that names the path.
class LIBRARY_FOLDER_T {
public:
    // The disk and the partition are single components of a path.
    LIBRARY_FOLDER_T(const std::string &library, const std::string &disk, const std::string &partition);

    // Writes a movie's document, in place of one that is there. It is seen whole or not at all.
    void write(const std::string &folder, std::string_view document) const;

    const std::string &path() const { return path_; }

private:
    std::string path_;
    DESCRIPTOR_T folder_;
};

} // namespace client

#endif
