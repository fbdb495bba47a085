#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsOperation.h"

#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/CaldavLibrary/Operation/Notification/MRVGetNotificationsInfoOperation.h"
#include "Tessel/CaldavLibrary/Parsers/MRVNotificationParser.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Foundation/Web/URL.h"
#include "Tessel/Platform/Plinth/Logger.h"

#include <string_view>
#include <unordered_set>

namespace Tessel {

namespace {

using Plinth::Level;

template <class List> std::unordered_set<std::string_view> hrefs(const List& list)
{
    std::unordered_set<std::string_view> set;
    for (const auto& item : list)
        set.insert(item->href);
    return set;
}

} // namespace

std::shared_ptr<MRVGetNotificationsOperation> MRVGetNotificationsOperation::make(
    std::shared_ptr<MRVClient> client, std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider,
    CompletionHandler completionHandler)
{
    auto operation = std::make_shared<MRVGetNotificationsOperation>();
    operation->client = client;
    operation->accountInfoProvider = std::move(accountInfoProvider);
    operation->completionHandler = std::move(completionHandler);

    const auto listing = std::make_shared<MRVGetNotificationsInfoOperation>();
    listing->client = std::move(client);
    // A completion block would run beside the operations that wait for the listing, not before
    // them.
    listing->addObserver("isFinished",
        [weak = weakly(operation.get())](Operation& finished, std::string_view, Change change) {
            const auto self = weak.lock();
            if (!self || change != Change::did) return;
            self->notificationInfo
                = static_cast<MRVGetNotificationsInfoOperation&>(finished).notificationInfo;
        });
    operation->addDependency(listing);
    OperationQueue().addOperation(listing);
    return operation;
}

void MRVGetNotificationsOperation::main()
{
    if (notificationInfo.empty()) {
        setDone(true);
        return;
    }
    const auto held = heldNotifications();
    reportRemoved(held);
    fetch(newHrefs(held));
}

MRVGetNotificationsOperation::Notifications MRVGetNotificationsOperation::heldNotifications() const
{
    const auto source = client ? client->dataSource() : nullptr;
    if (!source) return {};
    return source->notifications(client).value_or(Notifications {});
}

void MRVGetNotificationsOperation::reportRemoved(const Notifications& held) const
{
    const auto listed = hrefs(notificationInfo);
    Notifications removed;
    for (const auto& notification : held) {
        if (!listed.contains(notification->href)) removed.push_back(notification);
    }
    const auto delegate = client ? client->syncDelegate() : nullptr;
    if (delegate && !removed.empty()) delegate->notificationsRemoved(removed, client);
}

std::vector<std::string> MRVGetNotificationsOperation::newHrefs(const Notifications& held) const
{
    const auto known = hrefs(held);
    std::vector<std::string> added;
    for (const auto& info : notificationInfo) {
        if (!known.contains(info->href)) added.push_back(info->href);
    }
    return added;
}

void MRVGetNotificationsOperation::fetch(const std::vector<std::string>& hrefs)
{
    if (hrefs.empty()) return finish();
    outstanding_ = hrefs.size();
    for (const auto& href : hrefs)
        fetch(href);
}

void MRVGetNotificationsOperation::fetch(const std::string& href)
{
    const auto url = absoluteURL(href);
    if (!encodedURL(url)) {
        Plinth::logger()->log(inMain(Level::error), "not the URL of a notification: ", href);
        return settle(nullptr, std::nullopt);
    }
    const auto authority = client ? client->authDelegate() : nullptr;
    if (!authority) return settle(nullptr, Error {"Tessel", 0, "the auth delegate is gone"});
    authorizeAndSend(URLRequest(url), *authority, nullptr,
        [weak = weakly(this), href](const Data& data, const auto& response, const auto& error) {
            if (const auto self = weak.lock()) self->read(href, data, response, error);
        });
}

void MRVGetNotificationsOperation::read(const std::string& href, const Data& data,
    const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error)
{
    const auto logger = Plinth::logger();
    const auto http = dynamic_cast<const HTTPURLResponse*>(response.get());
    std::shared_ptr<MRVNotification> notification;
    if (error) {
        logger->log(inMain(Level::error), "Error in getting notification data, ",
            error->localizedDescription);
    } else if (!http) {
        logger->log(inMain(Level::error), "Different response format for notification data");
    } else if (http->statusCode == 200) {
        notification = parsed(href, data);
    } else if (http->statusCode != 404) {
        logger->log(inMain(Level::error), "notification fetch, status code: ", http->statusCode);
    }
    settle(notification, error);
}

std::shared_ptr<MRVNotification> MRVGetNotificationsOperation::parsed(
    const std::string& href, const Data& data) const
{
    auto notification = MRVNotificationParser(data, account()).parseNote();
    if (notification) notification->identifier = href;
    return notification;
}

void MRVGetNotificationsOperation::settle(
    const std::shared_ptr<MRVNotification>& notification, const std::optional<Error>& error)
{
    bool isLast = false;
    {
        const std::lock_guard lock(mutex_);
        if (notification) notifications.push_back(notification);
        if (!firstError_) firstError_ = error;
        isLast = --outstanding_ == 0;
    }
    if (isLast) finish();
}

void MRVGetNotificationsOperation::finish()
{
    completionHandler(notifications, firstError_);
    setDone(true);
}

} // namespace Tessel
