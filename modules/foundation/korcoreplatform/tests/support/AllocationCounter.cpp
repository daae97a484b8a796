#include "korcoreplatform/tests/support/AllocationCounter.h"

#include <cstddef>
#include <cstdlib>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||                         \
    __has_feature(memory_sanitizer)
#define KOR_OTHER_ALLOCATOR
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define KOR_OTHER_ALLOCATOR
#endif

namespace {

thread_local int t_allocations = 0;
thread_local long long t_bytes = 0;

} // namespace

AllocationCounter::AllocationCounter() : m_before(t_allocations), m_bytesBefore(t_bytes) {}

int AllocationCounter::Count() const
{
    return t_allocations - m_before;
}

long long AllocationCounter::Bytes() const
{
    return t_bytes - m_bytesBefore;
}

#if defined(KOR_OTHER_ALLOCATOR)

bool AllocationCounter::IsAvailable()
{
    return false;
}

#else

bool AllocationCounter::IsAvailable()
{
    return true;
}

static void Count(std::size_t bytes) noexcept
{
    ++t_allocations;
    t_bytes += static_cast<long long>(bytes);
}

extern "C" {

void* TrueMalloc(std::size_t size) __asm__("__libc_malloc");
void* TrueCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void* TrueRealloc(void* block, std::size_t size) __asm__("__libc_realloc");

// The program's own definitions come before those of the C library, for every library in it.
#pragma GCC visibility push(default)

void* malloc(std::size_t size) noexcept
{
    Count(size);
    return TrueMalloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    Count(count * size);
    return TrueCalloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept
{
    Count(size);
    return TrueRealloc(block, size);
}

#pragma GCC visibility pop

} // extern "C"

#endif

NoKeptTextBlocks::NoKeptTextBlocks()
{
    for (std::size_t bytes = 48; bytes <= kLargestKeptBytes; bytes += 16) { // 15 units and more
        for (int i = 0; i != kKeptOfSize; ++i) {
            m_texts.emplace_back(u'x', UnitsOfBlock(bytes));
        }
    }
}

int NoKeptTextBlocks::UnitsOfBlock(std::size_t bytes)
{
    return static_cast<int>((bytes - sizeof(TLongStringHeader)) / sizeof(char16_t)) - 1;
}
