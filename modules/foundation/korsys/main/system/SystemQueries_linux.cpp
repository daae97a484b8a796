#include "korsys/main/system/SystemQueries.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <limits>
#include <string>

#include <unistd.h>

namespace {

constexpr std::size_t kNameBytes = 1000;

/// What follows the colon in the first line of the processor table that begins with `key`.
std::string FirstProcessorEntry(std::string const& key)
{
    std::ifstream table("/proc/cpuinfo");
    for (std::string line; std::getline(table, line);) {
        std::size_t const colon = line.find(':');
        if (line.compare(0, key.size(), key) == 0 && colon != std::string::npos) {
            std::size_t const begin = line.find_first_not_of(" \t", colon + 1);
            return begin == std::string::npos ? std::string() : line.substr(begin);
        }
    }
    return std::string();
}

std::int32_t CountOf(long answer) noexcept
{
    constexpr long kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(answer, 0L, kMost));
}

} // namespace

TStringCore SystemQueries::HostName()
{
    char name[kNameBytes] = {};
    if (::gethostname(name, sizeof(name) - 1) != 0) { // the last byte stays zero
        return TStringCore();
    }
    return TStringCore::fromLocal8Bit(name);
}

TStringCore SystemQueries::ProcessorName()
{
    return TStringCore::fromLocal8Bit(FirstProcessorEntry("model name").c_str());
}

std::int64_t SystemQueries::ProcessorFrequencyHz() noexcept
try {
    std::int64_t maxKHz = 0;
    if (std::ifstream("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq") >> maxKHz) {
        return maxKHz * 1'000;
    }
    double const mHz = TStringCore(FirstProcessorEntry("cpu MHz").c_str()).toDouble();
    return static_cast<std::int64_t>(mHz * 1'000'000);
} catch (...) {
    return 0;
}

std::int64_t SystemQueries::TimeBaseFrequencyHz() noexcept
{
    return 0; // not told here
}

std::int32_t SystemQueries::ClockTicksPerSecond() noexcept
{
    return CountOf(::sysconf(_SC_CLK_TCK));
}

std::int32_t SystemQueries::LogicalProcessorCount() noexcept
{
    return CountOf(::sysconf(_SC_NPROCESSORS_CONF));
}

char** SystemQueries::Environment() noexcept
{
    return ::environ;
}
