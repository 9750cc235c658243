#include "support_codec.h"
#include "support_memory.h"
#include "support_netif.h"
#include "support_text.h"

#include <climits>
#include <gtest/gtest.h>

#include "harness.h"

using namespace harness;
using namespace std::string_literals;

using Support = LEAK_CHECKED_T;

TEST_F(Support, IntegersTravelLittleEndianAndStringsBehindTheirCountInTheRoomThatIsLeft) {
    const struct {
        const INT8_T *string;
        std::string bytes;
    } CASES[] = {{nullptr, "\xff\xff\xff\xff"s}, {"", "\0\0\0\0"s}, {"影柜", "\x06\0\0\0影柜"s}};
    for (const auto &[string, bytes] : CASES) {
        const auto length = static_cast<INT32_T>(bytes.size());
        EXPECT_EQ(length, calc_codec_ptr_data_length(string));
        for (INT32_T left : {INT_MIN, -1, 0, 1, 3, length - 1, length, length + 5}) {
            const BODY_T room(std::string(static_cast<size_t>(std::max(left, 0)), 'x'));
            const INT32_T want = left < length ? -1 : length;
            EXPECT_EQ(want, encode_ptr_data_to_buffer(string, room.data(), left));
            EXPECT_TRUE(want < 0 || bytes == std::string(room.data(), bytes.size()));
            EXPECT_TRUE(want < 0 || left == length || room.data()[length] == 'x');
        }
    }
    EXPECT_EQ(4, calc_codec_int_data_length());
    for (INT32_T left : {INT_MIN, -1, 0, 3, 4, 8}) {
        const BODY_T room(std::string(static_cast<size_t>(std::max(left, 0)), 'x'));
        INT32_T value = 5;
        EXPECT_EQ(left < 4 ? -1 : 4, encode_int_data_to_buffer(INT_MIN + 0x9c41, room.data(), left));
        EXPECT_TRUE(left < 4 || "\x41\x9c\0\x80"s == std::string(room.data(), 4));
        EXPECT_EQ(left < 4 ? -1 : 4, decode_int_data_from_buffer(room.data(), left, &value));
        EXPECT_EQ(left < 4 ? 5 : INT_MIN + 0x9c41, value);
    }
}

TEST_F(Support, StringDecodingTakesWholeStringsWithinTheLimitOnly) {
    const struct {
        const char *what;
        std::string bytes;
        INT32_T longest;
        INT32_T want;
    } CASES[] = {
        {"bytes behind the string stay unread", wire("abc", 7), 0, 7},
        {"as long as the limit", wire("abc"), 3, 7},
        {"one more than the limit", wire("abc"), 2, -1},
        {"a limit below 0 is none", wire("abc"), -1, 7},
        {"NULL under a limit", wire(nullptr), 1, 4},
        {"one byte short", wire(4, "abc"s), 0, -1},
        {"count -2", wire(-2, "abc"s), 0, -1},
        {"a count that wraps with its own 4 bytes", wire(INT_MAX - 3, "abc"s), 0, -1},
        {"NUL at the end", wire(3, "ab\0"s), 0, -1},
    };
    for (const auto &c : CASES) {
        SCOPED_TRACE(c.what);
        const BODY_T body(c.bytes);
        INT8_T untouched = 0;
        INT8_T *string = &untouched;
        EXPECT_EQ(c.want, decode_ptr_data_from_buffer(body.data(), body.length(), &string, c.longest));
        EXPECT_EQ(c.want < 0, string == &untouched);
        if (c.want > 0)
            safe_free(string);
    }
}

TEST_F(Support, ComparisonsOrderStringsAndAddressesAndWhatIsNone) {
    const auto sign = [](INT32_T value) { return (value > 0) - (value < 0); };
    const auto expect_ascending = [&](const std::vector<const INT8_T *> &texts, auto compare) {
        for (size_t i = 0; i < texts.size(); i++)
            for (size_t j = 0; j < texts.size(); j++)
                EXPECT_EQ(sign(static_cast<INT32_T>(i) - static_cast<INT32_T>(j)),
                          sign(compare(texts[i], texts[j])))
                    << i << " with " << j;
    };
    expect_ascending({nullptr, "", "ABC", "Z", "_", "ab", "abc", "\x80", "É", "é"}, safe_strcmp);
    expect_ascending({nullptr, "", "_", "ab", "ABC", "abD", "Z", "\x80", "É", "é"}, safe_strcasecmp);
    EXPECT_EQ(0, safe_strcasecmp("ABC", "abc"));
    // By the numeric value; whatever is no address comes first.
    expect_ascending({nullptr, "10.0.0", "300.1.1.1", "server", "0.0.0.0", "9.0.0.0", "10.0.0.9", "10.0.0.10",
                      "127.0.0.1", "255.255.255.255"},
                     safe_ipcmp);
}

TEST_F(Support, TextIsStrippedAtItsEndsOrOfAllButLettersAndDigits) {
    const struct {
        std::string text;
        const INT8_T *stripped;
        const INT8_T *filtered;
    } CASES[] = {{"", "", ""},
                 {" \t\r\n", "", ""},
                 {"  a b\t c \r\n", "a b\t c", "abc"},
                 {"\n影 柜1\n", "影 柜1", "1"},
                 {"a\v\f", "a\v\f", "a"},
                 {"　全角　", "　全角　", ""},
                 {"@[`{/:azAZ09é", "@[`{/:azAZ09é", "azAZ09"}};
    for (const auto &c : CASES) {
        const BODY_T strip(c.text + '\0');
        EXPECT_STREQ(c.stripped, strip_char_space_and_return_from_string(strip.data()));
        const BODY_T filter(c.text + '\0');
        skip_nonchar_and_nonnum_in_string(filter.data());
        EXPECT_STREQ(c.filtered, filter.data());
    }
}

TEST_F(Support, AnAddressNeedsAnInterfaceAndRoom) {
    INT8_T buffer[64] = "untouched";
    for (const char *name : {"nosuchif0", "", "a-name-that-no-interface-could-have"})
        EXPECT_EQ(-1, get_netif_address(name, buffer, sizeof buffer)) << name;
    EXPECT_EQ(-1, get_netif_address("lo", buffer, -1));
    EXPECT_EQ(-1, get_netif_address("lo", buffer, 9)); // 127.0.0.1 and its NUL are 10 bytes
    EXPECT_STREQ("untouched", buffer);
    EXPECT_EQ(0, get_netif_address("lo", buffer, 10));
    EXPECT_STREQ("127.0.0.1", buffer);
}
