#pragma once

#include <string>

namespace Tessel {

/// How many properties libical's parser marks as errors in a text; 1,000 for what is no calendar.
int libicalErrors(const std::string& text);

} // namespace Tessel
