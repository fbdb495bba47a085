#pragma once

#include "tests/support/KeptProgram.h"

#include <string>

namespace Tessel::Test {

/// A real calendar server with TLS on a port of the loopback interface. It ends, and its files go,
/// with this object or with the process, even when that is killed.
class CalendarServer {
public:
    /// The server of that name ("radicale", "cyrus"), started by the first call in this process.
    static const CalendarServer& named(const std::string& name);

    explicit CalendarServer(const std::string& name);

    bool isRunning() const { return !address_.empty(); }
    /// Why this machine cannot run the server; empty when it should have started and did not.
    const std::string& absence() const { return absence_; }
    /// "127.0.0.1" and the port.
    const std::string& address() const { return address_; }
    const std::string& authorityFile() const { return authorityFile_; }

private:
    KeptProgram keeper_;
    std::string absence_;
    std::string address_;
    std::string authorityFile_;
};

} // namespace Tessel::Test
