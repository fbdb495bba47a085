#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <memory>

namespace Tessel {

/// Second step of discovery: asks the principal for its collections (RFC 4791, 6.2.1; RFC 6638, 2).
/// Making it makes and queues the first step.
///
/// When the account has a calendar home already, or no principal URL, nothing is sent and the
/// operation never finishes, so that the step after it never starts.
class MRVGetCalendarHomeOperation final : public MRVOperation {
public:
    static std::shared_ptr<MRVGetCalendarHomeOperation> make(
        std::shared_ptr<MRVAccountInfoProvider> provider);

    void main() override;

private:
    void read(const Data& data);
};

} // namespace Tessel
