#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Plinth/Logger.h"
#include "Tessel/Platform/Transport/MNetworkManager.h"

namespace Tessel {

namespace {

using Plinth::Level;

/// The level of a line that a part of `process` logs; the line names `process`.
Plinth::LevelAtSite inProcess(Level level, const CallSite& site = CallSite::within("process"))
{
    return {level, site};
}

MRVStatusCode mappedStatus(int code)
{
    const auto logger = Plinth::logger();
    const auto status = fromRawValue<MRVStatusCode>(code).value_or(MRVStatusCode::other);
    switch (status) {
    case MRVStatusCode::OK:
        logger->log(inProcess(Level::debug), "status: OK");
        break;
    case MRVStatusCode::multiStatus:
        logger->log(inProcess(Level::debug), "status: multiStatus");
        break;
    case MRVStatusCode::unauthorized:
        logger->log(inProcess(Level::debug), "status: unauthorized");
        break;
    default:
        logger->log(inProcess(Level::debug), "status: default error : ", code);
        break;
    }
    return status;
}

std::optional<MRVStatusCode> outcome(const std::string& message, const Data& data,
    const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error)
{
    const auto logger = Plinth::logger();
    logger->log(inProcess(Level::debug), "response: ", data);
    if (!isValidUTF8(data.view())) fatalError("the body of an answer is not UTF-8");
    logger->log(inProcess(Level::debug), data.view());

    if (error) {
        logger->log(inProcess(Level::error), "error in fetching ", message, ", ",
            error->localizedDescription);
        return std::nullopt;
    }
    if (!response) fatalError("the transport brought neither a response nor an error");
    const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
    if (!http) {
        logger->log(inProcess(Level::error), "unknown response");
        return std::nullopt;
    }
    logger->log(inProcess(Level::debug), "data: ", data, ", resposeStatus: ", http->statusCode);
    return mappedStatus(http->statusCode);
}

} // namespace

/// What an authorised request is sent with; shared, since an auth delegate may keep its completion.
struct MRVOperation::Sending {
    std::weak_ptr<MTaskDelegate> delegate;
    SendCompletion completion;
    std::function<bool(const URLRequest&)> mayFollow;
    TaskSent sent;
};

std::string MRVOperation::absoluteURL(std::string_view path) const
{
    if (path.starts_with("http")) return std::string(path);
    std::string url = account()->serverURL;
    if (url.ends_with('/')) url.pop_back();
    return url.append(path);
}

void MRVOperation::addXMLNamespaces(GDataXMLElement& element)
{
    element.addNamespace("cs", XMLNamespace::calendarServer);
    element.addNamespace("d", XMLNamespace::dav);
    element.addNamespace("ical", XMLNamespace::appleICal);
    element.addNamespace("c", XMLNamespace::caldav);
}

void MRVOperation::process(URLRequest& request, std::string message,
    const std::shared_ptr<MTaskDelegate>& delegate, ProcessCompletion completion)
{
    const auto authority = authDelegate();
    request.headers.set("User-Agent", "CalDavTest-iOS-Client");

    authorizeAndSend(request, *authority, delegate,
        [weak = weakly(this), message = std::move(message), completion = std::move(completion)](
            const Data& data, const auto& response, const auto& error) {
            completion(data, error, outcome(message, data, response, error));
            if (const auto self = weak.lock()) self->setDone(true);
        });
}

std::shared_ptr<MRVAccount> MRVOperation::account() const
{
    if (client) return client->account();
    if (!accountInfoProvider)
        fatalError("an operation has neither client nor account-info provider");
    return accountInfoProvider->account();
}

std::shared_ptr<MRVAuthDelegate> MRVOperation::authDelegate() const
{
    if (!client && !accountInfoProvider) {
        fatalError("an operation has neither client nor account-info provider");
    }
    auto authority = client ? client->authDelegate() : accountInfoProvider->authDelegate();
    if (!authority) fatalError("the auth delegate is gone");
    return authority;
}

void MRVOperation::authorizeAndSend(const URLRequest& request, MRVAuthDelegate& authDelegate,
    const std::shared_ptr<MTaskDelegate>& delegate, SendCompletion completion,
    std::function<bool(const URLRequest&)> mayFollow, TaskSent sent) const
{
    const auto owner = account();
    const bool isGoogle = owner->accountType == MRVAccountType::google;
    const auto sending = std::make_shared<const Sending>(
        Sending {delegate, std::move(completion), std::move(mayFollow), std::move(sent)});
    authDelegate.authorize(request, isGoogle, owner, [sending](URLRequest authorized) {
        const auto transport = MNetworkManager::sharedInstance();
        const auto number = transport->send({
            .request = std::move(authorized),
            .priority = MTaskPriority::normal,
            .delegate = sending->delegate,
            .mayFollow = sending->mayFollow,
            .completionHandler
            = [sending](const Data& data, const std::shared_ptr<const URLResponse>& response,
                  const auto&, const std::optional<Error>& error,
                  int) { sending->completion(data, response, error); },
        });
        if (sending->sent) sending->sent(transport, number);
    });
}

} // namespace Tessel
