#pragma once

#include "Tessel/Session/Text/EventText.h"

#include <string>
#include <vector>

namespace Tessel {

/// One event of an iCalendar file with what belongs to it, as a calendar object of its own.
struct FileEvent {
    std::string uid; ///< what has none is named by its kind, a number and "without UID"
    /// Ready for `Session::create`; `unsupported` for what is no event, `malformed` for one that
    /// stands outside of a calendar, and for a second one of the same UID.
    Result<EventText> event;
};

/// The events of an iCalendar file (RFC 5545, 3.4), in its order, each with the instances that
/// differ from its series, the zones that it uses, and no METHOD; and, with a failure, what else
/// stands in it or cannot be read. What stands there twice, byte for byte, is taken once. Fails as
/// `TextTree::read` does, and as `malformed` where the file holds no calendar.
TESSEL_EXPORT Result<std::vector<FileEvent>> eventsOfFile(const std::string& text);

} // namespace Tessel
