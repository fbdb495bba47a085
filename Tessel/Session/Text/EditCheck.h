#pragma once

#include "Tessel/Session/Text/EventEdit.h"
#include "Tessel/Session/Text/TextZones.h"

namespace Tessel {

/// Why an edit cannot be written, whatever the event; none when it can.
std::optional<Failure> faultOf(const EventEdit& edit, TextZones& zones);

Failure malformedEdit(std::string reason);

/// Calls `visit` with every moment that the edit sets.
template <class Visit> void eachMoment(const EventEdit& edit, Visit visit)
{
    if (edit.start.set()) visit(*edit.start.set());
    if (edit.end.set()) visit(*edit.end.set());
    for (const auto* moments : {edit.dates.set(), edit.exceptions.set()})
        if (moments)
            for (const auto& moment : *moments)
                visit(moment);
}

} // namespace Tessel
