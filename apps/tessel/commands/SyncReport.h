#pragma once

#include "apps/tessel/output/Output.h"

#include <Tessel/TesselSession.h>

namespace Tessel::App {

/// Tells what a sync has changed, calendar by calendar; events by their summaries where the store
/// has them.
void tell(const Output& out, Store& store, const Changes& changes);

} // namespace Tessel::App
