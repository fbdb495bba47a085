#include "Tessel/Session/Outcome/Call.h"

#include "Tessel/Session/Outcome/CallState.h"

namespace Tessel {

CallHandle::CallHandle(std::shared_ptr<CallState> state)
    : state_(std::move(state))
{
}

void CallHandle::cancel() const
{
    state_->cancel();
}

bool CallHandle::isDone() const
{
    return state_->isDone();
}

bool CallHandle::waitUntilDone() const
{
    return state_->waitUntilDone();
}

} // namespace Tessel
