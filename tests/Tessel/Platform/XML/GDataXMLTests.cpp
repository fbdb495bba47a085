#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include <gtest/gtest.h>

#include <string>

using namespace Tessel;

namespace {

constexpr auto D = "DAV:";
constexpr auto C = "urn:ietf:params:xml:ns:caldav";

std::shared_ptr<GDataXMLDocument> parsed(std::string_view text)
{
    Error error;
    return GDataXMLDocument::parse(text, error);
}

std::string refusal(std::string_view text)
{
    Error error;
    return GDataXMLDocument::parse(text, error) ? "accepted" : error.localizedDescription;
}

} // namespace

TEST(GDataXML, FindsChildrenByNamespaceWhateverThePrefix)
{
    const auto document
        = parsed("<x:multistatus xmlns:x='DAV:'><response xmlns='DAV:' n='1'/><x:response n='2'/>"
                 "<response n='3'/><x:other><x:response n='4'/></x:other></x:multistatus>");
    ASSERT_TRUE(document);
    const auto& root = document->rootElement();
    EXPECT_EQ(root.name(), "multistatus");
    EXPECT_EQ(root.URI(), D);

    const auto responses = root.elementsForLocalName("response", D);
    ASSERT_EQ(responses.size(), 2u);
    EXPECT_EQ(responses[1].attribute("n"), "2");
    EXPECT_EQ(root.first("response", D)->attribute("n"), "1");
    EXPECT_EQ(root.first("response", "")->attribute("n"), "3");
    EXPECT_FALSE(root.first("response", C));
    EXPECT_FALSE(responses[0].attribute("missing"));
    EXPECT_TRUE(responses[0].children().empty());
}

TEST(GDataXML, TextIsAbsentEmptyOrEverythingWithin)
{
    const auto document = parsed(
        "<a><none/><deep>x<b>y<c>z</c></b>&amp;</deep><data><![CDATA[<&>]]> t&#13;\r\n</data></a>");
    ASSERT_TRUE(document);
    const auto& root = document->rootElement();
    EXPECT_EQ(root.first("none", "")->stringValue(), std::nullopt);
    EXPECT_EQ(root.first("deep", "")->stringValue(), "xyz&");
    EXPECT_EQ(root.first("data", "")->stringValue(), "<&> t\r\n");
}

TEST(GDataXML, RefusesWhatIsNotWellFormedOrDeclaresADocumentType)
{
    for (const auto text : {"", " ", "<a>", "<a></b>", "<a/><b/>", "text", "<a>&nbsp;</a>",
             "<x:a/><!--", "<a>\xff</a>", "<a>\x01</a>"}) {
        EXPECT_FALSE(parsed(text)) << text;
        EXPECT_NE(refusal(text), "") << text;
    }
    EXPECT_NE(refusal("<!DOCTYPE a><a/>").find("document type"), std::string::npos);
    EXPECT_FALSE(parsed("<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>"));
    EXPECT_FALSE(parsed("<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>"));
}

TEST(GDataXML, ReadsVeryLargeTextsAndElementsOutliveTheirDocument)
{
    const std::string big(50'000'000, 'x');
    const auto child = parsed("<a><b>" + big + "</b></a>")->rootElement().first("b", "");
    EXPECT_EQ(child->stringValue(), big);
}

TEST(GDataXML, RefusesShapesThatWouldTakeQuadraticTime)
{
    const auto tagWith = [](int attributes, const std::string& prefix) {
        std::string tag = "<a";
        for (int i = 0; i < attributes; ++i)
            tag += " " + prefix + std::to_string(i) + "='>'";
        return tag;
    };
    const auto nested = [](int depth) {
        std::string tags;
        for (int i = 0; i < 2 * depth; ++i)
            tags += i < depth ? "<a>" : "</a>";
        return tags;
    };
    EXPECT_TRUE(parsed(tagWith(256, "x") + "/>"));
    EXPECT_EQ(refusal(tagWith(257, "x") + "/>"), "a tag has too many attributes");
    EXPECT_EQ(
        refusal("<!-- ' --><?p \"?><a><![CDATA[<x ' ]]>" + tagWith(200'000, "xmlns:n") + "/></a>"),
        "a tag has too many attributes");
    EXPECT_TRUE(parsed(nested(250)));
    EXPECT_EQ(refusal(nested(100'000)), "elements are nested too deep");

    std::string declaring;
    for (int i = 0; i < 10; ++i)
        declaring += tagWith(200, "xmlns:n" + std::to_string(i) + "_") + ">";
    EXPECT_EQ(refusal(declaring), "too many namespaces");
}

TEST(GDataXML, WritesTreesWithTheDeclaredPrefixesOrOnesOfItsOwn)
{
    const auto propfind = [] {
        auto root = GDataXMLElement::elementWithName("propfind", D);
        root.addElement("prop", D).addElement("calendar-data", C);
        return root;
    };
    const auto undeclared = parsed(propfind().XMLString());
    ASSERT_TRUE(undeclared);
    EXPECT_EQ(undeclared->rootElement().URI(), D);
    EXPECT_TRUE(undeclared->rootElement().first("prop", D)->first("calendar-data", C));

    auto root = propfind();
    root.addNamespace("d", D);
    root.addNamespace("c", C);
    EXPECT_EQ(root.XMLString(),
        "<d:propfind xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\">"
        "<d:prop><c:calendar-data/></d:prop></d:propfind>");
}

TEST(GDataXML, WritesAnyTextAsWellFormedXML)
{
    const std::pair<std::string, std::string> cases[] = {
        {"<&>\"'", "<&>\"'"},
        {"gr\xC3\xBC\xC3\x9F \xF0\x9F\x93\x85", "gr\xC3\xBC\xC3\x9F \xF0\x9F\x93\x85"},
        {"a\r\nb\tc", "a\r\nb\tc"},
        {std::string("nul\0bell\a", 9), "nulbell"},
        {"cut\xC3", "cut"},
        {"\xED\xA0\x80surrogate\xEF\xBF\xBF", "surrogate"},
        {"]]>", "]]>"},
    };
    for (const auto& [text, expected] : cases) {
        auto root = GDataXMLElement::elementWithName("a", D);
        root.addElement("b", C, text);
        const auto document = parsed(root.XMLString());
        ASSERT_TRUE(document) << root.XMLString();
        EXPECT_EQ(document->rootElement().first("b", C)->stringValue(), expected);
    }
}
