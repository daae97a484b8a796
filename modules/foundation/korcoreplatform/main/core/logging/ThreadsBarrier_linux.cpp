#include "korcoreplatform/main/core/logging/ThreadsBarrier_p.h"

#include <chrono>
#include <thread>

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool Command(int command) noexcept
{
    return ::syscall(SYS_membarrier, command, 0) == 0;
}

} // namespace

bool TLog::ThreadsBarrier::Arrange() noexcept
{
    return Command(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);
}

void TLog::ThreadsBarrier::Issue() noexcept
{
    if (!Command(MEMBARRIER_CMD_PRIVATE_EXPEDITED) && !Command(MEMBARRIER_CMD_GLOBAL)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}
