#pragma once

#include <cstddef>
#include <string>

namespace Tessel::App {

/// How many columns a terminal needs for the text: two for each ideograph or emoji, none for what
/// combines with the character before it.
std::size_t textWidth(const std::string& text);

} // namespace Tessel::App
