#include "apps/tessel/commands/EventTitle.h"

namespace Tessel::App {

std::string titleOf(const EventPart& part, const std::string& place)
{
    const auto summary = part.summary().value_or("");
    return summary.empty() ? place : summary;
}

std::string titleOf(const std::string& text, const std::string& place)
{
    const auto event = EventText::read(text);
    return event ? titleOf(event.value().main(), place) : place;
}

} // namespace Tessel::App
