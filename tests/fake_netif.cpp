#include "fake_netif.h"

#include <cstring>

#include "support_netif.h"

std::atomic<const INT8_T *> fake_netif::s_address{nullptr};
std::atomic<int> fake_netif::s_queries{0};

RTSTATUS get_netif_address(const INT8_T *name, INT8_T *buffer, INT32_T size) {
    fake_netif::s_queries++;
    const INT8_T *address = fake_netif::s_address;
    if (strcmp(name, "eth0") != 0 || address == nullptr || strlen(address) >= static_cast<size_t>(size))
        return -1;
    memcpy(buffer, address, strlen(address) + 1);
    return 0;
}
