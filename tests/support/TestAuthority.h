#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <openssl/x509.h>

#include <memory>
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

    /// The authority's own certificate as PEM.
    std::string file() const { return file_; }
    /// A directory in which that certificate is found by its hash.
    std::string directory() const { return (directory_.path() / "hashed").string(); }

    /// A certificate for these alternative names, such as "DNS:localhost" or "IP:127.0.0.1".
    Identity issue(const std::vector<std::string>& names, bool isExpired = false);

private:
    std::shared_ptr<X509> certify(
        EVP_PKEY* key, const char* name, int kind, const std::string& extension, bool isExpired);

    const TemporaryDirectory directory_;
    std::shared_ptr<EVP_PKEY> key_;
    std::shared_ptr<X509> certificate_;
    std::string file_;
    int issued_ = 0;
};

} // namespace Tessel::Test
