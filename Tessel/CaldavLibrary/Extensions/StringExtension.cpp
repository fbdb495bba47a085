#include "Tessel/CaldavLibrary/Extensions/StringExtension.h"

#include "Tessel/CaldavLibrary/Extensions/ICalDatePatterns.h"
#include "Tessel/Platform/Foundation/Text/UTF8.h"
#include "Tessel/Platform/Foundation/Time/DateFormatter.h"

namespace Tessel {

std::optional<Date> date(std::string_view text, std::string_view inFormat)
{
    return DateFormatter::date(text, inFormat, TimeZone::UTC());
}

std::optional<Date> iCalDate(std::string_view text)
{
    if (codePointCount(text) == 8) return date(text, ICalDatePatterns::date);
    if (text.ends_with('Z')) return date(text, ICalDatePatterns::utcDateTime);
    return date(text, ICalDatePatterns::dateTime);
}

} // namespace Tessel
