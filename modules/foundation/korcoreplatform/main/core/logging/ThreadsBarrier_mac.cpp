#include "korcoreplatform/main/core/logging/ThreadsBarrier_p.h"

bool TLog::ThreadsBarrier::Arrange() noexcept
{
    return false;
}

void TLog::ThreadsBarrier::Issue() noexcept {}
