#include "access.h"

#include <arpa/inet.h>
#include <charconv>
#include <sstream>

#include "log.h"
#include "metrics.h"

namespace server {

namespace {

constexpr unsigned ADDRESS_BITS = 32;
constexpr auto TELL_EVERY = std::chrono::seconds(1);

uint32_t mask_of(unsigned bits) {
    return bits == 0 ? 0 : ~uint32_t{0} << (ADDRESS_BITS - bits);
}

bool read_bits(const std::string &text, unsigned *bits) {
    const char *end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, *bits);
    return error == std::errc() && behind == end && *bits <= ADDRESS_BITS;
}

} // namespace

bool ACCESS_T::read_range(const std::string &text, RANGE_T *range) {
    const size_t slash = text.find('/');
    unsigned bits = ADDRESS_BITS;
    if (slash != std::string::npos && !read_bits(text.substr(slash + 1), &bits))
        return false;
    in_addr address{};
    if (inet_pton(AF_INET, text.substr(0, slash).c_str(), &address) != 1)
        return false;
    range->mask = mask_of(bits);
    range->network = ntohl(address.s_addr) & range->mask;
    return true;
}

std::string ACCESS_T::read(const std::string &ranges) {
    std::vector<RANGE_T> read;
    std::istringstream list(ranges + ',');
    for (std::string text; std::getline(list, text, ',');)
        if (!read_range(text, &read.emplace_back()))
            return '"' + text + '"';
    ranges_ = std::move(read);
    return "";
}

bool ACCESS_T::allows(in_addr address) const {
    const uint32_t number = ntohl(address.s_addr);
    for (const RANGE_T &range : ranges_)
        if ((number & range.mask) == range.network)
            return true;
    return false;
}

void REFUSALS_T::count(in_addr address) {
    refused_++;
    metrics.refused.add();
    const auto now = CLOCK_T::now();
    if (now - told_at_ < TELL_EVERY)
        return;
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address, text, sizeof text);
    SERVER_WARN("拒绝了%zu个连接, 最近一个来自%s: 如应允许, 请把它的地址段加入 --allow", refused_, text);
    told_at_ = now;
    refused_ = 0;
}

} // namespace server
