#include "korcoreplatform/main/core/logging/LoggingContext.h"

#include "korcoreplatform/main/core/logging/LoggingContext_p.h"
#include "korcoreplatform/main/core/runtime/AutoSynchronize.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"

#include <atomic>
#include <climits>

namespace {

std::atomic<bool> s_isContextEnabled{false}; // relaxed: it publishes nothing but itself

TString TextOf(TUUID const& id)
{
    TString text = id.ToString();
    text.removeAnyOf(u"{}");
    return text;
}

struct Quarantine
{
    TRecursiveMutex mutex;
    TUUID id; ///< Guarded by `mutex`, as the text.
    TString text = TextOf(id);
};

/// Never destroyed: the writer of the log reads it until the very end of the process.
Quarantine& TheQuarantine()
{
    static Quarantine& s_quarantine = *new Quarantine;
    return s_quarantine;
}

[[maybe_unused]] auto const& s_atLoad = TheQuarantine(); // no child of `fork` finds it half made

constexpr char kFile[] = "modules/foundation/korcoreplatform/main/core/logging/LoggingContext";

/// Calls `function` with the record, alone. Records are logged under locks of every priority, so
/// this lock comes last.
template <class Function>
auto WithQuarantine(Function function)
{
    Quarantine& quarantine = TheQuarantine();
    AutoSynchronize const lock(quarantine.mutex, INT_MIN, kFile, __func__, __LINE__);
    return function(quarantine);
}

} // namespace

bool TLog::GetLoggingContextEnabled() noexcept
{
    return s_isContextEnabled.load(std::memory_order_relaxed);
}

void TLog::SetLoggingContextEnabled(bool isEnabled) noexcept
{
    s_isContextEnabled.store(isEnabled, std::memory_order_relaxed);
}

TUUID TLog::GetLogQuarantineUuid()
{
    return WithQuarantine([](Quarantine const& quarantine) { return quarantine.id; });
}

void TLog::SetLogQuarantineUuid(TUUID const& id)
{
    TString text = TextOf(id);
    WithQuarantine([&](Quarantine& quarantine) {
        quarantine.id = id;
        quarantine.text.swap(text);
    });
}

TString TLog::GetLogQuarantineUuidString()
{
    return WithQuarantine([](Quarantine const& quarantine) { return quarantine.text; });
}

bool TLog::IsQuarantineLoggingEnabled()
{
    return WithQuarantine([](Quarantine const& quarantine) { return !quarantine.id.IsNull(); });
}

TString TLog::QuarantineText()
{
    return WithQuarantine([](Quarantine const& quarantine) {
        return quarantine.id.IsNull() ? TString() : quarantine.text;
    });
}
