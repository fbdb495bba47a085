#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <string>
#include <vector>

namespace Tessel::Test {

/// PEM files of a certificate chain and its private key.
struct Identity {
    std::string certificateFile;
    std::string keyFile;
};

/// A throw-away certificate authority of `scripts/lib/make-authority` in a directory of its own,
/// which goes with it.
class TestAuthority {
public:
    TestAuthority();

    /// The authority's own certificate as PEM.
    std::string file() const { return (directory_.path() / "authority.pem").string(); }
    /// A directory in which that certificate is found by its hash.
    std::string directory() const { return (directory_.path() / "hashed").string(); }

    /// A certificate for these alternative names, such as "DNS:localhost" or "IP:127.0.0.1".
    Identity issue(const std::vector<std::string>& names, bool isExpired = false);

private:
    void make(const std::string& certificate) const;

    const TemporaryDirectory directory_;
    int issued_ = 0;
};

} // namespace Tessel::Test
