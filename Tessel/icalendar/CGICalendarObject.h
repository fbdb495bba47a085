#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/icalendar/CGICalendarComponent.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace Tessel {

/// A top-level calendar (RFC 5545, 3.4), of the type "VCALENDAR" when made by the host and of
/// whatever type stood in the text when parsed.
class TESSEL_EXPORT CGICalendarObject final : public CGICalendarComponent {
public:
    CGICalendarObject();
    /// With VERSION, then PRODID.
    explicit CGICalendarObject(std::string_view prodid, std::string_view version = "2.0");

    /// As the constructor without arguments.
    static std::shared_ptr<CGICalendarObject> object();
    /// As the constructor with these.
    static std::shared_ptr<CGICalendarObject> objectWithProdid(
        std::string_view prodid, std::string_view version = "2.0");

    std::optional<std::string_view> version() const; ///< VERSION, absent when there is none
    void setVersion(std::optional<std::string_view> version); ///< sets VERSION
    std::optional<std::string_view> prodid() const; ///< PRODID, absent when there is none
    void setProdid(std::optional<std::string_view> prodid); ///< sets PRODID

    /// Components in the order of the text.
    using Components = std::vector<std::shared_ptr<CGICalendarComponent>>;

    /// The direct children of that type, in order.
    Components componentsWithType(std::string_view type) const;
    ///@{
    /// The direct children of one type: VEVENT, VTODO, VJOURNAL, VFREEBUSY or VTIMEZONE.
    Components events() const;
    Components todos() const;
    Components journals() const;
    Components freebusies() const;
    Components timezones() const;
    ///@}
};

} // namespace Tessel
