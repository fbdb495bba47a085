#pragma once

#include "Tessel/Session/Text/EventText.h"

#include <optional>

namespace Tessel {

/// The failure of an edit of an instance that its series does not have, which would make a day that
/// there is not. None for any other edit, for what is no series, and where RANGE=THISANDFUTURE
/// moves instances: then `EventText::apply` decides alone.
std::optional<Failure> missingInstance(const EventText& event, const EventEdit& edit);

} // namespace Tessel
