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

// The text of the index-th <v> of the root, read into a block of exactly that size.
std::string value_in(const std::string &text, INT32_T index, INT32_T size) {
    const DOC_T doc = parse(text);
    const std::unique_ptr<INT8_T[]> buffer(new INT8_T[static_cast<size_t>(size)]);
    const RTSTATUS result = get_value_from_next_layer_object_by_tagname_and_index(
        get_root_object_from_doc_object(doc.get()), "v", index, buffer.get(), size);
    return result == 0 ? buffer.get() : "(none)";
}

} // namespace

TEST(SupportXml, RefusesWhatIsNoDocumentOrDeclaresAnEntityWithoutAWord) {
    const std::string accepted[] = {
        "<r/>",
        "\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- c --><r/>",
        "<!DOCTYPE r><r/>",
        "<!DOCTYPE r [<!ELEMENT r ANY>]><r/>",
        "<!DOCTYPE r SYSTEM \"/nowhere.dtd\"><r/>",
    };
    std::string deep; // well-formed, but nested deeper than anybody needs
    for (int i = 0; i < 1000; i++) {
        deep.insert(deep.size() / 7 * 3, "<r></r>");
    }
    const std::string refused[] = {
        "",
        "hello",
        "<r><v>1</v>",
        "<r><v>\xE7\x94</v></r>",
        "<r>&unknown;</r>",
        "<?xml version=\"1.0\" encoding=\"GB18030\"?><r>\xFF\xFF</r>",
        "<!DOCTYPE r [<!ENTITY e 'x'>]><r/>",
        "<!DOCTYPE r [<!ENTITY e 'x'>]><r>&e;</r>",
        "<!DOCTYPE r [<!ENTITY % p 'x'>]><r/>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM '/etc/hostname'>]><r>&e;</r>",
        "<!DOCTYPE r [<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'u' NDATA n>]><r/>",
        deep,
    };
    testing::internal::CaptureStderr();
    for (const std::string &text : accepted) {
        EXPECT_NE(nullptr, parse(text)) << text;
    }
    for (const std::string &text : refused) {
        EXPECT_EQ(nullptr, parse(text)) << text;
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(SupportXml, TheLengthDecidesWhereADocumentEnds) {
    const std::string utf16 = {'\xFF', '\xFE', '<', 0, 'r', 0, '/', 0, '>', 0};
    const auto parsed = [](const std::string &bytes, INT32_T length) {
        return DOC_T(get_doc_object_from_memory(bytes.data(), length)) != nullptr;
    };
    EXPECT_TRUE(parsed("<r/>junk", 4));
    EXPECT_TRUE(parsed(utf16, 10));
    for (const INT32_T length : {3, 0, -1}) {
        EXPECT_FALSE(parsed("<r/>", length));
    }
}

TEST(SupportXml, FindsDirectChildrenByNameAndIndex) {
    const DOC_T doc = parse("<r> <v>0</v><w/><v>1</v>t<!-- v --><in><v>deep</v></in><v>2</v></r>");
    _xmlNode *root = get_root_object_from_doc_object(doc.get());
    EXPECT_EQ(3, get_objects_number_from_next_layer_xml_object_by_tagname(root, "v"));
    EXPECT_EQ(0, get_objects_number_from_next_layer_xml_object_by_tagname(root, "V"));
    EXPECT_EQ(0, get_objects_number_from_next_layer_xml_object_by_tagname(nullptr, "v"));
    _xmlNode *walked = get_object_from_next_layer_xml_object_by_tagname(root, "v", 0);
    for (INT32_T i = 0; i < 3; i++, walked = get_next_object_of_same_tagname(walked)) {
        EXPECT_NE(nullptr, walked);
        EXPECT_EQ(walked, get_object_from_next_layer_xml_object_by_tagname(root, "v", i));
    }
    EXPECT_EQ(nullptr, walked);
    EXPECT_EQ(nullptr, get_next_object_of_same_tagname(nullptr));
    EXPECT_EQ(nullptr, get_object_from_next_layer_xml_object_by_tagname(root, "v", 3));
    EXPECT_EQ(nullptr, get_object_from_next_layer_xml_object_by_tagname(root, "v", -1));
    EXPECT_EQ(nullptr, get_object_from_next_layer_xml_object_by_tagname(root, nullptr, 0));
    INT8_T buffer[] = "before";
    EXPECT_EQ(-1, get_value_from_next_layer_object_by_tagname_and_index(nullptr, "v", 0, buffer, 7));
    EXPECT_EQ(-1, get_value_from_next_layer_object_by_tagname_and_index(root, "x", 0, buffer, 7));
    EXPECT_EQ(-1, get_value_from_next_layer_object_by_tagname_and_index(root, "v", 0, nullptr, 7));
    EXPECT_EQ(-1, get_value_from_next_layer_object_by_tagname_and_index(root, "v", 0, buffer, 0));
    EXPECT_STREQ("before", buffer);
}

TEST(SupportXml, CopiesTheElementsOwnTextCutAtAWholeCharacter) {
    struct {
        const char *what, *text;
        INT32_T index, size;
        const char *want;
    } const CASES[] = {
        {"text", "<r><v> a </v></r>", 0, 16, " a "},
        {"second of the name", "<r><v>a</v><v>b</v></r>", 1, 16, "b"},
        {"no third", "<r><v>a</v><v>b</v></r>", 2, 16, "(none)"},
        {"empty element", "<r><v/></r>", 0, 16, ""},
        {"references and CDATA", "<r><v>a&lt;&#x7535;<![CDATA[<&]]>b</v></r>", 0, 16, "a<电<&b"},
        {"children and comments left out", "<r><v>a<w>x</w><!-- y -->b</v></r>", 0, 16, "ab"},
        {"fits exactly", "<r><v>电影</v></r>", 0, 7, "电影"},
        {"a byte too small", "<r><v>电影</v></r>", 0, 6, "电"},
        {"no room for a character", "<r><v>电影</v></r>", 0, 3, ""},
        {"room for the end alone", "<r><v>a</v></r>", 0, 1, ""},
        {"a later part does not fill the gap", "<r><v>a电<w/>b</v></r>", 0, 4, "a"},
    };
    for (const auto &c : CASES) {
        EXPECT_EQ(c.want, value_in(c.text, c.index, c.size)) << c.what;
    }
}

TEST(SupportXml, DocumentsOutliveTheirThreadAndAreFreedByAnother) {
    std::vector<std::future<DOC_T>> docs(40);
    for (size_t i = 0; i < docs.size(); i++) {
        docs[i] =
            std::async(std::launch::async, [i] { return parse("<r><n" + std::to_string(i) + "/></r>"); });
    }
    for (size_t i = 0; i < docs.size(); i++) {
        const DOC_T doc = docs[i].get();
        const std::string name = "n" + std::to_string(i);
        EXPECT_EQ(1, get_objects_number_from_next_layer_xml_object_by_tagname(
                         get_root_object_from_doc_object(doc.get()), name.c_str()));
    }
}
