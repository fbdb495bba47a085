#pragma once

// Everything a host needs for sessions; it links Tessel::Session.

// First, since it says so where C++20 is missing.
#include "Tessel/Platform/Foundation/Base/Version.h"

#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Session/Exchange/Exchange.h"
#include "Tessel/Session/Outbox/OutboxView.h"
#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Session.h"
#include "Tessel/Session/Text/FileEvent.h"
#include "Tessel/Session/Text/JoinedCalendar.h"
#include "Tessel/Session/Text/MergeEdit.h"
