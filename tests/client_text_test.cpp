// The client's layout: what a text takes on a terminal, and what of it never gets there.
#include <gtest/gtest.h>

#include "json.h"
#include "status.h"
#include "table.h"
#include "text.h"

using namespace client;

namespace {

const TABLE_T MOVIES{{{"编号", ALIGN_T::RIGHT}, {"片名", ALIGN_T::LEFT, NARROWEST}, {"年代"}},
                     {{"7", "霸王别姬", "1993"}, {"12", "Up", ""}, {"345", "e\u0301\n", "2009"}}};

} // namespace

TEST(ClientText, WidthIsThatOfATerminal) {
    const std::pair<const char *, int> CASES[] = {
        {"", 0},
        {"ＡＢ,。", 7},
        {"ｶﾞ", 2},
        {"기생충", 6},
        {"éΩж", 3},
        {"🎬𠮷", 4},
        {"\u1100\u1161\u11A8", 2}, // Hangul from single letters
        {"e\u0301か\u3099", 3},    // combining marks, one of them wide by its script
        {"a\u200Bb", 2},           // a zero width space
        {"\u1100\u115F", 4},       // the first and the last of a wide range
    };
    for (const auto &[text, want] : CASES)
        EXPECT_EQ(want, display_width(text)) << text;
}

TEST(ClientText, ControlCharactersAndInvalidBytesAreShownAsSigns) {
    const std::pair<std::string, const char *> CASES[] = {
        {"Amélie 天使 🎬 \U0010FFFD", "Amélie 天使 🎬 \U0010FFFD"},
        {std::string("\0\n\t\x7F", 4), "␀␊␉␡"},
        {"\033[31mred", "␛[31mred"},
        {"a\u009B2J", "a\uFFFD2J"},                       // a control sequence in one character
        {"a\u202Eb\u202C", "a\uFFFDb\uFFFD"},             // a change of the direction of writing
        {"a\xFFz", "a\uFFFDz"},                           // a byte that never occurs
        {"好\xE5\xA5", "好\uFFFD"},                       // a character cut short at the end
        {"\xF0\x9F\x8Ez", "\uFFFDz"},                     // or by another
        {"\x80\x80", "\uFFFD\uFFFD"},                     // followers alone
        {"\xC0\xAF", "\uFFFD\uFFFD"},                     // an overlong slash
        {"\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD"},           // an overlong form of three bytes
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"}, // behind the last code point
    };
    for (const auto &[text, want] : CASES)
        EXPECT_EQ(want, printable(text));
}

TEST(ClientText, EveryCodePointIsReadAsItIsWritten) {
    for (char32_t value = 0; value <= 0x10FFFF; value += value == 0xD7FF ? 0x801 : 1) { // no surrogates
        std::string text;
        append_code_point(text, value);
        const CODE_POINT_T read = first_code_point(text);
        ASSERT_EQ(value, read.value);
        ASSERT_EQ(text.size(), read.size);
    }
}

TEST(ClientText, CuttingAndWrappingKeepWholeCharactersWithinTheWidth) {
    const struct {
        const char *text;
        int width;
        const char *cut;
        std::vector<std::string> lines;
    } CASES[] = {
        {"霸王别姬", 8, "霸王别姬", {"霸王别姬"}},
        {"霸王别姬", 7, "霸王别…", {"霸王别", "姬"}},
        {"霸王别姬", 6, "霸王…", {"霸王别", "姬"}}, // half a character is none
        {"霸王", 1, "…", {"霸", "王"}},             // a character a line at the least
        {"e\u0301e\u0301e\u0301", 2, "e\u0301…", {"e\u0301e\u0301", "e\u0301"}},
        {"one two three", 8, "one two…", {"one two", "three"}}, // at a blank, which goes
        {"incomprehensible", 6, "incom…", {"incomp", "rehens", "ible"}},
        {"", 5, "", {""}},
    };
    for (const auto &c : CASES) {
        EXPECT_EQ(c.cut, cut_to_width(c.text, c.width)) << c.text;
        EXPECT_EQ(c.lines, wrap_to_width(c.text, c.width)) << c.text;
    }
}

TEST(ClientText, FillPutsPrintableArgumentsInAnyOrder) {
    EXPECT_EQ("b之a␊", fill("{1}之{0}", {"a\n", "b"}));
    EXPECT_EQ("{0} is not an argument of {2}", fill("{0} is not {1} of {2}", {"{0}", "an argument", "{2}"}));
    EXPECT_EQ("{9} {x} {", fill("{9} {x} {", {"a"}));
}

TEST(ClientTable, ColumnsAreAlignedByDisplayWidthAndLinesEndWithoutBlanks) {
    EXPECT_EQ("编号  片名      年代\n"
              "   7  霸王别姬  1993\n"
              "  12  Up        -\n"
              " 345  e\u0301␊        2009\n",
              lay_out_table(MOVIES, UNLIMITED));
}

TEST(ClientTable, TheWidestColumnsAreCutToTheTerminal) {
    // A column keeps what it asks for while another can give way.
    const TABLE_T two{{{"片名", ALIGN_T::LEFT, 12}, {"类型", ALIGN_T::LEFT, NARROWEST}},
                      {{"abcdefghijkl", "abcdefghijkl"}}};
    EXPECT_EQ("片名          类型\nabcdefghijkl  abcde…\n", lay_out_table(two, 20));
    EXPECT_EQ("片名        类型\nabcdefghi…  abcde…\n", lay_out_table(two, 18));
    // What can't be cut stays, on a terminal that is too narrow for it.
    EXPECT_NE(std::string::npos, lay_out_table(MOVIES, 3).find("345"));
}

TEST(ClientTable, FieldsAreWrappedBelowThemselves) {
    const std::vector<FIELD_T> fields{
        {"片名", "霸王别姬"}, {"简介", "两个从小一起学戏的京剧演员"}, {"类", ""}};
    EXPECT_EQ("片名  霸王别姬\n"
              "简介  两个从小一起学戏\n"
              "      的京剧演员\n"
              "类    -\n",
              lay_out_fields(fields, 23));
}

TEST(ClientJson, InvalidBytesAndControlCharactersNeitherThrowNorReachATerminal) {
    EXPECT_EQ("{\n  \"uuid\": \"a\uFFFDz\\u009b\\u007f\\n\\u202e好\\u202c\"\n}\n",
              uuid_to_json("a\xFFz\u009B\x7F\n\u202E好\u202C"));
}

TEST(ClientStatus, AProgressLineSaysHowFarTheScanIs) {
    const auto line = [](int phase, INT32_T total, INT32_T parsed, INT32_T failed) {
        return progress_line({static_cast<TAVISYS_SYSTEM_RUNNING_STATUS_E>(phase), total, parsed, failed, 0});
    };
    EXPECT_EQ("正在启动", line(0, 0, 0, 0));
    EXPECT_EQ("正在解析: 0/0 (0%),失败0部", line(2, 0, 0, 0));
    EXPECT_EQ("正在解析: 4294967294/1 (429496729400%),失败2147483647部", line(2, 1, INT32_MAX, INT32_MAX));
    EXPECT_EQ("未知(7): 118部影片,失败2部", line(7, 120, 118, 2));
}
