/// The ids of the process and its threads, and where its executable and modules are.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/system/TPathCore.h"

#include <cstdint>

/// Static functions only. Paths are absolute; a result that the system does not give is empty.
///
/// Throws: `std::bad_alloc`, from the functions that return a path.
/// Thread safety: every function may be called from any thread.
class KORSYS_EXPORT TSystemCore
{
public:
    TSystemCore() = delete;

    /// The ids that the system's tools show. They are asked for once and then cost a load; a child
    /// made by `fork` gets its own. (One made by a bare `clone` system call does not.)
    static std::uint32_t ProcessID() noexcept;
    static std::uint64_t ThreadID() noexcept; ///< Of the calling thread.

    static TPathCore ExecutablePath();     ///< The directory of the running executable.
    static TPathCore ExecutableFilename(); ///< The full path of the running executable.

    /// The directory of a loaded module, given by its file name or, with a directory, by the path
    /// under which it was loaded.
    /// For an empty argument the same as `ExecutablePath()`.
    static TPathCore ModulePath(TPathCore const& module);

    /// The full path, and the directory, of the loaded module that holds `address`.
    static TPathCore ModuleFilename(void const* address);
    static TPathCore ModuleDirectory(void const* address);
};
