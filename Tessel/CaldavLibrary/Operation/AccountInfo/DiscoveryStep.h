#pragma once

#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"
#include "Tessel/Platform/Foundation/Operations/Operation.h"

#include <memory>

namespace Tessel {

/// A step of the provider's discovery that waits for the one before it.
template <class Step>
std::shared_ptr<Step> stepAfter(
    const std::shared_ptr<Operation>& before, std::shared_ptr<MRVAccountInfoProvider> provider)
{
    auto step = std::make_shared<Step>();
    step->accountInfoProvider = std::move(provider);
    step->addDependency(before);
    return step;
}

} // namespace Tessel
