#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Export.h"

#include <optional>
#include <string>

namespace Tessel {

/// Told by the transport how the exchange it was given for ended, in addition to the completion
/// handler. Calls arrive on the transport's callback thread.
class TESSEL_EXPORT MTaskDelegate {
public:
    virtual ~MTaskDelegate();

    /// The whole body of an answer, whatever its status.
    virtual void downloadCompleted(const std::optional<std::string>& identifier, const Data& data)
        = 0;
    /// Why there is no answer; `errorCode` as in `MNetworkError`.
    virtual void taskDidReceiveError(
        const std::optional<std::string>& identifier, int errorCode, const std::string& message)
        = 0;
};

} // namespace Tessel
