#include "korcoreplatform/main/core/runtime/AutoSynchronize.h"

#include "korcoreplatform/main/core/runtime/AutoSynchronize_p.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/ICrashNow.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korsys/tests/support/Threads.h"

namespace {

using Lines = std::vector<std::string>;

std::time_t s_now = 0;
TRecursiveMutex s_mutex;
TRecursiveMutex s_other;

/// Enforces the order and records what is logged. The time of the last report stays with its
/// thread, so that violations happen on threads of their own.
class AutoSynchronizeTest : public testing::Test
{
protected:
    AutoSynchronizeTest()
    {
        AutoSynchronizeInternals::g_now = [] { return s_now; };
        AutoSynchronize::SetEnforceLockLeveling(true);
    }
    ~AutoSynchronizeTest() override
    {
        AutoSynchronize::SetEnforceLockLeveling(false);
        AutoSynchronizeInternals::g_now = [] { return std::time(nullptr); };
        RegisterICrashNowFunc({});
        CoreThreadContext::SetHasSessionIdFunction({});
    }

    LogRecording m_log;
};

std::string Line(char const* lead, char const* place, TRecursiveMutex const& mutex, int priority)
{
    return std::string(lead) + place + " pcs=" + TString::pointer(&mutex).toStdString() +
           " priority=" + std::to_string(priority);
}

TEST_F(AutoSynchronizeTest, PriorityNeverRises)
{
    struct
    {
        int first, second;
        bool isSameMutex, isAllowed;
    } const cases[] = {{10, 5, false, true}, {5, 10, false, false}, {5, 5, false, false},
                       {5, 5, true, true},   {5, 10, true, false},  {-5, -4, false, false}};
    for (auto const& c : cases) {
        SCOPED_TRACE(&c - cases);
        TRecursiveMutex& second = c.isSameMutex ? s_mutex : s_other;
        OnThreads(1, [&](unsigned) {
            AutoSynchronize const first(s_mutex, c.first, "", "", 0);
            auto const take = [&] { AutoSynchronize(second, c.second, "", "", 0); };
            // Each attempt crashes: the hook throws, which leaves what is held as it was.
            for (int attempt = 0; attempt < 2; ++attempt) {
                if (c.isAllowed) {
                    EXPECT_NO_THROW(take());
                } else {
                    EXPECT_KOR_ERROR(take(), KorvelException, "KorvelException_AutoGen_0xEEAA139E");
                }
            }
        });
    }
}

TEST_F(AutoSynchronizeTest, ReportListsTheNewLockAndThoseHeld)
{
    int locksOfTheLogger = 0;
    CoreThreadContext::SetHasSessionIdFunction([&] { // asked for every record
        TRecursiveMutex mutex;
        AutoSynchronize const lock(mutex, 1'000, "", "", 0);
        ++locksOfTheLogger;
        return false;
    });
    Lines linesAtCrash;
    RegisterICrashNowFunc([&] { linesAtCrash = m_log.Lines(); });
    TRecursiveMutex third;
    OnThreads(1, [&](unsigned) {
        AutoSynchronize const first(s_mutex, 10, "/x/src/first.cpp", "First", 7);
        AutoSynchronize const second(s_other, 3, "src/second.cpp", "Sec\xF6nd", -8);
        AutoSynchronize const last(third, 5, "last\xC3\xBC.cpp", "Last", 9);
    });
    Lines const expected{
        "Warn: AutoSynchronize: lock acquired out of order!",
        Line("Warn: Tried to acquire lock: ", "last\xC3\xBC.cpp:Last:9", third, 5),
        Line("Warn:   while holding lock:  ", "src/second.cpp:Sec\xC3\xB6nd:-8", s_other, 3),
        Line("Warn:   while holding lock:  ", "src/first.cpp:First:7", s_mutex, 10)};
    EXPECT_EQ(linesAtCrash, expected);
    EXPECT_GE(locksOfTheLogger, 4);
}

TEST_F(AutoSynchronizeTest, OneReportAMinuteAndThread)
{
    int crashes = 0;
    RegisterICrashNowFunc([&] { ++crashes; });
    auto const violateAt = [](std::time_t now) {
        s_now = now;
        AutoSynchronize const low(s_mutex, 1, "", "", 0);
        AutoSynchronize const high(s_other, 2, "", "", 0);
    };
    OnThreads(1, [&](unsigned) {
        violateAt(1'000);
        std::size_t const lines = m_log.Lines().size();
        violateAt(1'059);
        EXPECT_EQ(crashes, 1);
        EXPECT_EQ(m_log.Lines().size(), lines);
        OnThreads(1, [&](unsigned) { violateAt(1'059); });
        EXPECT_EQ(crashes, 2);
        violateAt(1'060);
        EXPECT_EQ(crashes, 3);
    });
}

TEST_F(AutoSynchronizeTest, NothingIsCheckedOrLinkedWithoutEnforcement)
{
    AutoSynchronize::SetEnforceLockLeveling(false);
    AutoSynchronize const outer(s_mutex, 1, "", "", 0);
    AutoSynchronize const inner(s_other, 2, "", "", 0);
    inner.LogLockAcquisition();
    EXPECT_EQ(m_log.Lines().size(), 1u); // the lock below is not known
    OnThreads(1, [](unsigned) { EXPECT_FALSE(s_mutex.TryLock()); });
}

TEST_F(AutoSynchronizeTest, LogsAcquisitionsAndReleases)
{
    OnThreads(1, [](unsigned) {
        AutoSynchronize const outer(s_mutex, 2, "/a/b/outer.cpp", "Outer", 1);
        AutoSynchronize const inner(s_other, 1, "/inner.cpp", "Inner", 2);
        inner.LogLockAcquisition();
        inner.LogLockRelease();
        inner.CheckLockRelease(); // in order: silent
        outer.CheckLockRelease(); // forgets the stack
        AutoSynchronize const higher(s_mutex, 3, "", "", 0);
    });
    EXPECT_EQ(m_log.Lines(),
              (Lines{Line("Debug: Acquire lock: ", "/inner.cpp:Inner:2", s_other, 1),
                     Line("Debug:   have lock:  ", "b/outer.cpp:Outer:1", s_mutex, 2),
                     Line("Debug: Release lock: ", "/inner.cpp:Inner:2", s_other, 1),
                     "Debug: AutoSynchronize:: lock released out of order!"}));
}

} // namespace
