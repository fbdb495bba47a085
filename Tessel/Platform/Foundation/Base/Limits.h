#pragma once

#include <cstddef>
#include <cstdint>

/// What one answer, one text or one peer may cost before it is refused. docs/limits.md says what
/// happens beyond each.
namespace Tessel::Limits {

// Zone definitions (VTIMEZONE).
inline constexpr std::size_t zoneBytes = 64 * 1024;
inline constexpr std::size_t zoneObservances = 256;
inline constexpr std::size_t zoneRuleBytes = 256;
inline constexpr std::size_t zoneRules = 100; ///< recurrences of all observances together
inline constexpr std::size_t zoneRulesAtOnce = 8; ///< recurrences that hold at the same time
inline constexpr std::size_t zoneFileBytes = 64 * 1024; ///< of a file of the time-zone database
inline constexpr std::size_t zoneNameBytes = 64; ///< of a name that is looked up

// Dates by patterns that ICU reads.
inline constexpr std::size_t dateBytes = 1000; ///< of the text, and of the pattern

// Transport.
inline constexpr int redirects = 10; ///< of one exchange, and of discovery from step to step
inline constexpr int headerLines = 1000; ///< of one exchange, interim answers included
inline constexpr std::size_t headerBytes = 1 << 20; ///< of one exchange
inline constexpr long keptConnections = 64;
inline constexpr std::size_t exchanges = 64; ///< under way at the same time, of all managers
/// Of these, with hosts that have not answered before.
inline constexpr std::size_t exchangesWithStrangers = 32;
/// A compressed answer may become so many times what has arrived of it and this many bytes more.
inline constexpr std::uint64_t expansion = 128;
inline constexpr std::uint64_t expansionAllowance = 32 * 1024;

// XML. libxml2 compares every attribute of a tag with those before it, looks a prefix up through
// all declarations and ancestors, and has a table of names of a fixed size; these keep its cost
// linear.
inline constexpr std::size_t xmlAttributes = 256; ///< of one tag, namespace declarations included
inline constexpr int xmlDepth = 100;
inline constexpr int xmlNamespaces = 128; ///< in scope at the same time
inline constexpr int xmlNames = 4096; ///< of elements, attributes and namespaces, prefixes too
/// Elements, attributes, declarations and texts, of some 120 bytes each: 40 for each of 100,000
/// responses.
inline constexpr std::size_t xmlNodes = 4'000'000;

// iCalendar text of servers.
/// Components, properties and parameters of one resource, of some 120 bytes each.
inline constexpr std::size_t calendarNodes = 1'000'000;

// Calendar objects that a session reads or edits as text.
inline constexpr std::size_t textBytes = 256 * 1024 * 1024;
inline constexpr std::size_t textLines = 1'000'000;
inline constexpr std::size_t textDepth = 100; ///< of components in components

// Recurrence, of one calendar object.
inline constexpr std::size_t recurrenceSteps = 100'000; ///< of libical, of some 5 us, of each rule
inline constexpr std::size_t recurrenceTimes = 10'000'000; ///< looked at, of rules within the day
inline constexpr std::size_t recurrenceInstances = 100'000; ///< of one answer
inline constexpr std::int64_t recurrenceEnd = 16'725'225'600'000; ///< 2500-01-01, in milliseconds
/// How far a COUNT is followed to find the last instance.
inline constexpr std::size_t countedSteps = 1000;
inline constexpr std::int64_t countedTime = 1'577'880'000'000; ///< 50 years, in milliseconds
inline constexpr std::size_t sharedZones = 64; ///< zone definitions that many texts share

// Sessions.
inline constexpr int listingPages = 10'000; ///< in which a server tells what has changed
/// How often one edit is merged and written again. Of those that write at the same time one is
/// always through, so this many others must be at it.
inline constexpr int changeTries = 50;
inline constexpr std::size_t nameBytes = 150; ///< of a UID that becomes a resource's name
inline constexpr std::size_t notifications = 1000; ///< that one call fetches
inline constexpr int outboxTries = 100; ///< while others write to the same outbox

// Files.
inline constexpr std::size_t fileBytes = std::size_t(1) << 30; ///< of a file that is read whole

} // namespace Tessel::Limits
