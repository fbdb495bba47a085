#pragma once

#include "Tessel/Session/Text/EventText.h"

namespace Tessel {

/// Makes an edit of `base` on `theirs`, a newer text of the same event, where nobody else changed
/// the same property of the same instance meanwhile: start, end and length are one property, each
/// attendee is one. Else `changed`, with both texts. What was to be removed and is removed already
/// is no conflict. Otherwise as `EventText::apply`.
TESSEL_EXPORT Result<EditedEvent> mergeEdit(const EventText& base, const EventEdit& edit,
    const EventText& theirs, const Date& now = Date());

/// `mergeEdit` of an edit that takes an instance of a series and all that follow away, where
/// another event holds them as they are in `base`: `changed` also where anything else of them is
/// not as it was.
TESSEL_EXPORT Result<EditedEvent> mergeDivision(const EventText& base, const EventEdit& edit,
    const EventText& theirs, const Date& now = Date());

} // namespace Tessel
