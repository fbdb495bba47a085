#include "Tessel/CaldavLibrary/MRVAccountInfoProvider.h"
#include "Tessel/CaldavLibrary/Operation/AccountInfo/MRVSupportedMethodOperation.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Operations/OperationQueue.h"

namespace Tessel {

void MRVAccountInfoProvider::getAccountInfo(
    std::function<void(std::shared_ptr<MRVAccount>)> completion)
{
    const auto operation = MRVSupportedMethodOperation::make(shared_from_this());
    operation->setCompletionBlock(
        [weak = weakly(operation.get()), account = account_, completion = std::move(completion)] {
            const auto ended = weak.lock();
            if (!ended) fatalError("discovery has ended without its operation");
            completion(ended->done() ? account : nullptr);
        });
    OperationQueue().addOperation(operation);
}

} // namespace Tessel
