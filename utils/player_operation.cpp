#include "player_operation.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
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

struct CLOSE_T {
    void operator()(FILE *file) const { fclose(file); }
};
using OWNED_FILE_T = std::unique_ptr<FILE, CLOSE_T>;

// Everyone may write to the folder of the name's file, so whatever lies there under that name is taken for
// it only when it is an ordinary file: a link would lead a write elsewhere, a pipe would block.
OWNED_FILE_T open_name_file(int flags, const char *mode) {
    const int file = open(NAME_FILE, flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, NAME_FILE_MODE);
    if (file < 0)
        return nullptr;
    struct stat status {};
    const bool is_ordinary = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    OWNED_FILE_T stream{is_ordinary ? fdopen(file, mode) : nullptr};
    if (stream == nullptr)
        close(file);
    return stream;
}

RTSTATUS wrap_tavisys_get_player_name(INT8_T *name, INT32_T length) {
    const OWNED_FILE_T file = open_name_file(O_RDONLY, "r");
    if (file == nullptr)
        return -1;
    INT8_T line[LONGEST_NAME + 1] = {}; // a file that fills it still ends in a NUL
    const size_t read = fread(line, 1, LONGEST_NAME, file.get());
    line[read] = '\0';
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
    OWNED_FILE_T file = open_name_file(O_WRONLY | O_CREAT | O_TRUNC, "w");
    if (file == nullptr)
        return -1;
    const size_t length = strlen(name);
    const bool taken = fwrite(name, 1, length, file.get()) == length;
    const bool written = fclose(file.release()) == 0; // a full disk shows here
    return taken && written ? 0 : -1;
}
