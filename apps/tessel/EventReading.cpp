#include "apps/tessel/EventReading.h"

#include <stdexcept>

namespace Tessel::App {

namespace {

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
    // The engine keeps a carriage return wherever a line was folded.
    auto plain = text;
    std::erase(plain, '\r');
    return MRVEventsParser::event(std::move(plain), eTag, href, calendar);
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
