#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include <gtest/gtest.h>

#include <stdexcept>
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

std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
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
    const auto document
        = parsed("\xEF\xBB\xBF<a><none/><deep>x<b>y<c><!-- "
                 "-->z</c></b>&amp;</deep><data><![CDATA[<&>]]> t&#13;\r\n</data></a>");
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

TEST(GDataXML, ShowsTheChildrenOfTheRootOneByOne)
{
    // Texts between the children, long ones last, are what a reader that drops nodes trips over.
    const auto text = "<r xmlns='DAV:' n='1'>a<b>1</b>" + std::string(5000, 'x') + "<c>2<d/>3</c>"
        + std::string(9000, 'y') + "<b xmlns='urn:x'>" + repeated("4&#13;\n", 2000) + "</b>z</r>";
    std::vector<std::string> shown;
    Error error;
    const auto show = [&](const GDataXMLElement& child) { shown.push_back(child.XMLString()); };
    const auto document = GDataXMLDocument::parse(text, error, show);
    ASSERT_TRUE(document) << error.localizedDescription;
    EXPECT_EQ(document->rootElement().attribute("n"), "1");
    EXPECT_TRUE(document->rootElement().children().empty());
    std::vector<std::string> expected;
    for (const auto& child : parsed(text)->rootElement().children())
        expected.push_back(child.XMLString());
    EXPECT_EQ(shown, expected);

    shown.clear();
    EXPECT_FALSE(GDataXMLDocument::parse("<r><a/><b><c/></b><d></r>", error, show));
    EXPECT_EQ(shown, (std::vector<std::string> {"<a/>", "<b><c/></b>"}));
    EXPECT_NE(error.localizedDescription, "");
    const auto refuse = [](const GDataXMLElement&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(GDataXMLDocument::parse("<r><a/><b/></r>", error, refuse), std::runtime_error);
}

TEST(GDataXML, RefusesShapesThatWouldTakeQuadraticTime)
{
    const auto tagWith = [](int attributes, const std::string& prefix) {
        std::string tag = "<a";
        for (int i = 0; i < attributes; ++i)
            tag += " " + prefix + std::to_string(i) + "='>'";
        return tag;
    };
    const auto nested = [](int depth) { return repeated("<a>", depth) + repeated("</a>", depth); };
    EXPECT_TRUE(parsed(tagWith(256, "x") + "/>"));
    EXPECT_EQ(refusal(tagWith(257, "x") + "/>"), "a tag has too many attributes");
    EXPECT_EQ(
        refusal("<!-- ' --><?p \"?><a><![CDATA[<x ' ]]>" + tagWith(200'000, "xmlns:n") + "/></a>"),
        "a tag has too many attributes");
    EXPECT_TRUE(parsed(nested(100)));
    EXPECT_EQ(refusal(nested(101)), "elements are nested too deep");
    EXPECT_EQ(refusal(nested(100'000)), "elements are nested too deep");
    EXPECT_TRUE(parsed(tagWith(128, "xmlns:n") + "/>"));
    EXPECT_EQ(refusal(tagWith(100, "xmlns:n") + ">" + tagWith(29, "xmlns:m") + "/></a>"),
        "too many namespaces");
}

/// Each of these is refused where the limit is passed, not after the rest was read.
TEST(GDataXML, RefusesManyDifferentNamesWhereverTheyStand)
{
    const auto numbered = [](const std::string& before, const std::string& after, int count) {
        std::string text = "<a>";
        for (int i = 0; i < count; ++i)
            text += before + std::to_string(i) + after;
        return text + "</a>";
    };
    const std::pair<const char*, const char*> names[] = {{"<n", "/>"}, {"<a n", "=''/>"},
        {"<a xmlns='", "'/>"}, {"<p:a xmlns:p='u", "'/>"}, {"<?n", "?>"}};
    for (const auto& [before, after] : names) {
        EXPECT_TRUE(parsed(numbered(before, after, 4'000))) << before;
        EXPECT_EQ(refusal(numbered(before, after, 100'000)), "too many different names") << before;
    }
    EXPECT_EQ(refusal(numbered("&n", ";", 100'000)), "Entity 'n0' not defined (line 1)");
}

TEST(GDataXML, BoundsTheNodesOfADocumentButNotTheResponsesOfAServer)
{
    const auto holding = [](const std::string& content, std::size_t count) {
        return "<a>" + repeated(content, count) + "</a>";
    };
    constexpr auto tooMany = "too many elements, attributes and texts";
    EXPECT_EQ(refusal(holding("<a/>x", 2'000'000)), tooMany);
    EXPECT_EQ(refusal(holding("<a b='' c='' d='' e=''/>", 450'000)), tooMany);
    // One text in all.
    EXPECT_TRUE(parsed(holding("x<!----><?a?>&#65;<![CDATA[x]]>", 1'000'000)));

    const std::string response
        = "<response><href>/c/1.ics</href><propstat><prop><getetag>1</getetag><resourcetype/>"
          "<c:calendar-data>x</c:calendar-data></prop><status>HTTP/1.1 200 OK</status></propstat>"
          "<propstat><prop><displayname/></prop><status>HTTP/1.1 404 Not Found</status></propstat>"
          "</response>\n";
    const auto listing = parsed("<multistatus xmlns='DAV:' xmlns:c='urn:ietf:params:xml:ns:caldav'>"
        + repeated(response, 100'000) + "</multistatus>");
    ASSERT_TRUE(listing);
    EXPECT_EQ(listing->rootElement().elementsForLocalName("response", D).size(), 100'000u);
}

TEST(GDataXML, WritesWhatWasReadHoweverManyDeclarationsItHolds)
{
    const auto text = "<a>" + repeated("<b xmlns=\"u\"/>", 100'000) + "</a>";
    EXPECT_EQ(parsed(text)->rootElement().XMLString(), text);
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
