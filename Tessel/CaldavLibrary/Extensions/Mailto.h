#pragma once

#include <string>
#include <string_view>

namespace Tessel {

/// The address with every occurrence of "mailto:" removed; the comparison is case-sensitive.
std::string withoutMailto(std::string_view address);

} // namespace Tessel
