#include "support_netif.h"

#include <arpa/inet.h>
#include <cstring>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Asks the kernel for the first IPv4 address of the interface.
bool query_address(const INT8_T *name, in_addr *address) {
    ifreq request{};
    if (strlen(name) >= sizeof request.ifr_name)
        return false;
    strncpy(request.ifr_name, name, sizeof request.ifr_name - 1);

    const int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sock < 0)
        return false;
    const int result = ioctl(sock, SIOCGIFADDR, &request);
    close(sock);
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
