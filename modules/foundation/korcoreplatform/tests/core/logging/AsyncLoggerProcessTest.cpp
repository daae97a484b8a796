#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/logging/AsyncLoggerImpl_p.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korcoreplatform/tests/support/StuckChannel.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <thread>

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

using std::chrono::steady_clock;
using TLog::AsyncLogger;
using TLog::Severity;

constexpr char kEarlyFolder[] = "KOR_TEST_EARLY_FOLDER";
constexpr int kRecords = 3000;
constexpr int kThreads = 4;
constexpr int kForks = 10;
constexpr int kMostRecords = 200000; ///< That a thread logs while its process forks.
constexpr int kForkRecords = 100;

// A child of threads can have none under the thread sanitizer.
#ifdef __SANITIZE_THREAD__
constexpr bool kMayForkStartThreads = false;
#else
constexpr bool kMayForkStartThreads = true;
#endif

TPath PathIn(std::string const& folder, TString const& name)
{
    return TPath(TString(folder.c_str())) / TPath(name);
}

AsyncLogger& SetFileLogger(TPath const& path)
{
    auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
    AsyncLogger& result = *logger;
    logger->AddChannel(MakeFileChannel(path));
    TLog::Logger::Set(std::move(logger));
    return result;
}

/// Keeps the writer busy without leaving it behind.
void LogInBursts(int thread, int number)
{
    LogNumber(thread, number);
    if (number % 16 == 15) {
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

void LogNumbers(int thread, int count)
{
    for (int i = 0; i != count; ++i) {
        LogNumber(thread, i);
    }
}

int Return(std::string const& folder)
{
    SetFileLogger(PathIn(folder, u"app.log"));
    LogNumbers(0, kRecords);
    return 0;
}

int Exit(std::string const& folder)
{
    std::exit(Return(folder));
}

int ExitInThread(std::string const& folder)
{
    std::thread([&] { Exit(folder); }).join();
    return 1;
}

/// As thread 1 it holds the file until its input ends.
int HoldFile(std::string const& folder)
{
    AsyncLogger& logger = SetFileLogger(PathIn(folder, u"app.log"));
    LogNumbers(1, 3);
    std::puts(logger.FlushAndWait(kLongMs) ? "ready" : "lost");
    std::fflush(stdout);
    std::getchar();
    return 0;
}

/// In the child whose role is `LogEarlyAndLate`: logs before `main` and after it.
struct EarlyAndLate
{
    EarlyAndLate()
    {
        if (char const* const folder = std::getenv(kEarlyFolder)) {
            SetFileLogger(PathIn(folder, u"app.log"));
            LogNumber(0, 0);
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
        SetFileLogger(PathIn(folder, u"fork" + TString::number(fork) + u".log"));
        LogNumbers(0, kForkRecords);
    }
    return 0;
}

int Fork(std::string const& folder)
{
    SetFileLogger(PathIn(folder, u"app.log"));
    std::atomic<bool> isOver{false};
    std::atomic<int> counts[kThreads] = {};
    std::thread threads[kThreads];
    for (int t = 0; t != kThreads; ++t) {
        threads[t] = std::thread([t, &counts, &isOver] {
            while (!isOver) {
                if (counts[t] < kMostRecords) {
                    LogInBursts(t, counts[t]++);
                }
            }
        });
    }
    int failures = 0;
    for (int fork = 0; fork != kForks; ++fork) {
        LogNumber(kThreads, fork);
        ::pid_t const child = ::fork();
        if (child == 0) {
            std::exit(LogInFork(folder, fork));
        }
        int status = 0;
        failures += ::waitpid(child, &status, 0) != child || status != 0;
    }
    isOver = true;
    for (int t = 0; t != kThreads; ++t) {
        threads[t].join();
        std::printf("%d\n", counts[t] - 1); // the last one
    }
    // The lock is still there.
    failures +=
        MakeFileChannel(PathIn(folder, u"app.log"))->GetPath().Filename() != TPath(u"app_1.log");
    return failures;
}

/// Opens the private `m_impl` to this file.
template <auto Member>
struct Opened
{
    friend AsyncLogger::Impl& ImplOf(AsyncLogger& logger) { return *(logger.*Member); }
};
template struct Opened<&AsyncLogger::m_impl>;
AsyncLogger::Impl& ImplOf(AsyncLogger& logger);

int ShutDownWhileStuck(std::string const& folder)
{
    constexpr std::chrono::milliseconds kShutdown(200);
    auto* const logger = new AsyncLogger(Severity::Trace, TPath()); // never destroyed
    auto const stuck = std::make_shared<StuckChannel>();
    logger->AddChannel(MakeFileChannel(PathIn(folder, u"app.log")));
    logger->AddChannel(stuck);
    logger->Log(Severity::Info, TLog::Event(u"stuck", nullptr));
    stuck->reached.Wait();
    auto const start = steady_clock::now();
    bool const isDown = ImplOf(*logger).Shutdown(static_cast<int>(kShutdown.count()));
    return isDown || steady_clock::now() - start < kShutdown;
}

ChildRoles const s_roles = {
    {"Return", Return},
    {"Exit", Exit},
    {"ExitInThread", ExitInThread},
    {"HoldFile", HoldFile},
    {"LogEarlyAndLate", LogEarlyAndLate},
    {"Fork", Fork},
    {"ShutDownWhileStuck", ShutDownWhileStuck},
};

TEST(AsyncLoggerProcessTest, EveryLineIsThereAfterExit)
{
    for (char const* const role : {"Return", "Exit", "ExitInThread"}) {
        SCOPED_TRACE(role);
        TemporaryFolder const folder;
        EXPECT_EQ(ChildProcess(role, folder.Native("").string()).End(), 0);
        LogFileContent const content = ReadLogFile(folder.Native("app.log"));
        EXPECT_EQ(InShort(content.numbers), "0:0-2999");
        EXPECT_EQ(content.tornEnd, "");
    }
}

TEST(AsyncLoggerProcessTest, EveryProcessAndLoggerHasAFileOfItsOwn)
{
    TemporaryFolder const folder;
    {
        SetFileLogger(folder / u"app.log");
        LogNumbers(0, 3);
        ChildProcess other("HoldFile", folder.Native("").string());
        EXPECT_EQ(other.ReadLine(), "ready");
        AsyncLogger second(Severity::Trace, TPath());
        second.AddChannel(MakeFileChannel(folder / u"app.log"));
        second.Log(Severity::Info, TLog::Event(u"second", nullptr));
        other.LetGo();
        EXPECT_EQ(other.End(), 0);
        TLog::Logger::Set(nullptr);
    }
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app.log")).numbers), "0:0-2");
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app_1.log")).numbers), "1:0-2");
    EXPECT_EQ(ReadLogFile(folder.Native("app_2.log")).otherKeys,
              std::vector<std::string>{"second"});
}

TEST(AsyncLoggerProcessTest, LoggingMayBeginBeforeMainAndNeverEnd)
{
    for (int i = 0; i != 30; ++i) {
        SCOPED_TRACE(i);
        TemporaryFolder const folder;
        ::setenv(kEarlyFolder, folder.Native("").c_str(), 1);
        ChildProcess child("LogEarlyAndLate", "");
        ::unsetenv(kEarlyFolder);
        ASSERT_EQ(child.End(), 0);
        LogFileContent const content = ReadLogFile(folder.Native("app.log"));
        EXPECT_EQ(content.tornEnd, "");
        std::string const numbers = InShort(content.numbers);
        std::regex const expected("0:0-4 1:0(-[0-9]+)? 2:0(-[0-9]+)?");
        EXPECT_TRUE(std::regex_match(numbers, expected)) << numbers;
    }
}

TEST(AsyncLoggerProcessTest, AForkLeavesTheParentsLogAloneAndHasItsOwn)
{
    TemporaryFolder const folder;
    ChildProcess child("Fork", folder.Native("").string());
    std::string expected;
    for (int t = 0; t != kThreads; ++t) {
        expected += std::to_string(t) + ":0-" + child.ReadLine() + ' ';
    }
    EXPECT_EQ(child.End(), 0);
    LogFileContent const content = ReadLogFile(folder.Native("app.log"));
    EXPECT_EQ(InShort(content.numbers), expected + "4:0-9");
    EXPECT_EQ(content.tornEnd, "");
    for (int fork = 0; kMayForkStartThreads && fork != kForks; ++fork) {
        std::string const name = "fork" + std::to_string(fork) + ".log";
        EXPECT_EQ(InShort(ReadLogFile(folder.Native(name)).numbers), "0:0-99") << fork;
    }
}

TEST(AsyncLoggerProcessTest, AStuckWriterDoesNotHoldTheProcess)
{
    TemporaryFolder const folder;
    EXPECT_EQ(ChildProcess("ShutDownWhileStuck", folder.Native("").string()).End(), 0);
}

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild(s_roles, argc, argv);
}
