#pragma once

#include <cstddef>
#include <string_view>

namespace Tessel {

/// Whether some tag of an XML document holds more than `limit` attributes. Linear and without
/// memory; for text that is not well-formed it may say either.
bool hasTagWithMoreAttributes(std::string_view document, std::size_t limit);

} // namespace Tessel
