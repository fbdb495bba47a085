#include "apps/tessel/EventText.h"

#include <stdexcept>

namespace Tessel::App {

namespace {

std::string xmlText(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '\r':
            break;
        default:
            out += c;
        }
    }
    return out;
}

void requireUID(const std::string& text)
{
    const auto calendar = CGICalendar::initWithString(text);
    for (const auto& object : calendar->objects) {
        for (const auto& event : object->events()) {
            if (!event->UID()) throw std::runtime_error("an event has no UID");
        }
    }
}

} // namespace

std::shared_ptr<MRVEvent> readEvent(const std::string& text,
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& href, const std::string& eTag)
{
    requireUID(text);
    // The library reads events out of a server's answer, so the text is made one.
    const auto answer = R"(<multistatus xmlns="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">)"
                        "<response><href>"
        + xmlText(href) + "</href><propstat><prop><getetag>" + xmlText(eTag)
        + "</getetag><c:calendar-data>" + xmlText(text)
        + "</c:calendar-data></prop><status>HTTP/1.1 200 OK</status></propstat></response>"
          "</multistatus>";
    MRVEventsParser parser(Data(answer), calendar ? calendar->account : nullptr);
    parser.calendar = calendar;
    const auto events = parser.parseEvents();
    return events && events->size() == 1 ? events->front() : nullptr;
}

std::string escaped(const std::string& plain)
{
    std::string out;
    for (const char c : plain) {
        if (c == '\\' || c == ';' || c == ',') out += '\\';
        if (c == '\n') {
            out += "\\n";
        } else if (c != '\r') {
            out += c;
        }
    }
    return out;
}

std::string unescaped(const std::string& value)
{
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\r') continue;
        const bool isEscape = value[i] == '\\' && i + 1 < value.size();
        if (!isEscape) {
            out += value[i];
            continue;
        }
        const char next = value[++i];
        out += next == 'n' || next == 'N' ? '\n' : next;
    }
    return out;
}

} // namespace Tessel::App
