/// The clock of the lock reports, which tests replace.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

#include <ctime>

namespace AutoSynchronizeInternals {

/// Seconds. Replaced while no other thread takes locks.
extern KORCOREPLATFORM_EXPORT std::time_t (*g_now)();

} // namespace AutoSynchronizeInternals
