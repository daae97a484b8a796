/// A stopwatch whose reading can be frozen, and the clock of the time since its first use.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

#include <cstdint>
#include <memory>

class QElapsedTimer;

/// Measures elapsed time on a monotonic clock: a change of the system's wall clock never moves a
/// reading.
///
/// A timer is either running or stopped. While it runs its reading grows; `Stop()` freezes the
/// reading until the next `Start()` or `Reset()`.
///
///     TElapsedTimer timer(true);
///     LoadIndex();
///     timer.Stop();
///     Report(timer.ElapsedMsec());
///
/// Thread safety: one object must not be used by two threads at once. The static functions may be
/// called from any thread.
class KORCOREPLATFORM_EXPORT TElapsedTimer
{
public:
    explicit TElapsedTimer(bool startNow);

    /// Copies the running state and the start time. A frozen reading belongs to the object that
    /// took it: a new copy starts from 0.0, and an assigned timer keeps the one it had.
    TElapsedTimer(TElapsedTimer const& other);
    TElapsedTimer& operator=(TElapsedTimer const& other);
    virtual ~TElapsedTimer();

    void Start(); ///< Starts, or starts over, from 0.

    /// Starts over and returns the milliseconds counted until now.
    /// Requires: the timer is running; otherwise it starts, but the returned number means nothing.
    std::int64_t Reset();

    /// Freezes the reading. Stopping a stopped timer changes nothing.
    void Stop();

    bool IsRunning() const;

    /// The time since the start while running, the frozen reading while stopped; both with
    /// fractions of a unit.
    double ElapsedMsec() const;
    double ElapsedSec() const;

    /// Whole milliseconds since the start, whatever reading is frozen. The two are one function
    /// under two names.
    /// Requires: the timer is running; otherwise the number means nothing.
    std::int64_t ElapsedTicksMs() const;
    std::int64_t GetElapsedTime() const;

    /// Time since the first call of either function in the process; that call returns a value near
    /// 0. The clock they read lives until the process exits.
    static std::int64_t AppElapsedMs();
    static double AppElapsedSec();

private:
    std::unique_ptr<QElapsedTimer> m_timer; ///< Never null; invalid while stopped.
    double m_frozenMsec = 0.0;              ///< What a stopped timer reads.
};
