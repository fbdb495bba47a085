#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetCalendarHomeOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/AccountFields.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/DiscoveryStep.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetPrincipalOperation.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/PropfindBody.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

using Parser = MRVAccountDetailsParser;

std::shared_ptr<MRVGetCalendarHomeOperation> MRVGetCalendarHomeOperation::make(
    std::shared_ptr<MRVAccountInfoProvider> provider)
{
    const auto principal = std::make_shared<MRVGetPrincipalOperation>(provider);
    auto operation = stepAfter<MRVGetCalendarHomeOperation>(principal, std::move(provider));
    OperationQueue().addOperation(principal);
    return operation;
}

void MRVGetCalendarHomeOperation::main()
{
    Plinth::logger()->log(Plinth::Level::debug, "calendar home main");
    if (!accountInfoProvider) fatalError("discovery runs without an account-info provider");
    const auto& account = *accountInfoProvider->account();
    if (account.calendarHomeURL || !account.principalURL) return;

    URLRequest request(absoluteURL(*account.principalURL));
    setPropfind(request, Depth::resource,
        propfindBody({
            {"calendar-home-set", XMLNamespace::caldav},
            {"schedule-outbox-URL", XMLNamespace::caldav},
            {"schedule-inbox-URL", XMLNamespace::caldav},
            {"schedule-default-calendar-URL", XMLNamespace::caldav},
            {"calendar-user-address-set", XMLNamespace::caldav},
            {"notification-URL", XMLNamespace::calendarServer},
        }));
    process(request, "Calendar-home-set", nullptr,
        [weak = weakly(this)](const Data& data, const auto& error, auto) {
            Plinth::logger()->log(inMain(Plinth::Level::debug), "calendar home set: ", data);
            if (error) return;
            if (const auto self = weak.lock()) self->read(data);
        });
}

void MRVGetCalendarHomeOperation::read(const Data& data)
{
    const auto details = Parser(data, nullptr).parseAccountDetails();
    if (!details) return;
    setAccountFields(*accountInfoProvider->account(), *details,
        {Parser::calendarHomeURLKey, Parser::scheduleInboxURLKey, Parser::scheduleOutboxURLKey,
            Parser::calendarAddressSetKey, Parser::scheduleDefaultURLKey,
            Parser::notificationURLKey});
}

} // namespace Tessel
