#include "Tessel/icalendar/CGICalendarParameter.h"

#include "Tessel/icalendar/ContentLineParts.h"

namespace Tessel {

void CGICalendarParameter::setString(std::string_view text)
{
    const auto [name, value] = splitParameter(text);
    if (!name) return;
    const std::string copy(*value); // `text` may be this parameter's own name
    setName(name);
    setValue(copy);
}

void CGICalendarParameter::appendString(std::string& text) const
{
    text.append(nameOrEmpty()).push_back('=');
    text.append(valueOrEmpty());
}

std::string CGICalendarParameter::string() const
{
    std::string text;
    appendString(text);
    return text;
}

} // namespace Tessel
