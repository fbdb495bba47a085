#pragma once

#include "tests/integration/CalendarServer.h"
#include "tests/integration/ExchangeRecorder.h"
#include "tests/support/TestHost.h"

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

/// A test on a real server, "radicale" or "cyrus", that holds nothing when the test begins.
class ServerTest : public testing::TestWithParam<const char*> {
protected:
    using Calendar = std::shared_ptr<MRVCalendar>;
    using Event = std::shared_ptr<MRVEvent>;
    using Notification = std::shared_ptr<MRVNotification>;
    using Calendars = std::vector<Calendar>;
    using Events = std::vector<Event>;
    using Notifications = std::vector<Notification>;

    using Done = Callback<std::optional<Error>>;
    using Listed = Callback<std::optional<Calendars>, std::optional<Error>>;

    void SetUp() override;
    void TearDown() override;

    bool isCyrus() const { return std::string(GetParam()) == "cyrus"; }
    const CalendarServer& server() const { return *server_; }
    const ExchangeRecorder& transport() const { return *transport_; }
    /// From now on a refused write is an error to the library instead of its end.
    void surviveRefusals() { transport_->refusalsAreErrors = true; }

    /// A user whose account knows the bare host name and port only.
    User user(const std::string& name, const std::string& password = "secret") const;
    /// A user whose account has been discovered.
    User discovered(const std::string& name) const;

    /// Makes a calendar and returns it as the server lists it.
    Calendar makeCalendar(const User& user, const std::string& name) const;
    Calendars list(const User& user) const;
    /// The calendar of that display name; throws when there is none.
    Calendar find(const User& user, const std::string& name) const;
    /// Null when the resource holds no event.
    Event fetch(const User& user, const Calendar& calendar, const std::string& href) const;
    /// The notifications that the host does not hold yet.
    Notifications notifications(const User& user) const;

    struct Answer {
        int status = 0;
        std::string body;
    };
    /// Another program's request, behind the library's back.
    Answer http(const User& user, const std::string& method, const std::string& path,
        const std::string& body = "") const;

    /// The same without waiting.
    void send(const User& user, const std::string& method, const std::string& path,
        const std::string& body, MTask::CompletionHandler completion) const;

    /// The server's answer to a deletion, of which only 204 is told to the host.
    void expectDeletion(const Done& told) const;

private:
    void empty(const User& user) const;

    const CalendarServer* server_ = nullptr;
    std::shared_ptr<ExchangeRecorder> transport_;
};

/// Runs the tests of a suite on the servers named, one test name ending for each server.
#define TESSEL_ON_SERVERS(suite, ...)                                                              \
    INSTANTIATE_TEST_SUITE_P(Real, suite, testing::Values(__VA_ARGS__),                            \
        [](const auto& info) { return std::string(info.param); })

} // namespace Tessel::Test
