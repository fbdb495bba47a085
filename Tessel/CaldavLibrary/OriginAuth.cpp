#include "Tessel/CaldavLibrary/OriginAuth.h"

#include "Tessel/CaldavLibrary/Extensions/MRVHeaderAuthorization.h"

#include <algorithm>

namespace Tessel {

namespace {

std::vector<Origin> with(Origin origin, std::vector<Origin> others)
{
    others.push_back(std::move(origin));
    return others;
}

} // namespace

OriginAuth::OriginAuth(std::string credential, Origin origin, std::vector<Origin> others)
    : origins_(with(std::move(origin), std::move(others)))
    , credential_(std::move(credential))
{
}

OriginAuth::~OriginAuth() = default;

void OriginAuth::setCredential(std::string credential)
{
    const std::lock_guard lock(mutex_);
    credential_.swap(credential);
}

bool OriginAuth::signs(const URLRequest& request) const
{
    const auto target = Origin::of(request.url());
    return target && std::find(origins_.begin(), origins_.end(), *target) != origins_.end();
}

void OriginAuth::authorize(const URLRequest& request, bool, const std::shared_ptr<MRVAccount>&,
    std::function<void(URLRequest)> completion)
{
    auto authorized = request;
    if (signs(request)) {
        const std::lock_guard lock(mutex_);
        authorized.headers.set(MRVHeaderAuthorization, credential_);
    } else {
        authorized.headers.remove(MRVHeaderAuthorization);
    }
    completion(std::move(authorized));
}

} // namespace Tessel
