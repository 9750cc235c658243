#include "library_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "error.h"
#include "messages.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

constexpr const char *DOCUMENT_NAME = "metadata.xml";
constexpr mode_t FOLDER_MODE = 0777; // both less the umask
constexpr mode_t FILE_MODE = 0666;
constexpr int FOLDER_FLAGS = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

constexpr std::size_t LONGEST_NAME = 200; // bytes; file systems take 255, some of them fewer
constexpr std::size_t HASH_DIGITS = 16;

std::string join(const std::string &folder, const std::string &name) {
    return (std::filesystem::path(folder) / name).string();
}

[[noreturn]] void fail(const std::string &path, int failure) {
    const std::string reason = failure == ENOTDIR ? messages::NOT_A_FOLDER.get() : std::strerror(failure);
    throw CLIENT_ERROR_T(EXIT_FAILED, fill(messages::FOLDER_FAILED, {path, reason}));
}

// The folder of that name, made if there is none.
int open_folder(int parent, const std::string &name, int flags, const std::string &path) {
    const auto open = [&] { return openat(parent, name.c_str(), FOLDER_FLAGS | flags); };
    int folder = open();
    if (folder < 0 && errno == ENOENT && (mkdirat(parent, name.c_str(), FOLDER_MODE) == 0 || errno == EEXIST))
        folder = open();
    if (folder < 0)
        fail(path, errno);
    return folder;
}

int open_partition(const std::string &library, const std::string &disk, const std::string &partition) {
    const DESCRIPTOR_T top{open_folder(AT_FDCWD, library, 0, library)}; // by a link, too: the user's choice
    const std::string path = join(library, disk);
    const DESCRIPTOR_T middle{open_folder(top.file(), disk, O_NOFOLLOW, path)};
    return open_folder(middle.file(), partition, O_NOFOLLOW, join(path, partition));
}

// 0, or the errno of what failed.
int write_file(int folder, const std::string &name, std::string_view text) {
    constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    DESCRIPTOR_T file{openat(folder, name.c_str(), FLAGS, FILE_MODE)};
    if (file.file() < 0)
        return errno;
    const int failure = write_all(file.file(), text);
    return failure == 0 ? file.close() : failure;
}

// Two codes of one hash and one beginning would share a folder; who writes documents looks out for that.
std::string hash_of(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    char digits[HASH_DIGITS + 1];
    snprintf(digits, sizeof digits, "%016jx", std::uintmax_t{hash});
    return digits;
}

bool is_plain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
}

} // namespace

// Behind a "%" that stands for a byte there are two digits, behind the others there are none.
std::string folder_name(std::string_view code) {
    constexpr const char *NAME_OF_NOTHING = "%";
    constexpr const char *CUT = "%~";
    constexpr const char *DIGITS = "0123456789ABCDEF";
    std::string name;
    for (const char c : code) {
        const auto byte = static_cast<unsigned char>(c);
        const bool leads = name.empty() && (c == '.' || c == '-'); // hidden, "..", or like an option
        if (is_plain(c) && !leads)
            name += c;
        else
            name.append({'%', DIGITS[byte >> 4], DIGITS[byte & 0xF]});
    }
    if (name.size() > LONGEST_NAME)
        return name.substr(0, LONGEST_NAME - HASH_DIGITS - std::strlen(CUT)) + CUT + hash_of(code);
    return name.empty() ? NAME_OF_NOTHING : name;
}

int DESCRIPTOR_T::close() {
    const int file = file_;
    file_ = -1;
    return file >= 0 && ::close(file) != 0 ? errno : 0;
}

LIBRARY_FOLDER_T::LIBRARY_FOLDER_T(const std::string &library, const std::string &disk,
                                   const std::string &partition)
    : path_(join(join(library, disk), partition)), folder_(open_partition(library, disk, partition)) {}

void LIBRARY_FOLDER_T::write(const std::string &folder, std::string_view document) const {
    const std::string path = join(path_, folder);
    const DESCRIPTOR_T place{open_folder(folder_.file(), folder, O_NOFOLLOW, path)};
    const std::string unfinished = std::string(".") + DOCUMENT_NAME + "." + std::to_string(getpid());
    unlinkat(place.file(), unfinished.c_str(), 0); // left by a process of this number that was killed
    int failure = write_file(place.file(), unfinished, document);
    if (failure == 0 && renameat(place.file(), unfinished.c_str(), place.file(), DOCUMENT_NAME) != 0)
        failure = errno;
    if (failure == 0)
        return;
    unlinkat(place.file(), unfinished.c_str(), 0);
    fail(join(path, DOCUMENT_NAME), failure);
}

} // namespace client
