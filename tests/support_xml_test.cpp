#include "support_xml.h"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

struct FREE_DOC_T {
    void operator()(_xmlDoc *doc) const { free_doc_object(doc); }
};
using DOC_T = std::unique_ptr<_xmlDoc, FREE_DOC_T>;

DOC_T parse(const std::string &text) {
    return DOC_T(get_doc_object_from_string(text.c_str()));
}

constexpr auto child = get_object_from_next_layer_xml_object_by_tagname;
constexpr auto number_of = get_objects_number_from_next_layer_xml_object_by_tagname;
constexpr auto read_value = get_value_from_next_layer_object_by_tagname_and_index;

} // namespace

TEST(SupportXml, RefusesWhatIsNoDocumentOrDeclaresAnEntityWithoutAWord) {
    const std::string accepted[] = {"\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- c --><r/>",
                                    "<!DOCTYPE r [<!ELEMENT r ANY>]><r/>",
                                    "<!DOCTYPE r SYSTEM \"/nowhere.dtd\"><r/>"};
    std::string deep; // well-formed, but nested deeper than anybody needs
    for (int i = 0; i < 1000; i++)
        deep.insert(deep.size() / 7 * 3, "<r></r>");
    const std::string refused[] = {
        "",
        "hello",
        "<r><v>1</v>",
        "<r><v>\xE7\x94</v></r>",
        "<r>&unknown;</r>",
        "<?xml version=\"1.0\" encoding=\"GB18030\"?><r>\xFF\xFF</r>",
        "<!DOCTYPE r [<!ENTITY % p 'x'>]><r/>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM '/etc/hostname'>]><r>&e;</r>",
        "<!DOCTYPE r [<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'u' NDATA n>]><r/>",
        deep};
    testing::internal::CaptureStderr();
    for (const std::string &text : accepted)
        EXPECT_NE(nullptr, parse(text)) << text;
    for (const std::string &text : refused)
        EXPECT_EQ(nullptr, parse(text)) << text;
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(SupportXml, TheLengthDecidesWhereADocumentEnds) {
    const auto parsed = [](const std::string &bytes, INT32_T length) {
        return DOC_T(get_doc_object_from_memory(bytes.data(), length)) != nullptr;
    };
    EXPECT_TRUE(parsed("<r/>junk", 4));
    EXPECT_TRUE(parsed({'\xFF', '\xFE', '<', 0, 'r', 0, '/', 0, '>', 0}, 10)); // UTF-16
    for (const INT32_T length : {3, 0, -1})
        EXPECT_FALSE(parsed("<r/>", length));
}

TEST(SupportXml, FindsDirectChildrenByNameAndIndex) {
    const DOC_T doc = parse("<r> <v>0</v><w/><v>1</v>t<!-- v --><in><v>deep</v></in><v>2</v></r>");
    _xmlNode *root = get_root_object_from_doc_object(doc.get());
    EXPECT_EQ(3, number_of(root, "v"));
    EXPECT_EQ(0, number_of(root, "V"));
    _xmlNode *walked = child(root, "v", 0);
    for (INT32_T i = 0; i < 3; i++, walked = get_next_object_of_same_tagname(walked)) {
        EXPECT_NE(nullptr, walked);
        EXPECT_EQ(walked, child(root, "v", i));
    }
    EXPECT_EQ(nullptr, walked);
    EXPECT_EQ(nullptr, get_next_object_of_same_tagname(nullptr));
    for (const INT32_T index : {-1, 3})
        EXPECT_EQ(nullptr, child(root, "v", index));
    EXPECT_EQ(nullptr, child(root, nullptr, 0));
    INT8_T buffer[] = "before";
    EXPECT_EQ(-1, read_value(root, "x", 0, buffer, 7));
    EXPECT_EQ(-1, read_value(root, "v", 0, nullptr, 7));
    EXPECT_EQ(-1, read_value(root, "v", 0, buffer, 0));
    EXPECT_STREQ("before", buffer);
    EXPECT_EQ(0, read_value(root, "v", 2, buffer, 7));
    EXPECT_STREQ("2", buffer);
}

TEST(SupportXml, CopiesTheElementsOwnTextCutAtAWholeCharacter) {
    const struct {
        const char *what, *text;
        size_t size;
        const char *want;
    } CASES[] = {{"blanks", "<r><v> b </v></r>", 16, " b "},
                 {"empty element", "<r><v/></r>", 16, ""},
                 {"references and CDATA", "<r><v>a&lt;&#x7535;<![CDATA[<&]]>b</v></r>", 16, "a<电<&b"},
                 {"children and comments left out", "<r><v>a<w>x</w><!-- y -->b</v></r>", 16, "ab"},
                 {"fits exactly", "<r><v>电影</v></r>", 7, "电影"},
                 {"a byte too small", "<r><v>电影</v></r>", 6, "电"},
                 {"no room for a character", "<r><v>电影</v></r>", 3, ""},
                 {"room for the end alone", "<r><v>a</v></r>", 1, ""},
                 {"a later part does not fill the gap", "<r><v>a电<w/>b</v></r>", 4, "a"}};
    for (const auto &c : CASES) {
        const DOC_T doc = parse(c.text);
        std::vector<INT8_T> block(c.size, 'x'); // of exactly that size
        read_value(get_root_object_from_doc_object(doc.get()), "v", 0, block.data(),
                   static_cast<INT32_T>(c.size));
        EXPECT_STREQ(c.want, block.data()) << c.what;
    }
}

TEST(SupportXml, DocumentsOutliveTheirThreadAndAreFreedByAnother) {
    std::vector<std::future<DOC_T>> docs(40);
    const auto name = [](size_t number) { return std::to_string(number).insert(0, 1, 'n'); };
    for (size_t i = 0; i < docs.size(); i++)
        docs[i] = std::async(std::launch::async, [name, i] {
            return parse(std::string("<r><").append(name(i)).append("/></r>"));
        });
    for (size_t i = 0; i < docs.size(); i++) {
        const DOC_T doc = docs[i].get();
        EXPECT_EQ(1, number_of(get_root_object_from_doc_object(doc.get()), name(i).c_str()));
    }
}
