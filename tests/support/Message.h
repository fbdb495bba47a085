#pragma once

#include "Tessel/Platform/Foundation/Web/HTTPURLResponse.h"
#include "Tessel/Platform/Foundation/Web/URLRequest.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace Tessel::Test {

/// A request as a value; its URL is made of `scheme`, the Host field and the path.
URLRequest parseRequest(std::string_view scheme, const std::string& bytes);

/// An answer to a request for `url` as a value, and its body.
std::pair<std::shared_ptr<const HTTPURLResponse>, Data> parseAnswer(
    const std::string& url, const std::string& bytes);

/// The scheme, host and port of an absolute URL, and the rest of it.
std::pair<std::string, std::string> splitURL(const std::string& url);

} // namespace Tessel::Test
