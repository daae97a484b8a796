#include "korcoreplatform/main/core/logging/Logger.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/runtime/OptLogSeverity.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korsys/tests/support/Threads.h"

namespace {

using LogDetail::Caching;
using LogDetail::Network;
using TLog::NonErrorSeverity;
using TLog::Severity;

constexpr Severity kAll[] = {Severity::Trace, Severity::Debug, Severity::Info, Severity::Warn,
                             Severity::Error, Severity::Fatal, Severity::Off,  Severity::LogDetail};

/// Counts how often it is asked, and answers as the base does.
struct CountingLogger : RecordingLogger
{
    explicit CountingLogger(Severity minimal) : RecordingLogger(minimal)
    {
        DecideByMinimalSeverity(typeid(CountingLogger));
    }
    bool AcceptsSeverity(Severity severity) const override
    {
        ++asked;
        return RecordingLogger::AcceptsSeverity(severity);
    }
    mutable std::atomic<int> asked{0};
};

/// Accepts everything, whatever its base has declared.
struct GreedyLogger : CountingLogger
{
    using CountingLogger::CountingLogger;
    bool AcceptsSeverity(Severity) const override { return true; }
};

void SetPerDetail(bool isOn)
{
    OptLogSeverity::SetIsSeverityPerLogDetailOn([isOn] { return isOn; });
}

/// How many records one log call leaves with the logger.
std::size_t Logged(RecordingLogger const& logger, LogDetail::LogDetailEnums category,
                   Severity severity)
{
    std::size_t const before = logger.records.size();
    LogMessage(category, NonErrorSeverity(severity), u"text");
    return logger.records.size() - before;
}

TEST(LoggerTest, ACategorysThresholdDecidesWhileTheOptionIsOnAndElseTheMinimalSeverity)
{
    LoggerInSlot<CountingLogger> const logger(Severity::Fatal);
    for (int const setUp : {0, 1, 2}) { // the last two times it has a threshold
        bool const isOn = setUp == 2;
        SetPerDetail(isOn);
        for (Severity const minimal : kAll) {
            logger->SetMinimalAcceptedSeverity(minimal);
            for (Severity const severity : kAll) {
                for (auto const category : {Network, Caching, LogDetail::Count}) {
                    SCOPED_TRACE(testing::Message() << setUp << int(minimal) << int(severity));
                    bool const isAccepted =
                        severity >= (isOn && category == Network ? Severity::Error : minimal);
                    EXPECT_EQ(Logged(*logger, category, severity), isAccepted ? 1u : 0u);
                    EXPECT_EQ(LoggerAcceptsSeverity(severity, category), isAccepted);
                }
            }
        }
        logger->SetDetail(Network, Severity::Error);
        logger->SetDetail(LogDetail::Count, Severity::Trace); // is never asked for
    }
    logger->ClearDetails();
    EXPECT_FALSE(logger->IsDetailSet(Network));
    EXPECT_EQ(logger->GetDetailSeverity(Network), Severity::Off);

    OptLogSeverity::SetIsSeverityPerLogDetailOn(nullptr);
    EXPECT_THROW(Logged(*logger, Network, Severity::Trace), std::bad_function_call);
    EXPECT_EQ(Logged(*logger, LogDetail::Count, Severity::LogDetail), 1u); // does not ask it
    SetPerDetail(false);
}

TEST(LoggerTest, OnlyTheClassThatDecidesByMinimalSeverityIsNotAsked)
{
    LoggerInSlot<CountingLogger> const logger(Severity::Warn);
    CountingLogger other(Severity::Trace);
    other.SetMinimalAcceptedSeverity(Severity::Debug); // not that of the slot
    EXPECT_EQ(Logged(*logger, LogDetail::Count, Severity::Info), 0u);
    EXPECT_EQ(logger->asked, 0);
    EXPECT_EQ(Logged(*logger, LogDetail::Count, Severity::Warn), 1u);
    EXPECT_EQ(logger->asked, 1);
    LoggerInSlot<GreedyLogger> const greedy(Severity::Off);
    EXPECT_EQ(Logged(*greedy, LogDetail::Count, Severity::Trace), 1u);
}

TEST(LoggerTest, TheNullLoggerWantsNothing)
{
    TLog::Logger::Set(nullptr);
    TLog::Logger& logger = **TLog::Logger::Get();
    SetPerDetail(true);
    logger.SetMinimalAcceptedSeverity(Severity::Trace);
    logger.SetDetail(Network, Severity::Trace);
    for (Severity const severity : kAll) {
        EXPECT_FALSE(LoggerAcceptsSeverity(severity, LogDetail::Count));
        EXPECT_FALSE(LoggerAcceptsSeverity(severity, Network));
    }
    EXPECT_EQ(logger.GetMinimalAcceptedSeverity(), Severity::Off);
    EXPECT_EQ(logger.GetDetailSeverity(Network), Severity::Off);
    SetPerDetail(false);
}

/// Logs while it is destroyed, and touches the slot.
struct DyingLogger : RecordingLogger
{
    using RecordingLogger::RecordingLogger;
    ~DyingLogger() override
    {
        SetMinimalAcceptedSeverity(Severity::Fatal);
        LogMessage(u"last words");
    }
};

TEST(LoggerTest, TheFormerLoggerIsDestroyedWhenTheNewOneIsInPlace)
{
    LoggerInSlot<DyingLogger> const former(Severity::Trace);
    LoggerInSlot<RecordingLogger> const logger(Severity::Debug);
    EXPECT_EQ(logger->records.size(), 1u); // the last words
    EXPECT_EQ(TLog::Logger::Get()->get(), &*logger);
}

// For the thread sanitizer; and when all threads are done the last severity set holds.
TEST(LoggerTest, SeveritiesChangeWhileOtherThreadsLog)
{
    LoggerInSlot<CountingLogger> const logger(Severity::Off);
    SetPerDetail(true);
    std::atomic<bool> isDone{false};
    OnThreads(3, [&](unsigned thread) {
        for (int i = 0; thread == 0 && i < 500; ++i) {
            logger->SetMinimalAcceptedSeverity(i % 2 == 0 ? Severity::Debug : Severity::Info);
            logger->SetDetail(Network, Severity::Fatal);
            logger->SetDetail(static_cast<LogDetail::LogDetailEnums>(53), Severity::Fatal);
            logger->ClearDetails();
        }
        while (thread != 0 && !isDone.load(std::memory_order_relaxed)) {
            LogMessage(NonErrorSeverity(Severity::Trace), u"refused");
            EXPECT_FALSE(LoggerAcceptsSeverity(Severity::Trace, Network));
            EXPECT_FALSE(logger->IsDetailSet(static_cast<LogDetail::LogDetailEnums>(-1)));
        }
        isDone.store(true, std::memory_order_relaxed);
    });
    SetPerDetail(false);
    EXPECT_TRUE(logger->records.empty());
    EXPECT_EQ(Logged(*logger, LogDetail::Count, Severity::Info), 1u);
}

} // namespace
