// What the tests of the library share. harness.cpp receives the library's log lines in place of zlog;
// allocations.cpp counts the library's allocations and makes them fail (programs of
// the STATIC kind).
#ifndef TAVISYS_TESTS_HARNESS_H
#define TAVISYS_TESTS_HARNESS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "tavisystype.h"

namespace harness {

// ---- What the library says

// The lines that the library has logged since the last call, "FUNCTION LEVEL TEXT" each and addresses as
// "0x"; all of them under the name of the file, unless it is "".
std::string logged(const std::string &file = "");
// What a call says on standard output, lines of the source as "[]" and addresses as "0x".
std::string said_by(const std::function<void()> &call);

// ---- The library's allocations

// Makes the nth allocation from now on fail, and only that one; 0 lets all succeed.
void fail_nth_allocation(int nth);
bool an_allocation_failed();

long live_allocations();
// What has been asked for since the last call of forget_allocations().
size_t bytes_allocated();
void forget_allocations();

// Makes each allocation of a call fail in turn, until the call comes through without a failure. One that
// fails has to say so and to leave nothing behind. Returns how many allocations there were.
template <class CALL>
int fail_each_allocation(CALL succeeds) {
    for (int nth = 1;; nth++) {
        SCOPED_TRACE("allocation " + std::to_string(nth));
        const long live = live_allocations();
        fail_nth_allocation(nth);
        const bool succeeded = succeeds();
        const bool failed = an_allocation_failed();
        EXPECT_NE(failed, succeeded);
        EXPECT_EQ(live, live_allocations());
        if (!failed)
            return nth - 1;
    }
}

// A test that leaves none of the library's memory allocated and starts without log lines.
class LEAK_CHECKED_T : public virtual testing::Test {
protected:
    LEAK_CHECKED_T() { logged(); }
    void TearDown() override { EXPECT_EQ(live_, live_allocations()) << "allocations are left"; }

private:
    long live_ = live_allocations();
};

template <class NODE>
std::vector<NODE *> nodes_of(NODE *list) {
    std::vector<NODE *> nodes;
    for (; list != nullptr; list = static_cast<NODE *>(list->next))
        nodes.push_back(list);
    return nodes;
}

// ---- Bodies, written down item by item: wire(2, "电影", nullptr)

inline void append_item(std::string *to, INT32_T value) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        to->push_back(static_cast<char>(static_cast<uint32_t>(value) >> shift));
}
inline void append_item(std::string *to, std::nullptr_t) {
    append_item(to, -1);
}
inline void append_item(std::string *to, const char *string) {
    if (string == nullptr)
        return append_item(to, nullptr);
    append_item(to, static_cast<INT32_T>(strlen(string)));
    to->append(string);
}
inline void append_item(std::string *to, const std::string &items) {
    to->append(items);
}
template <class... ITEM>
std::string wire(const ITEM &...item) {
    std::string bytes;
    (append_item(&bytes, item), ...);
    return bytes;
}

// A body in a heap block of exactly its size, so that the address sanitizer sees a read behind its end.
class BODY_T {
public:
    explicit BODY_T(const std::string &bytes) : length_(bytes.size()), bytes_(new char[bytes.size()]) {
        memcpy(bytes_.get(), bytes.data(), length_);
    }
    char *data() const { return bytes_.get(); }
    INT32_T length() const { return static_cast<INT32_T>(length_); }

private:
    size_t length_;
    std::unique_ptr<char[]> bytes_;
};

} // namespace harness

#endif
