#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <regex>

// Wishes to the sanitizers, which look for these: no exit waits for threads that do not end, and
// what a dead logger holds is not lost by mistake.
extern "C" __attribute__((visibility("default"))) char const* __tsan_default_options()
{
    return "atexit_sleep_ms=0";
}
extern "C" __attribute__((visibility("default"))) char const* __lsan_default_options()
{
    return "detect_leaks=0";
}

namespace {

using TLog::AsyncLogger;

constexpr char kEarlyFolder[] = "KOR_TEST_EARLY_FOLDER";
constexpr int kThreads = 4;
constexpr int kForks = 10;
constexpr int kMostRecords = 200000; ///< That a thread logs while its process forks.

// A child of threads can have none under the thread sanitizer. Under the address sanitizer, whose
// allocator another thread may have held, it can do nothing at all.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool kMayForkStartThreads = false;
#else
constexpr bool kMayForkStartThreads = true;
#endif
#ifdef __SANITIZE_ADDRESS__
constexpr bool kMayForkAllocate = false;
#else
constexpr bool kMayForkAllocate = true;
#endif

/// Keeps the writer busy without leaving it behind.
void LogInBursts(int thread, int number)
{
    LogNumber(thread, number);
    if (number % 16 == 15) {
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

/// The process's logger gets a file and the first records of a thread.
void LogToFile(std::string const& folder, int thread, int count)
{
    SetLogger(MakeFileChannel(TPath(TString(folder.c_str())) / u"app.log"));
    for (int i = 0; i != count; ++i) {
        LogNumber(thread, i);
    }
}

int ExitInThread(std::string const& folder)
{
    std::thread([&folder] {
        LogToFile(folder, 0, 3000);
        std::exit(0);
    }).join();
    return 1;
}

/// In the child whose role is `LogEarlyAndLate`: logs before `main` and after it.
struct EarlyAndLate
{
    EarlyAndLate()
    {
        LogNumber(0, -1); // nobody takes it
        if (char const* const folder = std::getenv(kEarlyFolder)) {
            LogToFile(folder, 0, 1);
            std::atexit([] { LogNumber(0, 4); }); // runs behind the destructor
        }
    }
    ~EarlyAndLate()
    {
        if (std::getenv(kEarlyFolder) != nullptr) {
            LogNumber(0, 3);
        }
    }
} const s_earlyAndLate;

int LogEarlyAndLate(std::string const& /*folder*/)
{
    std::atexit([] { LogNumber(0, 2); });
    std::atomic<int> started{0};
    for (int t = 1; t <= 2; ++t) {
        std::thread([t, &started] {
            LogNumber(t, 0);
            ++started;
            for (int i = 1;; ++i) { // the process ends below it
                LogInBursts(t, i);
            }
        }).detach();
    }
    while (started != 2) {
        std::this_thread::yield();
    }
    LogNumber(0, 1);
    return 0;
}

/// What a child of `Fork` does with the logger that it finds, and with one of its own.
int LogInFork(std::string const& folder, int fork)
{
    ::alarm(kLongMs / 1000); // hangs show by its signal
    LogNumber(0, -1);
    if (static_cast<AsyncLogger&>(**TLog::Logger::Get()).FlushAndWait(-1)) {
        return 1;
    }
    if (kMayForkStartThreads) {
        LogToFile(folder, fork, 100); // the parent has that one
    }
    return 0;
}

int Fork(std::string const& folder)
{
    LogToFile(folder, kThreads, 0);
    std::atomic<bool> isOver{false};
    std::atomic<int> counts[kThreads] = {};
    auto threads = StartThreads(kThreads, [&](int t, int) {
        if (counts[t] < kMostRecords) {
            LogInBursts(t, counts[t]++);
        }
        return !isOver;
    });
    int failures = 0;
    for (int fork = 0; fork != kForks; ++fork) {
        LogNumber(kThreads, fork);
        ::pid_t const child = ::fork();
        if (child == 0 && !kMayForkAllocate) {
            ::_exit(0);
        }
        if (child == 0) {
            std::exit(LogInFork(folder, fork));
        }
        int status = 0;
        failures += ::waitpid(child, &status, 0) != child || status != 0;
    }
    isOver = true;
    threads.clear();
    for (std::atomic<int> const& count : counts) {
        std::printf("%d\n", count - 1); // the last one
    }
    return failures;
}

TEST(AsyncLoggerProcessTest, EveryLineIsThereAfterAnyThreadsExit)
{
    TemporaryFolder const folder;
    EXPECT_EQ(ChildProcess("ExitInThread", folder.Native("")).End(), 0);
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app.log"))), "0:0-2999");
}

TEST(AsyncLoggerProcessTest, LoggingMayBeginBeforeMainAndNeverEnd)
{
    for (int i = 0; i != 30; ++i) {
        SCOPED_TRACE(i);
        TemporaryFolder const folder;
        ::setenv(kEarlyFolder, folder.Native("").c_str(), 1);
        ChildProcess child("LogEarlyAndLate", folder.Native(""));
        ::unsetenv(kEarlyFolder);
        ASSERT_EQ(child.End(), 0);
        std::string const numbers = InShort(ReadLogFile(folder.Native("app.log")));
        std::regex const expected("0:0-4 1:0(-[0-9]+)? 2:0(-[0-9]+)?");
        EXPECT_TRUE(std::regex_match(numbers, expected)) << numbers;
    }
}

TEST(AsyncLoggerProcessTest, AForkLeavesTheParentsLogAloneAndHasItsOwn)
{
    TemporaryFolder const folder;
    ChildProcess child("Fork", folder.Native(""));
    std::string expected;
    for (int t = 0; t != kThreads; ++t) {
        expected += std::to_string(t) + ":0-" + child.ReadLine() + ' ';
    }
    EXPECT_EQ(child.End(), 0);
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app.log"))), expected + "4:0-9");
    std::string ofForks;
    for (int fork = 0; kMayForkStartThreads && fork != kForks; ++fork) {
        ofForks += (fork == 0 ? "" : " ") + std::to_string(fork) + ":0-99";
    }
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app_1.log"))), ofForks);
}

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild(
        {{"ExitInThread", ExitInThread}, {"LogEarlyAndLate", LogEarlyAndLate}, {"Fork", Fork}},
        argc, argv);
}
