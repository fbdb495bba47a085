#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetPrincipalOperation.h"

#include "Tessel/CaldavLibrary/Extensions/MRVHeaderAuthorization.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/AccountFields.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/PropfindBody.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Base/Limits.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

using Parser = MRVAccountDetailsParser;

std::string without(std::string_view part, std::string_view text)
{
    std::string rest;
    for (auto at = text.find(part); at != text.npos; at = text.find(part)) {
        rest += text.substr(0, at);
        text.remove_prefix(at + part.size());
    }
    return rest.append(text);
}

} // namespace

MRVGetPrincipalOperation::MRVGetPrincipalOperation(std::shared_ptr<MRVAccountInfoProvider> provider)
{
    accountInfoProvider = std::move(provider);
}

void MRVGetPrincipalOperation::main()
{
    Plinth::logger()->log(Plinth::Level::debug, "principal main");
    if (!accountInfoProvider) fatalError("discovery runs without an account-info provider");
    if (accountInfoProvider->account()->principalURL) return;

    URLRequest request(wellKnownURL());
    setPropfind(request, Depth::resource,
        propfindBody({
            {"current-user-principal", XMLNamespace::dav},
            {"calendar-home-set", XMLNamespace::caldav},
            {"schedule-inbox-URL", XMLNamespace::caldav},
            {"schedule-outbox-URL", XMLNamespace::caldav},
            {"schedule-default-calendar-URL", XMLNamespace::caldav},
            {"calendar-user-address-set", XMLNamespace::caldav},
            {"notification-URL", XMLNamespace::calendarServer},
        }));
    send(std::move(request));
}

void MRVGetPrincipalOperation::send(URLRequest request)
{
    const auto self = std::static_pointer_cast<MRVGetPrincipalOperation>(shared_from_this());
    process(request, "PrincipalURL", self,
        [weak = weakly(this)](const Data& data, const auto& error, auto) {
            if (error) return;
            if (const auto operation = weak.lock()) operation->read(data);
        });
}

void MRVGetPrincipalOperation::read(const Data& data)
{
    Plinth::logger()->log(inMain(Plinth::Level::debug), "response: ", data);
    const auto details = Parser(data, nullptr).parseAccountDetails();
    if (!details) return;
    setAccountFields(*accountInfoProvider->account(), *details,
        {Parser::scheduleInboxURLKey, Parser::scheduleOutboxURLKey, Parser::scheduleDefaultURLKey,
            Parser::calendarAddressSetKey, Parser::notificationURLKey, Parser::calendarHomeURLKey,
            Parser::principalURLKey});
}

std::string MRVGetPrincipalOperation::wellKnownURL() const
{
    const auto server = getServerURL();
    return server + (server.ends_with('/') ? "" : "/") + ".well-known/caldav";
}

std::string MRVGetPrincipalOperation::getServerURL() const
{
    const auto& server = account()->serverURL;
    return server.find("http") == std::string::npos ? "https://" + server : server;
}

std::string MRVGetPrincipalOperation::getServerURL(std::string_view url)
{
    const auto rest = without("http://", without("https://", url));
    return "https://" + rest.substr(0, rest.find('/'));
}

bool MRVGetPrincipalOperation::didRequestHTTPRedirection(
    const URLRequest& originalRequest, const URLRequest& newRequest)
{
    if (originalRequest.url() != encodedURL(wellKnownURL())) return false;
    // A server that redirects its well-known address to itself must not keep discovery going.
    if (++redirectsTaken_ > Limits::redirects) return false;

    accountInfoProvider->account()->serverURL = getServerURL(newRequest.url());
    auto repeated = newRequest;
    repeated.headers.remove(MRVHeaderAuthorization); // the target gets a credential of its own
    send(std::move(repeated));
    return true;
}

} // namespace Tessel
