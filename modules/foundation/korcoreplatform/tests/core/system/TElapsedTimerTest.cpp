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
    WaitFor(TElapsedTimer(true), 2);
    auto const second = static_cast<double>(TElapsedTimer::AppElapsedMs());
    bool const goesOn = second >= 2 && second <= MsecSince(start) + 1; // may be rounded up
    std::exit(startsNow && goesOn ? 0 : 1);
}

TEST(TElapsedTimerTest, ProcessClockStartsAtItsFirstReading)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // a process that starts from main
    EXPECT_EXIT(ReadFreshProcessClock(), testing::ExitedWithCode(0), "");
}

TEST(TElapsedTimerTest, ReadingLiesBetweenTwoReadingsOfAnotherClock)
{
    Clock::time_point const outer = Clock::now();
    TElapsedTimer timer(true);
    Clock::time_point const inner = Clock::now();
    WaitFor(timer, 2);
    double const atLeast = MsecSince(inner);
    double const readings[] = {timer.ElapsedMsec(), timer.ElapsedSec() * 1000};
    std::int64_t const ticks = timer.ElapsedTicksMs(); // whole, cut or rounded up
    double const atMost = MsecSince(outer);
    for (double const reading : readings) {
        EXPECT_GE(reading, atLeast);
        EXPECT_LE(reading, atMost);
    }
    EXPECT_NEAR(static_cast<double>(ticks), (atLeast + atMost) / 2, 1 + (atMost - atLeast) / 2);

    Clock::time_point const reset = Clock::now();
    EXPECT_GE(timer.Reset(), ticks);
    double const afterReset = timer.ElapsedMsec();
    EXPECT_LE(afterReset, MsecSince(reset));
    WaitFor(timer, 1);
    Clock::time_point const restart = Clock::now();
    timer.Start();
    double const afterRestart = timer.ElapsedMsec();
    EXPECT_LE(afterRestart, MsecSince(restart));
}

TEST(TElapsedTimerTest, StopFreezesAReadingThatIsNotCopied)
{
    TElapsedTimer timer(false);
    timer.Stop();
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_EQ(timer.ElapsedMsec(), 0.0);

    timer.Start();
    WaitFor(timer, 2.5);
    TElapsedTimer const running(timer);
    EXPECT_GE(running.ElapsedMsec(), 2.5); // the start time is copied
    timer.Stop();
    double const frozen = timer.ElapsedMsec();
    EXPECT_GE(frozen, 2.5);
    WaitFor(running, frozen + 1);
    timer.Stop();
    EXPECT_EQ(timer.ElapsedMsec(), frozen);

    TElapsedTimer copy(timer);
    EXPECT_EQ(copy.ElapsedMsec(), 0.0);
    copy = timer;
    EXPECT_EQ(copy.ElapsedMsec(), 0.0);
    timer = running;
    EXPECT_GE(timer.ElapsedMsec(), frozen + 1);
    timer = copy;
    EXPECT_EQ(timer.ElapsedMsec(), frozen);
    timer.Start();
    timer = TElapsedTimer(false);
    EXPECT_EQ(timer.ElapsedMsec(), 0.0); // starting dropped it
}

} // namespace
