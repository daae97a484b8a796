#include "korcoreplatform/main/core/runtime/OptMetrics.h"

#include <utility>

std::atomic<bool> OptMetrics::s_isReplaced{false};

namespace {

bool InternalGetIsEnabledFunction()
{
    return false;
}

/// Never destroyed: the writer of the log asks until the very end of the process.
std::function<bool()>& Callable()
{
    static auto& s_callable = *new std::function<bool()>(&InternalGetIsEnabledFunction);
    return s_callable;
}

} // namespace

std::function<bool()> OptMetrics::GetIsActivityAndResourceTracingEnabledFunction()
{
    return Callable();
}

void OptMetrics::SetIsActivityAndResourceTracingEnabledFunction(std::function<bool()> isEnabled)
{
    Callable() = std::move(isEnabled);
    s_isReplaced.store(true, std::memory_order_release);
}

bool OptMetrics::CallReplacement()
{
    return Callable()();
}
