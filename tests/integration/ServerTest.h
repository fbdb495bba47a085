#pragma once

#include "integration/ServerProcess.h"
#include "support/TestHost.h"

#include <Tessel/Tessel.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tessel::Test {

/// A user of the server: a host of his own, and a client once his account has been discovered.
struct User {
    std::string name;
    std::shared_ptr<TestHost> host = std::make_shared<TestHost>();
    std::shared_ptr<MRVAccount> account = {};
    std::shared_ptr<MRVClient> client = {};
};

/// A test that has a real server to itself.
class ServerTest : public testing::Test {
protected:
    using Calendar = std::shared_ptr<MRVCalendar>;
    using Event = std::shared_ptr<MRVEvent>;
    using Calendars = std::vector<Calendar>;
    using Events = std::vector<Event>;

    explicit ServerTest(std::string server)
        : serverName_(std::move(server))
    {
    }

    void SetUp() override;
    void TearDown() override;

    ServerProcess& server() { return *server_; }

    /// A user whose account knows the bare host name and port only.
    User user(const std::string& name, const std::string& password = "secret") const;
    /// A user whose account has been discovered.
    User discovered(const std::string& name) const;

    /// Makes a calendar and returns it as the server lists it.
    Calendar makeCalendar(const User& user, const std::string& name) const;
    Calendars list(const User& user) const;
    /// The calendar of that display name; fails the test when there is none.
    Calendar find(const User& user, const std::string& name) const;
    /// Null when the resource holds no event.
    Event fetch(const User& user, const Calendar& calendar, const std::string& href) const;

    struct Answer {
        int status = 0;
        std::string body;
    };
    /// Another program's request, behind the library's back.
    Answer http(const User& user, const std::string& method, const std::string& path,
        const std::string& body = "") const;

    /// An iCalendar text of one event on that day of January 2027.
    static std::string text(const std::string& uid, const std::string& summary, int day = 18);

private:
    const std::string serverName_;
    std::unique_ptr<ServerProcess> server_;
};

/// An hour in Berlin, in the calendar.
std::shared_ptr<MRVEvent> newEvent(
    const std::shared_ptr<MRVCalendar>& calendar, const std::string& summary);
/// The same event with another summary.
std::shared_ptr<MRVEvent> renamed(const MRVEvent& event, const std::string& summary);

} // namespace Tessel::Test
