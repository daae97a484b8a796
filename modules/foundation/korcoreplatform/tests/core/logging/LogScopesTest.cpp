#include "korcoreplatform/main/core/logging/LogScopes.h"

#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/Filter.h"
#include "korcoreplatform/main/core/logging/MemoryChannel.h"
#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using TLog::ElapsedTimeEventScope;
using TLog::Object;
using TLog::Severity;

class DropAll : public TLog::Filter
{
public:
    int Decide(Severity, TLog::Event const&) override { return Drop; }
};

Object::Map const& ValuesOf(LogRecord const& record)
{
    return dynamic_cast<Object const&>(*record.event.GetValue()).GetValues();
}

TEST(LogScopesTest, AFilterIsThereForTheLengthOfItsScope)
{
    auto const channel = std::make_shared<TLog::MemoryChannel>();
    TLog::AsyncLogger logger(Severity::Info, TPath());
    logger.AddChannel(channel);
    logger.Log(Severity::Info, TLog::Event(u"before", nullptr));
    {
        TLog::FilterScope const scope(logger, std::make_shared<DropAll>());
        logger.Log(Severity::Info, TLog::Event(u"within", nullptr));
    }
    logger.Log(Severity::Info, TLog::Event(u"after", nullptr));
    ASSERT_TRUE(logger.FlushAndWait(-1));
    auto const records = channel->GetRecords();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1].event.GetKey(), u"after");
}

TEST(LogScopesTest, TheTypeDecidesWhichRecordsAreWritten)
{
    struct Case
    {
        int line;
        int type;
        bool isTracing;
        Severity minimal;
        std::vector<TString> keys;
    };
    Case const cases[] = {
        {__LINE__, 0, true, Severity::Info, {u"parse"}},
        {__LINE__, 2, false, Severity::Info, {u"begin-parse", u"end-parse"}},
        {__LINE__, 2, false, Severity::Warn, {}},
        {__LINE__, 3, false, Severity::Info, {}},
        {__LINE__, 3, true, Severity::Info, {u"begin-parse", u"end-parse"}},
        {__LINE__, 4, true, Severity::Info, {u"parse"}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        RecordingLogger logger(c.minimal);
        OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([&] { return c.isTracing; });
        auto const type = static_cast<ElapsedTimeEventScope::Type>(c.type);
        {
            ElapsedTimeEventScope const scope(logger, u"parse", {{u"file", u"a"}}, type);
        }
        std::vector<TString> keys;
        for (LogRecord const& record : logger.records) {
            keys.push_back(record.event.GetKey());
            EXPECT_EQ(record.severity, Severity::Info);
            EXPECT_EQ(ValuesOf(record).count(u"file"), 1u);
            EXPECT_EQ(ValuesOf(record).count(u"elapsed"), &record == &logger.records.back());
        }
        EXPECT_EQ(keys, c.keys);
    }
    OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([] { return false; });
}

TEST(LogScopesTest, WhatARecordHasDoesNotChangeAnyMore)
{
    TElapsedTimer const timer(true);
    RecordingLogger logger(Severity::Info);
    auto const values = std::make_shared<Object>();
    {
        ElapsedTimeEventScope scope(logger, u"load", values, ElapsedTimeEventScope::BeginEnd);
        values->GetValues()[u"rows"] = TLog::Literal::Int(3);
        scope.End();
    }
    ASSERT_EQ(logger.records.size(), 3u); // `End` was called twice
    EXPECT_TRUE(ValuesOf(logger.records[0]).empty());
    double last = 0;
    for (std::size_t i : {1, 2}) {
        EXPECT_EQ(ValuesOf(logger.records[i]).count(u"rows"), 1u);
        auto const elapsed = ValuesOf(logger.records[i]).at(u"elapsed");
        double const seconds = dynamic_cast<TLog::Literal const&>(*elapsed).GetDouble();
        EXPECT_GT(seconds, last);
        last = seconds;
    }
    EXPECT_LT(last, timer.ElapsedSec()); // milliseconds would be more

    std::shared_ptr<Object> const none;
    ElapsedTimeEventScope(logger, u"none", none, ElapsedTimeEventScope::EndOnly).End();
    EXPECT_EQ(ValuesOf(logger.records.back()).size(), 1u);
}

} // namespace
