#include "identity.h"

#include <cctype>
#include <fstream>

#include "log.h"

namespace server {

namespace {

constexpr size_t DIGITS = 32;
constexpr const char *SOURCES[] = {
    "/etc/machine-id",                 // systemd's, see machine-id(5)
    "/var/lib/dbus/machine-id",        // where there is no systemd
    "/proc/sys/kernel/random/boot_id", // lasts until the next boot
};

// The 32 hexadecimal digits of the file's first line, in lower case; "" for any other content.
std::string digits_of(const char *path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    std::string digits;
    for (const char c : line)
        if (std::isxdigit(static_cast<unsigned char>(c)) != 0)
            digits += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return digits.size() == DIGITS ? digits : "";
}

// 8-4-4-4-12 digits, the text form of RFC 4122.
std::string with_dashes(std::string digits) {
    for (const size_t at : {20U, 16U, 12U, 8U})
        digits.insert(at, 1, '-');
    return digits;
}

} // namespace

std::string machine_uuid() {
    for (const char *source : SOURCES)
        if (const std::string digits = digits_of(source); !digits.empty())
            return with_dashes(digits);
    SERVER_WARN("找不到机器编号, 设备编号将全为0: 请用 systemd-machine-id-setup 生成 %s", SOURCES[0]);
    return with_dashes(std::string(DIGITS, '0'));
}

} // namespace server
