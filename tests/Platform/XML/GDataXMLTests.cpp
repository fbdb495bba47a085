#include "Platform/XML/GDataXMLDocument.h"

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

TEST(GDataXML, ReadsVeryLargeTexts)
{
    const std::string big(50'000'000, 'x');
    const auto document = parsed("<a><b>" + big + "</b></a>");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->rootElement().first("b", "")->stringValue(), big);
}

TEST(GDataXML, RefusesShapesThatWouldTakeQuadraticTime)
{
    const auto repeated = [](int count, const std::string& text) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    };
    const auto attributes = [](int count, const std::string& prefix) {
        std::string tag = "<a";
        for (int i = 0; i < count; ++i)
            tag += " " + prefix + std::to_string(i) + "='>'";
        return tag + "/>";
    };
    EXPECT_TRUE(parsed(attributes(256, "x")));
    EXPECT_EQ(refusal(attributes(257, "x")), "a tag has too many attributes");
    EXPECT_EQ(
        refusal("<!-- ' --><?p \"?><a><![CDATA[<x ' ]]>" + attributes(200'000, "xmlns:n") + "</a>"),
        "a tag has too many attributes");
    EXPECT_EQ(refusal(repeated(100'000, "<a>") + repeated(100'000, "</a>")),
        "elements are nested too deep");
    EXPECT_TRUE(parsed(repeated(250, "<a>") + repeated(250, "</a>")));

    std::string declaring;
    for (int i = 0; i < 2000; ++i) {
        if (i % 200 == 0) declaring += (i ? "><a" : "<a");
        declaring += " xmlns:n" + std::to_string(i) + "='u'";
    }
    EXPECT_EQ(refusal(declaring + ">" + repeated(10, "</a>")), "too many namespaces");
}

TEST(GDataXML, ElementsOutliveTheirDocument)
{
    const auto child = parsed("<a><b>t</b></a>")->rootElement().first("b", "");
    EXPECT_EQ(child->stringValue(), "t");
}

TEST(GDataXML, WritesTreesWithTheDeclaredPrefixes)
{
    auto root = GDataXMLElement::elementWithName("propfind", D);
    auto prop = root.addElement("prop", D);
    prop.addElement("calendar-data", C);
    root.addNamespace("d", D);
    root.addNamespace("c", C);
    EXPECT_EQ(root.XMLString(),
        "<d:propfind xmlns:d=\"DAV:\" xmlns:c=\"urn:ietf:params:xml:ns:caldav\">"
        "<d:prop><c:calendar-data/></d:prop></d:propfind>");
}

TEST(GDataXML, WritesUndeclaredNamespacesSoThatTheyAreReadBack)
{
    auto root = GDataXMLElement::elementWithName("a", D);
    root.addElement("b", C, "t");
    const auto document = parsed(root.XMLString());
    ASSERT_TRUE(document);
    EXPECT_EQ(document->rootElement().URI(), D);
    EXPECT_EQ(document->rootElement().first("b", C)->stringValue(), "t");
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
        root.setStringValue(text);
        const auto document = parsed(root.XMLString());
        ASSERT_TRUE(document) << root.XMLString();
        EXPECT_EQ(document->rootElement().stringValue(), expected);
    }
}
