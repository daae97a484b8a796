// A run of a program: its streams, its end, its deadline.

#include "korcoreplatform/main/core/system/TProcessLaunch.h"

#include "korcoreplatform/main/core/files/FillAhead_p.h"
#include "korcoreplatform/main/core/system/EnvironmentLock_p.h"
#include "korcoreplatform/main/core/system/LaunchedChild_p.h"
#include "korcoreplatform/main/core/system/ProcessLaunchSystem_p.h"
#include "korsys/main/system/SystemQueries.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// What is read at a time. It stays in the nearer caches on its way into the result.
constexpr std::size_t kPieceBytes = 64 * 1024;

constexpr std::size_t kLargeBytes = 1024 * 1024;
constexpr std::size_t kLargeGrowth = 4;

constexpr char kNullDevice[] = "/dev/null";

/// How often a child is asked that cannot be watched.
constexpr milliseconds kAskEvery(10);

/// One stream from the child, and what is kept of it.
class Capture
{
public:
    Capture(std::size_t limit, std::string& bytes, bool& isCut)
        : m_limit(limit), m_bytes(bytes), m_isCut(isCut), m_ahead(nullptr, 0)
    {}

    int Open(Descriptor& childsEnd) noexcept { return Descriptor::OpenPipe(m_end, childsEnd); }
    bool IsOpen() const noexcept { return m_end.IsOpen(); }
    int Number() const noexcept { return m_end.Number(); }

    /// Reads once, if the pipe has something, and sees its end.
    void Attend(short events, char* piece)
    {
        std::size_t got = 0;
        if ((events & POLLIN) != 0) {
            got = Read(piece, kPieceBytes);
        }
        // Less than was wanted is all there was, and when no writer was left, all there will be.
        if ((events & (POLLHUP | POLLERR | POLLNVAL)) != 0 && got != kPieceBytes) {
            m_end.Close();
        }
    }

    /// Reads what is in the pipe at this moment: no more, as there may be a writer still.
    void Drain(char* piece)
    {
        int left = 0;
        if (!IsOpen() || ::ioctl(Number(), FIONREAD, &left) != 0) {
            return;
        }
        while (left > 0 && IsOpen()) {
            left -= static_cast<int>(Read(piece, std::min<std::size_t>(left, kPieceBytes)));
        }
    }

private:
    /// Reads at least a byte. At the end of the stream, which is closed then, and after a signal,
    /// none. Requires: the pipe has something, or no writer.
    std::size_t Read(char* piece, std::size_t max)
    {
        ::ssize_t const got = ::read(Number(), piece, max);
        if (got > 0) {
            Keep(piece, static_cast<std::size_t>(got));
            return static_cast<std::size_t>(got);
        }
        if (got == 0 || errno != EINTR) {
            m_end.Close();
        }
        return 0;
    }

    void Keep(char const* piece, std::size_t n)
    {
        if (n == kPieceBytes && !m_isEnlarged) {
            m_isEnlarged = true;
            ProcessLaunchSystem::EnlargePipe(Number());
        }
        std::size_t const kept = std::min(n, m_limit - m_bytes.size());
        m_isCut = m_isCut || kept != n;
        if (m_bytes.size() + kept > m_bytes.capacity() && m_bytes.capacity() >= kLargeBytes) {
            GrowLarge();
        }
        m_ahead.Reach(m_bytes.data() + m_bytes.size() + kept);
        m_bytes.append(piece, kept);
    }

    /// Takes far more room than there are bytes: what stays untouched is address space only, and
    /// growing is a copy of them all. Where there is not so much, appending takes less.
    void GrowLarge()
    {
        std::size_t const room = std::min(m_limit, m_bytes.capacity() * kLargeGrowth);
        std::string larger;
        try {
            larger.reserve(room);
        } catch (std::bad_alloc const&) {
            m_ahead = FillAhead(nullptr, 0);
            return;
        }
        m_ahead = FillAhead(larger.data(), room);
        m_ahead.Reach(larger.data() + m_bytes.size());
        larger.append(m_bytes);
        m_bytes.swap(larger);
    }

    std::size_t const m_limit;
    std::string& m_bytes; ///< Never more than the limit.
    bool& m_isCut;
    FillAhead m_ahead; ///< Of the block that the bytes lie in, when that is a large one.
    bool m_isEnlarged = false;
    Descriptor m_end;
};

/// Bytes on their way to the child. While there are some this process has the reading end open
/// too, so that it is no error, and there is no SIGPIPE, when the child does not read them.
class Feed
{
public:
    /// Requires: the bytes outlive this.
    int Open(std::string const& bytes, Descriptor& childsEnd) noexcept
    {
        m_next = bytes.data();
        m_left = bytes.size();
        if (int const error = Descriptor::OpenPipe(childsEnd, m_end)) {
            return error;
        }
        if (m_left > kPieceBytes) {
            ProcessLaunchSystem::EnlargePipe(m_end.Number());
        }
        ::fcntl(m_end.Number(), F_SETFL, O_NONBLOCK);
        Write();
        return 0;
    }

    bool IsOpen() const noexcept { return m_end.IsOpen(); }
    int Number() const noexcept { return m_end.Number(); }

    void Write() noexcept
    {
        while (m_left != 0) {
            ::ssize_t const n = ::write(m_end.Number(), m_next, m_left);
            if (n < 0 && errno != EINTR) {
                return; // there is no more room
            }
            m_next += std::max<::ssize_t>(n, 0);
            m_left -= static_cast<std::size_t>(std::max<::ssize_t>(n, 0));
        }
        m_end.Close();
    }

private:
    char const* m_next = nullptr;
    std::size_t m_left = 0;
    Descriptor m_end;
};

/// The deadline, then the grace, in two steps that are each taken once.
class TimeLimit
{
public:
    TimeLimit(int deadlineMs, int graceMs) : m_graceMs(graceMs), m_isSet(deadlineMs >= 0)
    {
        m_end = Clock::now() + milliseconds(deadlineMs);
    }

    bool IsSet() const noexcept { return m_isSet; }
    bool IsOver() const { return m_isSet && Clock::now() >= m_end; }
    void BeginGrace() { m_end = Clock::now() + milliseconds(m_graceMs); }

    /// For `poll`: up to the limit, never too short.
    int LeftMs() const
    {
        if (!m_isSet) {
            return -1;
        }
        auto const left = std::chrono::ceil<milliseconds>(m_end - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
    }

private:
    int m_graceMs;
    bool m_isSet;
    Clock::time_point m_end;
};

/// This process's side of a run.
class Conversation
{
public:
    Conversation(TProcessLaunch::Result& result, std::size_t outputLimit, std::size_t errorLimit)
        : m_output(outputLimit, result.output, result.isOutputCut),
          m_error(errorLimit, result.errorOutput, result.isErrorCut), m_piece(new char[kPieceBytes])
    {}

    int OpenInput(std::string const& bytes) { return m_input.Open(bytes, m_childsInput); }
    int OpenInputFile(std::string const& file)
    {
        return Descriptor::OpenForReading(file.c_str(), m_childsInput);
    }

    int OpenOutputs(bool isMerged)
    {
        int const error = m_output.Open(m_childsOutput);
        return error != 0 || isMerged ? error : m_error.Open(m_childsError);
    }

    std::array<int, 3> ChildsStreams() const
    {
        Descriptor const& error = m_childsError.IsOpen() ? m_childsError : m_childsOutput;
        return {m_childsInput.Number(), m_childsOutput.Number(), error.Number()};
    }

    /// To be called when the child has its ends.
    void CloseChildsEnds()
    {
        m_childsOutput.Close();
        m_childsError.Close();
        if (!m_input.IsOpen()) {
            m_childsInput.Close();
        }
    }

    /// Feeds and reads until the child has ended, or there is only its end to wait for. Returns
    /// whether the limit passed before; its group can be killed then.
    bool Hold(LaunchedChild const& child, TimeLimit limit, bool isOwnGroup);

    /// For the bytes that were written before the child's end.
    void Drain()
    {
        m_output.Drain(m_piece.get());
        m_error.Drain(m_piece.get());
    }

private:
    bool HasOpenOutput() const { return m_output.IsOpen() || m_error.IsOpen(); }
    void AttendStreams(::pollfd const (&wanted)[4]);

    Feed m_input;
    Capture m_output;
    Capture m_error;
    Descriptor m_childsInput;
    Descriptor m_childsOutput;
    Descriptor m_childsError;
    std::unique_ptr<char[]> m_piece;
};

void Conversation::AttendStreams(::pollfd const (&wanted)[4])
{
    if (wanted[0].revents != 0) {
        m_output.Attend(wanted[0].revents, m_piece.get());
    }
    if (wanted[1].revents != 0) {
        m_error.Attend(wanted[1].revents, m_piece.get());
    }
    if (wanted[2].revents != 0) {
        m_input.Write();
    }
}

bool Conversation::Hold(LaunchedChild const& child, TimeLimit limit, bool isOwnGroup)
{
    bool isTerminating = false;
    bool hasEnded = false;
    while (HasOpenOutput() || m_input.IsOpen() || limit.IsSet()) {
        int const watch = child.EndWatch();
        int const patience = static_cast<int>(kAskEvery.count());
        int waitMs = limit.LeftMs();
        if (watch < 0 && !hasEnded) {
            waitMs = waitMs < 0 ? patience : std::min(waitMs, patience);
        }
        // `poll` passes over the numbers below zero.
        ::pollfd wanted[4] = {{m_output.Number(), POLLIN, 0},
                              {m_error.Number(), POLLIN, 0},
                              {m_input.Number(), POLLOUT, 0},
                              {hasEnded ? -1 : watch, POLLIN, 0}};
        if (::poll(wanted, 4, waitMs) < 0) {
            continue; // a signal
        }
        AttendStreams(wanted);
        hasEnded = hasEnded || (watch < 0 ? child.HasEnded() : wanted[3].revents != 0);
        if (hasEnded && !(isTerminating && isOwnGroup && HasOpenOutput())) {
            break;
        }
        if (limit.IsOver()) {
            if (isTerminating) {
                break;
            }
            isTerminating = true;
            child.Signal(SIGTERM);
            child.Signal(SIGCONT); // a stopped process does not see the other one
            limit.BeginGrace();
        }
    }
    return isTerminating;
}

/// Whether it was the working directory that kept the program from starting: the system does not
/// tell, so the directory is asked once more. It comes before the program.
bool IsDirectorysError(std::string const& directory, int error)
{
    std::string const inside = directory + "/.";
    return !directory.empty() && ::faccessat(AT_FDCWD, inside.c_str(), X_OK, AT_EACCESS) != 0 &&
           errno == error;
}

void TellEnd(TProcessLaunch::Result& result, std::optional<int> status, bool isTimedOut)
{
    using End = TProcessLaunch::End;
    result.end = End::Unknown;
    if (status && WIFEXITED(*status)) {
        result.end = End::Exited;
        result.exitCode = WEXITSTATUS(*status);
    } else if (status) {
        result.end = End::Signaled;
        result.signal = WTERMSIG(*status);
    }
    if (isTimedOut) {
        result.end = End::TimedOut;
    }
}

TProcessLaunch::Result NotStarted(TProcessLaunch::Failure failure, int error)
{
    TProcessLaunch::Result result;
    result.failure = failure;
    result.error = error;
    return result;
}

} // namespace

TProcessLaunch::Result TProcessLaunch::Run() const
{
    if (!IsWellFormed()) {
        return NotStarted(Failure::Request, EINVAL);
    }
    Result result;
    Conversation conversation(result, m_outputLimit, m_errorLimit);
    bool const isFile = m_input == Input::File;
    if (int const error = m_input == Input::Bytes
                              ? conversation.OpenInput(m_inputText)
                              : conversation.OpenInputFile(isFile ? m_inputText : kNullDevice)) {
        return NotStarted(isFile ? Failure::InputFile : Failure::Streams, error);
    }
    if (int const error = conversation.OpenOutputs(m_isMerged)) {
        return NotStarted(Failure::Streams, error);
    }

    std::vector<char const*> const arguments = ArgumentVector();
    std::vector<std::string> ownEntries;
    std::shared_lock<TReadWriteLock> lock(EnvironmentLock());
    std::vector<char const*> const environment =
        EnvironmentVector(SystemQueries::Environment(), ownEntries);
    LaunchedChild child;
    int const error = child.Start({arguments.data(), environment.data(), m_workingDirectory.c_str(),
                                   conversation.ChildsStreams(), m_isOwnGroup});
    lock.unlock();
    if (error != 0) {
        bool const isDirectorys = IsDirectorysError(m_workingDirectory, error);
        return NotStarted(isDirectorys ? Failure::WorkingDirectory : Failure::Program, error);
    }
    result.pid = child.Id();
    conversation.CloseChildsEnds();
    bool const isTimedOut =
        conversation.Hold(child, TimeLimit(m_deadlineMs, m_graceMs), m_isOwnGroup);
    if (isTimedOut) {
        child.Signal(SIGKILL);
    }
    TellEnd(result, child.Reap(), isTimedOut);
    conversation.Drain();
    return result;
}
