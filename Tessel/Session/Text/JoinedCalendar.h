#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Session/Outcome/Result.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// Makes one iCalendar text of many calendar objects, every component as it comes but for its line
/// ends, which are those of RFC 5545: it is written piece by piece and never held as a whole. Of a
/// zone of the time-zone database the first definition holds for all. An object whose zone of
/// another name differs from one before comes behind it, as a calendar of its own.
class TESSEL_EXPORT JoinedCalendar {
public:
    using Write = std::function<void(std::string_view)>; ///< takes the next piece

    /// Begins a calendar of this name; `write` is called by every member.
    JoinedCalendar(const std::string& name, Write write);

    /// Adds what one object holds; nothing of it, and a failure as of `TextTree::read`, where it
    /// cannot be read.
    Outcome add(const std::string& text);
    void end(); ///< after the last object

private:
    const Write write_;
    std::map<std::string, std::string> zones_;
    std::vector<std::string> apart_;
};

} // namespace Tessel
