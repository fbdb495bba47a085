#include "Tessel/CaldavLibrary/Operation/Event/MRVGetEventsByRange.h"

#include "Tessel/CaldavLibrary/Extensions/FixedBody.h"
#include "Tessel/CaldavLibrary/Extensions/URLRequestExtension.h"
#include "Tessel/CaldavLibrary/Operation/LogSite.h"
#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Tessel/Platform/Plinth/Logger.h"

namespace Tessel {

namespace {

constexpr FixedBody body(R"(
<?xml version="1.0" encoding="utf-8" ?>
<c:calendar-query xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">
  <d:prop>
    <d:getetag />
    <c:calendar-data />
    <C:comp name="VCALENDAR">
      <C:prop name="VERSION"/>
      <C:comp name="VEVENT">
        <C:prop name="SUMMARY"/>
        <C:prop name="UID"/>
        <C:prop name="DTSTART"/>
        <C:prop name="DTEND"/>
        <C:prop name="DURATION"/>
        <C:prop name="RRULE"/>
        <C:prop name="RDATE"/>
        <C:prop name="EXRULE"/>
        <C:prop name="EXDATE"/>
        <C:prop name="RECURRENCE-ID"/>
      </C:comp>
      <C:comp name="VTIMEZONE"/>
    </C:comp>
  </C:calendar-data>
</D:prop>
<C:filter>
  <C:comp-filter name="VCALENDAR">
    <C:comp-filter name="VEVENT">
      <C:time-range start="20060104T000000Z"
      end="20060105T000000Z"/>
    </C:comp-filter>
  </C:comp-filter>
</C:filter>
</C:calendar-query>)");

/// "[uid, uid, …]"
std::string listDescription(const std::vector<std::shared_ptr<MRVEvent>>& events)
{
    std::string text = "[";
    for (const auto& event : events) {
        if (text.size() > 1) text += ", ";
        text += event->uid;
    }
    return text + "]";
}

} // namespace

void MRVGetEventsByRange::main()
{
    URLRequest request(absoluteURL(""));
    setReport(request, body.text());
    process(request, "Events by range", nullptr, [](const Data& data, const auto& error, auto) {
        if (error) return;
        if (const auto events = MRVEventsParser(data, nullptr).parseEvents()) {
            Plinth::logger()->log(
                inMain(Plinth::Level::debug), "events: ", [&] { return listDescription(*events); });
        }
    });
}

} // namespace Tessel
