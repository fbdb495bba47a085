#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tessel {

/// What a host may choose about its connections. TLS is always verified, in version 1.2 or later.
///
/// No environment variable names a proxy, an authority or a file of credentials, and the keys of
/// connections are written nowhere: SSLKEYLOGFILE has its file made, which stays empty. Only where
/// libcurl has been built on another TLS library than OpenSSL may that library honour the variable.
/// What the system's libraries read for every program stays: OpenSSL's configuration file
/// (OPENSSL_CONF) and the resolver's options (RES_OPTIONS, LOCALDOMAIN).
struct MNetworkConfiguration {
    /// PEM file of the certificate authorities to trust instead of the system's; empty for the
    /// system's. The file may be kept in memory for a day once it has been read.
    std::string authorityFile = {};
    /// Directory of such authorities, named by hash as `openssl rehash` does; instead of the
    /// system's, or besides `authorityFile`.
    std::string authorityDirectory = {};
    std::string clientCertificateFile = {}; ///< PEM; empty for none
    std::string clientKeyFile = {}; ///< PEM; empty when it is in `clientCertificateFile`
    /// Proxy as a URL such as "http://proxy.example:3128"; empty for none.
    std::string proxy = {};
    /// Bytes of one answer, after decompression, above which the exchange ends as an error. One
    /// that is compressed beyond all honest use is refused earlier (docs/limits.md).
    std::uint64_t maximumAnswerSize = std::uint64_t {1} << 30;
    /// Exchanges under way at the same time with one scheme, host and port, whatever user
    /// information the URLs hold; the others wait, the most urgent `MTaskPriority` first, else in
    /// the order of sending. It also bounds the connections kept to that host. 0 counts as 1. All
    /// hosts together are bounded by the process (docs/limits.md).
    std::size_t maximumExchangesPerHost = 16;

    friend bool operator==(const MNetworkConfiguration&, const MNetworkConfiguration&) = default;
};

} // namespace Tessel
