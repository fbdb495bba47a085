#pragma once

#include "Tessel/Platform/Foundation/Base/OptionSet.h"

namespace Tessel {

/// The component types that a calendar holds (RFC 4791, 5.2.3). `none` is a bit of its own and part
/// of every set that a listing brings: a calendar for events alone has the raw value 3. `journal`
/// is never set from a listing.
class MRVCalendarComponents : public OptionSet<MRVCalendarComponents> {
public:
    using OptionSet::OptionSet;

    ///@{
    /// Nothing, VEVENT, VTODO, VJOURNAL and all of these.
    static const MRVCalendarComponents none, event, todo, journal, all;
    ///@}
};

inline constexpr MRVCalendarComponents MRVCalendarComponents::none {1};
inline constexpr MRVCalendarComponents MRVCalendarComponents::event {2};
inline constexpr MRVCalendarComponents MRVCalendarComponents::todo {4};
inline constexpr MRVCalendarComponents MRVCalendarComponents::journal {8};
inline constexpr MRVCalendarComponents MRVCalendarComponents::all {15};

} // namespace Tessel
