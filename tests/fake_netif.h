// The address of eth0 as a test wants it. fake_netif.cpp stands in for the library's own query.
#ifndef TAVISYS_TESTS_FAKE_NETIF_H
#define TAVISYS_TESTS_FAKE_NETIF_H

#include <atomic>

#include "tavisystype.h"

namespace fake_netif {

extern std::atomic<const INT8_T *> s_address; // nullptr at first: there is none
extern std::atomic<int> s_queries;

} // namespace fake_netif

#endif
