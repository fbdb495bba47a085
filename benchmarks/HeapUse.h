#pragma once

#include <cstddef>

namespace Tessel::Benchmarks {

// Bytes that the whole program holds allocated, whoever asked for them: a program that links this
// has malloc counted.

std::size_t heldBytes();
/// The most that has been held since `resetHeldPeak`.
std::size_t peakHeldBytes();
void resetHeldPeak();

} // namespace Tessel::Benchmarks
