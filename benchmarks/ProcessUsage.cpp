#include "benchmarks/ProcessUsage.h"

#include "Tessel/Platform/Foundation/Base/FatalError.h"

#include <sched.h>
#include <sys/resource.h>

#include <fstream>
#include <string>

namespace Tessel::Benchmarks {

namespace {

/// A line such as "VmHWM:  1234 kB" of the process's status.
std::size_t statusBytes(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) return std::stoull(line.substr(name.size() + 1)) * 1024;
    }
    return 0;
}

} // namespace

double cpuSeconds()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds
        = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void stayOnOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(sched_getcpu(), &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0) fatalError("no core to stay on");
}

std::size_t residentBytes()
{
    return statusBytes("VmRSS");
}

std::size_t peakResidentBytes()
{
    return statusBytes("VmHWM");
}

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

} // namespace Tessel::Benchmarks
