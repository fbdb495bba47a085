#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/XML/TagScan.h"

#include <libxml/parser.h>

#include <limits>
#include <string>

namespace Tessel {

namespace {

using ParserContext = std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)>;

constexpr auto options = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOCDATA | XML_PARSE_COMPACT
    | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

/// What libxml2 itself has no refusal for.
struct Refusal {
    const char* reason = nullptr;
    startElementNsSAX2Func startElement = nullptr;
};

void refuse(xmlParserCtxt& parser, const char* reason)
{
    static_cast<Refusal*>(parser._private)->reason = reason;
    parser.wellFormed = 0;
    xmlStopParser(&parser);
}

/// Entities are declared inside the DOCTYPE: stopping at its name keeps them from being defined.
void refuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*)
{
    refuse(*static_cast<xmlParserCtxt*>(context), "a document type declaration is not accepted");
}

void startElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
    int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
    const xmlChar** attributes)
{
    auto& parser = *static_cast<xmlParserCtxt*>(context);
    if (parser.nameNr > Limits::xmlDepth) return refuse(parser, "elements are nested too deep");
    if (parser.nsNr / 2 > Limits::xmlNamespaces) return refuse(parser, "too many namespaces");
    static_cast<Refusal*>(parser._private)
        ->startElement(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
            defaultedCount, attributes);
}

std::string reason(const xmlParserCtxt& parser)
{
    if (const auto refused = static_cast<const Refusal*>(parser._private)->reason) return refused;
    if (!parser.lastError.message) return "no document";
    std::string message = parser.lastError.message;
    while (message.ends_with('\n'))
        message.pop_back();
    return message + " (line " + std::to_string(parser.lastError.line) + ")";
}

} // namespace

std::shared_ptr<GDataXMLDocument> GDataXMLDocument::parse(std::string_view bytes, Error& error)
{
    const ParserContext parser(xmlNewParserCtxt(), xmlFreeParserCtxt);
    if (!parser) throw std::bad_alloc();
    Refusal refusal {.startElement = parser->sax->startElementNs};
    parser->_private = &refusal;
    parser->sax->internalSubset = refuseDoctype;
    parser->sax->externalSubset = refuseDoctype;
    parser->sax->startElementNs = startElement;

    xmlDoc* read = nullptr;
    if (hasTagWithMoreAttributes(bytes, Limits::xmlAttributes)) {
        refusal.reason = "a tag has too many attributes";
    } else if (bytes.size() <= std::size_t(std::numeric_limits<int>::max())) {
        read = xmlCtxtReadMemory(
            parser.get(), bytes.data(), int(bytes.size()), nullptr, "UTF-8", options);
    }
    const std::shared_ptr<xmlDoc> tree(read, xmlFreeDoc);
    xmlNode* const root = tree ? xmlDocGetRootElement(tree.get()) : nullptr;
    if (!root) {
        error = Error {"libxml2", parser->lastError.code, reason(*parser)};
        return nullptr;
    }
    return std::shared_ptr<GDataXMLDocument>(new GDataXMLDocument(GDataXMLElement(tree, root)));
}

} // namespace Tessel
