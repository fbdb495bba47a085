#include "apps/tessel/output/Reason.h"

#include <string_view>
#include <utility>

namespace Tessel::App {

namespace {

/// What the library advises a program, and what a user does instead. ReasonTests hold each.
constexpr std::pair<std::string_view, std::string_view> advice[] {
    {"name that in MNetworkConfiguration::authorityFile", "name its file with --authority"},
    {"MNetworkConfiguration::authorityFile and authorityDirectory", "--authority"},
    {"give http and allow it by SessionSettings::allowsPlainHTTP", "give http:// and --insecure"},
    {"or allow more time.", "or allow more time with --timeout."},
    {"give it as the server, or allow its origin.", "give it as the server."},
    {"allow its origin.", "give it as the server."},
    {"\n  ", " "},
    {"\n", " "},
};

} // namespace

std::string reasonOf(std::string words)
{
    for (const auto& [theirs, ours] : advice) {
        for (auto at = words.find(theirs); at != words.npos; at = words.find(theirs, at))
            words.replace(at, theirs.size(), ours);
    }
    return words;
}

std::string reasonOf(const Failure& failure)
{
    auto reason = reasonOf(failure.reason);
    if (failure.kind == FailureKind::cancelled && failure.isUncertain)
        reason += " The server may have done what it was asked all the same.";
    return reason;
}

} // namespace Tessel::App
