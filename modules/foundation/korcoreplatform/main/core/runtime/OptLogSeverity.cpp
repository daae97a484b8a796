#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"

#include <utility>

std::atomic<bool> OptLogSeverity::s_isReplaced{false};

namespace {

/// Never destroyed: the writer of the log asks until the very end of the process.
std::function<bool()>& Callable()
{
    static auto& s_callable = *new std::function<bool()>([] { return false; });
    return s_callable;
}

} // namespace

std::function<bool()> OptLogSeverity::GetIsSeverityPerLogDetailOn()
{
    return Callable();
}

void OptLogSeverity::SetIsSeverityPerLogDetailOn(std::function<bool()> isOn)
{
    Callable() = std::move(isOn);
    s_isReplaced.store(true, std::memory_order_release);
}

bool OptLogSeverity::CallReplacement()
{
    return Callable()();
}
