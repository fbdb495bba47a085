#include "Tessel/Platform/XML/DocumentReader.h"

#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/XML/LibXML.h"
#include "Tessel/Platform/XML/TagScan.h"

#include <new>
#include <string>
#include <utility>

namespace Tessel {

static constexpr auto options = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOCDATA
    | XML_PARSE_COMPACT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

/// libxml2 takes a byte order mark off only where it detects the encoding itself.
static std::string_view withoutByteOrderMark(std::string_view bytes)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return bytes.starts_with(mark) ? bytes.substr(mark.size()) : bytes;
}

static xmlParserCtxt* newParser()
{
    prepareLibXML();
    if (auto* const parser = xmlNewParserCtxt()) return parser;
    throw std::bad_alloc();
}

DocumentReader::DocumentReader(std::string_view bytes)
    : parser_(newParser(), xmlFreeParserCtxt)
    , treeBuilder_(*parser_->sax)
    , bytes_(withoutByteOrderMark(bytes))
{
    parser_->_private = this;
    auto& sax = *parser_->sax;
    sax.startElementNs = startElement;
    sax.characters = characters;
    sax.ignorableWhitespace = characters;
    sax.internalSubset = refuseDoctype;
    sax.externalSubset = refuseDoctype;
    sax.serror = takeFault;
    // Nobody asks for these, and each would cost a node.
    sax.comment = nullptr;
    sax.processingInstruction = nullptr;
}

std::shared_ptr<xmlDoc> DocumentReader::read()
{
    if (hasTagWithMoreAttributes(bytes_, Limits::xmlAttributes)) {
        error_.localizedDescription = "a tag has too many attributes";
        return nullptr;
    }
    std::shared_ptr<xmlDoc> tree(
        xmlCtxtReadIO(parser_.get(), nextBytes, nullptr, this, nullptr, "UTF-8", options),
        xmlFreeDoc);
    if (thrown_) std::rethrow_exception(thrown_);
    return tree && !failed_ && xmlDocGetRootElement(tree.get()) ? tree : nullptr;
}

std::shared_ptr<xmlDoc> DocumentReader::read(Visit visit)
{
    visit_ = std::move(visit);
    parser_->sax->endElementNs = endElement;
    return read();
}

DocumentReader& DocumentReader::of(void* context)
{
    return *static_cast<DocumentReader*>(static_cast<xmlParserCtxt*>(context)->_private);
}

int DocumentReader::nextBytes(void* reader, char* buffer, int size)
{
    auto& self = *static_cast<DocumentReader*>(reader);
    if (xmlDictSize(self.parser_->dict) > Limits::xmlNames) self.fail("too many different names");
    // The document ends at its first fault: libxml2 itself would read on, and stopping it from here
    // would free the buffer that it is filling.
    if (self.failed_) return 0;

    const auto count = self.bytes_.copy(buffer, std::size_t(size), self.position_);
    self.position_ += count;
    return int(count);
}

void DocumentReader::startElement(void* context, const xmlChar* name, const xmlChar* prefix,
    const xmlChar* uri, int namespaceCount, const xmlChar** namespaces, int attributeCount,
    int defaultedCount, const xmlChar** attributes)
{
    auto& self = of(context);
    // An attribute holds a text.
    const auto nodes = 1 + std::size_t(namespaceCount) + 2 * std::size_t(attributeCount);
    if (self.holdsMoreNodes(nodes)) return;
    if (self.parser_->nameNr >= Limits::xmlDepth)
        return self.refuse("elements are nested too deep");
    if (self.parser_->nsNr / 2 > Limits::xmlNamespaces) return self.refuse("too many namespaces");
    self.treeBuilder_.startElementNs(context, name, prefix, uri, namespaceCount, namespaces,
        attributeCount, defaultedCount, attributes);
}

void DocumentReader::endElement(
    void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri)
{
    auto& self = of(context);
    self.treeBuilder_.endElementNs(context, name, prefix, uri);
    auto* const parent = self.parser_->node;
    if (parent && parent == xmlDocGetRootElement(self.parser_->myDoc)) self.visitLast(parent);
}

void DocumentReader::visitLast(xmlNode* root)
{
    try {
        if (!failed_) visit_(parser_->myDoc, root->last);
    } catch (...) {
        thrown_ = std::current_exception();
        refuse("its content was not taken");
    }
    // All of them: libxml2 would go on writing into a text that has become the last one.
    xmlFreeNodeList(std::exchange(root->children, nullptr));
    root->last = nullptr;
}

void DocumentReader::characters(void* context, const xmlChar* text, int size)
{
    auto& self = of(context);
    const auto* const element = self.parser_->node;
    const auto* const last = element ? element->last : nullptr;
    const bool continues = last && last->type == XML_TEXT_NODE;
    if (!continues && self.holdsMoreNodes(1)) return;
    self.treeBuilder_.characters(context, text, size);
}

/// Entities are declared inside the DOCTYPE: stopping at its name keeps them from being defined.
void DocumentReader::refuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*)
{
    of(context).refuse("a document type declaration is not accepted");
}

void DocumentReader::takeFault(void* context, xmlError* fault) noexcept
{
    auto& self = of(context);
    if (fault->level != XML_ERR_FATAL || self.failed_) return;
    self.failed_ = true;
    std::string message = fault->message ? fault->message : "";
    while (message.ends_with('\n'))
        message.pop_back();
    self.error_.code = fault->code;
    self.error_.localizedDescription = message + " (line " + std::to_string(fault->line) + ")";
}

bool DocumentReader::holdsMoreNodes(std::size_t added)
{
    nodes_ += added;
    if (nodes_ <= Limits::xmlNodes) return false;
    refuse("too many elements, attributes and texts");
    return true;
}

void DocumentReader::fail(const char* reason)
{
    if (!failed_) error_.localizedDescription = reason;
    failed_ = true;
}

void DocumentReader::refuse(const char* reason)
{
    fail(reason);
    xmlStopParser(parser_.get());
}

} // namespace Tessel
