#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace Tessel::Benchmarks {

/// What a row must reach.
struct Goal {
    enum class Kind {
        timesFaster, ///< the opponent's cost divided by ours is at least `bound`
        timesCost, ///< our cost divided by the opponent's is at most `bound`
    };
    Kind kind;
    double bound;
};

inline constexpr Goal timesFaster(double bound)
{
    return {Goal::Kind::timesFaster, bound};
}
inline constexpr Goal timesCost(double bound)
{
    return {Goal::Kind::timesCost, bound};
}

/// Two costs in the same unit.
struct Costs {
    double ours;
    double opponent;
};

/// Seconds of CPU that each call takes on this thread: the best of `repetitions`, taken in turns so
/// that both meet the same neighbours.
Costs measure(
    const std::function<void()>& ours, const std::function<void()>& opponent, int repetitions);

/// Bytes that are allocated on the heap now.
std::size_t liveHeapBytes();

/// Prints one row, "what | ours | opponent | ratio | goal | within": costs in `unit` (seconds are
/// given as "s" and scaled for reading), "yes" or "no" last.
void printRow(std::string_view what, const Costs& costs, std::string_view unit, const Goal& goal);

/// Keeps the compiler from leaving out the work that made `value`.
template <typename T> void keep(const T& value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

} // namespace Tessel::Benchmarks
