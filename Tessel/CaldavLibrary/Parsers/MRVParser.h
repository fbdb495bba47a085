#pragma once

#include "Tessel/CaldavLibrary/Models/MRVAccount.h"
#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/XML/GDataXMLDocument.h"

#include <memory>
#include <optional>

namespace Tessel {

/// Base of the parsers of XML answers: makes the document once and keeps the account for parsers
/// that need it. A body that is not well-formed gives one log line and no document; every parse
/// function then has an empty result.
class TESSEL_EXPORT MRVParser {
public:
    /// Reads the document at once; `account` may be null where the parser needs none.
    MRVParser(const Data& data, std::shared_ptr<MRVAccount> account);

    const std::shared_ptr<MRVAccount>& account() const { return account_; } ///< as given
    /// Null when the body is not well-formed.
    const std::shared_ptr<GDataXMLDocument>& document() const { return document_; }
    std::optional<GDataXMLElement> rootElement() const; ///< none without a document

protected:
    ~MRVParser() = default;

private:
    std::shared_ptr<MRVAccount> account_;
    std::shared_ptr<GDataXMLDocument> document_;
};

} // namespace Tessel
