#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVSupportedMethodOperation.h"

#include "Tessel/CaldavLibrary/Operation/AccountInfo/DiscoveryStep.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVGetCalendarHomeOperation.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

using Plinth::Level;

MRVSupportedMethod methodsAllowed(const std::string& allow)
{
    const auto lists = [&](const char* method) { return allow.find(method) != std::string::npos; };
    MRVSupportedMethod methods;
    if (lists("MKCALENDAR")) methods.insert(MRVSupportedMethod::makeCal);
    if (lists("DELETE")) methods.insert(MRVSupportedMethod::deleteCal);
    if (lists("PROPPATCH")) methods.insert(MRVSupportedMethod::propertyPatch);
    return methods;
}

} // namespace

std::shared_ptr<MRVSupportedMethodOperation> MRVSupportedMethodOperation::make(
    std::shared_ptr<MRVAccountInfoProvider> provider)
{
    Plinth::logger()->log(Level::debug, "supported method operation");
    const auto calendarHome = MRVGetCalendarHomeOperation::make(provider);
    auto operation = stepAfter<MRVSupportedMethodOperation>(calendarHome, std::move(provider));
    Plinth::logger()->log(Level::debug, "supported method dependency added");
    OperationQueue().addOperation(calendarHome);
    return operation;
}

void MRVSupportedMethodOperation::main()
{
    Plinth::logger()->log(Level::debug, "supported method main");
    if (!accountInfoProvider) fatalError("discovery runs without an account-info provider");
    const auto& home = accountInfoProvider->account()->calendarHomeURL;
    if (!home) fatalError("the calendar home is not known");

    URLRequest request(absoluteURL(*home));
    request.method = "OPTIONS";
    const auto authority = authDelegate();
    authorizeAndSend(request, *authority, nullptr,
        [weak = weakly(this)](const Data&, const auto& response, const auto& error) {
            const auto self = weak.lock();
            if (!self) return;
            self->read(response, error);
            self->setDone(true);
        });
}

void MRVSupportedMethodOperation::read(
    const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error)
{
    const auto logger = Plinth::logger();
    if (error) {
        logger->log(inMain(Level::error),
            "Error in getting supported calendar methods: ", error->localizedDescription);
        return;
    }
    const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
    if (!http) {
        logger->log(
            inMain(Level::error), "Response in diff format for getting supported calendar methods");
        return;
    }
    if (http->statusCode != 200) {
        logger->log(inMain(Level::error),
            "Error in getting supported calendar methods: ", http->statusCode);
        return;
    }
    auto allow = http->headers.value("Allow");
    if (!allow) allow = http->headers.value("allow");
    if (!allow) return;
    const auto methods = methodsAllowed(*allow);
    accountInfoProvider->account()->supportedMethod = methods;
    logger->log(inMain(Level::debug), "supportedMethod: ", methods.rawValue());
}

} // namespace Tessel
