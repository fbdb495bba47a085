#include "benchmarks/Table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <limits>
#include <malloc.h>

namespace Tessel::Benchmarks {

static double threadSeconds()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

static double secondsOf(const std::function<void()>& work)
{
    const auto start = threadSeconds();
    work();
    return threadSeconds() - start;
}

Costs measure(
    const std::function<void()>& ours, const std::function<void()>& opponent, int repetitions)
{
    constexpr auto infinite = std::numeric_limits<double>::infinity();
    Costs best {infinite, infinite};
    for (int i = 0; i < repetitions; ++i) {
        best.ours = std::min(best.ours, secondsOf(ours));
        best.opponent = std::min(best.opponent, secondsOf(opponent));
    }
    return best;
}

std::size_t liveHeapBytes()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

static std::string readable(double cost, std::string_view unit)
{
    const bool seconds = unit == "s";
    const bool micro = seconds && cost < 1e-3;
    const bool milli = seconds && !micro && cost < 1;
    const double value = micro ? cost * 1e6 : milli ? cost * 1e3 : cost;
    const char* const prefix = micro ? "u" : milli ? "m" : "";

    std::array<char, 48> text;
    std::snprintf(text.data(), text.size(), "%.*f %s%.*s", value < 100 ? 2 : 0, value, prefix,
        int(unit.size()), unit.data());
    return text.data();
}

void printRow(std::string_view what, const Costs& costs, std::string_view unit, const Goal& goal)
{
    const bool faster = goal.kind == Goal::Kind::timesFaster;
    const auto ratio = faster ? costs.opponent / costs.ours : costs.ours / costs.opponent;
    const bool within = faster ? ratio >= goal.bound : ratio <= goal.bound;

    std::printf("%-58.*s | %12s | %12s | %7.2f | %s %5.2f | %s\n", int(what.size()), what.data(),
        readable(costs.ours, unit).c_str(), readable(costs.opponent, unit).c_str(), ratio,
        faster ? ">=" : "<=", goal.bound, within ? "yes" : "no");
    std::fflush(stdout);
}

} // namespace Tessel::Benchmarks
