#include "apps/tessel/accounts/Stop.h"

#include <string_view>
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
        // Without a request it was what the user gave.
        return failure.method.empty() ? ExitStatus::usage : refused;
    default:
        return refused;
    }
}

/// What the library advises a program, and what a user does instead.
constexpr std::pair<std::string_view, std::string_view> advice[] {
    {"name that in MNetworkConfiguration::authorityFile", "name its file with --authority"},
    {"MNetworkConfiguration::authorityFile and authorityDirectory", "--authority"},
    {"give http and allow it by SessionSettings::allowsPlainHTTP", "give http:// and --insecure"},
    {"set SessionSettings::allowsPlainHTTP to allow it", "--insecure to allow it"},
    {"or allow more time.", "or allow more time with --timeout."},
    {", or allow its origin.", "."},
    {" Allow it in SessionSettings::otherOrigins.", " If you trust it, give it as the server."},
    {"\n  ", " "},
    {"\n", " "},
};

} // namespace

std::string reasonOf(const Failure& failure)
{
    auto reason = failure.reason;
    for (const auto& [theirs, ours] : advice) {
        for (auto at = reason.find(theirs); at != reason.npos; at = reason.find(theirs, at))
            reason.replace(at, theirs.size(), ours);
    }
    return reason;
}

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
