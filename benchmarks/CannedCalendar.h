#pragma once

#include "Tessel/Session/Session.h"
#include "benchmarks/LoopbackServer.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel::Benchmarks {

/// The answers of a server whose one calendar holds so many events of the corpus and never changes.
class CannedCalendar {
public:
    explicit CannedCalendar(std::size_t events);

    static constexpr const char* home = "/calendars/alice/";
    static constexpr const char* place = "/calendars/alice/work/";

    /// As it goes on the wire: where the account lives, the list of calendars, all tags, or the
    /// events that a calendar-multiget asks for.
    std::string answerTo(std::string_view request) const;

    /// A server of its own that takes so long for each answer, and a session of its account.
    static LoopbackServer serve(
        std::size_t events, std::chrono::milliseconds pause = std::chrono::milliseconds(0));
    static Session::Opened open(const LoopbackServer& server);

private:
    std::string home_;
    std::string tags_;
    std::vector<std::string> events_; ///< what a multistatus says of each
};

} // namespace Tessel::Benchmarks
