#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

MRVParser::MRVParser(const Data& data, std::shared_ptr<MRVAccount> account)
    : account_(std::move(account))
{
    Error error;
    document_ = GDataXMLDocument::parse(data.view(), error);
    if (!document_) {
        Plinth::logger()->log(
            Plinth::Level::error, "Error in XML Doc creation: ", error.localizedDescription);
    }
}

std::optional<GDataXMLElement> MRVParser::rootElement() const
{
    if (!document_) return std::nullopt;
    return document_->rootElement();
}

} // namespace Tessel
