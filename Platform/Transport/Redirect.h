#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/HTTPURLResponse.h"
#include "Platform/Foundation/URLRequest.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Tessel {

/// How many redirects in a row are followed for one task.
inline constexpr int maximumRedirects = 10;

/// The request with another URL, which must be valid.
URLRequest withURL(const URLRequest& request, std::string_view url);

/// Where the answer redirects to, as the request to send there; none when the answer is no
/// redirect, an error when the address must not be followed. Fields that carry credentials are
/// left out when scheme, host or port differ (RFC 9110, 15.4).
std::variant<std::monostate, URLRequest, Error> redirected(
    const URLRequest& request, const HTTPURLResponse& answer);

/// `request`, which answers a 303, as the GET without a body that it is to be followed with
/// (RFC 9110, 15.4.4). A HEAD stays one.
URLRequest asRetrieval(const URLRequest& request);

} // namespace Tessel
