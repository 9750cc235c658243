/** @file support_netif.h
 *  The address of a network interface. */
#ifndef TAVISYS_SUPPORT_NETIF_H
#define TAVISYS_SUPPORT_NETIF_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Find the IPv4 address of a network interface. One that is missing, or has no address, is looked for again
 *  once a millisecond at most: until then the answer is the last one.
 *  @param name   [in]  interface name, such as "eth0".
 *  @param buffer [out] receives the dotted address; untouched on failure.
 *  @param size   [in]  bytes in the buffer; 16 hold any address.
 *  @return 0, or -1: NULL argument, no such interface, no address, buffer too small, out of
 *          descriptors. */
TAVISYS_API RTSTATUS get_netif_address(const INT8_T *name, INT8_T *buffer, INT32_T size);

#ifdef __cplusplus
}
#endif

#endif
