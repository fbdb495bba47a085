#pragma once

#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"
#include "Tessel/Platform/Foundation/Web/URLResponse.h"
#include "Tessel/Platform/Transport/MTaskDelegate.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Tessel {

/// How urgent a task is among those waiting for a connection.
enum class MTaskPriority { low, normal, high };

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
    MTaskPriority priority = MTaskPriority::normal;
    std::weak_ptr<MTaskDelegate> delegate = {};
    std::map<std::string, std::string> metadata = {}; ///< for the host's own transport
    std::optional<std::string> identifier = {}; ///< handed to `delegate`
    std::function<void()> requestDidStartHandler = {}; ///< called when the task stops waiting
    /// Told of each redirect that the transport follows, before it does.
    std::function<void(const URLRequest&)> redirectionHandler = {};
    CompletionHandler completionHandler;
};

/// The transport: sends HTTP requests and calls back. A host may put its own in place (a desktop
/// toolkit's, one that records, one that replays) with `setSharedInstance`.
class TESSEL_EXPORT MNetworkManager {
public:
    virtual ~MNetworkManager();

    /// The transport of this process: the libcurl one until another has been set.
    static std::shared_ptr<MNetworkManager> sharedInstance();
    /// Replaces the transport for exchanges that start from now on; null brings the libcurl one
    /// back.
    static void setSharedInstance(std::shared_ptr<MNetworkManager> manager);

    /// Sends the task's request and returns a task number at once. The completion handler is called
    /// exactly once, on the transport's callback thread, or never when the task's delegate has
    /// taken a redirect over.
    virtual int send(MTask task) = 0;
};

} // namespace Tessel
