#include "korcoreplatform/main/core/files/LargeMemory_p.h"

#include <cerrno>
#include <cstdint>

#include <sys/mman.h>

namespace {

constexpr std::uintptr_t kLargePageBytes = 2 * 1024 * 1024;
constexpr std::size_t kLeastBytes = 4 * kLargePageBytes;

} // namespace

void LargeMemory::WillFill(void* block, std::size_t bytes) noexcept
{
    if (bytes < kLeastBytes) {
        return;
    }
    int const savedErrno = errno;
    auto const begin = reinterpret_cast<std::uintptr_t>(block);
    std::uintptr_t const skipped = (kLargePageBytes - begin % kLargePageBytes) % kLargePageBytes;
    std::size_t const whole = (bytes - skipped) / kLargePageBytes * kLargePageBytes;
    static_cast<void>(::madvise(static_cast<char*>(block) + skipped, whole, MADV_HUGEPAGE));
    errno = savedErrno;
}
