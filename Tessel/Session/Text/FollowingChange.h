#pragma once

#include "Tessel/Session/Text/EventText.h"

namespace Tessel {

// What RANGE=THISANDFUTURE (RFC 5545, 3.2.13) makes of instances, as `instances` shows them.

/// What describes an instance without a part of its own, by its `keyOf`; none where the series
/// does.
std::optional<EventPart> changeFor(
    const EventText& event, std::chrono::local_seconds key, TextZones& zones);

/// When an instance begins that the change describes; `instance` is when it would by the series.
EventMoment startBy(const EventPart& change, const EventMoment& instance, TextZones& zones);

/// The same series with the change that describes its first instance as its main part. As it was
/// where there is none; `unsupported` for a rule that does not go with the change's start.
Result<EventText> withChangeAsMain(const EventText& event);

} // namespace Tessel
