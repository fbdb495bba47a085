#include "Tessel/CaldavLibrary/MRVAuthDelegate.h"
#include "Tessel/CaldavLibrary/MRVDataSource.h"
#include "Tessel/CaldavLibrary/MRVDelegate.h"
#include "Tessel/CaldavLibrary/MRVSyncDelegate.h"

namespace Tessel {

// One home for the type information of the protocols that hosts implement.
MRVAuthDelegate::~MRVAuthDelegate() = default;
MRVDataSource::~MRVDataSource() = default;
MRVDelegate::~MRVDelegate() = default;
MRVSyncDelegate::~MRVSyncDelegate() = default;

} // namespace Tessel
