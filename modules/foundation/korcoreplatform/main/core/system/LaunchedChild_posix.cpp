#include "korcoreplatform/main/core/system/LaunchedChild_p.h"

#include "korcoreplatform/main/core/system/ProcessLaunchSystem_p.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Repeats a system call that a signal interrupts.
template <class Call>
auto Retry(Call const& call) noexcept
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// The two objects that `posix_spawn` takes. The first failure of a step stays, and the steps
/// behind it are not taken.
class SpawnSettings
{
public:
    SpawnSettings() noexcept
    {
        m_error = ::posix_spawn_file_actions_init(&m_actions);
        m_hasActions = m_error == 0;
        Then([this] { return ::posix_spawnattr_init(&m_attributes); });
        m_hasAttributes = m_error == 0;
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;
    ~SpawnSettings()
    {
        if (m_hasActions) {
            ::posix_spawn_file_actions_destroy(&m_actions);
        }
        if (m_hasAttributes) {
            ::posix_spawnattr_destroy(&m_attributes);
        }
    }

    void SetDescriptors(std::array<int, 3> const& standardStreams) noexcept
    {
        int to = 0;
        for (int const from : standardStreams) {
            Then([&] { return ::posix_spawn_file_actions_adddup2(&m_actions, from, to); });
            ++to;
        }
        Then([&] { return ProcessLaunchSystem::CloseOtherDescriptors(m_actions, m_flags); });
    }

    void SetWorkingDirectory(char const* directory) noexcept
    {
        if (directory[0] != '\0') {
            Then([&] { return ::posix_spawn_file_actions_addchdir_np(&m_actions, directory); });
        }
    }

    void SetOwnGroup() noexcept
    {
        Then([&] { return ::posix_spawnattr_setpgroup(&m_attributes, 0); });
        m_flags = static_cast<short>(m_flags | POSIX_SPAWN_SETPGROUP);
    }

    void ResetSignals() noexcept
    {
        ::sigset_t signals;
        ::sigemptyset(&signals);
        Then([&] { return ::posix_spawnattr_setsigmask(&m_attributes, &signals); });
        ::sigfillset(&signals);
        ::sigdelset(&signals, SIGKILL); // nothing can be set for these two
        ::sigdelset(&signals, SIGSTOP);
        Then([&] { return ::posix_spawnattr_setsigdefault(&m_attributes, &signals); });
        m_flags = static_cast<short>(m_flags | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    int Spawn(::pid_t& id, LaunchedChild::Order const& order) noexcept
    {
        Then([&] { return ::posix_spawnattr_setflags(&m_attributes, m_flags); });
        Then([&] {
            char const* const program = order.arguments[0];
            bool const isSearched = std::strchr(program, '/') == nullptr;
            auto const spawn = isSearched ? &::posix_spawnp : &::posix_spawn;
            // The system reads these texts only.
            return spawn(&id, program, &m_actions, &m_attributes,
                         const_cast<char* const*>(order.arguments),
                         const_cast<char* const*>(order.environment));
        });
        return m_error;
    }

private:
    template <class Step>
    void Then(Step const& step) noexcept
    {
        if (m_error == 0) {
            m_error = step();
        }
    }

    ::posix_spawn_file_actions_t m_actions;
    ::posix_spawnattr_t m_attributes;
    bool m_hasActions;
    bool m_hasAttributes;
    short m_flags = 0;
    int m_error;
};

int MoveAboveStandardStreams(Descriptor& descriptor) noexcept
{
    if (descriptor.Number() <= STDERR_FILENO) {
        int const moved = ::fcntl(descriptor.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (moved < 0) {
            return errno;
        }
        descriptor = Descriptor(moved);
    }
    return 0;
}

} // namespace

void Descriptor::Close() noexcept
{
    if (m_number >= 0) {
        ::close(std::exchange(m_number, -1));
    }
}

int Descriptor::OpenForReading(char const* file, Descriptor& opened) noexcept
{
    opened = Descriptor(Retry([&] { return ::open(file, O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
    return opened.IsOpen() ? MoveAboveStandardStreams(opened) : errno;
}

int Descriptor::OpenPipe(Descriptor& readEnd, Descriptor& writeEnd) noexcept
{
    int ends[2];
    if (int const error = ProcessLaunchSystem::OpenPipe(ends)) {
        return error;
    }
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    int const error = MoveAboveStandardStreams(readEnd);
    return error != 0 ? error : MoveAboveStandardStreams(writeEnd);
}

LaunchedChild::~LaunchedChild()
{
    if (m_id != 0) {
        Signal(SIGKILL);
        Reap();
    }
}

int LaunchedChild::Start(Order const& order) noexcept
{
    SpawnSettings settings;
    settings.SetWorkingDirectory(order.workingDirectory);
    settings.SetDescriptors(order.standardStreams);
    settings.ResetSignals();
    if (order.isOwnGroup) {
        settings.SetOwnGroup();
    }
    ::pid_t id = 0;
    if (int const error = settings.Spawn(id, order)) {
        return error;
    }
    m_id = id;
    m_isOwnGroup = order.isOwnGroup;
    m_endWatch = Descriptor(ProcessLaunchSystem::OpenEndWatch(id));
    return 0;
}

bool LaunchedChild::HasEnded() const noexcept
{
    ::siginfo_t info;
    info.si_pid = 0;
    int const options = WEXITED | WNOHANG | WNOWAIT;
    int const result =
        Retry([&] { return ::waitid(P_PID, static_cast<::id_t>(m_id), &info, options); });
    return result != 0 || info.si_pid != 0; // there is an error when somebody else has reaped it
}

void LaunchedChild::Signal(int signal) const noexcept
{
    ::kill(m_isOwnGroup ? -m_id : m_id, signal);
}

std::optional<int> LaunchedChild::Reap() noexcept
{
    int status = 0;
    ::pid_t const id = std::exchange(m_id, 0);
    ::pid_t const reaped = Retry([&] { return ::waitpid(id, &status, 0); });
    m_endWatch.Close();
    return reaped == id ? std::optional<int>(status) : std::nullopt;
}
