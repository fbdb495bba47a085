#include "CaldavLibrary/Extensions/StringExtension.h"

#include "CaldavLibrary/Extensions/ICalDatePatterns.h"
#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/UTF8.h"

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
