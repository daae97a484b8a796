#include "korsys/main/system/TStackWalker.h"

#include "korsys/main/text/TStringCore.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <cxxabi.h>
#include <dlfcn.h>
#include <unwind.h>

namespace {

std::atomic<bool> s_isActive{false}; // relaxed: a switch that orders nothing else

struct Frame
{
    std::uintptr_t address = 0; ///< Where the thread goes on when the called function returns.
    std::uintptr_t inside = 0;  ///< An address within the instruction that is being executed.
};

struct Walk
{
    std::vector<Frame> frames;
    std::size_t maxFrames = 0; ///< At most the capacity of `frames`: the walk must not allocate.
    int framesToSkip = 0;
};

_Unwind_Reason_Code TakeFrame(_Unwind_Context* context, void* argument)
{
    Walk& walk = *static_cast<Walk*>(argument);
    int isBeforeInstruction = 0;
    std::uintptr_t const address = _Unwind_GetIPInfo(context, &isBeforeInstruction);
    if (address == 0 || walk.frames.size() >= walk.maxFrames) {
        return _URC_END_OF_STACK;
    }
    if (walk.framesToSkip > 0) {
        --walk.framesToSkip;
    } else {
        // A return address may already belong to the next function: a call that never returns is
        // the last instruction of its own.
        walk.frames.push_back({address, isBeforeInstruction != 0 ? address : address - 1});
    }
    return _URC_NO_REASON;
}

std::string Demangled(char const* symbol)
{
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const name(
        abi::__cxa_demangle(symbol, nullptr, nullptr, &status), &std::free);
    return status == 0 && name ? name.get() : symbol;
}

constexpr int kMostFrames = 1 << 16; // more is a recursion that nobody reads

std::string Hex(std::uintptr_t value)
{
    char text[2 + 2 * sizeof(value) + 1];
    std::snprintf(text, sizeof(text), "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string FileName(char const* path)
{
    char const* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

std::string Describe(Frame const& frame)
{
    Dl_info info = {};
    if (::dladdr(reinterpret_cast<void const*>(frame.inside), &info) == 0 ||
        info.dli_fname == nullptr) {
        return Hex(frame.address);
    }
    std::string text = FileName(info.dli_fname);
    void const* start = info.dli_fbase;
    if (info.dli_sname != nullptr && info.dli_saddr != nullptr) {
        text += "!" + Demangled(info.dli_sname);
        start = info.dli_saddr;
    }
    text += "+" + Hex(frame.address - reinterpret_cast<std::uintptr_t>(start));
    return TStringCore::fromStdString(text).toStdString(); // a file's name may be any bytes
}

} // namespace

TStackWalker::TStackWalker(StackWalkerConfig const& config) : m_config(config) {}

[[gnu::noinline]] bool TStackWalker::GenerateCallstack()
{
    m_frames.clear();
    if (m_config.maxFrames <= 0) {
        return false;
    }
    Walk walk;
    walk.maxFrames = static_cast<std::size_t>(std::min(m_config.maxFrames, kMostFrames));
    walk.frames.reserve(walk.maxFrames);
    walk.framesToSkip = std::clamp(m_config.framesToSkip, 0, INT_MAX - 1) + 1; // this function
    _Unwind_Backtrace(&TakeFrame, &walk);
    m_frames.reserve(walk.frames.size());
    for (Frame const& frame : walk.frames) {
        m_frames.push_back(Describe(frame));
    }
    return !m_frames.empty();
}

bool TStackWalker::IsActive() noexcept
{
    return s_isActive.load(std::memory_order_relaxed);
}

void TStackWalker::SetActive(bool active) noexcept
{
    s_isActive.store(active, std::memory_order_relaxed);
}
