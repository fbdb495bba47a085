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

    static std::shared_ptr<CGICalendarObject> object();
    static std::shared_ptr<CGICalendarObject> objectWithProdid(
        std::string_view prodid, std::string_view version = "2.0");

    std::optional<std::string_view> version() const;
    void setVersion(std::optional<std::string_view> version);
    std::optional<std::string_view> prodid() const;
    void setProdid(std::optional<std::string_view> prodid);

    using Components = std::vector<std::shared_ptr<CGICalendarComponent>>;

    /// The direct children of that type, in order.
    Components componentsWithType(std::string_view type) const;
    Components events() const;
    Components todos() const;
    Components journals() const;
    Components freebusies() const;
    Components timezones() const;
};

} // namespace Tessel
