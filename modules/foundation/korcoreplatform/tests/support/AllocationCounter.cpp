#include "korcoreplatform/tests/support/AllocationCounter.h"

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

#if defined(KOR_OTHER_ALLOCATOR)
constexpr bool kIsAvailable = false;
#else
constexpr bool kIsAvailable = true;
#endif

} // namespace

#if !defined(KOR_OTHER_ALLOCATOR)

extern "C" {

void* TrueMalloc(std::size_t size) __asm__("__libc_malloc");
void* TrueCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void* TrueRealloc(void* block, std::size_t size) __asm__("__libc_realloc");

// The program's own definitions come before those of the C library, for every library in it.

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept
{
    ++t_allocations;
    return TrueMalloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept
{
    ++t_allocations;
    return TrueCalloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept
{
    ++t_allocations;
    return TrueRealloc(block, size);
}

} // extern "C"

#endif

AllocationCounter::AllocationCounter() : m_before(t_allocations) {}

int AllocationCounter::Count() const
{
    return t_allocations - m_before;
}

bool AllocationCounter::IsAvailable()
{
    return kIsAvailable;
}
