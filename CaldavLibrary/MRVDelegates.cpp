#include "CaldavLibrary/MRVAuthDelegate.h"
#include "CaldavLibrary/MRVDataSource.h"
#include "CaldavLibrary/MRVDelegate.h"
#include "CaldavLibrary/MRVSyncDelegate.h"

namespace Tessel {

// One home for the type information of the protocols that hosts implement.
MRVAuthDelegate::~MRVAuthDelegate() = default;
MRVDataSource::~MRVDataSource() = default;
MRVDelegate::~MRVDelegate() = default;
MRVSyncDelegate::~MRVSyncDelegate() = default;

} // namespace Tessel
