// What every message body has in common, on each family of the program: the bytes on the wire, the way back,
// every cut, every hostile count.
#include "record_family.h"

#include <climits>

using namespace harness;
using namespace std::string_literals;

void harness::each_cut(const std::string &whole, const std::function<void(const BODY_T &part)> &call) {
    for (size_t cut = 0; cut <= whole.size(); cut++)
        call(BODY_T(whole.substr(0, cut)));
}

namespace {

class Record : public LEAK_CHECKED_T, public testing::WithParamInterface<FAMILY_T> {
protected:
    // Decodes from an exact block; a failure has to leave the out-argument alone.
    INT32_T decode(const std::string &bytes, void **out) {
        const BODY_T body(bytes);
        INT8_T mark = 0;
        void *decoded = &mark;
        const INT32_T used = family_.decode(body.data(), body.length(), &decoded);
        EXPECT_EQ(used < 0, decoded == &mark);
        *out = decoded == &mark ? nullptr : decoded;
        return used;
    }
    const FAMILY_T &family_ = GetParam();
    const std::string &wire_ = family_.wire;
    const INT32_T done_ = family_.tells_bytes ? static_cast<INT32_T>(wire_.size()) : 0;
};

// A record and its node take at most this much memory for each byte that they had on the wire.
constexpr size_t MEMORY_PER_BYTE = 8;

} // namespace

TEST_P(Record, DecodesFromItsWireBytesAndEncodesToThem) {
    for (const std::string &unread : {""s, "x"s, "more bytes"s}) {
        void *record = nullptr;
        ASSERT_EQ(done_, decode(wire_ + unread, &record));
        EXPECT_EQ(wire_, encoded(family_.encode, record));
        family_.release(&record);
    }
}

TEST_P(Record, EveryCutIsRefused) {
    void *record = nullptr;
    for (size_t cut = 0; cut < wire_.size(); cut++) {
        forget_allocations();
        EXPECT_EQ(-1, decode(wire_.substr(0, cut), &record)) << cut;
        EXPECT_TRUE(cut >= 4 || bytes_allocated() == 0) << "nothing is made of what can't be a record";
    }
    EXPECT_EQ(-1, family_.decode("", -1, &record));
    EXPECT_EQ(-1, family_.decode("", INT_MIN, &record));
}

TEST_P(Record, NullArgumentsAreRefused) {
    void *sample = nullptr;
    decode(wire_, &sample);
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    EXPECT_EQ(-1, family_.encode(nullptr, &body, &length));
    EXPECT_EQ(-1, family_.encode(sample, nullptr, &length));
    EXPECT_EQ(-1, family_.encode(sample, &body, nullptr));
    EXPECT_EQ(&mark, body);
    EXPECT_EQ(77, length);
    void *record = &mark;
    EXPECT_EQ(-1, family_.decode(nullptr, 100, &record));
    EXPECT_EQ(-1, family_.decode(wire_.data(), 100, nullptr));
    EXPECT_EQ(&mark, record);
    family_.release(&sample);
    family_.release(&sample); // now NULL: nothing to free
}

// Every integer of the body in turn, be it a value, a length, a flag or a count, becomes a hostile one.
TEST_P(Record, HostileNumbersNeverCostMoreMemoryThanTheBodyHasBytes) {
    for (INT32_T hostile : {INT_MAX, INT_MAX - 3, INT_MIN, -1, -2, 0, 1, 2, 3, 0x10000, 0x40000000}) {
        for (size_t at = 0; at + 4 <= wire_.size(); at++) {
            SCOPED_TRACE(std::to_string(hostile) + " at " + std::to_string(at));
            void *record = nullptr;
            forget_allocations();
            const INT32_T used = decode(std::string(wire_).replace(at, 4, wire(hostile)), &record);
            EXPECT_LE(bytes_allocated(), MEMORY_PER_BYTE * wire_.size());
            EXPECT_LE(used, done_);
            if (used >= 0)
                family_.release(&record);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Codec, Record, testing::ValuesIn(FAMILIES),
                         [](const auto &family) { return std::string(family.param.name); });
