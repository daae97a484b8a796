#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"

#include <atomic>

namespace {

std::atomic<bool> s_isOn{false}; // relaxed: it publishes nothing but itself

} // namespace

bool OptLogStackOnFileError::GetLogStackOnFileError() noexcept
{
    return s_isOn.load(std::memory_order_relaxed);
}

void OptLogStackOnFileError::SetLogStackOnFileError(bool isOn) noexcept
{
    s_isOn.store(isOn, std::memory_order_relaxed);
}
