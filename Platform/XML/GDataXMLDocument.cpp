#include "Platform/XML/GDataXMLDocument.h"

#include <libxml/parser.h>

#include <limits>
#include <string>

namespace Tessel {

namespace {

using ParserContext = std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)>;

constexpr auto options = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOCDATA | XML_PARSE_COMPACT
    | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

/// Entities are declared inside the DOCTYPE: stopping at its name keeps them from being defined.
void refuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*)
{
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    parser->wellFormed = 0;
    parser->hasExternalSubset = 1;
    xmlStopParser(parser);
}

std::string reason(const xmlParserCtxt& parser)
{
    if (parser.hasExternalSubset) return "a document type declaration is not accepted";
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
    parser->sax->internalSubset = refuseDoctype;
    parser->sax->externalSubset = refuseDoctype;

    xmlDoc* read = nullptr;
    if (bytes.size() <= std::size_t(std::numeric_limits<int>::max())) {
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
