/// The call stack of the running thread as texts.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <string>
#include <vector>

/// What a walk takes in.
struct StackWalkerConfig
{
    int maxFrames = 64;   ///< Frames to take, 65536 at most; none for 0 or less.
    int framesToSkip = 0; ///< Innermost frames to leave out; 0 or less starts at the caller.
};

/// Walks the stack of the calling thread. A frame is one UTF-8 text:
///
///     libkorsys.so.1!TError::ErrorInfo::ErrorInfo(KorvelError const&, ...)+0x1c
///     server+0x4f20                       the module does not export the function's name
///     0x7f3a12345678                      the address belongs to no module
///
/// The module is a file name without directory, the symbol is demangled where possible, the
/// offset counts bytes from the start of the symbol or of the module. Debug information is not
/// read: a program whose functions should have names is linked with its symbols exported.
///
/// Thread safety: one object serves one thread at a time. The static functions may be called from
/// any thread.
class KORSYS_EXPORT TStackWalker
{
public:
    explicit TStackWalker(StackWalkerConfig const& config = {});

    /// Collects the frames anew, whether walking is active or not. Returns whether there are any.
    /// Throws: `std::bad_alloc`.
    bool GenerateCallstack();

    /// The frames of the last walk, innermost first.
    std::vector<std::string> const& GetCollected() const noexcept { return m_frames; }

    /// Whether stacks are captured where that is optional: in every `TError::ErrorInfo`, for one.
    /// Off at the start of the process.
    static bool IsActive() noexcept;
    static void SetActive(bool active) noexcept;

private:
    StackWalkerConfig m_config;
    std::vector<std::string> m_frames;
};
