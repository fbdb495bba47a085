#pragma once

#include "Tessel/Platform/Foundation/Base/Error.h"
#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Tessel {

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
