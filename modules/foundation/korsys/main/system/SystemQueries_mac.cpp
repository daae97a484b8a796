#include "korsys/main/system/SystemQueries.h"

#include <cstddef>

#include <crt_externs.h>
#include <sys/sysctl.h>
#include <sys/time.h>

namespace {

constexpr std::size_t kNameBytes = 1000;

TStringCore TextOf(char const* query)
{
    char text[kNameBytes + 1] = {}; // the last byte stays zero
    std::size_t size = kNameBytes;
    if (::sysctlbyname(query, text, &size, nullptr, 0) != 0) {
        return TStringCore();
    }
    return TStringCore::fromLocal8Bit(text);
}

/// A record is zero where the system does not answer, and when the answer has another size.
template <class Record>
Record RecordOf(char const* query) noexcept
{
    Record record = {};
    std::size_t size = sizeof(record);
    bool const isAnswered = ::sysctlbyname(query, &record, &size, nullptr, 0) == 0;
    return isAnswered && size == sizeof(record) ? record : Record();
}

} // namespace

TStringCore SystemQueries::HostName()
{
    return TextOf("kern.hostname");
}

TStringCore SystemQueries::ProcessorName()
{
    return TextOf("machdep.cpu.brand_string");
}

std::int64_t SystemQueries::ProcessorFrequencyHz() noexcept
{
    return RecordOf<std::int64_t>("hw.cpufrequency_max");
}

std::int64_t SystemQueries::TimeBaseFrequencyHz() noexcept
{
    return RecordOf<std::int64_t>("hw.tbfrequency");
}

std::int32_t SystemQueries::ClockTicksPerSecond() noexcept
{
    return RecordOf<::clockinfo>("kern.clockrate").hz;
}

std::int32_t SystemQueries::LogicalProcessorCount() noexcept
{
    return RecordOf<std::int32_t>("hw.logicalcpu_max");
}

char** SystemQueries::Environment() noexcept
{
    return *::_NSGetEnviron(); // a library has no other way to it
}
