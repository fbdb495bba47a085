#pragma once

#include "apps/tessel/commands/AccountStore.h"
#include "apps/tessel/output/Output.h"

namespace Tessel::App {

/// Tells what a sync into the store has changed, calendar by calendar.
void tell(const Output& out, AccountStore& store, const Changes& changes);

} // namespace Tessel::App
