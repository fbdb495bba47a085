#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"

#include <libxml/parser.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string_view>

namespace Tessel {

/// Reads one document into a tree. What libxml2 would read, but at more cost than the bytes are
/// worth, is refused at the limits of Limits.h; nothing is read past the first fault.
class DocumentReader {
public:
    explicit DocumentReader(std::string_view bytes);
    DocumentReader(const DocumentReader&) = delete;
    DocumentReader& operator=(const DocumentReader&) = delete;

    /// Null for anything that is not well-formed or passes a limit; then `error` says why. Called
    /// once.
    std::shared_ptr<xmlDoc> read();

    /// Takes a child element of the root that has been read whole.
    using Visit = std::function<void(xmlDoc*, xmlNode*)>;
    /// The same, with nothing in the root but its attributes: each child is gone when it has been
    /// visited.
    std::shared_ptr<xmlDoc> read(Visit visit);

    const Error& error() const { return error_; }

private:
    static DocumentReader& of(void* context);
    static int nextBytes(void* reader, char* buffer, int size);
    static void startElement(void* context, const xmlChar* name, const xmlChar* prefix,
        const xmlChar* uri, int namespaceCount, const xmlChar** namespaces, int attributeCount,
        int defaultedCount, const xmlChar** attributes);
    static void endElement(
        void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri);
    static void characters(void* context, const xmlChar* text, int size);
    static void refuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*);
    static void takeFault(void* context, xmlError* fault) noexcept;

    void visitLast(xmlNode* root);
    bool holdsMoreNodes(std::size_t added);
    void fail(const char* reason);
    void refuse(const char* reason); ///< from within the parser's handlers only

    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser_;
    const xmlSAXHandler treeBuilder_; ///< libxml2's own
    const std::string_view bytes_;
    Visit visit_;
    std::exception_ptr thrown_; ///< by `visit_`
    std::size_t position_ = 0;
    std::size_t nodes_ = 0;
    bool failed_ = false;
    Error error_ {"libxml2", 0, "no document"};
};

} // namespace Tessel
