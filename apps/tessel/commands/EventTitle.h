#pragma once

#include <Tessel/TesselSession.h>

#include <string>

namespace Tessel::App {

/// The summary of an event, or its place where it has none.
std::string titleOf(const EventPart& part, const std::string& place);
/// The same of a text, which may be unreadable.
std::string titleOf(const std::string& text, const std::string& place);

} // namespace Tessel::App
