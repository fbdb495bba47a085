#pragma once

#include "Tessel/Session/Opening/ServerAddress.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Tessel {

/// Asks DNS which servers hold the calendars of a mail domain (RFC 6764): SRV of _caldavs._tcp, and
/// of _caldav._tcp where plain HTTP is allowed, and TXT for the path. It has one thread of its own,
/// which starts with the first lookup; each takes a few seconds at most. It is never destroyed; the
/// process may exit at any time.
class ServiceLookup {
public:
    using Found = std::function<void(std::vector<ServerAddress>)>;

    static ServiceLookup& shared();

    /// `found` gets the servers on the lookup's thread, those to be tried first in front; none
    /// where DNS names none or does not answer. It returns soon.
    void find(const std::string& mailDomain, bool allowsPlainHTTP, Found found);

    /// Asks these servers, such as "127.0.0.1:5353", instead of the system's: for tests.
    void setServers(const std::string& servers);

private:
    struct Question {
        std::string mailDomain;
        bool allowsPlainHTTP;
        Found found;
    };

    ServiceLookup() = default;
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Question> questions_;
    std::string servers_;
    bool runs_ = false;
};

} // namespace Tessel
