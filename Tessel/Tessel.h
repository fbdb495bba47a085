#pragma once

// Everything a host needs.

#include "CaldavLibrary/Configuration.h"
#include "CaldavLibrary/MRVAccountInfoProvider.h"
#include "CaldavLibrary/MRVAuthDelegate.h"
#include "CaldavLibrary/MRVClient.h"
#include "CaldavLibrary/MRVClientFactory.h"
#include "CaldavLibrary/MRVDataSource.h"
#include "CaldavLibrary/MRVDelegate.h"
#include "CaldavLibrary/MRVHeaderAuthorization.h"
#include "CaldavLibrary/MRVSyncDelegate.h"
#include "CaldavLibrary/MRVUtilities.h"
#include "CaldavLibrary/Operation/AccountInfo/MRVGetScheduleDefaultOperation.h"
#include "CaldavLibrary/Operation/Event/MRVGetEventsByRange.h"
#include "Platform/Foundation/HTTPURLResponse.h"
#include "Platform/Plinth/Logger.h"
#include "Platform/Transport/MCurlNetworkManager.h"
#include "icalendar/CGICalendar.h"
