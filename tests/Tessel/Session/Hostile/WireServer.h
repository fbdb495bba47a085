#pragma once

#include "tests/support/FakeCalendarServer.h"
#include "tests/support/ScriptedServer.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tessel::Test {

/// A `FakeCalendarServer` on a port of the loopback interface, with a fault in the way of some of
/// its requests. It also offers to share its calendars, all with the same people, and has one
/// invitation.
class WireServer {
public:
    struct Fault {
        ScriptedAnswer answer;
        std::size_t from; ///< the number of the request that meets it, from 0
        bool lasts = false; ///< all that follow meet it too
        bool isCarriedOut = false; ///< what was asked is done all the same, after `pause`
        std::chrono::milliseconds pause = {};
    };
    struct Request {
        std::string method;
        std::string path;
        bool metFault;
    };

    WireServer();
    explicit WireServer(Fault fault, std::string elsewhere);

    FakeCalendarServer& calendars() { return *calendars_; }
    std::string url(const std::string& path) const { return server_.url(path); }
    std::vector<Request> requests() const;
    bool isSharedWith(const std::string& address) const;
    bool hasInvitation() const;
    bool hasSharedCalendar() const;
    std::size_t openConnectionCount() const { return server_.openConnectionCount(); }

private:
    ScriptedAnswer answer(const URLRequest& request);
    std::string carryOut(URLRequest request, const std::string& base, const std::string& path);

    std::optional<std::string> answerOfSharing(const URLRequest& request, const std::string& path);

    const std::shared_ptr<FakeCalendarServer> calendars_ = std::make_shared<FakeCalendarServer>();
    const Fault fault_;
    const std::string elsewhere_;
    mutable std::mutex mutex_;
    std::vector<Request> requests_;
    std::set<std::string> sharees_ {"mailto:bob@example.com"};
    bool hasInvitation_ = true;
    bool hasSharedCalendar_ = false;
    ScriptedServer server_;
};

} // namespace Tessel::Test
