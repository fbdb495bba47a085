#include "apps/tessel/accounts/Stop.h"

#include <utility>

namespace Tessel::App {

namespace {

int statusOf(const Failure& failure)
{
    switch (failure.kind) {
    case FailureKind::unreachable:
    case FailureKind::timedOut:
        return noAnswer;
    case FailureKind::storage:
        return ExitStatus::storage;
    case FailureKind::malformed:
    case FailureKind::notSent:
        // Without a request it was what the user gave.
        return failure.method.empty() ? ExitStatus::usage : refused;
    default:
        return refused;
    }
}

} // namespace

Stop::Stop(Failure failure)
    : failure_(std::move(failure))
    , status_(statusOf(failure_))
{
}

Stop Stop::usage(std::string reason)
{
    return {{.kind = FailureKind::malformed, .reason = std::move(reason)}, ExitStatus::usage};
}

Stop Stop::missing(std::string reason)
{
    return {{.kind = FailureKind::missing, .reason = std::move(reason)}, refused};
}

Stop Stop::storage(std::string reason)
{
    return {{.kind = FailureKind::storage, .reason = std::move(reason)}, ExitStatus::storage};
}

} // namespace Tessel::App
