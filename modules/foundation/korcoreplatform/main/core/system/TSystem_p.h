/// How the answers about the machine are worked out.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/system/TSystem.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstdint>
#include <vector>

namespace SystemAnswers {

KORCOREPLATFORM_EXPORT TString ComputerName(TString const& hostName);
KORCOREPLATFORM_EXPORT TString DNSDomainName(TString const& hostName);

/// Sorts and joins those of the texts that are six two-digit groups by their length.
KORCOREPLATFORM_EXPORT TString MacAddresses(std::vector<TString> addresses);

/// The processor's frequency, or what the two clocks tell of it when that is below 1 MHz.
KORCOREPLATFORM_EXPORT int FrequencyMHz(std::int64_t processorHz, std::int64_t timeBaseHz,
                                        std::int32_t clockTicksPerSecond) noexcept;

/// Takes the version from the text of a property list, and leaves `info` alone when there is none.
KORCOREPLATFORM_EXPORT void ReadVersion(TString const& propertyList, bool isServer,
                                        TSystem::OSVersionInfo& info);

} // namespace SystemAnswers
