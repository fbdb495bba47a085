#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"
#include "Tessel/CaldavLibrary/Parsers/MRVPropertyParser.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace Tessel {

/// Changes properties of a collection with PROPPATCH (RFC 4918, 9.2). Servers change all of the
/// properties or none.
class MRVUpdatePropertyOperation final : public MRVOperation {
public:
    using Results = std::map<std::string, MRVStatusCode>;

    std::string url; ///< the collection's href
    /// New values by the keys `MRVCalendar::propertyColor` and `propertyOrder`.
    std::map<std::string, std::string> properties;
    /// Always called once, on the transport's callback thread, or on a worker thread when no key is
    /// known and nothing is sent. The status of each property by its key, `other` for an unknown
    /// key and for one that the answer does not mention; absent when the exchange fails or the
    /// answer is no multistatus.
    std::function<void(std::optional<Results>)> completionHandler;

    void main() override;

private:
    Results results(const MRVPropertyParser::Statuses& statuses) const;
};

} // namespace Tessel
