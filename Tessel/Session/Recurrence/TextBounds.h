#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Session/Recurrence/Bounds.h"

#include <string_view>

namespace Tessel {

/// The bounds of a calendar object's text, a day wider on each side than its instances, so that
/// they hold whatever zone floating times are read in and however zones are changed. `always` for
/// what `instances` cannot read, so that a visit of any range names it; `never` for what has no
/// dates, such as a VTODO without any.
TESSEL_EXPORT Bounds bounds(std::string_view text);

} // namespace Tessel
