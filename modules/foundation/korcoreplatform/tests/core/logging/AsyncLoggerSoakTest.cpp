#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/logging/CallbackChannel.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/RotateFileChannel.h"
#include "korcoreplatform/tests/support/ChildProcess.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korcoreplatform/tests/support/TemporaryFolder.h"
#include "korsys/main/thread/TEvent.h"

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

TPath LogIn(std::string const& folder)
{
    return TPath(TString(folder.c_str())) / u"app.log";
}

/// Waits while the queue is longer than that.
void LetCatchUp(AsyncLogger const& logger, std::uint64_t length)
{
    while (logger.GetCounters().queueLength > length) {
        std::this_thread::sleep_for(100us);
    }
}

/// Drops every third record.
struct DropSome : TLog::Filter
{
    int Decide(Severity, TLog::Event const&) override
    {
        dropped += ++asked % 3 == 0;
        return asked % 3 == 0 ? Drop : Next;
    }

    std::uint64_t asked = 0;
    std::uint64_t dropped = 0;
};

/// Adds records that were found in their order, and returns how many of them are new.
std::size_t AddAll(std::set<std::pair<int, int>>& all, Numbers const& more)
{
    std::size_t const before = all.size();
    for (auto const& [thread, numbers] : more) {
        EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()),
                  numbers.end());
        for (int const number : numbers) {
            all.emplace(thread, number);
        }
    }
    return all.size() - before;
}

TEST(AsyncLoggerSoakTest, EveryRecordIsWrittenFilteredOrCountedAsLost)
{
    constexpr int kThreads = 8;
    int const each = Scaled(125000);
    TemporaryFolder const folder;
    auto const filter = std::make_shared<DropSome>();
    std::array<std::shared_ptr<TLog::FileChannel>, 2> channels = {
        MakeFileChannel(folder / u"a.log"), MakeFileChannel(folder / u"b.log")};
    AsyncLogger& logger = SetLogger(channels[0]);
    {
        auto const threads = StartThreads(kThreads, [&](int thread, int i) {
            LogNumber(thread, i);
            if (i % 256 == 0) {
                LetCatchUp(logger, 20000);
            }
            return i + 1 != each;
        });
        bool isThere[] = {true, false, false};
        std::mt19937 random(301); // NOLINT: a failure can be run again
        while (threads.front().wait_for(1ms) != std::future_status::ready) {
            std::size_t const what = random() % 3;
            if (what == 2) {
                isThere[2] ? logger.RemoveFilter(filter) : logger.AddFilter(filter);
            } else {
                auto const& channel = channels.at(what);
                isThere[what] ? logger.RemoveChannel(channel) : logger.AddChannel(channel);
            }
            isThere[what] = !isThere[what];
        }
        for (std::size_t i = 0; i != channels.size(); ++i) {
            logger.AddChannel(isThere[i] ? nullptr : channels.at(i));
        }
    }
    logger.FlushAndWait(-1);
    AsyncLogger::Counters const counters = logger.GetCounters();
    TLog::Logger::Set(nullptr);
    channels = {};

    std::set<std::pair<int, int>> all;
    std::size_t written = 0;
    std::uintmax_t bytes = 0;
    for (char const* const name : {"a.log", "b.log"}) {
        written += AddAll(all, ReadLogFile(folder.Native(name)));
        bytes += std::filesystem::file_size(folder.Native(name));
    }
    EXPECT_EQ(counters.accepted, static_cast<std::uint64_t>(kThreads * each));
    EXPECT_EQ(counters.filtered, filter->dropped);
    EXPECT_EQ(counters.written, written);
    EXPECT_EQ(counters.lost, counters.accepted - filter->dropped - written);
    EXPECT_EQ(counters.bytes, bytes);
    EXPECT_GT(filter->dropped, 0u);
    EXPECT_GT(counters.lost, 0u); // while there was no channel
}

// --- a process that is killed -------------------------------------------------------------------

constexpr int kKilledThreads = 2;
constexpr int kBurstQueue = 500;
constexpr auto kMaximumAge = 50ms;
constexpr auto kPace = 20ms; // a buffer of lines takes seconds to fill

/// How many records of each thread were logged, in a file that outlives its process.
using Logged = std::array<int, kKilledThreads>;

int LogUntilKilled(std::string const& folder, bool isBurst)
{
    AsyncLogger& logger = SetLogger(MakeFileChannel(LogIn(folder)));
    if (!isBurst) {
        logger.SetMaximumUnflushedAge(kMaximumAge);
    }
    int const logged = ::open((folder + "logged").c_str(), O_WRONLY | O_CREAT, 0600);
    StartThreads(kKilledThreads, [&](int t, int i) {
        LogNumber(t, i++);
        ssize_t const size = sizeof(i);
        bool const isNoted = ::pwrite(logged, &i, sizeof(i), t * size) == size;
        if (t == 1 && i == 1) {
            std::puts("ready");
            std::fflush(stdout);
        }
        isBurst ? LetCatchUp(logger, kBurstQueue) : std::this_thread::sleep_for(kPace);
        return isNoted;
    });
    return 1;
}

Logged ReadLogged(TemporaryFolder const& folder)
{
    Logged logged = {};
    folder.Read("logged").copy(reinterpret_cast<char*>(logged.data()), sizeof(logged));
    return logged;
}

/// Of these records at most so many are not in the file.
void ExpectLossWithin(TemporaryFolder const& folder, Logged const& logged, int allowedLoss)
{
    Numbers numbers = ReadLogFile(folder.Native("app.log"), true);
    int lost = 0;
    for (int t = 0; t != kKilledThreads; ++t) {
        int const found = static_cast<int>(numbers[t].size());
        EXPECT_TRUE(found == 0 || numbers[t].back() == found - 1) << "one is missing amid others";
        lost += std::max(logged.at(static_cast<std::size_t>(t)) - found, 0);
    }
    EXPECT_LE(lost, allowedLoss);
}

TEST(AsyncLoggerSoakTest, AKilledProcessLosesNoMoreThanItsBufferAndNothingOlderThanTheStatedAge)
{
    // The shortest line of this process has more bytes than that.
    constexpr int kMinLineBytes = 150;
    constexpr int kInBuffer = 65536 / kMinLineBytes + kBurstQueue + kKilledThreads;
    constexpr auto kSlack = 1s; // of a machine that does other things as well
    std::mt19937 random(301);   // NOLINT: a failure can be run again
    for (int i = 0; i != 35; ++i) {
        SCOPED_TRACE(i);
        bool const isBurst = i < 25;
        TemporaryFolder const folder;
        ChildProcess child(isBurst ? "Burst" : "Trickle", folder.Native(""));
        ASSERT_EQ(child.ReadLine(), "ready");
        Logged const logged = ReadLogged(folder);
        std::this_thread::sleep_for((isBurst ? 0ms : kMaximumAge + kSlack) +
                                    random() % 100000 * 1us);
        child.Kill();
        ExpectLossWithin(folder, isBurst ? ReadLogged(folder) : logged, isBurst ? kInBuffer : 0);
    }
}

// --- a file that cannot be written --------------------------------------------------------------

TEST(AsyncLoggerSoakTest, RecordsThatCannotBeWrittenAreCounted)
{
    constexpr int kRecords = 2000;
    TemporaryFolder const folder;
    AsyncLogger& logger = SetLogger(MakeFileChannel(folder / u"app.log"));
    ::rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    auto const before = limit.rlim_cur;
    auto const handler = std::signal(SIGXFSZ, SIG_IGN);
    for (int part = 0; part != 3; ++part) { // the file cannot grow any more during the second
        for (int i = 0; i != kRecords; ++i) {
            LogNumber(part, i);
        }
        EXPECT_EQ(logger.FlushAndWait(kLongMs), part != 1) << part;
        limit.rlim_cur =
            part == 0 ? std::filesystem::file_size(folder.Native("app.log")) + 100001 : before;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    std::signal(SIGXFSZ, handler);
    AsyncLogger::Counters const counters = logger.GetCounters();
    TLog::Logger::Set(nullptr);
    Numbers numbers = ReadLogFile(folder.Native("app.log"));
    std::size_t const beforeItWasFull = numbers[1].size();
    numbers.erase(1);
    EXPECT_EQ(InShort(numbers), "0:0-1999 2:0-1999");
    EXPECT_EQ(counters.accepted, 3u * kRecords);
    EXPECT_EQ(counters.written, 2u * kRecords + beforeItWasFull);
    EXPECT_EQ(counters.lost, kRecords - beforeItWasFull);
    EXPECT_EQ(counters.bytes, std::filesystem::file_size(folder.Native("app.log")));
    EXPECT_GT(beforeItWasFull, 0u);
}

// --- files that take turns ----------------------------------------------------------------------

/// A new file every 20 records.
struct EveryFew : TLog::RotateFileChannel
{
    using RotateFileChannel::RotateFileChannel;
    bool ShouldRotate() const override { return asked++ % 20 == 0 && asked != 1; }

    mutable int asked = 0; ///< Before every record.
};

/// Follows the records of rotations from file to file, through all of them.
Numbers FollowRotations(std::string path, long& files, int& rotations)
{
    std::map<std::string, LogReader> readers;
    auto const next = [&] { return readers.try_emplace(path, path).first->second.Next(); };
    Numbers numbers;
    for (nlohmann::json record = next(); !record.is_null(); record = next()) {
        if (record.at("k") == "msg") {
            AddNumber(numbers, record.at("v").get_ref<std::string const&>());
        } else if (record.at("k") == "rotate-log" && record.at("v").at("old-path") == path) {
            path = record.at("v").at("new-path");
            ++rotations;
            EXPECT_EQ(next().value("v", nlohmann::json()), record.at("v"));
        }
    }
    for (auto& [name, reader] : readers) {
        EXPECT_TRUE(reader.Next().is_null() && reader.tornEnd.empty()) << name << " goes on";
    }
    files = static_cast<long>(readers.size());
    return numbers;
}

TEST(AsyncLoggerSoakTest, RotationsUnderLoadLoseAndRepeatNothing)
{
    constexpr int kThreads = 4;
    auto const deadline = steady_clock::now() + std::chrono::milliseconds(Scaled(10000));
    TemporaryFolder const folder;
    auto channel = std::make_shared<EveryFew>(folder / u"app.log");
    channel->Open();
    std::string const first = channel->GetPath().NativeString().toStdString();
    long const descriptors = CountOpenDescriptors();
    std::array<int, kThreads> last = {};
    AsyncLogger& logger = SetLogger(channel);
    StartThreads(kThreads, [&](int t, int i) {
        LogNumber(t, i);
        last.at(static_cast<std::size_t>(t)) = i;
        if (i % 10 == 0) {
            std::this_thread::sleep_for(1ms);
            LetCatchUp(logger, 1000);
        }
        return steady_clock::now() < deadline;
    });
    EXPECT_TRUE(logger.FlushAndWait(kLongMs));
    EXPECT_EQ(CountOpenDescriptors(), descriptors);
    TLog::Logger::Set(nullptr);
    channel.reset();
    EXPECT_EQ(CountOpenDescriptors(), descriptors - 1);
    std::string expected;
    int records = 0;
    for (std::size_t t = 0; t != kThreads; ++t) {
        expected += (t == 0 ? "" : " ") + std::to_string(t) + ":0-" + std::to_string(last.at(t));
        records += last.at(t) + 1;
    }
    long files = 0;
    int rotations = 0;
    EXPECT_EQ(InShort(FollowRotations(first, files, rotations)), expected);
    EXPECT_EQ(rotations, (records - 1) / 20);
    std::filesystem::directory_iterator const all(folder.Native(""));
    EXPECT_EQ(std::distance(begin(all), end(all)), files);
}

// --- a channel that is stuck --------------------------------------------------------------------

int ExitWhileStuck(std::string const& folder)
{
    static TEvent s_reached;
    auto const stuck = std::make_shared<TLog::CallbackChannel>([](auto...) {
        s_reached.Signal();
        TEvent().Wait(-1);
    });
    AsyncLogger& logger = SetLogger(MakeFileChannel(LogIn(folder)));
    LogNumber(0, 0);
    logger.Flush();
    logger.AddChannel(stuck);
    LogNumber(0, 1);
    s_reached.Wait(-1);
    return 0;
}

TEST(AsyncLoggerSoakTest, AStuckWriterHoldsTheProcessForHalfAMinute)
{
    TemporaryFolder const folder;
    auto const start = steady_clock::now();
    EXPECT_EQ(ChildProcess("ExitWhileStuck", folder.Native("")).End(), 0);
    EXPECT_GE(steady_clock::now() - start, 30s);
    EXPECT_LT(steady_clock::now() - start, 45s);
    EXPECT_EQ(InShort(ReadLogFile(folder.Native("app.log"))), "0:0");
}

} // namespace

int main(int argc, char** argv)
{
    return RunTestsOrChild(
        {{"Burst", [](std::string const& folder) { return LogUntilKilled(folder, true); }},
         {"Trickle", [](std::string const& folder) { return LogUntilKilled(folder, false); }},
         {"ExitWhileStuck", ExitWhileStuck}},
        argc, argv);
}
