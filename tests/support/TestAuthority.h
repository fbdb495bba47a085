#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Tessel::Test {

/// PEM files of a certificate chain and its private key.
struct Identity {
    std::string certificateFile;
    std::string keyFile;
};

/// A throw-away certificate authority in a directory of its own, which goes with it.
class TestAuthority {
public:
    TestAuthority();
    ~TestAuthority();
    TestAuthority(const TestAuthority&) = delete;
    TestAuthority& operator=(const TestAuthority&) = delete;

    /// The authority's own certificate as PEM.
    std::string file() const { return authority_.certificateFile; }
    /// A directory in which that certificate is found by its hash.
    std::string directory() const { return (directory_ / "hashed").string(); }

    /// A certificate for these alternative names, such as "DNS:localhost" or "IP:127.0.0.1".
    Identity issue(const std::vector<std::string>& names, bool isExpired = false);

private:
    std::filesystem::path directory_;
    Identity authority_;
    int issued_ = 0;
};

} // namespace Tessel::Test
