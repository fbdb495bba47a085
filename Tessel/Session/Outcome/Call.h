#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Session/Outcome/Continuation.h"

#include <memory>
#include <optional>
#include <utility>

namespace Tessel {

class CallState;

/// One call on its way. It goes on whether or not this handle is kept.
class TESSEL_EXPORT CallHandle {
public:
    /// Ends the call with `cancelled`, unless it has ended. What was sent may still be carried out
    /// by the server.
    void cancel() const;
    bool isDone() const; ///< whether it has ended; its continuation may still be on its way

protected:
    explicit CallHandle(std::shared_ptr<CallState> state); ///< made by a session

    /// Blocks until the call has ended; false on a thread on which it could never end.
    bool waitUntilDone() const;

    std::shared_ptr<CallState> state_; ///< shared with the call
};

/// A call on its way, whose result can be waited for.
template <class T> class Call final : public CallHandle {
public:
    /// Made by a session. `result` is set by the time the call has ended.
    Call(std::shared_ptr<CallState> state, std::shared_ptr<const std::optional<Result<T>>> result)
        : CallHandle(std::move(state))
        , result_(std::move(result))
    {
    }

    /// Blocks until the call has ended and gives its result: for tools and tests. On a thread of
    /// the library, where that would wait for itself, it gives `notSent` at once and the call goes
    /// on.
    friend Result<T> wait(const Call& call)
    {
        if (call.waitUntilDone()) return **call.result_;
        return Failure {.kind = FailureKind::notSent,
            .reason = "A call cannot be waited for on a thread of the library, which would be "
                      "waiting for itself. Give the call a continuation."};
    }

private:
    std::shared_ptr<const std::optional<Result<T>>> result_;
};

} // namespace Tessel
