#pragma once

#include "apps/tessel/commands/Workspace.h"

#include <string>

namespace Tessel::App {

/// What a change of the outbox is to do, such as "change Lunch".
std::string nameOf(const PendingChange& change);
/// Its state for a listing, without the number that a user knows it by.
Json describe(const PendingChange& change);

/// Sends what waits and tells of each change; what is left is named.
void sendWaiting(Workspace& workspace);

} // namespace Tessel::App
