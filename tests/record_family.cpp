// What every message body has in common, on each family of the program: the bytes on the wire, the way back,
// every cut, every hostile count.
#include "record_family.h"

#include <climits>
#include <regex>

using namespace harness;
using namespace std::string_literals;

std::string harness::said_by(const std::function<void()> &call) {
    testing::internal::CaptureStdout();
    call();
    const std::string said = testing::internal::GetCapturedStdout();
    return std::regex_replace(std::regex_replace(said, std::regex(R"(\]\[\d+\])"), "][]"),
                              std::regex("0x[0-9a-f]+"), "0x");
}

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
        INT32_T used = GetParam().decode(body.data(), body.length(), &decoded);
        EXPECT_EQ(used < 0, decoded == &mark);
        *out = decoded == &mark ? nullptr : decoded;
        if (used == 0 && !GetParam().tells_bytes)
            used = static_cast<INT32_T>(GetParam().wire.size());
        return used;
    }
};

// A record and its node take at most this much memory for each byte that they had on the wire.
constexpr size_t MEMORY_PER_BYTE = 8;

} // namespace

TEST_P(Record, DecodesFromItsWireBytesAndEncodesToThem) {
    for (const std::string &unread : {""s, "x"s, "more bytes"s}) {
        void *record = nullptr;
        ASSERT_EQ(static_cast<INT32_T>(GetParam().wire.size()), decode(GetParam().wire + unread, &record));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(0, GetParam().encode(record, &body, &length));
        EXPECT_EQ(GetParam().wire, std::string(static_cast<char *>(body), static_cast<size_t>(length)));
        safe_free(body);
        GetParam().release(&record);
    }
}

TEST_P(Record, EveryCutIsRefused) {
    for (size_t cut = 0; cut < GetParam().wire.size(); cut++) {
        void *record = nullptr;
        EXPECT_EQ(-1, decode(GetParam().wire.substr(0, cut), &record)) << cut;
    }
    void *record = nullptr;
    EXPECT_EQ(-1, GetParam().decode("", -1, &record));
    EXPECT_EQ(-1, GetParam().decode("", INT_MIN, &record));
}

TEST_P(Record, NullArgumentsAreRefused) {
    void *sample = nullptr;
    decode(GetParam().wire, &sample);
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    EXPECT_EQ(-1, GetParam().encode(nullptr, &body, &length));
    EXPECT_EQ(-1, GetParam().encode(sample, nullptr, &length));
    EXPECT_EQ(-1, GetParam().encode(sample, &body, nullptr));
    EXPECT_EQ(&mark, body);
    EXPECT_EQ(77, length);
    void *record = &mark;
    EXPECT_EQ(-1, GetParam().decode(nullptr, 100, &record));
    EXPECT_EQ(-1, GetParam().decode(GetParam().wire.data(), 100, nullptr));
    EXPECT_EQ(&mark, record);
    GetParam().release(&sample);
    GetParam().release(&sample); // now NULL: nothing to free
}

// Every integer of the body in turn, be it a value, a length, a flag or a count, becomes a hostile one.
TEST_P(Record, HostileNumbersNeverCostMoreMemoryThanTheBodyHasBytes) {
    const std::string &good = GetParam().wire;
    for (INT32_T hostile : {INT_MAX, INT_MAX - 3, INT_MIN, -1, -2, 0, 1, 2, 3, 0x10000, 0x40000000}) {
        for (size_t at = 0; at + 4 <= good.size(); at++) {
            SCOPED_TRACE(std::to_string(hostile) + " at " + std::to_string(at));
            void *record = nullptr;
            forget_allocations();
            const INT32_T used = decode(std::string(good).replace(at, 4, wire(hostile)), &record);
            EXPECT_LE(bytes_allocated(), MEMORY_PER_BYTE * good.size());
            EXPECT_LE(used, static_cast<INT32_T>(good.size()));
            if (used >= 0)
                GetParam().release(&record);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Codec, Record, testing::ValuesIn(families()),
                         [](const auto &family) { return std::string(family.param.name); });
