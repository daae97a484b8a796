#include "korcoreplatform/main/core/files/FillAhead_p.h"

#include <algorithm>
#include <cerrno>

#include <sys/mman.h>

namespace {

constexpr int kPopulateWrite = 23; // MADV_POPULATE_WRITE, which older C libraries do not name
constexpr std::uintptr_t kPageBytes = 64 * 1024; ///< A multiple of the page of every system.
constexpr std::uintptr_t kAtOnceBytes = 2 * 1024 * 1024;
constexpr std::size_t kLeastBytes = 4 * kAtOnceBytes;

} // namespace

FillAhead::FillAhead(void* block, std::size_t bytes) noexcept : m_begin(0), m_end(0)
{
    if (bytes >= kLeastBytes) {
        auto const begin = reinterpret_cast<std::uintptr_t>(block);
        m_begin = (begin + kPageBytes - 1) / kPageBytes * kPageBytes;
        m_end = (begin + bytes) / kPageBytes * kPageBytes;
    }
}

void FillAhead::BringIn() noexcept
{
    int const savedErrno = errno;
    std::uintptr_t const bytes = std::min(m_end - m_begin, kAtOnceBytes);
    // A system that does not know this, before Linux 5.14, brings pages in one by one as they are
    // touched.
    bool const isDone = ::madvise(reinterpret_cast<void*>(m_begin), bytes, kPopulateWrite) == 0;
    m_begin = isDone ? m_begin + bytes : m_end;
    errno = savedErrno;
}
