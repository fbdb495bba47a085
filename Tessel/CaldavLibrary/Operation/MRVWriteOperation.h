#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <optional>

namespace Tessel {

/// Base of the operations that create, update or move an event, share a calendar or answer an
/// invitation: one exchange on behalf of the client that goes past `process`, so that it has no
/// `User-Agent` and its answer is read by its bare HTTP status. The operation finishes after the
/// answer; it stays when the auth delegate never answers.
class MRVWriteOperation : public MRVOperation {
protected:
    /// Has the client's auth delegate authorise the request and sends it as it then is. Without a
    /// client or its auth delegate nothing is sent and the operation finishes.
    void send(const URLRequest& request);

    /// Called once for a request that was sent, on the transport's callback thread. An error is the
    /// transport's and has been logged; the status is absent with an error and for an answer that
    /// is not HTTP.
    virtual void read(
        const Data& data, const std::optional<Error>& error, std::optional<int> statusCode)
        = 0;
    /// Called instead, on the thread of `send`, when nothing is sent.
    virtual void notSent() { }

    /// The case of an HTTP status; one without a case STOPS THE PROCESS.
    static MRVStatusCode forcedStatus(int statusCode);
};

} // namespace Tessel
