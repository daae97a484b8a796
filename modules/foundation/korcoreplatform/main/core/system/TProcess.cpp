#include "korcoreplatform/main/core/system/TProcess.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/system/EnvironmentLock_p.h"
#include "korcoreplatform/main/core/system/ProcessLaunchSystem_p.h"
#include "korcoreplatform/main/core/system/TEnvironment.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/system/SystemQueries.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <boost/filesystem/directory.hpp>
#include <boost/system/error_code.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <ostream>
#include <shared_mutex>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QString NativeName(TPath const& path)
{
    return path.NativeString().toQString();
}

/// Through UTF-8, which replaces what is no text: Qt would pass nothing of such an argument.
QStringList ListOf(std::vector<TString> const& texts)
{
    QStringList list;
    list.reserve(static_cast<int>(texts.size()));
    for (TString const& text : texts) {
        list.append(QString::fromStdString(text.toStdString()));
    }
    return list;
}

QIODevice::OpenMode DeviceMode(TIO::OpenMode mode)
{
    return QIODevice::OpenMode(static_cast<int>(mode));
}

/// The spawned children that nobody else waits for. The exit handlers wait for them; the list
/// itself is never destroyed, as a static that dies later may spawn once more.
class SpawnCleanUpList
{
public:
    static SpawnCleanUpList& Get()
    {
        static SpawnCleanUpList& s_list = *new SpawnCleanUpList;
        struct WaitAtExit
        {
            ~WaitAtExit() { s_list.WaitForAll(); }
        };
        static WaitAtExit const s_waitAtExit;
        return s_list;
    }

    /// Appends the child that `spawn` gives, if any. There is room for it before it begins.
    template <class Spawn>
    void Append(Spawn const& spawn)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_pids.reserve(m_pids.size() + 1);
        std::optional<::pid_t> const child = spawn();
        if (child && !m_isOver) {
            m_pids.push_back(*child);
        } else if (child) {
            lock.unlock();
            WaitFor(*child);
        }
    }

private:
    static void WaitFor(::pid_t child)
    {
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    }

    void WaitForAll()
    {
        std::vector<::pid_t> pids;
        {
            std::lock_guard<std::mutex> const guard(m_mutex);
            m_isOver = true;
            pids.swap(m_pids);
        }
        std::for_each(pids.begin(), pids.end(), &WaitFor);
    }

    std::mutex m_mutex;
    std::vector<::pid_t> m_pids; ///< Guarded by `m_mutex`, as the other.
    bool m_isOver = false;       ///< From the exit handlers on, a child is waited for at once.
};

/// The program and its arguments as a new process takes them.
class ArgumentVector
{
public:
    /// Delegates, so that the copies are freed when making one of them throws.
    ArgumentVector(TPath const& program, std::vector<TString> const& arguments) : ArgumentVector()
    {
        m_texts.reserve(arguments.size() + 2);
        AppendCopy(program.NativeString());
        for (TString const& argument : arguments) {
            AppendCopy(argument);
        }
    }
    ArgumentVector(ArgumentVector const&) = delete;
    ArgumentVector& operator=(ArgumentVector const&) = delete;
    ~ArgumentVector() { std::for_each(m_texts.begin(), m_texts.end(), &std::free); }

    bool IsComplete() const
    {
        return std::find(m_texts.begin(), m_texts.end(), nullptr) == m_texts.end();
    }

    void Terminate() { m_texts.push_back(nullptr); }
    char* const* Texts() const { return m_texts.data(); }

private:
    ArgumentVector() = default;

    void AppendCopy(TString const& text)
    {
        m_texts.push_back(::strdup(text.toLocal8Bit().c_str()));
    }

    std::vector<char*> m_texts; ///< Owned; null where memory ran out.
};

/// Returns 0 or the number of the error. `environment` may be null.
int PosixSpawn(::pid_t& child, char* const* arguments, char** environment)
{
    std::shared_lock<TReadWriteLock> const lock(EnvironmentLock());
    return ::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments,
                         environment != nullptr ? environment : SystemQueries::Environment());
}

/// For when the open descriptors cannot be listed, which takes a descriptor itself.
void MarkAllDescriptors()
{
    if (ProcessLaunchSystem::MarkOtherDescriptors()) {
        return;
    }
    long const limit = ::sysconf(_SC_OPEN_MAX);
    for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor) {
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC); // a number that is not in use is no harm
    }
}

char const* NameOf(TProcess::ProcessError error)
{
    switch (error) {
    case TProcess::FailedToStart:
        return "FailedToStart";
    case TProcess::Crashed:
        return "Crashed";
    case TProcess::TimedOut:
        return "TimedOut";
    case TProcess::ReadError:
        return "ReadError";
    case TProcess::WriteError:
        return "WriteError";
    case TProcess::UnknownError:
        return "UnknownError";
    case TProcess::NoError:
        return "NoError";
    }
    return nullptr;
}

} // namespace

TProcess::TProcess() : m_process(std::make_unique<QProcess>()) {}

TProcess::~TProcess()
{
    if (m_process->isOpen()) {
        m_process->close();
    }
}

void TProcess::Close()
{
    m_process->close();
}

QIODevice* TProcess::GetQIODevice()
{
    return m_process.get();
}

bool TProcess::IsOpen() const
{
    return m_process->isOpen();
}

bool TProcess::Open(OpenMode mode)
{
    if (!m_process->open(DeviceMode(mode))) {
        ThrowError<Exception>(TString(m_process->errorString()),
                              &KorErrorsError::AutoGen_0xC3D29B3D);
    }
    return true;
}

long long TProcess::Read(void* buffer, long long max)
{
    return m_process->read(static_cast<char*>(buffer), max);
}

long long TProcess::Size() const
{
    return m_process->size();
}

long long TProcess::Write(void const* data, long long count)
{
    return m_process->write(static_cast<char const*>(data), count);
}

QProcess* TProcess::GetQProcess()
{
    return m_process.get();
}

QProcess const* TProcess::GetQProcess() const
{
    return m_process.get();
}

void TProcess::Start(TPath const& program, std::vector<TString> const& arguments, OpenMode mode)
{
    m_process->start(NativeName(program), ListOf(arguments), DeviceMode(mode));
}

bool TProcess::WaitUntilStarted(int timeoutMs)
{
    return m_process->waitForStarted(timeoutMs);
}

bool TProcess::WaitUntilExited(int timeoutMs)
{
    return m_process->waitForFinished(timeoutMs);
}

void TProcess::Kill()
{
    m_process->kill();
}

void TProcess::Terminate()
{
    m_process->terminate();
}

long long TProcess::PID() const
{
    return m_process->processId();
}

TProcess::ProcessError TProcess::Error() const
{
    return static_cast<ProcessError>(m_process->error());
}

int TProcess::ExitCode() const
{
    return m_process->exitCode();
}

TProcess::ProcessExitStatus TProcess::ExitStatus() const
{
    return static_cast<ProcessExitStatus>(m_process->exitStatus());
}

void TProcess::CloseReadChannel(ProcessChannel channel)
{
    m_process->closeReadChannel(static_cast<QProcess::ProcessChannel>(channel));
}

void TProcess::CloseWriteChannel()
{
    m_process->closeWriteChannel();
}

TProcess::ProcessChannel TProcess::ReadChannel() const
{
    return static_cast<ProcessChannel>(m_process->readChannel());
}

void TProcess::ReadChannel(ProcessChannel channel)
{
    m_process->setReadChannel(static_cast<QProcess::ProcessChannel>(channel));
}

TProcess::ChannelMode TProcess::ProcessChannelMode() const
{
    return static_cast<ChannelMode>(m_process->processChannelMode());
}

void TProcess::ProcessChannelMode(ChannelMode mode)
{
    m_process->setProcessChannelMode(static_cast<QProcess::ProcessChannelMode>(mode));
}

void TProcess::StdInFile(TPath const& path)
{
    m_process->setStandardInputFile(NativeName(path));
}

void TProcess::StdOutFile(TPath const& path, OpenMode mode)
{
    m_process->setStandardOutputFile(NativeName(path), DeviceMode(mode));
}

void TProcess::StdErrFile(TPath const& path, OpenMode mode)
{
    m_process->setStandardErrorFile(NativeName(path), DeviceMode(mode));
}

void TProcess::StdOutProcess(TProcess& other)
{
    m_process->setStandardOutputProcess(other.m_process.get());
}

TPath TProcess::WorkingDirectory() const
{
    return TPath(TString(m_process->workingDirectory()));
}

void TProcess::WorkingDirectory(TPath const& path)
{
    m_process->setWorkingDirectory(NativeName(path));
}

TEnvironment TProcess::Environment() const
{
    return m_process->processEnvironment();
}

void TProcess::Environment(TEnvironment const& environment)
{
    m_process->setProcessEnvironment(environment);
}

int TProcess::Execute(TPath const& program, std::vector<TString> const& arguments)
{
    return QProcess::execute(NativeName(program), ListOf(arguments));
}

TProcess::ProcessError TProcess::RunWithOutput(TPath const& program,
                                               std::vector<TString> const& arguments,
                                               TString& output, int& exitCode, int timeoutMs)
{
    TProcess process;
    process.Start(program, arguments, ReadWrite);
    if (!process.WaitUntilExited(timeoutMs)) {
        process.Kill();
        return TimedOut;
    }
    if (process.ExitStatus() == CrashExit) {
        return Crashed;
    }
    std::vector<char> const bytes = process.ReadAll();
    if (!bytes.empty()) {
        output = TString::fromStdString(std::string(bytes.data(), bytes.size()));
    }
    exitCode = process.ExitCode();
    return exitCode == 0 ? NoError : UnknownError;
}

bool TProcess::StartDetached(TPath const& program, std::vector<TString> const& arguments)
{
    std::shared_lock<TReadWriteLock> const lock(EnvironmentLock());
    return QProcess::startDetached(NativeName(program), ListOf(arguments));
}

bool TProcess::StartDetached(TPath const& program, std::vector<TString> const& arguments,
                             TPath const& workingDirectory, unsigned int* pid)
{
    std::shared_lock<TReadWriteLock> const lock(EnvironmentLock());
    qint64 id = 0;
    bool const isStarted = QProcess::startDetached(NativeName(program), ListOf(arguments),
                                                   NativeName(workingDirectory), &id);
    if (pid != nullptr) {
        *pid = static_cast<unsigned int>(id);
    }
    return isStarted;
}

bool TProcess::Spawn(TPath const& program, std::vector<TString> const& arguments, int* pid,
                     char** environment)
{
    SpawnCleanUpList& cleanUpList = SpawnCleanUpList::Get();
    ArgumentVector texts(program, arguments);
    if (!texts.IsComplete()) {
        errno = ENOMEM;
        return false;
    }
    texts.Terminate();
    Set_FD_CLOEXEC_BeforeSpawn();
    int result = -1;
    auto const spawn = [&]() -> std::optional<::pid_t> {
        ::pid_t child = -1;
        result = PosixSpawn(child, texts.Texts(), environment);
        if (result < 0) {
            errno = result;
            return std::nullopt;
        }
        return child; // -1 when none could be made: it counts all the same
    };
    if (pid == nullptr) {
        cleanUpList.Append(spawn);
    } else if (std::optional<::pid_t> const child = spawn()) {
        *pid = *child;
    }
    return result == 0;
}

bool TProcess::Spawn(TPath const& program, QStringList const& arguments, int* pid)
{
    return Spawn(program, std::vector<TString>(arguments.begin(), arguments.end()), pid, nullptr);
}

bool TProcess::IsProcessRunning(unsigned int pid)
{
    return ::kill(static_cast<::pid_t>(pid), 0) == 0;
}

void TProcess::Set_FD_CLOEXEC_BeforeSpawn()
{
    boost::system::error_code error;
    boost::filesystem::directory_iterator entry("/dev/fd", error);
    for (; entry != boost::filesystem::directory_iterator(); entry.increment(error)) {
        std::string const name = entry->path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (descriptor > STDERR_FILENO) {
            ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        }
    }
    if (error.value() != 0) {
        MarkAllDescriptors();
    }
}

std::ostream& operator<<(std::ostream& out, TProcess::ProcessError error)
{
    char const* const name = NameOf(error);
    if (name != nullptr) {
        return out << name;
    }
    return out << "Unknown (" + std::to_string(static_cast<int>(error)) + ')';
}
