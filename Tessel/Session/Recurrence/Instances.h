#pragma once

#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Recurrence/Instance.h"
#include "Tessel/Session/Text/TextTree.h"

#include <vector>

namespace Tessel {

/// The instances of a calendar object that touch [`from`, `to`), in milliseconds since 1970: those
/// that begin before `to` and end after `from`, and those without length that begin within. In
/// order of their start, changed and cancelled ones included. May be called from any thread.
///
/// By RFC 5545: RRULE, RDATE and the start itself, without EXDATE; a time that clocks skip counts
/// by the offset before it, a time that they show twice is the first one (3.3.5). Zones are those
/// of the text's VTIMEZONEs, else of the zone database, else Windows names; `local` stands in for
/// an unknown one and for floating times. An instance that RECURRENCE-ID changes is given as it was
/// changed whether or not the series has it, RANGE=THISANDFUTURE moves those that follow.
///
/// `malformed` where the text cannot be read, or does not say when its event begins: an hour 24, a
/// day that does not exist, no DTSTART. In a text of several UIDs such an event is left out.
/// Rules that give very much or hardly anything end at `Limits::recurrenceSteps`, the list at
/// `Limits::recurrenceInstances`.
TESSEL_EXPORT Result<std::vector<Instance>> instances(
    const TextTree& text, std::int64_t from, std::int64_t to, const TimeZone& local);
TESSEL_EXPORT Result<std::vector<Instance>> instances(
    std::string text, std::int64_t from, std::int64_t to, const TimeZone& local);

} // namespace Tessel
