#pragma once

#include "Tessel/Platform/Transport/MNetworkManager.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tessel::Test {

/// A CalDAV server without a network, of the one account "/home/", that does what it is asked:
/// tags, guards, listings, sync tokens. It spells paths without encoding. Faults are put in its way
/// with `fault`. May be used from any thread.
class FakeCalendarServer final : public MNetworkManager {
public:
    struct Reply {
        int status = 0; ///< 0: the connection is lost
        std::string body = {};
        HTTPHeaders headers = {};
        bool isUnreachable = false; ///< instead: nobody listens
    };
    /// Sees a request before it is done; what it gives is the answer instead. `apply` does what was
    /// asked all the same and gives what the answer would be.
    using Fault = std::function<std::optional<Reply>(
        const URLRequest&, const std::function<Reply()>& apply)>;

    static constexpr const char* address = "https://server.example";

    int send(MTask task) override; ///< follows redirects, as far as the task's delegate lets it
    Reply replyTo(const URLRequest& request);

    void setFault(Fault fault);

    // The state of the server, as other programs see and change it.
    void addCalendar(const std::string& path);
    void put(const std::string& path, const std::string& text);
    void remove(const std::string& path);
    std::optional<std::string> text(const std::string& path) const;
    std::size_t resourceCount() const;
    /// How many requests of the method have come, and how many of them have been done.
    std::size_t asked(const std::string& method) const;
    /// Forgets the changes before now: older sync tokens are expired.
    void expireTokens();
    /// Changes listed at a time.
    std::size_t page = 1'000'000;
    bool hasSyncTokens = true;
    bool escapesCarriageReturns = true; ///< in the texts that it lists
    /// What it makes of every text that is written, where it keeps none as it comes.
    std::function<std::string(const std::string&)> rewrite = {};

private:
    struct Stored {
        std::string text;
        int version;
    };

    Reply answer(const URLRequest& request);
    Reply write(const URLRequest& request, const std::string& path);
    Reply moveTo(const URLRequest& request, const std::string& path);
    Reply list(const std::string& path, const std::string& depth) const;
    Reply report(const std::string& path, const std::string& body) const;
    Reply changes(const std::string& path, int since) const;
    std::string describe(const std::string& path) const;
    bool guards(const URLRequest& request, const std::string& path) const;
    std::string tag(const std::string& path) const;
    int versionOf(const std::string& calendar) const;

    mutable std::mutex mutex_;
    Fault fault_;
    std::set<std::string> calendars_;
    std::map<std::string, std::string> names_; ///< of calendars, as they were set
    std::map<std::string, Stored> resources_;
    std::map<std::string, int> removed_; ///< with the version of its removal
    std::map<std::string, std::size_t> asked_;
    int version_ = 1;
    int oldestToken_ = 0;
};

} // namespace Tessel::Test
