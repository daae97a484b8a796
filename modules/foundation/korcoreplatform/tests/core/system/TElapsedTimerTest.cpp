#include "korcoreplatform/main/core/system/TElapsedTimer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

namespace {

using Clock = std::chrono::steady_clock;

double MsecSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Returns once the timer reads at least this much.
void WaitFor(TElapsedTimer const& timer, double msec)
{
    while (timer.ElapsedMsec() < msec) {}
}

/// Ends the process with 0 when the process's clock, which nothing has read yet, starts now.
[[noreturn]] void ReadFreshProcessClock()
{
    WaitFor(TElapsedTimer(true), 3); // what a clock that started earlier would show
    Clock::time_point const start = Clock::now();
    double const first = TElapsedTimer::AppElapsedSec() * 1000;
    bool const startsNow = first >= 0 && first <= MsecSince(start);
    TElapsedTimer const timer(true);
    WaitFor(timer, 2);
    double const second = TElapsedTimer::AppElapsedSec() * 1000;
    auto const milliseconds = static_cast<double>(TElapsedTimer::AppElapsedMs());
    bool const goesOn = second >= 2 && milliseconds >= 2 && milliseconds <= MsecSince(start) + 1;
    std::exit(startsNow && goesOn ? 0 : 1);
}

TEST(TElapsedTimerTest, ProcessClockStartsAtItsFirstReading)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // a process that starts from main
    EXPECT_EXIT(ReadFreshProcessClock(), testing::ExitedWithCode(0), "");
}

TEST(TElapsedTimerTest, ReadingLiesBetweenTwoReadingsOfAnotherClock)
{
    Clock::time_point const outerStart = Clock::now();
    TElapsedTimer timer(true);
    Clock::time_point const innerStart = Clock::now();
    EXPECT_TRUE(timer.IsRunning());
    WaitFor(timer, 2);
    double const atLeast = MsecSince(innerStart);
    double const msec = timer.ElapsedMsec();
    std::int64_t const ticks = timer.ElapsedTicksMs();
    double const seconds = timer.ElapsedSec();
    double const atMost = MsecSince(outerStart);
    EXPECT_GE(msec, atLeast);
    EXPECT_LE(msec, atMost);
    EXPECT_GE(static_cast<double>(ticks), atLeast - 1); // whole milliseconds, cut or rounded up
    EXPECT_LE(static_cast<double>(ticks), atMost + 1);
    EXPECT_GE(seconds, atLeast / 1000);
    EXPECT_LE(seconds, atMost / 1000);

    Clock::time_point const reset = Clock::now();
    EXPECT_GE(timer.Reset(), ticks);
    EXPECT_TRUE(timer.IsRunning());
    double const afterReset = timer.ElapsedMsec();
    EXPECT_LE(afterReset, MsecSince(reset));
}

TEST(TElapsedTimerTest, StopFreezesTheReadingUntilTheNextStart)
{
    TElapsedTimer timer(false);
    EXPECT_FALSE(timer.IsRunning());
    timer.Stop();
    EXPECT_EQ(timer.ElapsedMsec(), 0.0);

    timer.Start();
    WaitFor(timer, 2.5);
    timer.Stop();
    double const frozen = timer.ElapsedMsec();
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_GE(frozen, 2.5);
    WaitFor(TElapsedTimer(true), 1);
    timer.Stop();
    EXPECT_EQ(timer.ElapsedMsec(), frozen);
    EXPECT_EQ(timer.ElapsedSec(), frozen / 1000.0);

    timer.Start();
    WaitFor(timer, 1);
    Clock::time_point const restart = Clock::now();
    timer.Start();
    double const afterRestart = timer.ElapsedMsec();
    EXPECT_LE(afterRestart, MsecSince(restart));
}

TEST(TElapsedTimerTest, FrozenReadingsAreNotCopied)
{
    TElapsedTimer const idle(false);
    TElapsedTimer running(true);
    WaitFor(running, 2);
    TElapsedTimer stopped(running);
    EXPECT_GE(stopped.ElapsedMsec(), 2.0); // the start time is
    stopped.Stop();
    double const frozen = stopped.ElapsedMsec();

    EXPECT_EQ(TElapsedTimer(stopped).ElapsedMsec(), 0.0);
    TElapsedTimer target(stopped);
    target = stopped;
    EXPECT_EQ(target.ElapsedMsec(), 0.0);
    target = running;
    EXPECT_TRUE(target.IsRunning());
    EXPECT_GE(target.ElapsedMsec(), frozen);
    stopped = running;
    stopped = idle;
    EXPECT_EQ(stopped.ElapsedMsec(), frozen);
}

} // namespace
