#include "korsys/main/text/FreedTextBlocks_p.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace {

extern "C" void FreeKeptTextBlocks(void* /*unused*/)
{
    FreedTextBlocks::End();
}

/// Is there a tool in the process that watches who uses memory which was freed?
bool IsMemoryWatched()
{
    for (char const* const name : {"__asan_init", "__tsan_init", "_vgnU_freeres" /* valgrind */}) {
        if (::dlsym(RTLD_DEFAULT, name) != nullptr) {
            return true;
        }
    }
    return false;
}

struct Key
{
    Key() : isUsable(!IsMemoryWatched() && ::pthread_key_create(&key, &FreeKeptTextBlocks) == 0) {}

    pthread_key_t key = 0;
    bool isUsable;
};

Key const& EndOfThread()
{
    static Key const s_key;
    return s_key;
}

[[maybe_unused]] Key const& s_atLoad = EndOfThread(); // no child of `fork` finds it half made

} // namespace

void FreedTextBlocks::Begin() noexcept
{
    if (t_blocks.wasBegun) {
        return;
    }
    t_blocks.wasBegun = true;
    Key const& key = EndOfThread();
    if (key.isUsable && ::pthread_setspecific(key.key, &t_blocks) == 0) {
        std::fill(std::begin(t_blocks.room), std::end(t_blocks.room), kMostOfSize);
    }
}

void FreedTextBlocks::End() noexcept
{
    std::fill(std::begin(t_blocks.room), std::end(t_blocks.room), 0);
    for (Block*& first : t_blocks.first) {
        while (first != nullptr) {
            std::free(std::exchange(first, first->next));
        }
    }
}
