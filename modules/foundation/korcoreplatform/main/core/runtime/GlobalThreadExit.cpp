#include "korcoreplatform/main/core/runtime/GlobalThreadExit.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"

#include <tbb/cache_aligned_allocator.h>
#include <tbb/concurrent_vector.h>

#include <atomic>
#include <cstddef>
#include <cstring>

namespace {

using ThreadExitFunction = void (*)();

/// A place for a function. Its memory comes zeroed and the constructor leaves it alone, because the
/// vector counts a place before it constructs it: a walk may look at it at any time after.
struct Slot
{
    Slot() noexcept {} // NOLINT(modernize-use-equals-default): that one would write zeros

    std::atomic<ThreadExitFunction> function; ///< Null until it is stored.
};

template <class T>
class ZeroingAllocator : public tbb::cache_aligned_allocator<T>
{
public:
    ZeroingAllocator() noexcept = default;
    template <class U>
    ZeroingAllocator(ZeroingAllocator<U> const& other) noexcept
        : tbb::cache_aligned_allocator<T>(other)
    {}

    T* allocate(std::size_t count)
    {
        T* const memory = tbb::cache_aligned_allocator<T>::allocate(count);
        std::memset(static_cast<void*>(memory), 0, count * sizeof(T));
        return memory;
    }
};

using Registry = tbb::concurrent_vector<Slot, ZeroingAllocator<Slot>>;

/// Never destroyed: threads may end while the process exits.
Registry& Functions()
{
    static Registry& s_functions = *new Registry;
    return s_functions;
}

} // namespace

void AddGlobalThreadExitFunc(ThreadExitFunction fnPtr)
{
    if (fnPtr == nullptr) {
        ThrowLogicException("modules/foundation/korcoreplatform/main/core/GlobalThreadExit", 15,
                            "fnPtr", KorErrorsError::LogicAssert_0x9B334DB6());
    }
    // Pairs with the load of a walk, which sees what the caller did before.
    Functions().emplace_back()->function.store(fnPtr, std::memory_order_release);
}

void CallGlobalThreadExitFuncs()
{
    Registry& functions = Functions();
    std::size_t const count = functions.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (auto* const function = functions[i].function.load(std::memory_order_acquire)) {
            function();
        }
    }
}
