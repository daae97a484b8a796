#include "korsys/main/text/FreedTextBlocks_p.h"

#include <cstdlib>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace {

extern "C" void EndOfFreedTextBlocks(void* blocks)
{
    FreedTextBlocks::End(blocks);
}

/// Is there a tool in the process that watches who uses memory which was freed?
bool IsMemoryWatched()
{
    constexpr char const* kMarks[] = {"__asan_init", "__hwasan_init", "__msan_init", "__tsan_init",
                                      "_vgnU_freeres" /* valgrind */};
    bool const isWatched = std::any_of(std::begin(kMarks), std::end(kMarks), [](auto* name) {
        return ::dlsym(RTLD_DEFAULT, name) != nullptr;
    });
    ::dlerror(); // that there is none is no error of the host's
    return isWatched;
}

struct Key
{
    Key() : isUsable(!IsMemoryWatched() && ::pthread_key_create(&key, &EndOfFreedTextBlocks) == 0)
    {}

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
    if (std::exchange(t_wasBegun, true) || !EndOfThread().isUsable) {
        return;
    }
    auto* const blocks = new (std::nothrow) Blocks;
    if (blocks != nullptr && ::pthread_setspecific(EndOfThread().key, blocks) == 0) {
        t_blocks = blocks;
    } else {
        delete blocks;
    }
}

void FreedTextBlocks::End(void* blocks) noexcept
{
    t_wasBegun = true; // where the system has made the thread's variables anew by now
    t_blocks = nullptr;
    delete static_cast<Blocks*>(blocks);
}

FreedTextBlocks::Blocks::~Blocks()
{
    for (Block* block : first) {
        while (block != nullptr) {
            std::free(std::exchange(block, block->next));
        }
    }
}
