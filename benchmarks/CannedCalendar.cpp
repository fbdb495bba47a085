#include "benchmarks/CannedCalendar.h"

#include "benchmarks/Corpus.h"

#include <charconv>
#include <thread>

namespace Tessel::Benchmarks {

namespace {

constexpr std::string_view homeProperties
    = "<d:resourcetype><d:collection/></d:resourcetype>"
      "<c:calendar-home-set><d:href>/calendars/alice/</d:href></c:calendar-home-set>";
constexpr std::string_view calendarProperties
    = "<d:resourcetype><d:collection/><c:calendar/></d:resourcetype>"
      "<d:displayname>Work</d:displayname><d:current-user-privilege-set><d:privilege><d:all/>"
      "</d:privilege></d:current-user-privilege-set><d:sync-token>urn:token:1</d:sync-token>"
      "<c:supported-calendar-component-set><c:comp name=\"VEVENT\"/>"
      "</c:supported-calendar-component-set>";

std::string response(std::string_view href, std::string_view properties)
{
    return std::string("<d:response><d:href>")
        .append(href)
        .append("</d:href><d:propstat><d:prop>")
        .append(properties)
        .append("</d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>");
}

std::string onTheWire(std::string_view responses)
{
    const auto body = multistatus(responses);
    return "HTTP/1.1 207 Multi-Status\r\nDAV: 1, calendar-access\r\nContent-Type: text/xml\r\n"
           "Content-Length: "
        + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace

CannedCalendar::CannedCalendar(std::size_t events)
    : home_(onTheWire(response(home, homeProperties) + response(place, calendarProperties)))
{
    auto tags = response(place, calendarProperties);
    for (std::size_t i = 0; i < events; ++i) {
        tags += response(eventHref(i), "<d:getetag>" + eventETag(i) + "</d:getetag>");
        events_.push_back(multigetResponse(i));
    }
    tags_ = onTheWire(tags);
}

std::string CannedCalendar::answerTo(std::string_view request) const
{
    if (request.find("calendar-multiget") == request.npos)
        return request.find("<d:getetag/>") == request.npos ? home_ : tags_;

    constexpr std::string_view name = "/event-";
    std::string asked;
    for (auto at = request.find(name); at != request.npos; at = request.find(name, at)) {
        at += name.size();
        std::size_t number = events_.size();
        std::from_chars(request.data() + at, request.data() + request.size(), number);
        asked += events_.at(number);
    }
    return onTheWire(asked);
}

LoopbackServer CannedCalendar::serve(std::size_t events, std::chrono::milliseconds pause)
{
    const CannedCalendar calendar(events);
    return LoopbackServer([&](std::string_view request) {
        if (pause.count() > 0) std::this_thread::sleep_for(pause);
        return calendar.answerTo(request);
    });
}

Session::Opened CannedCalendar::open(const LoopbackServer& server)
{
    return wait(Session::open({.server = server.url(home), .user = "alice"}, Password {"secret"},
                    {}, {.allowsPlainHTTP = true}))
        .value();
}

} // namespace Tessel::Benchmarks
