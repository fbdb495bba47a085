#include "Tessel/icalendar/CGICalendarComponent.h"

#include "Tessel/Platform/Foundation/Text/UUID.h"

namespace Tessel {

static std::shared_ptr<CGICalendarComponent> identified(std::string_view type, const Date& now)
{
    auto component = std::make_shared<CGICalendarComponent>(type);
    component->setUID(makeUUID());
    component->setDateTimeStamp(now);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::event()
{
    auto component = identified("VEVENT", Date());
    component->setSequenceNumber(0);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::todo()
{
    const Date now;
    auto component = identified("VTODO", now);
    component->setSequenceNumber(0);
    component->setCreated(now);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::journal()
{
    auto component = identified("VJOURNAL", Date());
    component->setSequenceNumber(0);
    return component;
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::freebusy()
{
    return identified("VFREEBUSY", Date());
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::timezone()
{
    return componentWithType("VTIMEZONE");
}

std::shared_ptr<CGICalendarComponent> CGICalendarComponent::alarm()
{
    return componentWithType("VALARM");
}

} // namespace Tessel
