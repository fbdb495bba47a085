#pragma once

#include "Tessel/Platform/Foundation/Base/OptionSet.h"

namespace Tessel {

/// What the server allows on the calendar home. `none` is a bit of its own, not the empty set:
/// discovery starts from the empty set and adds what the server lists.
class MRVSupportedMethod : public OptionSet<MRVSupportedMethod, int> {
public:
    using OptionSet::OptionSet;

    ///@{
    /// Nothing, MKCALENDAR, DELETE and PROPPATCH.
    static const MRVSupportedMethod none, makeCal, deleteCal, propertyPatch;
    ///@}
};

inline constexpr MRVSupportedMethod MRVSupportedMethod::none {1};
inline constexpr MRVSupportedMethod MRVSupportedMethod::makeCal {2};
inline constexpr MRVSupportedMethod MRVSupportedMethod::deleteCal {4};
inline constexpr MRVSupportedMethod MRVSupportedMethod::propertyPatch {8};

} // namespace Tessel
