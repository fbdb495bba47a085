#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel::Benchmarks {

// Realistic calendar data, the same in every run: events of about 2 KB with a VTIMEZONE, a folded
// description, an organizer, three attendees with parameters and an alarm; every fifth recurs.

/// The number of events that benchmarks are told about.
inline constexpr std::size_t corpusEvents = 10'000;

/// One calendar resource that holds one event, with CR LF line ends.
std::string eventResource(std::size_t index);
std::vector<std::string> eventResources(std::size_t count);

/// The server-relative path and the entity tag that the answers below give a resource.
std::string eventHref(std::size_t index);
std::string eventETag(std::size_t index);

/// One calendar with the components of all resources: 20 MB for `corpusEvents`.
std::string calendarFile(std::size_t count);

/// What a multistatus answer to a calendar-multiget says of a resource, and the whole of one.
std::string multigetResponse(std::size_t index);
std::string multistatus(std::string_view responses);

/// The multistatus answer to a calendar-multiget of the resources.
std::string multigetAnswer(std::size_t count);

/// The multistatus answer to a calendar-query for the entity tags only.
std::string entityTagAnswer(std::size_t count);

} // namespace Tessel::Benchmarks
