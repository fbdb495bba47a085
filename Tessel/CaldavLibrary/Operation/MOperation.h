#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Operations/Operation.h"

#include <any>
#include <atomic>

namespace Tessel {

/// An operation that has finished when its work says so, not when `main()` returns. It is new,
/// then executing, then finished, or new and then finished when it was cancelled before its start.
/// A subclass supplies `main()` and ends with `setDone(true)`, on any thread; one that never does
/// stays in its queue for ever. Cancelling it after its start changes nothing.
class TESSEL_EXPORT MOperation : public Operation {
public:
    std::any identifier; ///< a free tag for the owner; the library never reads it
    std::atomic<bool> is_Finished {false}; ///< what `isFinished()` reports
    std::atomic<bool> is_Executing {false}; ///< what `isExecuting()` reports

    bool done() const { return done_; } ///< the value last given to `setDone`

    /// Sets `is_Finished` to `done` and `is_Executing` to its opposite, at every call, and
    /// announces it: will change "isFinished", will change "isExecuting", then, with both set, did
    /// change "isExecuting", did change "isFinished". With true, the operation leaves its queue
    /// during the last announcement: hold it strongly when you use it after this call.
    void setDone(bool done);

    void start() override; ///< executes `main()`, or finishes at once when it was cancelled
    bool isConcurrent() const override { return true; } ///< always: `setDone` ends it
    bool isExecuting() const override { return is_Executing; } ///< `is_Executing`
    bool isFinished() const override { return is_Finished; } ///< `is_Finished`

private:
    std::atomic<bool> done_ {false};
};

} // namespace Tessel
