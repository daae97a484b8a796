#include "korcoreplatform/main/core/logging/AsyncLogger.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/CallbackChannel.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/MemoryChannel.h"
#include "korcoreplatform/main/core/logging/TConcurrentQueue.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/thread/TEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

using TLog::AccessLevel;
using TLog::AsyncLogger;
using TLog::Event;
using TLog::Filter;
using TLog::MemoryChannel;
using TLog::Severity;

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

/// Holds the writer in `Append` until it is let go, and counts flushes.
class Gate : public TLog::Channel
{
public:
    void Append(Severity severity, Event const& event) override
    {
        Append(AccessLevel::Standard, severity, event);
    }
    void Append(AccessLevel, Severity, Event const&) override
    {
        reached.Signal();
        open.Wait(kLongMs);
    }
    void Flush() override
    {
        ++flushes;
        flushed.Signal();
    }
    TPath GetPath() const override { return {}; }
    unsigned long GetFileSizeMB() const override { return 0; }

    TEvent reached;
    TEvent open;
    TEvent flushed;
    std::atomic<int> flushes{0};
};

TEST(AsyncLoggerTest, ChangesTakeTheirTurnAmongTheRecords)
{
    auto const first = std::make_shared<MemoryChannel>();
    auto const second = std::make_shared<MemoryChannel>();
    auto const drop = std::make_shared<Answer>(Filter::Drop);
    AsyncLogger::Counters counters;
    {
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
        counters = logger.GetCounters();
    }
    EXPECT_EQ(KeysOf(*first), "twice twice ");
    EXPECT_EQ(KeysOf(*second), "kept ");
    EXPECT_EQ(drop->asked, 1); // the first one decided
    EXPECT_EQ(counters.accepted, 4u);
    EXPECT_EQ(counters.filtered, 1u);
    EXPECT_EQ(counters.lost, 1u);
    EXPECT_EQ(counters.written, 2u);
    EXPECT_EQ(counters.queueLength, 0u);
}

TEST(AsyncLoggerTest, FiltersAreAskedUntilOneDecides)
{
    struct
    {
        int first;
        int second;
        bool isKept;
        int askedSecond;
    } const cases[] = {
        {Filter::Next, Filter::Next, true, 1},
        {Filter::Next, Filter::Drop, false, 1},
        {Filter::Drop, Filter::Accept, false, 0},
        {Filter::Accept, Filter::Drop, true, 0},
        {-7, Filter::Drop, true, 0},
    };
    for (auto const& c : cases) {
        auto const channel = std::make_shared<MemoryChannel>();
        auto const second = std::make_shared<Answer>(c.second);
        {
            AsyncLogger logger(Severity::Trace, TPath());
            logger.AddChannel(channel);
            logger.AddFilter(std::make_shared<Answer>(c.first));
            logger.AddFilter(second);
            logger.Log(Severity::Info, Named(u"x"));
        }
        EXPECT_EQ(KeysOf(*channel) == "x ", c.isKept) << c.first << ' ' << c.second;
        EXPECT_EQ(second->asked, c.askedSecond);
    }
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

TEST(AsyncLoggerTest, LinesAreFlushedAfterSilenceOrWhenTheyAreOld)
{
    auto const gate = std::make_shared<Gate>();
    gate->open.Signal();
    AsyncLogger logger(Severity::Trace, TPath());
    logger.AddChannel(gate);
    logger.Log(Severity::Info, Named(u"x"));
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));

    // A trickle that is never silent for a second.
    gate->flushed.Reset();
    logger.SetMaximumUnflushedAge(std::chrono::milliseconds(50));
    std::atomic<bool> isOver{false};
    std::thread trickle([&] {
        while (!isOver) {
            logger.Log(Severity::Info, Named(u"x"));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));
    isOver = true;
    trickle.join();
}

TEST(AsyncLoggerTest, AStuckChannelHoldsUpTheWriterAlone)
{
    auto const gate = std::make_shared<Gate>();
    auto const channel = std::make_shared<MemoryChannel>();
    {
        AsyncLogger logger(Severity::Trace, TPath());
        logger.AddChannel(gate);
        logger.AddChannel(channel);
        logger.Log(Severity::Info, Named(u"a"));
        ASSERT_TRUE(gate->reached.Wait(kLongMs));
        logger.Log(Severity::Info, Named(u"b"));
        EXPECT_FALSE(logger.FlushAndWait(1));
        EXPECT_EQ(logger.GetCounters().accepted, 2u);
        EXPECT_GE(logger.GetCounters().queueLength, 1u);
        gate->open.Signal();
    }
    EXPECT_EQ(KeysOf(*channel), "a b ");
}

TEST(AsyncLoggerTest, AChannelMayLogAndAskToFlush)
{
    auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
    auto const channel = std::make_shared<MemoryChannel>();
    AsyncLogger* const itself = logger.get();
    std::atomic<bool> isFlushed{true};
    logger->AddChannel(channel);
    logger->AddChannel(
        std::make_shared<TLog::CallbackChannel>([&](AccessLevel, Severity severity, Event const&) {
            if (severity == Severity::Info) {
                isFlushed = itself->FlushAndWait(kLongMs);
                LogMessage(TLog::NonErrorSeverity(Severity::Warn), u"again");
            }
        }));
    TLog::Logger::Set(std::move(logger));
    LogMessage(TLog::NonErrorSeverity(Severity::Info), u"once");
    while (itself->GetCounters().written < 2) {
        std::this_thread::yield();
    }
    TLog::Logger::Set(nullptr);
    EXPECT_EQ(KeysOf(*channel), "msg msg ");
    EXPECT_FALSE(isFlushed);
}

/// What the process has in memory, in bytes.
long ResidentBytes()
{
    std::ifstream file("/proc/self/statm");
    long all = 0;
    long resident = 0;
    file >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

TEST(AsyncLoggerTest, TheMemoryOfABurstGoesBackInTheSilenceAfterIt)
{
    if (ResidentBytes() == 0) {
        GTEST_SKIP() << "the system does not tell";
    }
    constexpr int kRecords = 200000; // some 50 MB
    auto const gate = std::make_shared<Gate>();
    auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
    AsyncLogger* const itself = logger.get();
    logger->AddChannel(gate);
    TLog::Logger::Set(std::move(logger));
    for (int i = 0; i != kRecords; ++i) {
        LogMessage(TLog::NonErrorSeverity(Severity::Info), u"one of many");
    }
    long const before = ResidentBytes();
    gate->open.Signal();
    EXPECT_TRUE(itself->FlushAndWait(kLongMs));
    LogMessage(TLog::NonErrorSeverity(Severity::Info), u"and silence");
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));
    gate->flushed.Reset();
    EXPECT_TRUE(gate->flushed.Wait(kLongMs));   // by the writer itself
    EXPECT_TRUE(itself->FlushAndWait(kLongMs)); // behind what it does then
    EXPECT_LT(ResidentBytes(), before - 30'000'000);
    EXPECT_GE(itself->GetCounters().queueHighWater, static_cast<unsigned>(kRecords - 100));
    TLog::Logger::Set(nullptr);
}

TEST(AsyncLoggerTest, RecordsOfEachThreadKeepTheirOrder)
{
    constexpr int kThreads = 4;
    constexpr int kRecords = 5000;
    auto const channel = std::make_shared<MemoryChannel>(2 * kThreads * kRecords);
    auto logger = std::make_unique<AsyncLogger>(Severity::Trace, TPath());
    logger->AddChannel(channel);
    TLog::Logger::Set(std::move(logger));
    std::vector<std::thread> threads;
    for (int t = 0; t != kThreads; ++t) {
        threads.emplace_back([t] {
            TString const name = TString::number(t);
            for (int i = 0; i != kRecords; ++i) {
                TString const text = TString::number(i) + TString(u'x', i % 300); // of any size
                LogMessage(TLog::NonErrorSeverity(Severity::Info), name, {{u"i", text}});
                LogMessage(TLog::NonErrorSeverity(Severity::Off), text);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    TLog::Logger::Set(nullptr);
    std::vector<int> next(kThreads);
    int messages = 0;
    for (MemoryChannel::Record const& record : channel->GetRecords()) {
        if (record.severity == Severity::Off) {
            ++messages;
            continue;
        }
        auto const t = static_cast<std::size_t>(record.event.GetKey().toInt());
        auto const value = std::dynamic_pointer_cast<TLog::Object>(record.event.GetValue());
        auto const& text = dynamic_cast<TLog::Literal&>(*value->GetValues().at(u"i")).GetString();
        int const i = next.at(t)++;
        ASSERT_EQ(text, TString::number(i) + TString(u'x', i % 300));
    }
    EXPECT_EQ(messages, kThreads * kRecords);
    EXPECT_EQ(next, std::vector<int>(kThreads, kRecords));
}

TEST(TConcurrentQueueTest, NothingIsLostBetweenManyProducersAndOneConsumer)
{
    constexpr int kThreads = 4;
    constexpr int kItems = 20000;
    TConcurrentQueue<std::unique_ptr<int>> queue;
    std::vector<std::thread> threads;
    for (int t = 0; t != kThreads; ++t) {
        threads.emplace_back([&queue, t] {
            for (int i = 0; i != kItems; ++i) {
                queue.Push(std::make_unique<int>(i * kThreads + t));
            }
        });
    }
    std::vector<int> next(kThreads);
    for (int taken = 0; taken != kThreads * kItems;) {
        for (std::unique_ptr<int> const& item : queue.Pop()) {
            auto const t = static_cast<std::size_t>(*item % kThreads);
            ASSERT_EQ(*item / kThreads, next[t]++);
            ++taken;
        }
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(queue.Pop().empty());
}

} // namespace
