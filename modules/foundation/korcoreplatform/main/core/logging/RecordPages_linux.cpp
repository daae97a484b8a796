#include "korcoreplatform/main/core/logging/RecordPages_p.h"

#include <sys/mman.h>

namespace {

constexpr int kPopulateWrite = 23; // MADV_POPULATE_WRITE, which older C libraries do not name

} // namespace

void TLog::RecordPages::Populate(void* pages, std::size_t bytes) noexcept
{
    ::madvise(pages, bytes, kPopulateWrite); // unknown before Linux 5.14: page by page then
}
