#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Transport/MTask.h"

#include <memory>

namespace Tessel {

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

    /// Stops the task of this number, which `send` has given: nobody waits for its answer any more.
    /// Its completion handler gets an error, soon. A task that has ended is left alone. The server
    /// may carry out what has reached it. From any thread; a transport that does not override it
    /// lets its tasks run on.
    virtual void cancel(int number);
};

} // namespace Tessel
