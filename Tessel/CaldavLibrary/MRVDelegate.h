#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

namespace Tessel {

/// For hosts that want to pass on whether account details were fetched. The library never calls it.
class TESSEL_EXPORT MRVDelegate {
public:
    virtual ~MRVDelegate();

    /// Whether discovery has found the account's collections.
    virtual void accountInfoFetched(bool success) = 0;
};

} // namespace Tessel
