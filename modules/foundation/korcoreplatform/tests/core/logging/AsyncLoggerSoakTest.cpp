#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/RotateFileChannel.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korcoreplatform/tests/support/StuckChannel.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <thread>

#include <sys/mman.h>
#include <sys/resource.h>

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using TLog::AsyncLogger;
using TLog::Severity;

/// How much a test does, by the wish of whoever runs it.
int Scaled(int normal)
{
    char const* const percent = std::getenv("KOR_SOAK_PERCENT");
    return normal * (percent != nullptr ? std::atoi(percent) : KOR_SOAK_PERCENT) / 100;
}

/// The logger of the process, with channels of the test's.
class LoggerOfTest
{
public:
    explicit LoggerOfTest(std::shared_ptr<TLog::Channel> const& channel = nullptr)
    {
        auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
        m_logger = logger.get();
        m_logger->AddChannel(channel);
        TLog::Logger::Set(std::move(logger));
    }
    LoggerOfTest(LoggerOfTest const&) = delete;
    LoggerOfTest& operator=(LoggerOfTest const&) = delete;
    ~LoggerOfTest() { TLog::Logger::Set(nullptr); }

    AsyncLogger* operator->() const { return m_logger; }

    /// Waits while the queue is longer than that.
    void LetCatchUp(std::uint64_t length) const
    {
        while (m_logger->GetCounters().queueLength > length) {
            std::this_thread::sleep_for(100us);
        }
    }

private:
    AsyncLogger* m_logger;
};

/// Threads that call `log(thread, i)` for i from 0 until it returns false.
class Threads
{
public:
    template <class Log>
    Threads(int count, Log const& log) : m_running(count)
    {
        for (int t = 0; t != count; ++t) {
            m_threads.emplace_back([this, t, log] {
                for (int i = 0; log(t, i); ++i) {}
                --m_running;
            });
        }
    }
    Threads(Threads const&) = delete;
    Threads& operator=(Threads const&) = delete;
    ~Threads() { Join(); }

    bool AreRunning() const { return m_running != 0; }

    void Join()
    {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }

private:
    std::atomic<int> m_running;
    std::vector<std::thread> m_threads;
};

/// Drops every third record and keeps in mind which.
class DropSome : public TLog::Filter
{
public:
    int Decide(Severity, TLog::Event const& event) override
    {
        if (m_asked++ % 3 != 0) {
            return Next;
        }
        auto const text = std::dynamic_pointer_cast<TLog::Literal>(event.GetValue());
        AddNumber(dropped, text->GetString().toStdString());
        return Drop;
    }

    Numbers dropped;

private:
    int m_asked = 0;
};

TEST(AsyncLoggerSoakTest, EveryRecordIsWrittenFilteredOrCountedAsLost)
{
    constexpr int kThreads = 8;
    int const each = Scaled(125000);
    TemporaryFolder const folder;
    auto const filter = std::make_shared<DropSome>();
    std::array<std::shared_ptr<TLog::FileChannel>, 2> channels = {
        MakeFileChannel(folder / u"a.log"), MakeFileChannel(folder / u"b.log")};
    AsyncLogger::Counters counters;
    {
        LoggerOfTest const logger(channels[0]);
        Threads threads(kThreads, [&](int thread, int i) {
            LogNumber(thread, i);
            if (i % 256 == 0) {
                logger.LetCatchUp(20000);
            }
            return i + 1 != each;
        });
        bool hasChannel[] = {true, false};
        bool hasFilter = false;
        std::mt19937 random(301); // NOLINT: a failure can be run again
        while (threads.AreRunning()) {
            if (std::size_t const what = random() % 3; what == 2) {
                hasFilter ? logger->RemoveFilter(filter) : logger->AddFilter(filter);
                hasFilter = !hasFilter;
            } else {
                auto const& channel = channels.at(what);
                hasChannel[what] ? logger->RemoveChannel(channel) : logger->AddChannel(channel);
                hasChannel[what] = !hasChannel[what];
            }
            std::this_thread::sleep_for(1ms);
        }
        for (std::size_t i = 0; i != channels.size(); ++i) {
            logger->AddChannel(hasChannel[i] ? nullptr : channels.at(i));
        }
        logger->FlushAndWait(-1);
        counters = logger->GetCounters();
    }
    channels = {};

    // Which records are somewhere, by thread.
    std::vector<std::vector<bool>> found(kThreads,
                                         std::vector<bool>(static_cast<std::size_t>(each)));
    std::uint64_t filtered = 0;
    std::uint64_t written = 0;
    std::uintmax_t bytes = 0;
    auto const add = [&](Numbers const& numbers, std::uint64_t& count) {
        for (auto const& [thread, ofThread] : numbers) {
            EXPECT_TRUE(std::is_sorted(ofThread.begin(), ofThread.end())) << thread;
            for (int const number : ofThread) {
                auto const isFound =
                    found.at(static_cast<std::size_t>(thread)).at(static_cast<std::size_t>(number));
                count += isFound ? 0 : 1;
            }
            for (int const number : ofThread) {
                found[static_cast<std::size_t>(thread)][static_cast<std::size_t>(number)] = true;
            }
        }
    };
    add(filter->dropped, filtered);
    for (char const* const name : {"a.log", "b.log"}) {
        LogFileContent const content = ReadLogFile(folder.Native(name));
        EXPECT_EQ(content.tornEnd, "");
        add(content.numbers, written);
        bytes += std::filesystem::file_size(folder.Native(name));
    }
    EXPECT_EQ(counters.accepted, static_cast<std::uint64_t>(kThreads * each));
    EXPECT_EQ(counters.filtered, filtered);
    EXPECT_EQ(counters.written, written);
    EXPECT_EQ(counters.lost, counters.accepted - filtered - written);
    EXPECT_EQ(counters.bytes, bytes);
    EXPECT_GT(filtered, 0u);
    EXPECT_GT(counters.lost, 0u); // while there was no channel
}

// --- a process that is killed -------------------------------------------------------------------

constexpr int kKilledThreads = 2;
constexpr int kMaxTimes = 1 << 20;
constexpr int kBurstQueue = 500;
constexpr auto kMaximumAge = 50ms;
constexpr auto kPace = 20ms; // a buffer of lines takes seconds to fill

/// What the killed process tells of itself, in memory that outlives it.
struct Progress
{
    struct Thread
    {
        std::atomic<int> logged; ///< How many of its records' calls returned.
        std::array<std::atomic<std::int64_t>, kMaxTimes> times; ///< When, by the steady clock.
    };
    std::array<Thread, kKilledThreads> threads;
};

Progress& MapProgress(std::string const& file)
{
    int const descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    bool const isBig = ::ftruncate(descriptor, sizeof(Progress)) == 0; // sparse, all zero
    void* const memory =
        ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    if (!isBig || memory == MAP_FAILED) {
        throw std::runtime_error("no shared memory");
    }
    return *static_cast<Progress*>(memory);
}

int LogUntilKilled(std::string const& folder, bool isBurst)
{
    Progress& progress = MapProgress(folder + "progress");
    LoggerOfTest const logger(MakeFileChannel(TPath(TString(folder.c_str())) / u"app.log"));
    if (!isBurst) {
        logger->SetMaximumUnflushedAge(kMaximumAge);
    }
    Threads const threads(kKilledThreads, [&](int t, int i) {
        Progress::Thread& thread = progress.threads.at(static_cast<std::size_t>(t));
        LogNumber(t, i);
        thread.times.at(static_cast<std::size_t>(i)) =
            steady_clock::now().time_since_epoch().count();
        thread.logged = i + 1;
        if (t == 0 && i == 0) {
            std::puts("ready");
            std::fflush(stdout);
        }
        isBurst ? logger.LetCatchUp(kBurstQueue) : std::this_thread::sleep_for(kPace);
        return true;
    });
    return 0;
}

/// What the process had logged by `deadline` is in its file, but for `allowedLoss` records.
void ExpectLossWithin(TemporaryFolder const& folder, steady_clock::time_point deadline,
                      int allowedLoss)
{
    Progress& progress = MapProgress(folder.Native("progress").string());
    LogFileContent const content = ReadLogFile(folder.Native("app.log"));
    int lost = 0;
    for (int t = 0; t != kKilledThreads; ++t) {
        Progress::Thread& thread = progress.threads.at(static_cast<std::size_t>(t));
        int due = thread.logged;
        while (due > 0 && thread.times.at(static_cast<std::size_t>(due - 1)) >
                              deadline.time_since_epoch().count()) {
            --due;
        }
        auto const found = content.numbers.find(t);
        int const count =
            found == content.numbers.end() ? 0 : static_cast<int>(found->second.size());
        if (count > 0) {
            EXPECT_EQ(found->second.back(), count - 1) << "one is missing amid others";
        }
        lost += std::max(due - count, 0);
    }
    EXPECT_LE(lost, allowedLoss);
    ::munmap(&progress, sizeof(Progress));
}

TEST(AsyncLoggerSoakTest, AKilledProcessLosesNoMoreThanItsBuffer)
{
    // The shortest line of this process has more bytes than that.
    constexpr int kMinLineBytes = 150;
    constexpr int kBufferBytes = 65536;
    constexpr int kAllowed = kBufferBytes / kMinLineBytes + kBurstQueue + kKilledThreads;
    std::mt19937 random(301); // NOLINT: a failure can be run again
    for (int i = 0; i != 25; ++i) {
        SCOPED_TRACE(i);
        TemporaryFolder const folder;
        ChildProcess child("Burst", folder.Native("").string());
        ASSERT_EQ(child.ReadLine(), "ready");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 100000));
        child.Kill();
        ExpectLossWithin(folder, steady_clock::now(), kAllowed);
    }
}

TEST(AsyncLoggerSoakTest, AKilledProcessLosesNothingOlderThanTheStatedAge)
{
    constexpr int kProcesses = 25;
    constexpr auto kSlack = 1s; // of a machine that does other things as well
    std::array<TemporaryFolder, kProcesses> const folders;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (TemporaryFolder const& folder : folders) {
        children.push_back(std::make_unique<ChildProcess>("Trickle", folder.Native("").string()));
    }
    for (auto const& child : children) {
        ASSERT_EQ(child->ReadLine(), "ready");
    }
    std::mt19937 random(301);            // NOLINT: a failure can be run again
    std::this_thread::sleep_for(1200ms); // by now lines are older than the slack allows
    for (std::size_t i = 0; i != kProcesses; ++i) {
        SCOPED_TRACE(i);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 50000));
        auto const now = steady_clock::now();
        children[i]->Kill();
        ExpectLossWithin(folders[i], now - kMaximumAge - kSlack, 0);
    }
}

// --- files that cannot be written ---------------------------------------------------------------

/// Logs before, while and after the channel's file cannot grow.
template <class Fill, class Free>
void ExpectLossesAreCounted(TPath const& path, std::string const& native, Fill const& fill,
                            Free const& free)
{
    constexpr int kRecords = 2000;
    AsyncLogger::Counters counters;
    {
        LoggerOfTest const logger(MakeFileChannel(path));
        bool const expected[] = {true, false, true};
        for (int part = 0; part != 3; ++part) {
            for (int i = 0; i != kRecords; ++i) {
                LogNumber(part, i);
            }
            EXPECT_EQ(logger->FlushAndWait(kLongMs), expected[part]) << part;
            part == 0 ? fill() : free();
        }
        counters = logger->GetCounters();
    }
    LogFileContent const content = ReadLogFile(native);
    EXPECT_EQ(content.tornEnd, "");
    Numbers numbers = content.numbers;
    EXPECT_EQ(InShort({{0, numbers[0]}, {2, numbers[2]}}), "0:0-1999 2:0-1999");
    EXPECT_EQ(counters.accepted, 3u * kRecords);
    EXPECT_EQ(counters.written, 2u * kRecords + numbers[1].size());
    EXPECT_EQ(counters.lost, kRecords - numbers[1].size());
    EXPECT_EQ(counters.bytes, std::filesystem::file_size(native));
    EXPECT_GT(numbers[1].size(), 0u); // the line before the full disk was reached
}

TEST(AsyncLoggerSoakTest, RecordsThatAFullDiskRefusesAreCounted)
{
    TemporaryFolder const folder;
    std::string const mounted = folder.Native("").string();
    if (std::system(("mount -t tmpfs -o size=2m tmpfs " + mounted + " 2>/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "not allowed to make a small file system";
    }
    auto const fill = [&] {
        std::ofstream filler(folder.Native("filler"), std::ios::binary);
        while (filler.put('x')) {}
        std::error_code ignored;
        std::filesystem::resize_file(folder.Native("filler"), // the log gets a few pages more
                                     std::filesystem::file_size(folder.Native("filler")) - 100000,
                                     ignored);
    };
    ExpectLossesAreCounted(folder / u"app.log", folder.Native("app.log").string(), fill,
                           [&] { std::filesystem::remove(folder.Native("filler")); });
    EXPECT_EQ(std::system(("umount " + mounted).c_str()), 0);
}

TEST(AsyncLoggerSoakTest, RecordsBeyondALimitOfFileSizesAreCounted)
{
    TemporaryFolder const folder;
    std::string const native = folder.Native("app.log").string();
    ::rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    auto const handler = std::signal(SIGXFSZ, SIG_IGN);
    auto const fill = [&] {
        ::rlimit limit = before;
        limit.rlim_cur = std::filesystem::file_size(native) + 100001;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    auto const free = [&] { ::setrlimit(RLIMIT_FSIZE, &before); };
    ExpectLossesAreCounted(folder / u"app.log", native, fill, free);
    free();
    std::signal(SIGXFSZ, handler);
}

// --- files that take turns ----------------------------------------------------------------------

/// A new file every so many records; notes when it tried.
class EveryFew : public TLog::RotateFileChannel
{
public:
    EveryFew(TPath const& path, int records) : RotateFileChannel(path), m_records(records) {}

    using RotateFileChannel::Append;
    void Append(TLog::AccessLevel accessLevel, Severity severity, TLog::Event const& event) override
    {
        RotateFileChannel::Append(accessLevel, severity, event);
        ++m_appended;
    }
    bool ShouldRotate() const override { return m_appended >= m_records; }
    bool Rotate() override
    {
        attempts[attemptCount % attempts.size()] = steady_clock::now();
        bool const isDone = RotateFileChannel::Rotate();
        m_appended = isDone ? 0 : m_appended;
        ++attemptCount;
        return isDone;
    }

    std::array<steady_clock::time_point, 2> attempts; ///< The last two.
    std::atomic<std::size_t> attemptCount{0};

private:
    int m_records;
    int m_appended = 0;
};

TEST(AsyncLoggerSoakTest, ARotationThatFailsIsTriedAgainAfterFiveSeconds)
{
    TemporaryFolder const folder;
    std::filesystem::path const logs = folder.Native("logs");
    std::filesystem::create_directory(logs);
    auto channel = std::make_shared<EveryFew>(folder / u"logs/app.log", 10);
    channel->Open();
    std::string const first = TString(channel->GetPath().Filename()).toStdString();
    std::filesystem::rename(logs, folder.Native("away"));
    int count = 0;
    {
        LoggerOfTest const logger(channel);
        auto const logUntilAttempt = [&](std::size_t attempts) {
            auto const deadline = steady_clock::now() + std::chrono::milliseconds(kLongMs);
            while (channel->attemptCount != attempts && steady_clock::now() < deadline) {
                LogNumber(0, count++);
                std::this_thread::sleep_for(1ms);
            }
        };
        logUntilAttempt(1);
        std::filesystem::rename(folder.Native("away"), logs);
        logUntilAttempt(2);
    }
    EXPECT_EQ(channel->attemptCount, 2u);
    EXPECT_GT(channel->attempts[1] - channel->attempts[0], 5s);
    std::string const second = TString(channel->GetPath().Filename()).toStdString();
    channel.reset();
    LogFileContent const before = ReadLogFile(logs / first);
    LogFileContent const after = ReadLogFile(logs / second);
    EXPECT_EQ(before.otherKeys,
              (std::vector<std::string>{"open-log", "rotate-log-failed", "rotate-log"}));
    int const next = static_cast<int>(before.numbers.at(0).size());
    EXPECT_GT(next, 10);
    EXPECT_EQ(InShort(before.numbers), "0:0-" + std::to_string(next - 1));
    Numbers all = before.numbers;
    for (int const number : after.numbers.at(0)) {
        all[0].push_back(number);
    }
    EXPECT_EQ(InShort(all), "0:0-" + std::to_string(count - 1));
}

/// Follows the records of rotations from file to file, through all of them.
Numbers FollowRotations(std::string const& first, std::size_t& files)
{
    std::map<std::string, LogReader> readers;
    std::string path = first;
    Numbers numbers;
    for (;;) {
        LogReader& reader = readers.try_emplace(path, path).first->second;
        nlohmann::json const record = reader.Next();
        if (record.is_null()) {
            break;
        }
        if (record.at("k") == "msg") {
            AddNumber(numbers, record.at("v").get_ref<std::string const&>());
        } else if (record.at("k") == "rotate-log" && record.at("v").at("old-path") == path) {
            nlohmann::json const values = record.at("v");
            path = values.at("new-path");
            auto& next = readers.try_emplace(path, path).first->second;
            EXPECT_EQ(next.Next().value("v", nlohmann::json()), values);
        }
    }
    for (auto& [name, reader] : readers) {
        EXPECT_TRUE(reader.Next().is_null() && reader.TornEnd().empty()) << name << " goes on";
    }
    files = readers.size();
    return numbers;
}

TEST(AsyncLoggerSoakTest, RotationsUnderLoadLoseAndRepeatNothing)
{
    constexpr int kThreads = 4;
    auto const deadline = steady_clock::now() + std::chrono::milliseconds(Scaled(10000));
    TemporaryFolder const folder;
    auto channel = std::make_shared<EveryFew>(folder / u"app.log", 20);
    channel->Open();
    std::string const first = channel->GetPath().NativeString().toStdString();
    long const descriptors = CountOpenDescriptors();
    std::array<int, kThreads> counts = {};
    {
        LoggerOfTest const logger(channel);
        Threads threads(kThreads, [&](int t, int i) {
            LogNumber(t, i);
            counts.at(static_cast<std::size_t>(t)) = i + 1;
            if (i % 10 == 0) {
                std::this_thread::sleep_for(1ms);
                logger.LetCatchUp(1000);
            }
            return steady_clock::now() < deadline;
        });
        threads.Join();
        EXPECT_TRUE(logger->FlushAndWait(kLongMs));
        EXPECT_EQ(CountOpenDescriptors(), descriptors);
    }
    std::size_t const rotations = channel->attemptCount;
    channel.reset();
    EXPECT_EQ(CountOpenDescriptors(), descriptors - 1);
    std::string expected;
    int records = 0;
    for (int t = 0; t != kThreads; ++t) {
        int const count = counts.at(static_cast<std::size_t>(t));
        expected += (t == 0 ? "" : " ") + std::to_string(t) + ":0-" + std::to_string(count - 1);
        records += count;
    }
    std::size_t files = 0;
    EXPECT_EQ(InShort(FollowRotations(first, files)), expected);
    EXPECT_EQ(rotations, static_cast<std::size_t>((records - 1) / 20));
    std::filesystem::directory_iterator const all(folder.Native(""));
    EXPECT_EQ(std::distance(begin(all), end(all)), static_cast<long>(files));
}

// --- a channel that is stuck --------------------------------------------------------------------

int ExitWhileStuck(std::string const& folder)
{
    auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
    auto const stuck = std::make_shared<StuckChannel>();
    logger->AddChannel(MakeFileChannel(TPath(TString(folder.c_str())) / u"app.log"));
    TLog::Logger::Set(std::move(logger));
    LogNumber(0, 0);
    (*TLog::Logger::Get())->Flush();
    (*TLog::Logger::Get())->AddChannel(stuck);
    LogNumber(0, 1);
    stuck->reached.Wait();
    return 0;
}

TEST(AsyncLoggerSoakTest, AStuckWriterHoldsTheProcessForHalfAMinute)
{
    TemporaryFolder const folder;
    auto const start = steady_clock::now();
    EXPECT_EQ(ChildProcess("ExitWhileStuck", folder.Native("").string()).End(), 0);
    EXPECT_GE(steady_clock::now() - start, 30s);
    EXPECT_LT(steady_clock::now() - start, 45s);
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app.log")).numbers), "0:0");
}

ChildRoles const s_roles = {
    {"Burst", [](std::string const& folder) { return LogUntilKilled(folder, true); }},
    {"Trickle", [](std::string const& folder) { return LogUntilKilled(folder, false); }},
    {"ExitWhileStuck", ExitWhileStuck},
};

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild(s_roles, argc, argv);
}
