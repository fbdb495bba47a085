#pragma once

#include <Tessel/TesselSession.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Tessel::App {

/// One event of a file with what belongs to it, as a calendar object of its own.
struct FileEvent {
    std::string uid;
    Result<EventText> event;
};

/// The events of an iCalendar file (RFC 5545, 3.4), each with the instances that differ from its
/// series and the zones that it uses; and, without an event, what else stands in it.
Result<std::vector<FileEvent>> eventsOf(const std::string& text);

/// Makes one calendar of many calendar objects, every component byte by byte. An object whose zone
/// differs from another of the same name comes in a calendar of its own.
class JoinedCalendar {
public:
    using Write = std::function<void(std::string_view)>;

    JoinedCalendar(const std::string& name, Write write);
    Outcome add(const std::string& text);
    void end();

private:
    const Write write_;
    std::map<std::string, std::string> zones_;
    std::vector<std::string> apart_;
};

} // namespace Tessel::App
