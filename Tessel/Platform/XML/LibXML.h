#pragma once

#include <libxml/parser.h>

namespace Tessel {

/// Called before the first call to libxml2 of whatever makes a tree: its own first call makes
/// tables that all threads share, and guards them by nothing.
inline void prepareLibXML()
{
    static const bool prepared = (xmlInitParser(), true);
    static_cast<void>(prepared);
}

} // namespace Tessel
