#include "player_operation.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support_memory.h"
#include "support_text.h"

namespace {

constexpr const INT8_T *NAME_FILE = "/tmp/tavisys.name";
constexpr mode_t NAME_FILE_MODE = 0666; // less the umask
constexpr size_t LONGEST_NAME = 1024;   // bytes
constexpr INT8_T DEFAULT_NAME[] = "影柜播放机";
constexpr INT32_T DEFAULT_NAME_SIZE = sizeof DEFAULT_NAME;

// Not a stream: that would need memory, for want of which a name that is there would seem not to be.
class NAME_FILE_T {
public:
    // Everyone may write to the folder of the name's file, so whatever lies there under that name is taken
    // for it only when it is an ordinary file: a link would lead a write elsewhere, a pipe would block.
    explicit NAME_FILE_T(int flags)
        : file_(open(NAME_FILE, flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, NAME_FILE_MODE)) {
        struct stat status {};
        if (file_ >= 0 && (fstat(file_, &status) != 0 || !S_ISREG(status.st_mode)))
            static_cast<void>(finish());
    }
    NAME_FILE_T(const NAME_FILE_T &) = delete;
    NAME_FILE_T &operator=(const NAME_FILE_T &) = delete;
    ~NAME_FILE_T() { static_cast<void>(finish()); }

    bool is_open() const { return file_ >= 0; }
    // The bytes that are moved by read() or write(), fewer when there are no more or an error comes.
    template <class BYTE, class MOVE>
    size_t move(MOVE read_or_write, BYTE *bytes, size_t length) const {
        size_t moved = 0;
        while (moved < length) {
            const ssize_t count = read_or_write(file_, bytes + moved, length - moved);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            moved += static_cast<size_t>(count);
        }
        return moved;
    }
    bool finish() {
        const int file = file_;
        file_ = -1;
        return file >= 0 && close(file) == 0;
    }

private:
    int file_;
};

RTSTATUS wrap_tavisys_get_player_name(INT8_T *name, INT32_T length) {
    const NAME_FILE_T file(O_RDONLY);
    if (!file.is_open())
        return -1;
    INT8_T line[LONGEST_NAME + 1] = {}; // a file that fills it still ends in a NUL
    line[file.move(read, line, LONGEST_NAME)] = '\0';
    const INT8_T *stripped = strip_char_space_and_return_from_string(line);
    const auto size = static_cast<INT32_T>(strlen(stripped));
    if (size + 1 > length)
        return -1;
    safe_memcpy(name, stripped, size); // callers clear the buffer and rely on what lies behind the name
    return 0;
}

} // namespace

RTSTATUS tavisys_get_player_name(INT8_T *name, INT32_T length) {
    if (name == nullptr)
        return -1;
    if (wrap_tavisys_get_player_name(name, length) >= 0)
        return 0;
    if (length < DEFAULT_NAME_SIZE)
        return -1;
    memcpy(name, DEFAULT_NAME, sizeof DEFAULT_NAME);
    return 0;
}

RTSTATUS tavisys_set_player_name(const INT8_T *name) {
    if (name == nullptr)
        return -1;
    NAME_FILE_T file(O_WRONLY | O_CREAT | O_TRUNC);
    if (!file.is_open())
        return -1;
    const size_t length = strlen(name);
    const bool taken = file.move(write, name, length) == length;
    const bool written = file.finish(); // a full disk may show here
    return taken && written ? 0 : -1;
}
