/// What the system tells about the machine.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/text/TStringCore.h"

#include <cstdint>

/// Each function asks the system at every call. A question that the system does not answer gives an
/// empty text or 0; texts are local 8-bit to the system.
///
/// Throws: `std::bad_alloc`, from the functions that return a text.
/// Thread safety: every function may be called from any thread.
namespace SystemQueries {

/// The whole host name, domain included where the system has it there.
KORSYS_EXPORT TStringCore HostName();

/// What the maker of the first processor calls it.
KORSYS_EXPORT TStringCore ProcessorName();

/// The highest frequency of the first processor, or the present one where only that is known.
KORSYS_EXPORT std::int64_t ProcessorFrequencyHz() noexcept;

/// The frequency of the clock that the processor's time base counts with.
KORSYS_EXPORT std::int64_t TimeBaseFrequencyHz() noexcept;

/// Ticks of the system's clock in a second.
KORSYS_EXPORT std::int32_t ClockTicksPerSecond() noexcept;

/// How many logical processors the machine can have, those that are switched off included.
KORSYS_EXPORT std::int32_t LogicalProcessorCount() noexcept;

/// The variables of this process, each as "name=value", and a null at the end; not a copy.
/// Thread safety: good until a variable is set or removed.
KORSYS_EXPORT char** Environment() noexcept;

} // namespace SystemQueries
