#pragma once

// Everything a host needs for sessions; it links Tessel::Session.

#include "Tessel/Platform/Transport/MCurlNetworkManager.h"
#include "Tessel/Session/Exchange/Exchange.h"
#include "Tessel/Session/Recurrence/Instances.h"
#include "Tessel/Session/Recurrence/TextBounds.h"
#include "Tessel/Session/Session.h"
#include "Tessel/Session/Text/MergeEdit.h"
