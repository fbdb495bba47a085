#pragma once

/// The namespaces of requests and answers.
namespace Tessel::XMLNamespace {

inline constexpr const char* dav = "DAV:";
inline constexpr const char* caldav = "urn:ietf:params:xml:ns:caldav";
inline constexpr const char* calendarServer = "http://calendarserver.org/ns/";
inline constexpr const char* appleICal = "http://apple.com/ns/ical/";

} // namespace Tessel::XMLNamespace
