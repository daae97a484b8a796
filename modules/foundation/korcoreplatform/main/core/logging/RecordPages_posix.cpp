#include "korcoreplatform/main/core/logging/RecordPages_p.h"

#include <cstdint>

#include <sys/mman.h>

namespace TLog {

void* RecordPages::Map(std::size_t bytes) noexcept
{
    // Twice as much contains an aligned piece; the rest goes back untouched.
    void* const all =
        ::mmap(nullptr, 2 * bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    if (all == MAP_FAILED) {
        return nullptr;
    }
    auto const begin = reinterpret_cast<std::uintptr_t>(all);
    std::size_t const before = (bytes - begin % bytes) % bytes;
    char* const pages = static_cast<char*>(all) + before;
    if (before != 0) {
        ::munmap(all, before);
    }
    ::munmap(pages + bytes, bytes - before);
    Populate(pages, bytes);
    return pages;
}

void RecordPages::Unmap(void* pages, std::size_t bytes) noexcept
{
    ::munmap(pages, bytes);
}

} // namespace TLog
