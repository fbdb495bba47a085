#pragma once

#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Store/PendingChange.h"

#include <string>
#include <string_view>

namespace Tessel {

/// The calendar of the resource at the place, with the slash at its end.
std::string folderOf(const std::string& place);

/// Whether the place is one of the calendar's, however the two are spelled.
bool liesIn(const std::string& place, const std::string& calendar);

/// Whether two hrefs name one calendar, with a slash at the end or without.
bool isSameCalendar(const std::string& a, const std::string& b);

/// Where the resource is once the change is made.
std::string placeAfter(const PendingChange& change);

/// The text once the change is made on what it was made for; empty after a removal.
std::string textAfter(const PendingChange& change);

/// Whether two places are one, however they are spelled.
bool isSamePlace(const std::string& a, const std::string& b);

/// Whether the resource of the change is at the place, before the change or after it.
bool concerns(const PendingChange& change, const std::string& place);

/// It has never been sent, so that it can be changed or dropped without asking the server.
bool isUntouched(const PendingChange& change);

/// Whether `PendingChange::content` of an edit is the whole new text.
bool isWholeText(const PendingChange& change);

} // namespace Tessel
