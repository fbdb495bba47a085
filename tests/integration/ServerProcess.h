#pragma once

#include "support/TestAuthority.h"

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace Tessel::Test {

/// A real calendar server with TLS on a free port of the loopback interface, for the users
/// alice/secret and bob/secret. It ends with this object, and with the test process.
class ServerProcess {
public:
    /// `name` is "radicale" or "cyrus". Throws when the server does not start.
    explicit ServerProcess(const std::string& name);
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    /// Why this machine cannot run the server; empty when it can.
    static std::string whyUnavailable(const std::string& name);

    const std::string& port() const { return port_; }
    std::string authorityFile() const { return authority_.file(); }

private:
    void waitUntilReady();
    void stop();

    TestAuthority authority_;
    std::filesystem::path directory_;
    std::string port_;
    pid_t process_ = -1;
};

} // namespace Tessel::Test
