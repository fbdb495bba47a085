#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <functional>
#include <optional>
#include <string>

namespace Tessel {

/// Removes one resource with DELETE (RFC 9110, 9.3.5), whatever its entity tag is now: a calendar
/// with all it holds, an event or a notification.
class MRVDeleteOperation final : public MRVOperation {
public:
    std::string url; ///< the resource's href: server-relative, or absolute
    /// Called once, without an error, when the server answers 204. Not called for every other
    /// answer, 200 and 404 included, nor after a transport error.
    std::function<void(std::optional<Error>)> completionHandler;

    void main() override;
};

} // namespace Tessel
