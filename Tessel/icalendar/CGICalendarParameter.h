#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/icalendar/CGICalendarValue.h"

#include <string>
#include <string_view>

namespace Tessel {

/// One parameter of a property, "NAME=value" (RFC 5545, 3.2). Double quotes around a value are part
/// of it.
class TESSEL_EXPORT CGICalendarParameter final : public CGICalendarValue {
public:
    CGICalendarParameter() = default;
    explicit CGICalendarParameter(std::string_view text) { setString(text); } ///< `setString`

    /// Reads "NAME=value": the name before the first "=", the value between the first and the
    /// second; what follows a second "=" is dropped. Without any "=" nothing is set.
    void setString(std::string_view text);

    /// The name, "=" and the value, each empty when absent.
    std::string string() const;
    std::string description() const { return string(); } ///< as `string`
    /// Appends what `string` returns.
    void appendString(std::string& text) const;
};

} // namespace Tessel
