#include "support_netif.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/deadline.h"

using namespace tavisys;

namespace {

// The interface that was last found missing. It is looked for again when the clock has moved on by a
// millisecond: looking takes a socket, and where there is no interface of the name that ids begin with, a
// socket for every record takes as long as loading all of them.
class MISSING_T {
public:
    bool is(const INT8_T *name) {
        const std::lock_guard lock(mutex_);
        return seen_ms_ == now_ms() && strcmp(name_.data(), name) == 0;
    }
    void remember(const INT8_T *name) {
        const std::lock_guard lock(mutex_);
        strncpy(name_.data(), name, name_.size() - 1);
        seen_ms_ = now_ms();
    }

private:
    std::mutex mutex_;
    std::array<INT8_T, IFNAMSIZ> name_{};
    int64_t seen_ms_ = 0;
};
constinit MISSING_T s_missing;

// Asks the kernel for the first IPv4 address of the interface.
bool query_address(const INT8_T *name, in_addr *address) {
    ifreq request{};
    if (strlen(name) >= sizeof request.ifr_name)
        return false;
    strncpy(request.ifr_name, name, sizeof request.ifr_name - 1);

    if (s_missing.is(name))
        return false;
    const int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sock < 0)
        return false;
    const int result = ioctl(sock, SIOCGIFADDR, &request);
    const int error = errno;
    close(sock);
    if (result < 0 && (error == ENODEV || error == EADDRNOTAVAIL))
        s_missing.remember(name);
    if (result < 0)
        return false;

    sockaddr_in found{};
    memcpy(&found, &request.ifr_addr, sizeof found);
    *address = found.sin_addr;
    return true;
}

} // namespace

RTSTATUS get_netif_address(const INT8_T *name, INT8_T *buffer, INT32_T size) {
    if (name == nullptr || buffer == nullptr || size < 1)
        return -1;
    in_addr address{};
    if (!query_address(name, &address))
        return -1;
    INT8_T text[INET_ADDRSTRLEN];
    if (inet_ntop(AF_INET, &address, text, sizeof text) == nullptr)
        return -1;
    const size_t length = strlen(text);
    if (length >= static_cast<size_t>(size))
        return -1;
    memcpy(buffer, text, length + 1);
    return 0;
}
