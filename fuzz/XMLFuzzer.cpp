#include "Tessel/Platform/XML/GDataXMLDocument.h"
#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace Tessel::Fuzz {

namespace {

void requireSameTree(const GDataXMLElement& written, const GDataXMLElement& read)
{
    require(written.name() == read.name() && written.URI() == read.URI(), "a name changes");
    require(written.attribute("name") == read.attribute("name"), "an attribute changes");
    const auto children = written.children(), again = read.children();
    require(children.size() == again.size(), "a child is lost or found");
    if (children.empty()) require(written.stringValue() == read.stringValue(), "a text changes");
    for (std::size_t i = 0; i < children.size(); ++i)
        requireSameTree(children[i], again[i]);
}

/// Whether an element has a prefix that nothing declares: declarations that are added for others
/// may declare it.
bool hasUndeclaredPrefix(const GDataXMLElement& element)
{
    if (element.name().find(':') != std::string_view::npos) return true;
    const auto children = element.children();
    return std::any_of(children.begin(), children.end(), hasUndeclaredPrefix);
}

/// Whether a namespace is declared with an escaped character, which libxml2 writes without its
/// escape.
bool hasEscapeInNamespace(std::string_view text)
{
    for (auto at = text.find("xmlns"); at != text.npos; at = text.find("xmlns", at + 1)) {
        const auto quote = text.find_first_of("\"'", at);
        if (quote == text.npos) return false;
        const auto value = text.substr(quote + 1, text.find(text[quote], quote + 1) - quote - 1);
        if (value.find('&') != value.npos) return true;
    }
    return false;
}

/// A document is refused with a reason, or is written as text that is read as the same tree.
const Target xml("xml", [](std::string_view input) {
    Error error;
    const auto document = GDataXMLDocument::parse(input, error);
    require(!document == !error.localizedDescription.empty(), "refused without a reason");
    if (!document || hasEscapeInNamespace(input)) return;

    std::size_t shown = 0;
    const auto whole = document->rootElement().children();
    GDataXMLDocument::parse(input, error, [&](const GDataXMLElement& child) {
        require(shown < whole.size(), "a child is shown that the whole does not have");
        requireSameTree(whole[shown++], child);
    });
    require(shown == whole.size(), "a child is not shown");

    const auto text = document->rootElement().XMLString();
    const auto again = GDataXMLDocument::parse(text, error);
    require(again != nullptr, "what was written is refused: " + error.localizedDescription);
    if (hasUndeclaredPrefix(document->rootElement())) return;
    requireSameTree(document->rootElement(), again->rootElement());
    require(document->rootElement().stringValue() == again->rootElement().stringValue(),
        "the text of the whole changes");
});

} // namespace

} // namespace Tessel::Fuzz
