#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Time/TimeZone.h"
#include "Tessel/icalendar/CGICalendarComponent.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Helpers for hosts. All may be called from any thread.
class TESSEL_EXPORT MRVUtilities {
public:
    MRVUtilities() = delete;

    /// The value of an `Authorization` field with the Basic scheme (RFC 7617): "Basic " and the
    /// Base64 of user, ":" and password.
    static std::string basicAuthString(std::string_view user, std::string_view password);

    /// The value of an `Authorization` field with the Bearer scheme (RFC 6750, 2.1).
    static std::string bearerTokenAuthString(std::string_view token);

    /// The VTIMEZONE components of a zone, read from the library's zone bundle at every call. The
    /// bundle's file is chosen by the last component of the identifier only: where two zones share
    /// it ("US/Central" and "Canada/Central"), both get the definition of one of them, with that
    /// one's TZID; compare it before you send it as the other's. Empty for a zone that the bundle
    /// does not have.
    static std::vector<std::shared_ptr<CGICalendarComponent>> vTimeZone(const TimeZone& zone);
};

} // namespace Tessel
