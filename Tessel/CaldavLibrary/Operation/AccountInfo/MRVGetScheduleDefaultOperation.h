#pragma once

#include "Tessel/CaldavLibrary/Operation/MRVOperation.h"

namespace Tessel {

/// Asks the scheduling inbox for the default calendar (RFC 6638, 9.2). The answer is only logged
/// and the account is not changed; the library never makes this operation, hosts may.
///
/// When the account has a default calendar already the operation sends nothing and never finishes;
/// without a client or a scheduling inbox it finishes without a request.
class TESSEL_EXPORT MRVGetScheduleDefaultOperation final : public MRVOperation {
public:
    void main() override; ///< sends the query
};

} // namespace Tessel
