#include "korsys/main/system/TSystemCore.h"

#include "korsys/main/system/SystemCore_p.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>

#include <pthread.h>
#include <unistd.h>

namespace {

// 0 means not known yet. Relaxed: the number orders nothing else.
std::atomic<std::uint32_t> s_processID{0};
[[gnu::tls_model("initial-exec")]] thread_local std::uint64_t t_threadID = 0;

/// Runs in a new process on the only thread that it has.
extern "C" void RefreshIDsInChild()
{
    s_processID.store(static_cast<std::uint32_t>(::getpid()), std::memory_order_relaxed);
    t_threadID = SystemCore::ThreadID();
}

/// Whether a child will refresh what is remembered. No id is remembered before this was called.
bool IsRefreshedAfterFork() noexcept
{
    static bool const s_isRegistered = ::pthread_atfork(nullptr, nullptr, &RefreshIDsInChild) == 0;
    return s_isRegistered;
}

[[maybe_unused]] bool const s_atLoad = IsRefreshedAfterFork(); // no child finds it half made

TPathCore ToPath(std::string const& path)
{
    return TPathCore(TStringCore::fromStdString(path));
}

std::string DirectoryOf(std::string const& file)
{
    std::size_t const slash = file.rfind('/');
    if (slash == std::string::npos) {
        return std::string();
    }
    return file.substr(0, slash == 0 ? 1 : slash);
}

/// The path from the root on, without empty and "." steps. A ".." stays: behind a link it does not
/// lead back to where the link is.
std::string MakeAbsolute(std::string const& file)
{
    if (file.empty()) {
        return file;
    }
    std::error_code error;
    std::filesystem::path steps;
    for (std::filesystem::path const& step : std::filesystem::absolute(file, error)) {
        if (step != ".") {
            steps /= step;
        }
    }
    return steps.string();
}

std::string FileName(std::string const& file)
{
    return file.substr(file.rfind('/') + 1);
}

} // namespace

std::uint32_t TSystemCore::ProcessID() noexcept
{
    std::uint32_t id = s_processID.load(std::memory_order_relaxed);
    if (id == 0) {
        bool const isRefreshed = IsRefreshedAfterFork();
        id = static_cast<std::uint32_t>(::getpid());
        if (isRefreshed) {
            s_processID.store(id, std::memory_order_relaxed);
        }
    }
    return id;
}

std::uint64_t TSystemCore::ThreadID() noexcept
{
    std::uint64_t id = t_threadID;
    if (id == 0) {
        id = SystemCore::ThreadID();
        if (IsRefreshedAfterFork()) {
            t_threadID = id;
        }
    }
    return id;
}

TPathCore TSystemCore::ExecutablePath()
{
    return ToPath(DirectoryOf(SystemCore::ExecutableFile()));
}

TPathCore TSystemCore::ExecutableFilename()
{
    return ToPath(SystemCore::ExecutableFile());
}

TPathCore TSystemCore::ModulePath(TPathCore const& module)
{
    std::string const wanted = module.GenericString().toStdString();
    if (wanted.empty()) {
        return ExecutablePath();
    }
    bool const isPath = wanted.find('/') != std::string::npos;
    std::string const wantedFile = isPath ? MakeAbsolute(wanted) : wanted;
    for (std::string const& loaded : SystemCore::ModuleFiles()) {
        std::string const file = MakeAbsolute(loaded);
        if ((isPath ? file : FileName(file)) == wantedFile) {
            return ToPath(DirectoryOf(file));
        }
    }
    return TPathCore();
}

TPathCore TSystemCore::ModuleFilename(void const* address)
{
    return ToPath(MakeAbsolute(SystemCore::ModuleFile(address)));
}

TPathCore TSystemCore::ModuleDirectory(void const* address)
{
    return ToPath(DirectoryOf(MakeAbsolute(SystemCore::ModuleFile(address))));
}
