#pragma once

#include "Tessel/Session/Store/SQLiteSteps.h"

#include <chrono>
#include <filesystem>

namespace Tessel {

/// Opens a store's file, or makes it, and brings it to this program's schema. Throws
/// `SQLite::Exception` or `StepRefused`; a file that is not a store's is left as it was.
SQLite::Database openStoreFile(
    const std::filesystem::path& file, std::chrono::milliseconds patience);

} // namespace Tessel
