// What the fuzz targets share. Each target is a program of libFuzzer: it tries inputs one after the other,
// keeps those that reach new code, and stops at the first for which require() or a sanitizer speaks up.
#ifndef TAVISYS_FUZZ_FUZZ_H
#define TAVISYS_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "tavisystype.h"

namespace fuzz {

// Ends the program with a line that says what went wrong, unless the condition holds.
void require(bool holds, const char *what, const char *of = "");

// ---- Memory: bytes asked for since the last call of forget_allocations(), by this thread. It is their
// sum, freed or not, so a bound on it holds for the peak, and for the work that they cost, as well.

void forget_allocations();
size_t bytes_allocated();

// Once at the start: counts allocations, and sends what the library prints to /dev/null. What it logs is
// formatted, so that the sanitizers see each argument, and dropped.
void start();

// ---- The input, taken piece by piece. Behind its end there are zeros.

class INPUT_T {
public:
    INPUT_T(const uint8_t *data, size_t size) : left_(reinterpret_cast<const char *>(data), size) {}

    uint8_t byte() {
        const auto value = static_cast<uint8_t>(left_.empty() ? 0 : left_.front());
        left_.remove_prefix(left_.empty() ? 0 : 1);
        return value;
    }
    // One of 0 to limit - 1.
    size_t below(size_t limit) { return byte() % limit; }
    INT32_T integer() {
        uint32_t value = 0;
        for (unsigned shift = 0; shift < 32; shift += 8)
            value |= static_cast<uint32_t>(byte()) << shift;
        return static_cast<INT32_T>(value);
    }
    std::string_view bytes(size_t count) {
        const std::string_view taken = left_.substr(0, count);
        left_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view rest() { return bytes(left_.size()); }

private:
    std::string_view left_;
};

} // namespace fuzz

#endif
