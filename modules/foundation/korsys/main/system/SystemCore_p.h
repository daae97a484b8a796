/// What TSystemCore asks of each system.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Paths are bytes as the system has them, empty where it has no answer.
namespace SystemCore {

/// The id of the calling thread, unique in the system. Asks the system at every call, and may be
/// called in a child between `fork` and `exec`.
std::uint64_t ThreadID() noexcept;

/// The full path of the running executable, symbolic links resolved.
std::string ExecutableFile();

/// The path under which the module that holds `address` was loaded; may be relative.
std::string ModuleFile(void const* address);

/// The same for every loaded module that is a file, the executable first.
std::vector<std::string> ModuleFiles();

} // namespace SystemCore
