#pragma once

#include "Tessel/Platform/Foundation/Base/CallSite.h"
#include "Tessel/Platform/Foundation/Base/Data.h"
#include "Tessel/Platform/Foundation/Base/Export.h"
#include "Tessel/Platform/Foundation/Web/HTTPHeaders.h"

#include <chrono>
#include <string>
#include <string_view>

namespace Tessel {

/// One HTTP request as it is handed to the transport: a value, cheap to copy even with a large
/// body.
class TESSEL_EXPORT URLRequest {
public:
    /// How stored answers are used; the library stores none.
    enum class CachePolicy { useProtocolCachePolicy };

    /// A GET of `url`, which is percent-encoded where it needs it. Text that is no URL even then
    /// is a programming error and stops the process.
    explicit URLRequest(std::string_view url, const CallSite& site = CallSite::current());

    const std::string& url() const { return url_; } ///< percent-encoded

    std::string method = "GET"; ///< as it is sent, in capitals
    HTTPHeaders headers; ///< without those that the transport sets
    Data body; ///< none when empty
    /// How long nothing may move in either direction before the exchange ends as an error. A header
    /// line moves when it is complete, and until the first byte of the request has left, finding
    /// and connecting the host counts as nothing. It is noticed at most a quarter later. Taken as
    /// at least 1 ms and at most a day.
    std::chrono::milliseconds timeoutInterval {60'000};
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy; ///< not used by the transport

private:
    std::string url_;
};

} // namespace Tessel
