#pragma once

#include "Tessel/CaldavLibrary/Models/MRVNotificationInfo.h"
#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <memory>
#include <vector>

namespace Tessel {

/// Lists the account's notification collection with one PROPFIND. Without a client, or with an
/// account that has no `notificationURL`, it does nothing and never finishes.
class MRVGetNotificationsInfoOperation final : public MRVOperation {
public:
    /// What the server lists; empty before the answer, and when the listing fails.
    std::vector<std::shared_ptr<MRVNotificationInfo>> notificationInfo;

    void main() override;

private:
    void read(const Data& data);
};

} // namespace Tessel
