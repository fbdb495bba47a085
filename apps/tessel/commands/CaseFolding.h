#pragma once

#include <string>

namespace Tessel::App {

/// UTF-8 text in which capitals are as other letters, in all scripts: to be compared, not shown.
std::string foldedCase(const std::string& text);

} // namespace Tessel::App
