// Ids that count up from a base, for movies and videos: every allocation gets the next one.
#ifndef TAVISYS_DBDATA_MOVINFO_ID_COUNTER_H
#define TAVISYS_DBDATA_MOVINFO_ID_COUNTER_H

#include <arpa/inet.h>
#include <mutex>

#include "support_netif.h"

namespace tavisys {

// The base sets servers apart: the last number of the address of eth0 times the ids that each may give.
// As long as it is 0 it is asked for again with every allocation, so an interface that comes up later
// moves the ids while the counter goes on.
class ID_COUNTER_T {
public:
    // on_base is called with the base and the number whenever the interface has told its address.
    template <class ON_BASE>
    INT32_T alloc_id(ON_BASE on_base) {
        const std::lock_guard<std::mutex> lock(id_mutex_);
        if (id_base_ == 0)
            fill_id_base(on_base);
        id_++;
        return id_ + id_base_;
    }

private:
    static constexpr INT32_T IDS_PER_SERVER = 50000;
    static constexpr INT32_T ADDRESS_SIZE = 64;

    template <class ON_BASE>
    void fill_id_base(ON_BASE on_base) {
        INT8_T address[ADDRESS_SIZE];
        if (get_netif_address("eth0", address, ADDRESS_SIZE) != 0)
            return;
        const INT32_T number = last_number(address);
        id_base_ = number * IDS_PER_SERVER;
        on_base(id_base_, number);
    }

    static INT32_T last_number(const INT8_T *address) {
        in_addr value{};
        return inet_pton(AF_INET, address, &value) == 1 ? static_cast<INT32_T>(ntohl(value.s_addr) & 0xFF)
                                                        : 0;
    }

    std::mutex id_mutex_;
    INT32_T id_ = 0;
    INT32_T id_base_ = 0;
};

} // namespace tavisys

#endif
