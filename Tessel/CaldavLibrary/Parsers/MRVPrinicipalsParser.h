#pragma once

#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

namespace Tessel {

/// For answers about principals; discovery reads all of its answers with `MRVAccountDetailsParser`.
class TESSEL_EXPORT MRVPrinicipalsParser final : public MRVParser {
public:
    using MRVParser::MRVParser;
};

} // namespace Tessel
