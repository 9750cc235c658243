// The client's layout: what a text takes on a terminal, and what of it never gets there.
#include <gtest/gtest.h>

#include "json.h"
#include "status.h"
#include "table.h"
#include "text.h"

using namespace client;

namespace {

struct WIDTH_CASE_T {
    const char *what;
    const char *text;
    int want;
};
constexpr WIDTH_CASE_T WIDTHS[] = {
    {"nothing", "", 0},
    {"ASCII", "Up", 2},
    {"Han", "霸王别姬", 8},
    {"fullwidth forms and punctuation", "ＡＢ,。", 7},
    {"halfwidth katakana", "ｶﾞ", 2},
    {"Hangul syllables", "기생충", 6},
    {"Hangul from single letters", "\u1100\u1161\u11A8", 2},
    {"a combining accent", "e\u0301", 1},
    {"a wide character with a combining sound mark", "か\u3099", 2},
    {"an emoji", "🎬", 2},
    {"a character behind the first plane", "𠮷", 2},
    {"a zero width space", "a\u200Bb", 2},
    {"Latin, Greek and Cyrillic letters", "éΩж", 3},
    {"the first and the last of a wide range", "\u1100\u115F", 4},
};

struct TEXT_CASE_T {
    const char *what;
    std::string text;
    std::string want;
};
const TEXT_CASE_T PRINTABLE[] = {
    {"what is printable stays", "Amélie 天使爱美丽 🎬", "Amélie 天使爱美丽 🎬"},
    {"line break and tab", "a\nb\tc", "a␊b␉c"},
    {"an escape sequence", "\033[31mred", "␛[31mred"},
    {"delete", "a\x7F", "a␡"},
    {"a control sequence in one character", "a\u009B2J", "a\uFFFD2J"},
    {"a change of the direction of writing", "a\u202Eb\u202C", "a\uFFFDb\uFFFD"},
    {"a byte that never occurs", "a\xFFz", "a\uFFFDz"},
    {"a character cut short at the end", "好\xE5\xA5", "好\uFFFD"},
    {"a character cut short by another", "\xF0\x9F\x8Ez", "\uFFFDz"},
    {"a follower alone", "\x80\x80", "\uFFFD\uFFFD"},
    {"an overlong slash", "\xC0\xAF", "\uFFFD\uFFFD"},
    {"an overlong form of three bytes", "\xE0\x80\x80", "\uFFFD\uFFFD\uFFFD"},
    {"a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
    {"behind the last code point", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"the last code point", "\U0010FFFD", "\U0010FFFD"},
};

struct LINES_CASE_T {
    const char *what;
    const char *text;
    int width;
    std::vector<std::string> want;
};
const LINES_CASE_T CUTS[] = {
    {"fits exactly", "霸王别姬", 8, {"霸王别姬"}},
    {"one column short", "霸王别姬", 7, {"霸王别…"}},
    {"half a character is none", "霸王别姬", 6, {"霸王…"}},
    {"ASCII", "Farewell", 5, {"Fare…"}},
    {"a combining mark stays with its letter", "e\u0301e\u0301e\u0301", 2, {"e\u0301…"}},
    {"no room at all", "霸王", 1, {"…"}},
};

const LINES_CASE_T WRAPS[] = {
    {"fits", "霸王别姬", 8, {"霸王别姬"}},
    {"between wide characters", "霸王别姬", 5, {"霸王", "别姬"}},
    {"at a blank, which goes", "one two three", 8, {"one two", "three"}},
    {"inside a word that is too long", "incomprehensible", 6, {"incomp", "rehens", "ible"}},
    {"a character a line at the least", "霸王", 1, {"霸", "王"}},
    {"nothing is one empty line", "", 5, {""}},
};

const TABLE_T MOVIES{{{"编号", ALIGN_T::RIGHT}, {"片名", ALIGN_T::LEFT, NARROWEST}, {"年代"}},
                     {{"7", "霸王别姬", "1993"}, {"12", "Up", ""}, {"345", "e\u0301\n", "2009"}}};

} // namespace

TEST(ClientText, WidthIsThatOfATerminal) {
    for (const WIDTH_CASE_T &c : WIDTHS)
        EXPECT_EQ(c.want, display_width(c.text)) << c.what;
}

TEST(ClientText, ControlCharactersAndInvalidBytesAreShownAsSigns) {
    for (const TEXT_CASE_T &c : PRINTABLE)
        EXPECT_EQ(c.want, printable(c.text)) << c.what;
    EXPECT_EQ("␀", printable(std::string(1, '\0')));
}

TEST(ClientText, EveryCodePointIsReadAsItIsWritten) {
    for (char32_t value = 0; value <= 0x10FFFF; value++) {
        if (value >= 0xD800 && value <= 0xDFFF)
            continue;
        std::string text;
        append_code_point(text, value);
        const CODE_POINT_T read = first_code_point(text);
        ASSERT_EQ(value, read.value);
        ASSERT_EQ(text.size(), read.size);
    }
}

TEST(ClientText, CuttingKeepsWholeCharactersWithinTheWidth) {
    for (const LINES_CASE_T &c : CUTS)
        EXPECT_EQ(c.want[0], cut_to_width(c.text, c.width)) << c.what;
}

TEST(ClientText, WrappingLosesNothingButBlanks) {
    for (const LINES_CASE_T &c : WRAPS)
        EXPECT_EQ(c.want, wrap_to_width(c.text, c.width)) << c.what;
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
    const std::string title(364, 'x');
    const TABLE_T table{
        {{"编号", ALIGN_T::RIGHT}, {"片名", ALIGN_T::LEFT, NARROWEST}, {"类型", ALIGN_T::LEFT, NARROWEST}},
        {{"1", title, "剧情"}}};
    const std::string cut = lay_out_table(table, 40);
    EXPECT_NE(std::string::npos, cut.find("x…  剧情\n")) << cut;
    EXPECT_EQ(40, display_width(cut.substr(cut.find('\n') + 1)) - 1) << cut;
    EXPECT_NE(std::string::npos, lay_out_table(table, UNLIMITED).find(title));
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
    EXPECT_EQ("片名  霸王别姬\n简介  两个从小一起学戏的京剧演员\n类    -\n",
              lay_out_fields(fields, UNLIMITED));
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
    EXPECT_EQ("正在查找影片: 已找到12部", line(1, 12, 0, 0));
    EXPECT_EQ("正在解析: 30/120 (25%),失败2部", line(2, 120, 28, 2));
    EXPECT_EQ("正在解析: 0/0 (0%),失败0部", line(2, 0, 0, 0));
    EXPECT_EQ("正在解析: 4294967294/1 (429496729400%),失败2147483647部", line(2, 1, INT32_MAX, INT32_MAX));
    EXPECT_EQ("解析完成: 118部影片,失败2部", line(3, 120, 118, 2));
    EXPECT_EQ("未知(7): 118部影片,失败2部", line(7, 120, 118, 2));
}
