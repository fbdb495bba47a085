#pragma once

#include "apps/tessel/commands/Workspace.h"

#include <string>

namespace Tessel::App {

/// What a change of the outbox is to do, such as "change Lunch".
std::string nameOf(const PendingChange& change);
/// Its state for a listing, without the number that a user knows it by.
Json describe(const PendingChange& change);

/// The iCalendar text that it will write; empty where it deletes, or where that cannot be told.
std::string textOf(const PendingChange& change);
/// What it says otherwise than the event as it was, or where it moves that; may be empty.
std::string detailOf(const PendingChange& change);
/// What the user can do about it.
std::string adviceFor(const PendingChange& change);
/// Why it has not been sent yet, and that, in sentences.
std::string stateAndAdvice(const PendingChange& change);

/// Sends what waits and tells of each change; what is left is named.
void sendWaiting(Workspace& workspace);
/// The same, where only what becomes of the change of this id says how the command ends.
void sendWaitingFor(Workspace& workspace, const std::string& id);

} // namespace Tessel::App
