#pragma once

#include "benchmarks/Table.h"

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

/// Keeps this process, and those that it makes, on the core where it is. Waking another core costs
/// a virtual machine anything from two to twenty microseconds, which would decide the row.
void stayOnOneCore();

/// CPU seconds of all rounds, taken in turns so that both meet the same neighbours.
template <class Ours, class Opponent> Costs cpuInTurns(int rounds, Ours ours, Opponent opponent)
{
    Costs total {};
    for (int i = 0; i < rounds; ++i) {
        total.opponent += cpuOf(opponent);
        total.ours += cpuOf(ours);
    }
    return total;
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
