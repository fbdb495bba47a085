#pragma once

namespace Tessel {

/// How urgent a task is among those waiting for a connection.
enum class MTaskPriority { low, normal, high };

} // namespace Tessel
