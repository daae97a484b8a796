#include "korcoreplatform/main/core/system/TElapsedTimer.h"

#include "korcoreplatform/tests/support/KorTest.h"

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

TEST(TElapsedTimerTest, ProcessClockStartsAtItsFirstReading)
{
    auto const readFreshClock = [] {
        WaitFor(TElapsedTimer(true), 3); // what a clock that started earlier would show
        Clock::time_point const start = Clock::now();
        double const first = TElapsedTimer::AppElapsedSec() * 1000;
        bool const startsNow = first >= 0 && first <= MsecSince(start);
        WaitFor(TElapsedTimer(true), 2);
        auto const second = static_cast<double>(TElapsedTimer::AppElapsedMs());
        std::exit(startsNow && second >= 2 && second <= MsecSince(start) + 1 ? 0 : 1);
    };
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // a process that starts from main
    EXPECT_EXIT(readFreshClock(), testing::ExitedWithCode(0), "");
}

TEST(TElapsedTimerTest, ReadingLiesBetweenTwoReadingsOfAnotherClock)
{
    Clock::time_point const outer = Clock::now();
    TElapsedTimer timer(true);
    Clock::time_point const inner = Clock::now();
    WaitFor(timer, 2);
    double const atLeast = MsecSince(inner);
    double const msec = timer.ElapsedMsec();
    double const sec = timer.ElapsedSec();
    std::int64_t const ticks = timer.ElapsedTicksMs(); // whole, cut or rounded up
    double const atMost = MsecSince(outer);
    EXPECT_TRUE(msec >= atLeast && msec <= atMost) << msec;
    EXPECT_TRUE(sec >= atLeast / 1000 && sec <= atMost / 1000) << sec;
    EXPECT_NEAR(static_cast<double>(ticks), (atLeast + atMost) / 2, 1 + (atMost - atLeast) / 2);

    Clock::time_point const reset = Clock::now();
    EXPECT_GE(timer.Reset(), ticks);
    double const afterReset = timer.ElapsedMsec();
    EXPECT_LE(afterReset, MsecSince(reset));
}

TEST(TElapsedTimerTest, StopFreezesAReadingThatIsNotCopied)
{
    TElapsedTimer timer(false);
    EXPECT_FALSE(timer.IsRunning());
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
    timer = running;
    EXPECT_GE(timer.ElapsedMsec(), frozen + 1);
    timer = copy;
    EXPECT_EQ(timer.ElapsedMsec(), frozen);
    Clock::time_point const restart = Clock::now();
    timer.Start();
    double const afterRestart = timer.ElapsedMsec();
    EXPECT_LE(afterRestart, MsecSince(restart));
    timer = copy;
    EXPECT_EQ(timer.ElapsedMsec(), 0.0); // starting dropped it
}

} // namespace
