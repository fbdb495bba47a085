#pragma once

#include "Tessel/Session/Outcome/Failure.h"

namespace Tessel {

inline Failure noStoreGiven(const std::string& what)
{
    return {.kind = FailureKind::storage, .reason = what + ": no store was given."};
}

// What every store refuses.

inline Failure calendarNotHeld(const std::string& href)
{
    return {.kind = FailureKind::missing, .reason = "The store holds no calendar " + href + "."};
}

inline Failure markHasChanged(const std::string& calendar)
{
    return {.kind = FailureKind::changed,
        .reason
        = "The calendar " + calendar + " was synced by another process meanwhile. Sync it again."};
}

inline Failure resourceHasChanged(const std::string& href)
{
    return {.kind = FailureKind::changed,
        .reason = "What is held at " + href + " was brought by somebody else meanwhile."};
}

inline Failure changeHasChanged(const std::string& id)
{
    return {.kind = FailureKind::changed,
        .reason = "The waiting change " + id
            + " was changed or settled by another process meanwhile. Look again at what waits."};
}

} // namespace Tessel
