/// A child process from its start to its end, and the descriptors that it is started with.

#pragma once

#include <array>
#include <optional>
#include <utility>

#include <sys/types.h>

/// Owns a descriptor, or none.
class Descriptor
{
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        other.Close();
        return *this;
    }
    ~Descriptor() { Close(); }

    int Number() const noexcept { return m_number; } ///< -1 for none.
    bool IsOpen() const noexcept { return m_number >= 0; }
    void Close() noexcept;

    // These open descriptors that no other program gets, and none below 3: what is to become a
    // child's standard stream must not lie where another one goes. They return 0 or an error
    // number.

    static int OpenForReading(char const* file, Descriptor& opened) noexcept;
    static int OpenPipe(Descriptor& readEnd, Descriptor& writeEnd) noexcept;

private:
    int m_number = -1;
};

/// Thread safety: one thread at a time; children of several threads do not meet.
class LaunchedChild
{
public:
    struct Order
    {
        char const* const* arguments; ///< The program first; null at the end.
        char const* const* environment;
        char const* workingDirectory;       ///< Empty for that of this process.
        std::array<int, 3> standardStreams; ///< None below 3.
        bool isOwnGroup;
    };

    LaunchedChild() noexcept = default;
    LaunchedChild(LaunchedChild const&) = delete;
    LaunchedChild& operator=(LaunchedChild const&) = delete;
    ~LaunchedChild(); ///< Kills and reaps what was started and not reaped.

    /// Returns 0 or the error number, also that with which the new process failed to run the
    /// program. Requires: called once.
    int Start(Order const& order) noexcept;

    int Id() const noexcept { return m_id; }

    /// For `poll`: readable once the child has ended. -1 when there is none; `HasEnded` tells then.
    int EndWatch() const noexcept { return m_endWatch.Number(); }

    bool HasEnded() const noexcept;

    /// To its group, when it leads one. That may be there when the child has ended.
    void Signal(int signal) const noexcept;

    /// Waits for the end. Returns what `waitpid` tells; nothing when somebody else was told.
    std::optional<int> Reap() noexcept;

private:
    ::pid_t m_id = 0; ///< 0 before the start and after the reaping: the number is not ours then.
    bool m_isOwnGroup = false;
    Descriptor m_endWatch;
};
