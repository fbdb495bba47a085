#include "Tessel/CaldavLibrary/Operation/Calendar/MRVCreateCalendarOperation.h"

#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Extensions/XMLDocumentText.h"
#include "Tessel/CaldavLibrary/Extensions/XMLNamespace.h"
#include "Tessel/CaldavLibrary/Extensions/ZoneDefinitions.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "Tessel/Platform/Foundation/Text/UUID.h"
#include "Tessel/icalendar/CGICalendarObject.h"

namespace Tessel {

namespace {

constexpr auto D = XMLNamespace::dav;
constexpr auto C = XMLNamespace::caldav;
constexpr auto I = XMLNamespace::appleICal;

std::optional<std::string> timeZoneText(const TimeZone& zone)
{
    const auto definition = ownDefinition(zone);
    if (!definition) return std::nullopt;
    const auto object = CGICalendarObject::objectWithProdid("-//Morv//Caldav//EN");
    object->addComponent(definition);
    return object->description();
}

void addComponents(GDataXMLElement& prop, const MRVCalendarComponents& components)
{
    const std::pair<MRVCalendarComponents, const char*> names[] = {
        {MRVCalendarComponents::event, "VEVENT"},
        {MRVCalendarComponents::todo, "VTODO"},
        {MRVCalendarComponents::journal, "VJOURNAL"},
    };
    std::optional<GDataXMLElement> set; // must not be empty (RFC 4791, 5.2.3)
    for (const auto& [component, name] : names) {
        if (!components.contains(component)) continue;
        if (!set) set = prop.addElement("supported-calendar-component-set", C);
        set->addElement("comp", C).setAttribute("name", name);
    }
}

std::string mkcalendarBody(const MRVCalendar& calendar)
{
    auto mkcalendar = GDataXMLElement::elementWithName("mkcalendar", C);
    auto prop = mkcalendar.addElement("set", D).addElement("prop", D);
    prop.addElement("displayname", D, calendar.displayName);
    if (calendar.desc) prop.addElement("calendar-description", C, *calendar.desc);
    if (calendar.order) prop.addElement("calendar-order", I, *calendar.order);
    if (calendar.color) prop.addElement("calendar-color", I, *calendar.color);
    if (calendar.supportedComponents) addComponents(prop, *calendar.supportedComponents);
    if (const auto zone = timeZoneText(calendar.timeZone)) {
        prop.addElement("calendar-timezone", C, *zone);
    }
    MRVOperation::addXMLNamespaces(mkcalendar);
    return xmlDocumentText(mkcalendar);
}

} // namespace

std::string MRVCreateCalendarOperation::collectionURL() const
{
    if (!calendar->href.empty()) return absoluteURL(calendar->href);
    const auto& home = account()->calendarHomeURL;
    if (!home) fatalError("the calendar home is not known");
    const auto base = absoluteURL(*home);
    return base + (base.ends_with('/') ? "" : "/") + makeUUID() + "/";
}

void MRVCreateCalendarOperation::main()
{
    URLRequest request(collectionURL());
    request.method = "MKCALENDAR";
    setXMLBody(request, mkcalendarBody(*calendar));
    process(request, "Create Calendar", nullptr,
        [weak = weakly(this)](const Data&, const auto& error, auto status) {
            const auto self = weak.lock();
            if (!self) return;
            if (error || status == MRVStatusCode::created) return self->completionHandler(error);
            self->completionHandler(Error {
                "HTTP", status ? rawValue(*status) : 0, "the server did not create the calendar"});
        });
}

} // namespace Tessel
