// Who may ask: ranges of IPv4 addresses.
#ifndef TAVISYS_SERVER_ACCESS_H
#define TAVISYS_SERVER_ACCESS_H

#include <chrono>
#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <vector>

namespace server {

class ACCESS_T {
public:
    // The machine itself and the private ranges of RFC 1918.
    static constexpr const char *DEFAULT = "127.0.0.0/8,10.0.0.0/8,172.16.0.0/12,192.168.0.0/16";

    // Reads "A.B.C.D/N,...", of which a lone address is a range of one. Returns "", or the range that is
    // none, with nothing changed.
    std::string read(const std::string &ranges);

    bool allows(in_addr address) const;

private:
    struct RANGE_T {
        uint32_t network; // in host order, as the mask
        uint32_t mask;
    };
    static bool read_range(const std::string &text, RANGE_T *range);

    std::vector<RANGE_T> ranges_;
};

// Tells of refused peers, at most once a second however many there are.
class REFUSALS_T {
public:
    void count(in_addr address);

private:
    using CLOCK_T = std::chrono::steady_clock;
    CLOCK_T::time_point told_at_{};
    size_t refused_ = 0; // since then
};

} // namespace server

#endif
