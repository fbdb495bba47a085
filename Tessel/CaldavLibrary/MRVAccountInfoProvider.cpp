#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"

namespace Tessel {

MRVAccountInfoProvider::MRVAccountInfoProvider(
    std::shared_ptr<MRVAccount> account, std::shared_ptr<MRVAuthDelegate> authDelegate)
    : account_(std::move(account))
    , authDelegate_(std::move(authDelegate))
{
}

} // namespace Tessel
