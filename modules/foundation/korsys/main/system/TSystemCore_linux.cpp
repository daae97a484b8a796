#include "korsys/main/system/SystemCore_p.h"

#include <cstddef>

#include <dlfcn.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t kFirstBufferBytes = 256;

/// The loader knows the executable by an empty name, and objects without a file by a bare one.
std::string FileOfLoadedName(char const* name)
{
    std::string const file = name != nullptr ? name : "";
    if (file.empty()) {
        return SystemCore::ExecutableFile();
    }
    return file.find('/') != std::string::npos ? file : std::string();
}

int TakeModule(dl_phdr_info* module, std::size_t /*size*/, void* files)
{
    std::string file = FileOfLoadedName(module->dlpi_name);
    if (!file.empty()) {
        static_cast<std::vector<std::string>*>(files)->push_back(file);
    }
    return 0;
}

} // namespace

std::uint64_t SystemCore::ThreadID() noexcept
{
    return static_cast<std::uint64_t>(::syscall(SYS_gettid));
}

std::string SystemCore::ExecutableFile()
{
    std::string path(kFirstBufferBytes, '\0');
    for (;;) {
        ssize_t const length = ::readlink("/proc/self/exe", &path[0], path.size());
        if (length < 0) {
            return std::string();
        }
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            return path;
        }
        path.resize(path.size() * 2); // perhaps cut off
    }
}

std::string SystemCore::ModuleFile(void const* address)
{
    Dl_info info = {};
    void* module = nullptr;
    if (::dladdr1(address, &info, &module, RTLD_DL_LINKMAP) == 0 || module == nullptr) {
        return std::string();
    }
    return FileOfLoadedName(static_cast<link_map const*>(module)->l_name);
}

std::vector<std::string> SystemCore::ModuleFiles()
{
    std::vector<std::string> files;
    ::dl_iterate_phdr(&TakeModule, &files);
    return files;
}
