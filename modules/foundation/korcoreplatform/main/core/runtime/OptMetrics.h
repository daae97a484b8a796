/// The option that turns on the tracing of activities and resources.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

#include <atomic>
#include <functional>

/// Holds the callable that tells whether activities and resources are traced. Log scopes and the
/// writer of the log ask it, so it must be quick, and safe to call from every thread that logs. It
/// lives as long as the process.
///
/// Thread safety: reading is safe from any thread. A host that replaces the callable does so while
/// no other thread logs, usually at start-up.
class KORCOREPLATFORM_EXPORT OptMetrics
{
public:
    OptMetrics() = delete;

    /// A copy of the callable, which may be empty. It returns false unless the host set another.
    static std::function<bool()> GetIsActivityAndResourceTracingEnabledFunction();

    /// Replaces the callable. An empty one is taken as it is: no default comes back.
    static void SetIsActivityAndResourceTracingEnabledFunction(std::function<bool()> isEnabled);

    /// Calls the callable, without a copy; costs a load while the default is in place.
    /// Throws: `std::bad_function_call` when the callable is empty; what the callable throws.
    static bool IsActivityAndResourceTracingEnabled()
    {
        // Pairs with the store in the setter.
        return s_isReplaced.load(std::memory_order_acquire) && CallReplacement();
    }

private:
    static bool CallReplacement();

    static std::atomic<bool> s_isReplaced; ///< Until it is set, the answer is false.
};
