#pragma once

#include "Tessel/CaldavLibrary/Parsers/MRVParser.h"

namespace Tessel {

/// For answers about the default scheduling calendar, which the library only logs.
class TESSEL_EXPORT MRVScheduleDefaultParser final : public MRVParser {
public:
    using MRVParser::MRVParser;
};

} // namespace Tessel
