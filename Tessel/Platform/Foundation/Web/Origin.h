#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Tessel {

/// Where a request goes: scheme, host and port (RFC 6454, 4). Letter case, a default port that is
/// written out, user information, one final dot of the host and the spelling of an IPv6 address
/// make no difference. Hosts are compared as they are written in all else: "xn--" is not decoded,
/// and neither is a percent-encoding.
class TESSEL_EXPORT Origin {
public:
    /// That of an absolute http or https URL, as `URLRequest::url` gives it. None for every other
    /// text, and for a URL of whose host two programs might think differently: one with a backslash
    /// or two at-signs before its path, or with a third slash.
    static std::optional<Origin> of(std::string_view url);

    /// That of a server as a person gives it: "host", "host:port", "user@host", each with or
    /// without a path, or a URL. It is https unless the text begins with "http://".
    static std::optional<Origin> ofServer(std::string_view text);

    /// "https://host:port", always with the port.
    const std::string& text() const& { return text_; }
    std::string text() && { return std::move(text_); } ///< the same of an origin that goes

    friend bool operator==(const Origin&, const Origin&) = default;

private:
    explicit Origin(std::string text)
        : text_(std::move(text))
    {
    }

    std::string text_;
};

} // namespace Tessel
