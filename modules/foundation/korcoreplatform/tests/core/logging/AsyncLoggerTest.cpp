#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/logging/CallbackChannel.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LogScopes.h"
#include "korcoreplatform/main/core/logging/MemoryChannel.h"
#include "korcoreplatform/main/core/logging/TConcurrentQueue.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/tests/support/LogRecords.h"
#include "korsys/main/thread/TEvent.h"

#include <unistd.h>

namespace {

using namespace TLog;

constexpr int kLongMs = 20000; ///< For waits that end early unless something is broken.

Event Named(TString const& key)
{
    return Event(key, nullptr);
}

std::string KeysOf(MemoryChannel const& channel)
{
    std::string keys;
    for (MemoryChannel::Record const& record : channel.GetRecords()) {
        keys += record.event.GetKey().toStdString() + ' ';
    }
    return keys;
}

/// Gives one answer and counts how often it is asked.
class Answer : public Filter
{
public:
    explicit Answer(int answer) : m_answer(answer) {}
    int Decide(Severity, Event const&) override
    {
        ++asked;
        return m_answer;
    }

    std::atomic<int> asked{0};

private:
    int m_answer;
};

/// Holds the writer in `Append` until it is let go, and tells of flushes.
class Gate : public TLog::CallbackChannel
{
public:
    Gate() : CallbackChannel([this](auto...) { open.Wait(kLongMs); }) {}
    void Flush() override { flushed.Signal(); }

    TEvent open;
    TEvent flushed;
};

TEST(AsyncLoggerTest, ChangesTakeTheirTurnAmongTheRecords)
{
    auto const first = std::make_shared<MemoryChannel>();
    auto const second = std::make_shared<MemoryChannel>();
    auto const drop = std::make_shared<Answer>(Filter::Drop);
    AsyncLogger logger(Severity::Info, TPath());
    logger.Log(Severity::Info, Named(u"nowhere"));
    logger.AddChannel(first);
    logger.AddChannel(first);
    logger.Log(Severity::Info, Named(u"twice"));
    logger.RemoveChannel(first); // both
    logger.AddChannel(second);
    logger.AddFilter(drop);
    logger.AddFilter(drop);
    logger.Log(Severity::Fatal, Named(u"dropped"));
    logger.RemoveFilter(drop); // both
    logger.Log(Severity::Warn, Named(u"kept"));
    logger.Log(Severity::Debug, Named(u"refused"));
    logger.AddChannel(nullptr);
    logger.AddFilter(nullptr);
    EXPECT_FALSE(logger.FlushAndWait(kLongMs)); // one had no channel
    EXPECT_TRUE(logger.FlushAndWait(kLongMs));
    EXPECT_EQ(KeysOf(*first), "twice twice ");
    EXPECT_EQ(KeysOf(*second), "kept ");
    EXPECT_EQ(drop->asked, 1); // the first one decided
    AsyncLogger::Counters const counters = logger.GetCounters();
    EXPECT_EQ((std::vector<std::uint64_t>{counters.accepted, counters.filtered, counters.lost,
                                          counters.written, counters.queueLength}),
              (std::vector<std::uint64_t>{4, 1, 1, 2, 0}));
}

TEST(AsyncLoggerTest, FiltersAreAskedUntilOneDecides)
{
    std::tuple<int, int, char const*, int> const cases[] = {
        {Filter::Next, Filter::Next, "x ", 1},   {Filter::Next, Filter::Drop, "", 1},
        {Filter::Drop, Filter::Accept, "", 0},   {-7, Filter::Drop, "x ", 0},
        {Filter::Accept, Filter::Drop, "x ", 0},
    };
    for (auto const& [first, then, kept, askedThen] : cases) {
        auto const channel = std::make_shared<MemoryChannel>();
        auto const second = std::make_shared<Answer>(then);
        AsyncLogger logger(Severity::Trace, TPath());
        logger.AddChannel(channel);
        logger.AddFilter(std::make_shared<Answer>(first));
        logger.AddFilter(second);
        logger.Log(Severity::Info, Named(u"x"));
        EXPECT_TRUE(logger.FlushAndWait(kLongMs));
        EXPECT_EQ(KeysOf(*channel), kept) << first << ' ' << then;
        EXPECT_EQ(second->asked, askedThen);
    }
}

TEST(AsyncLoggerTest, AFilterIsThereForTheLengthOfItsScope)
{
    auto const channel = std::make_shared<MemoryChannel>();
    AsyncLogger logger(Severity::Info, TPath());
    logger.AddChannel(channel);
    {
        FilterScope const scope(logger, std::make_shared<Answer>(Filter::Drop));
        logger.Log(Severity::Info, Named(u"within"));
    }
    logger.Log(Severity::Info, Named(u"after"));
    EXPECT_TRUE(logger.FlushAndWait(kLongMs));
    EXPECT_EQ(KeysOf(*channel), "after ");
}

TEST(AsyncLoggerTest, EveryWayToLogCarriesItsAccessLevelAndAsksForItsSeverity)
{
    auto const detail = LogDetail::Network;
    for (bool const isPerDetail : {false, true}) {
        auto const channel = std::make_shared<MemoryChannel>();
        Event const event = Named(u"c");
        {
            AsyncLogger logger(Severity::Warn, TPath());
            logger.SetDetail(detail, Severity::Debug);
            OptLogSeverity::SetIsSeverityPerLogDetailOn([isPerDetail] { return isPerDetail; });
            logger.AddChannel(channel);
            for (Severity const severity : {Severity::Info, Severity::Error}) {
                logger.Log(severity, event);
                logger.Log(severity, Named(u"m"));
                logger.Log(AccessLevel::Quarantine, severity, event);
                logger.Log(AccessLevel::Quarantine, severity, Named(u"m"));
                logger.Log(detail, severity, event);
                logger.Log(detail, severity, Named(u"m"));
                logger.Log(AccessLevel::Quarantine, detail, severity, event);
                logger.Log(AccessLevel::Quarantine, detail, severity, Named(u"m"));
            }
            OptLogSeverity::SetIsSeverityPerLogDetailOn([] { return false; });
        }
        std::string seen;
        for (MemoryChannel::Record const& record : channel->GetRecords()) {
            seen += record.severity == Severity::Error ? 'E' : 'i';
            seen += std::to_string(static_cast<int>(record.accessLevel));
        }
        EXPECT_EQ(seen, isPerDetail ? "i0i0i1i1E0E0E1E1E0E0E1E1" : "E0E0E1E1E0E0E0E0");
        EXPECT_EQ(event.GetKey(), u"c");
    }
}

TEST(AsyncLoggerTest, AChannelMayLogAndAskToFlush)
{
    auto const channel = std::make_shared<MemoryChannel>();
    AsyncLogger& logger = SetLogger(channel);
    std::atomic<bool> isFlushed{true};
    logger.AddChannel(
        std::make_shared<TLog::CallbackChannel>([&](AccessLevel, Severity severity, Event const&) {
            if (severity == Severity::Info) {
                isFlushed = logger.FlushAndWait(kLongMs);
                LogMessage(TLog::NonErrorSeverity(Severity::Warn), u"again");
            }
        }));
    LogMessage(TLog::NonErrorSeverity(Severity::Info), u"once");
    while (logger.GetCounters().written < 2) {
        std::this_thread::yield();
    }
    TLog::Logger::Set(nullptr);
    EXPECT_EQ(KeysOf(*channel), "msg msg ");
    EXPECT_FALSE(isFlushed);
}

/// What the process has in memory, in bytes; 0 when the system does not tell.
long ResidentBytes()
{
    std::ifstream file("/proc/self/statm");
    long all = 0;
    long resident = 0;
    file >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

TEST(AsyncLoggerTest, ABurstMayWaitAndItsMemoryGoesBackInTheSilenceAfterIt)
{
    constexpr unsigned kRecords = 200000; // some 25 MB
    auto const gate = std::make_shared<Gate>();
    AsyncLogger& logger = SetLogger(gate);
    for (unsigned i = 0; i != kRecords; ++i) {
        LogMessage(TLog::NonErrorSeverity(Severity::Info), u"one of many");
    }
    EXPECT_FALSE(logger.FlushAndWait(1)); // the channel is stuck, and nobody who logs
    EXPECT_EQ(logger.GetCounters().accepted, kRecords);
    long const before = ResidentBytes();
    gate->open.Signal();
    EXPECT_TRUE(logger.FlushAndWait(kLongMs));
    LogMessage(TLog::NonErrorSeverity(Severity::Info), u"and silence");
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));
    gate->flushed.Reset();
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));  // by the writer itself
    EXPECT_TRUE(logger.FlushAndWait(kLongMs)); // behind what it does then
    EXPECT_LT(ResidentBytes(), before == 0 ? 1 : before - 15'000'000);
    EXPECT_GE(logger.GetCounters().queueHighWater, kRecords - 100);
    TLog::Logger::Set(nullptr);
}

TEST(AsyncLoggerTest, AChannelMayEndItsLogger)
{
    struct Shared // with the writer, which lives on for a moment
    {
        std::unique_ptr<AsyncLogger> logger;
        TEvent isFull;
        TEvent isWritten;
        sigset_t blocked;
    };
    auto shared = std::make_shared<Shared>();
    auto& logger = shared->logger = std::make_unique<AsyncLogger>(Severity::Info, TPath());
    logger->AddChannel(
        std::make_shared<CallbackChannel>([shared](AccessLevel, Severity, Event const& event) {
            if (event.GetKey() == u"last") {
                ::pthread_sigmask(SIG_BLOCK, nullptr, &shared->blocked);
                shared->isWritten.Signal();
            } else {
                shared->isFull.Wait(kLongMs);
                shared->logger.reset();
            }
        }));
    logger->Log(Severity::Info, Named(u"first"));
    logger->Log(Severity::Info, Named(u"last"));
    shared->isFull.Signal();
    ASSERT_TRUE(shared->isWritten.Wait(kLongMs)); // after the end, which does not wait for itself
    EXPECT_TRUE(::sigismember(&shared->blocked, SIGINT));
    for (int const fault : {SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) {
        EXPECT_FALSE(::sigismember(&shared->blocked, fault)) << fault; // the host may handle it
    }
    std::weak_ptr<Shared> const writers = std::exchange(shared, nullptr);
    for (int ms = 0; !writers.expired() && ms != kLongMs; ++ms) {
        ::usleep(1000);
    }
    EXPECT_TRUE(writers.expired()); // the writer gave back what it had
}

TEST(TConcurrentQueueTest, NothingIsLostBetweenManyProducersAndOneConsumer)
{
    constexpr int kThreads = 4;
    constexpr int kItems = 20000;
    TConcurrentQueue<std::unique_ptr<int>> queue;
    auto const threads = StartThreads(kThreads, [&queue](int t, int i) {
        queue.Push(std::make_unique<int>(i * kThreads + t));
        return i + 1 != kItems;
    });
    std::vector<int> next(kThreads);
    for (int taken = 0; taken != kThreads * kItems;) {
        for (std::unique_ptr<int> const& item : queue.Pop()) {
            ASSERT_EQ(*item / kThreads, next[static_cast<std::size_t>(*item % kThreads)]++);
            ++taken;
        }
    }
    EXPECT_TRUE(queue.Pop().empty());
}

} // namespace
