#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotification.h"
#include "Tessel/CaldavLibrary/Models/MRVNotificationInfo.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// Compares the listing of the notification collection with the notifications that the host holds,
/// by `href`: the sync delegate is told of those that are gone, and the new ones are fetched.
///
/// A listing that fails or is EMPTY ends the operation at once: nothing is reported, not even that
/// held notifications are gone. Without a listing (see `MRVGetNotificationsInfoOperation`) the
/// operation never starts.
class MRVGetNotificationsOperation final : public MRVOperation {
public:
    using Notifications = std::vector<std::shared_ptr<MRVNotification>>;
    using CompletionHandler
        = std::function<void(std::optional<Notifications>, std::optional<Error>)>;

    /// Also makes the listing that this operation depends on and queues it; the caller queues this
    /// operation itself.
    static std::shared_ptr<MRVGetNotificationsOperation> make(std::shared_ptr<MRVClient> client,
        std::shared_ptr<MRVAccountInfoProvider> accountInfoProvider,
        CompletionHandler completionHandler);

    /// Called once, after the last answer, with the new notifications in the order in which they
    /// arrived (an empty list when nothing is new), and with the first error that kept one from
    /// arriving. A notification that the server refuses or that cannot be read is left out. With
    /// nothing new the call comes on a worker thread.
    CompletionHandler completionHandler;
    std::vector<std::shared_ptr<MRVNotificationInfo>> notificationInfo; ///< set by the listing
    Notifications notifications; ///< fetched so far

    void main() override;

private:
    Notifications heldNotifications() const;
    void reportRemoved(const Notifications& held) const;
    std::vector<std::string> newHrefs(const Notifications& held) const;
    void fetch(const std::vector<std::string>& hrefs);
    void fetch(const std::string& href);
    void read(const std::string& href, const Data& data,
        const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error);
    std::shared_ptr<MRVNotification> parsed(const std::string& href, const Data& data) const;
    void settle(
        const std::shared_ptr<MRVNotification>& notification, const std::optional<Error>& error);
    void finish();

    /// Guards the answers: a host's transport may bring several at a time.
    std::mutex mutex_;
    std::size_t outstanding_ = 0;
    std::optional<Error> firstError_;
};

} // namespace Tessel
