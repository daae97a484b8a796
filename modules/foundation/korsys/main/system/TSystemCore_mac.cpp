#include "korsys/main/system/SystemCore_p.h"

#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <mach-o/dyld.h>
#include <pthread.h>

std::uint64_t SystemCore::ThreadID() noexcept
{
    std::uint64_t id = 0;
    ::pthread_threadid_np(nullptr, &id);
    return id;
}

std::string SystemCore::ExecutableFile()
{
    std::uint32_t size = 0;
    ::_NSGetExecutablePath(nullptr, &size); // only tells the size, the terminating zero included
    std::string path(size, '\0');
    if (::_NSGetExecutablePath(&path[0], &size) != 0) {
        return std::string();
    }
    std::unique_ptr<char, decltype(&std::free)> const resolved(::realpath(path.c_str(), nullptr),
                                                               &std::free);
    return resolved ? resolved.get() : std::string();
}

std::string SystemCore::ModuleFile(void const* address)
{
    Dl_info info = {};
    if (::dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return std::string();
    }
    return info.dli_fname;
}

std::vector<std::string> SystemCore::ModuleFiles()
{
    std::vector<std::string> files;
    std::uint32_t const count = ::_dyld_image_count();
    for (std::uint32_t i = 0; i < count; ++i) {
        if (char const* const name = ::_dyld_get_image_name(i)) { // null once it was unloaded
            files.push_back(name);
        }
    }
    return files;
}
