#pragma once

#include <chrono>
#include <cstddef>

namespace Tessel::Benchmarks {

/// CPU seconds of the whole process, all threads and the kernel on their behalf.
double cpuSeconds();

/// CPU seconds of the whole process while `work` runs.
template <class Work> double cpuOf(Work work)
{
    const auto start = cpuSeconds();
    work();
    return cpuSeconds() - start;
}

/// Seconds that go by while `work` runs.
template <class Work> double wallOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::size_t residentBytes();
/// The most that has been resident since `resetPeak`.
std::size_t peakResidentBytes();
void resetPeak();

} // namespace Tessel::Benchmarks
