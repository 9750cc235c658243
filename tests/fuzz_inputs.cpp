// Runs a fuzz target on inputs that are the same each time: those of its corpus, each of them cut short and
// with hostile numbers in every place, and some that are made up. What has to come of each says the target.
//
// Usage: TARGET CORPUS MADE_UP   the folder of the corpus; how many inputs are made up, 0 if none is changed
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <zlog.h>

#include "fuzz.h"
#include "harness.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr size_t MOST_PLACES = 300; // of a long input
constexpr size_t LONGEST_MADE_UP[] = {300, 300, 300, 5000};

void run(const std::string &input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
}

void run_changed(const std::string &input) {
    const size_t step = 1 + input.size() / MOST_PLACES;
    for (size_t cut = 0; cut < input.size(); cut += step)
        run(input.substr(0, cut));
    for (const int number : {INT_MAX, INT_MAX - 3, INT_MIN, -1, -2, 0, 1, 2, 3, 0x10000, 0x40000000})
        for (size_t at = 1; at + sizeof number <= input.size(); at += step)
            run(std::string(input).replace(at, sizeof number, reinterpret_cast<const char *>(&number),
                                           sizeof number));
}

} // namespace

void fuzz::require(bool holds, const char *what, const char *of) {
    if (holds)
        return;
    fprintf(stderr, "%s: %s\n", of, what);
    abort();
}

void fuzz::forget_allocations() {
    harness::forget_allocations();
}

size_t fuzz::bytes_allocated() {
    return harness::bytes_allocated();
}

void fuzz::start() {
    require(freopen("/dev/null", "w", stdout) != nullptr, "/dev/null can't be opened");
}

void dzlog(const char *, size_t, const char *, size_t, long, int, const char *, ...) {}

int main(int /*argc*/, char **argv) {
    LLVMFuzzerInitialize(nullptr, nullptr);
    const int made_up = atoi(argv[2]);
    for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(file), {}};
        run(input);
        if (made_up > 0)
            run_changed(input);
    }
    std::mt19937 random; // NOLINT(cert-msc51-cpp): the same inputs every time
    for (int i = 0; i < made_up; i++) {
        const size_t longest = LONGEST_MADE_UP[random() % 4];
        std::string input(1 + random() % longest, '\0');
        for (char &byte : input) // small numbers often: counts and lengths that can be met
            byte = static_cast<char>(random() % 2 == 0 ? random() % 4 : random());
        input[0] = static_cast<char>(i % 32); // who gets it
        run(input);
    }
}
