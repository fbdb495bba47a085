#pragma once

#include <Tessel/Tessel.h>

#include <memory>
#include <string>

namespace Tessel::App {

/// The one event of an iCalendar text; null when the text holds none, or several. Throws
/// `std::runtime_error` for an event without UID.
std::shared_ptr<MRVEvent> readEvent(const std::string& text,
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& href = "/",
    const std::string& eTag = "");

/// Plain text as the value of a TEXT property (RFC 5545, 3.3.11), and back.
std::string escaped(const std::string& plain);
std::string unescaped(const std::string& value);

} // namespace Tessel::App
