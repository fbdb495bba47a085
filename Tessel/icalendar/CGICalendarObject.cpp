#include "Tessel/icalendar/CGICalendarObject.h"

namespace Tessel {

CGICalendarObject::CGICalendarObject()
    : CGICalendarComponent("VCALENDAR")
{
}

CGICalendarObject::CGICalendarObject(std::string_view prodid, std::string_view version)
    : CGICalendarObject()
{
    setVersion(version);
    setProdid(prodid);
}

std::shared_ptr<CGICalendarObject> CGICalendarObject::object()
{
    return std::make_shared<CGICalendarObject>();
}

std::shared_ptr<CGICalendarObject> CGICalendarObject::objectWithProdid(
    std::string_view prodid, std::string_view version)
{
    return std::make_shared<CGICalendarObject>(prodid, version);
}

std::optional<std::string_view> CGICalendarObject::version() const
{
    return propertyValueForName("VERSION");
}

void CGICalendarObject::setVersion(std::optional<std::string_view> version)
{
    setPropertyValue(version, "VERSION");
}

std::optional<std::string_view> CGICalendarObject::prodid() const
{
    return propertyValueForName("PRODID");
}

void CGICalendarObject::setProdid(std::optional<std::string_view> prodid)
{
    setPropertyValue(prodid, "PRODID");
}

CGICalendarObject::Components CGICalendarObject::componentsWithType(std::string_view type) const
{
    Components found;
    for (const auto& component : components) {
        if (component && component->isType(type)) found.push_back(component);
    }
    return found;
}

CGICalendarObject::Components CGICalendarObject::events() const
{
    return componentsWithType("VEVENT");
}

CGICalendarObject::Components CGICalendarObject::todos() const
{
    return componentsWithType("VTODO");
}

CGICalendarObject::Components CGICalendarObject::journals() const
{
    return componentsWithType("VJOURNAL");
}

CGICalendarObject::Components CGICalendarObject::freebusies() const
{
    return componentsWithType("VFREEBUSY");
}

CGICalendarObject::Components CGICalendarObject::timezones() const
{
    return componentsWithType("VTIMEZONE");
}

} // namespace Tessel
