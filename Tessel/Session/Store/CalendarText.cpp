#include "Tessel/Session/Store/CalendarText.h"

#include <algorithm>

namespace Tessel {

bool isCalendarText(std::string_view text)
{
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const auto start = text.find_first_not_of(" \t\r\n");
    if (start == text.npos) return false;
    constexpr std::string_view begin = "BEGIN:VCALENDAR";
    const auto first = text.substr(start, begin.size());
    return std::equal(first.begin(), first.end(), begin.begin(), begin.end(), [](char a, char b) {
        return (a >= 'a' && a <= 'z' ? a - 'a' + 'A' : a) == b;
    }) && text.find('\0') == text.npos;
}

} // namespace Tessel
