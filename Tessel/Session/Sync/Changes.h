#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Session/Outcome/Failure.h"
#include "Tessel/Session/Store/Batch.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Tessel {

/// What a sync has changed in the store, of one calendar. What was brought is in the store.
struct CalendarChanges {
    std::string calendar; ///< its href
    std::string displayName = {}; ///< of the calendar
    std::vector<std::string> added = {}; ///< hrefs of resources
    std::vector<std::string> edited = {}; ///< with another text
    std::vector<std::string> deleted = {}; ///< gone at the server, and from the store
    /// What could not be brought; the next sync asks for it again.
    std::vector<FailedResource> failed = {};
    /// Why the calendar could not be synced to its end. What was held of it and not changed above
    /// is held as before, and the next sync goes on from there.
    std::optional<Failure> failure = {};
};

/// What a sync has changed.
struct TESSEL_EXPORT Changes {
    std::vector<CalendarChanges> calendars; ///< every one that was synced, in the server's order
    std::vector<std::string> addedCalendars = {}; ///< hrefs
    std::vector<std::string> deletedCalendars = {}; ///< gone, with all they held

    /// Whether everything that the server announced has arrived.
    bool isComplete() const;
};

/// How far a sync is. Counts never fall within one calendar.
struct SyncProgress {
    std::string calendar; ///< its href
    std::size_t calendarNumber = 1; ///< from 1
    std::size_t calendarCount = 1; ///< that are synced
    std::size_t done = 0; ///< resources that have arrived or failed
    std::size_t total = 0; ///< as far as is known
};

/// Runs where continuations run. Never begins once the call has ended; `wait` gives the call's
/// result when none runs any more.
using ProgressReport = std::function<void(const SyncProgress&)>;

} // namespace Tessel
