#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "Tessel/Platform/Foundation/Web/URLResponse.h"
#include "Tessel/Platform/Transport/MTaskDelegate.h"
#include "Tessel/Platform/Transport/MTaskPriority.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// What is handed to the transport for one exchange.
struct MTask {
    /// Body (possibly empty), response (null without one), a text, an error and a number; the
    /// library reads body, response and error.
    using CompletionHandler
        = std::function<void(Data data, std::shared_ptr<const URLResponse> response,
            std::optional<std::string> text, std::optional<Error> error, int number)>;

    URLRequest request; ///< sent as given: method, header fields and body
    std::optional<std::string> authorization = {}; ///< value of the Authorization field, if any
    std::map<std::string, std::string> headerParams = {}; ///< further header fields
    std::map<std::string, std::string> params = {}; ///< query items appended to the URL
    bool isMultipartData = false; ///< for the host's own transport, whose body may be a form
    MTaskPriority priority = MTaskPriority::normal; ///< the order among tasks that wait
    std::weak_ptr<MTaskDelegate> delegate = {}; ///< told of the end as well
    std::map<std::string, std::string> metadata = {}; ///< for the host's own transport
    std::optional<std::string> identifier = {}; ///< handed to `delegate`
    std::function<void()> requestDidStartHandler = {}; ///< called when the task stops waiting
    /// Told of each redirect that the transport follows, before it does.
    std::function<void(const URLRequest&)> redirectionHandler = {};
    /// Asked before a redirect is followed; when it says no, the redirect is the answer.
    std::function<bool(const URLRequest&)> mayFollow = {};
    CompletionHandler completionHandler; ///< called once, on the transport's thread
};

} // namespace Tessel
