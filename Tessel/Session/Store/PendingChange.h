#pragma once

#include "Tessel/Session/Outcome/Failure.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Tessel {

/// What a change that waits is to do.
enum class ChangeKind { create, edit, move, remove };

/// How far it is.
enum class ChangeState {
    waiting, ///< to be sent, not before `PendingChange::notBefore`
    /// Somebody is sending it, and has until `notBefore` to say how that ended. After that it may
    /// have reached the server or not: whoever takes it over looks first.
    sending,
    parked, ///< in conflict with what the server holds; waits for the host's decision
};

/// A change that was made while offline, or whose end is not known yet.
struct PendingChange {
    std::string id; ///< chosen by who makes it, unique in its account
    /// 0 for one that is new, else as `Store::pending` gave it. A store holds a new change as
    /// revision 1 and counts one on with each step that it takes; one that was made for an older
    /// revision is refused, so that two who work on one outbox never undo each other's steps.
    std::int64_t revision = 0;
    /// Given by the store to a new one, and to no other ever after: short, for people to name it
    /// by.
    std::int64_t number = 0;
    ChangeKind kind = ChangeKind::edit; ///< what it is to do
    ChangeState state = ChangeState::waiting; ///< how far it is
    std::string calendar = {}; ///< href of the calendar
    std::string href = {}; ///< of the resource; may be empty for one that is to be created
    /// Of a move: the other calendar's href. Of an event that holds days of a series that was
    /// divided: the id of the change that leaves them out of the series, which is made first.
    std::string destination = {};
    std::string uid = {}; ///< of the event
    std::string baseTag = {}; ///< of the resource that the change was made on
    std::string baseText = {}; ///< likewise
    std::string content = {}; ///< the whole new text, or the edit in a form of the outbox's own
    int attempts = 0; ///< times it was sent
    std::int64_t notBefore = 0; ///< milliseconds since 1970
    std::string reason = {}; ///< why the last attempt failed, for a person
    std::optional<BothTexts> texts = {}; ///< of a conflict
};

} // namespace Tessel
