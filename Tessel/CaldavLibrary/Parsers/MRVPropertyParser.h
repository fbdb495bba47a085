#pragma once

#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace Tessel {

/// Reads the answer to a PROPPATCH (RFC 4918, 9.2.1).
class MRVPropertyParser final : public MRVParser {
public:
    using MRVParser::MRVParser;

    /// The HTTP status of each property by namespace and local name, 0 where the server wrote none.
    using Statuses = std::map<std::pair<std::string, std::string>, int>;
    /// None for a body that is no XML document.
    std::optional<Statuses> parseProperties() const;
};

} // namespace Tessel
