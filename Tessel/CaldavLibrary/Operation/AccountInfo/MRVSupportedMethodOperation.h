#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

#include <memory>

namespace Tessel {

/// Last step of discovery: an OPTIONS request tells which methods the calendar home allows (RFC
/// 9110, 10.2.1) and the account's `supportedMethod` is set from it; every failure leaves that as
/// it was. Making it makes and queues the steps before it. It finishes whatever the answer is.
///
/// An account without a calendar home at this point is a programming error that stops the process.
class MRVSupportedMethodOperation final : public MRVOperation {
public:
    static std::shared_ptr<MRVSupportedMethodOperation> make(
        std::shared_ptr<MRVAccountInfoProvider> provider);

    void main() override;

private:
    void read(
        const std::shared_ptr<const URLResponse>& response, const std::optional<Error>& error);
};

} // namespace Tessel
