#include "korcoreplatform/main/core/logging/LogScopes.h"

#include "korcoreplatform/main/core/runtime/OptMetrics.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

namespace {

using namespace TLog;

Object::Map const& ValuesOf(LogRecord const& record)
{
    return dynamic_cast<Object const&>(*record.event.GetValue()).GetValues();
}

TEST(LogScopesTest, TheTypeDecidesWhichRecordsAreWritten)
{
    std::tuple<int, bool, Severity, TString> const cases[] = {
        {0, true, Severity::Info, u" parse"},
        {2, false, Severity::Info, u" begin-parse end-parse"},
        {2, false, Severity::Warn, u""},
        {3, false, Severity::Info, u""},
        {3, true, Severity::Info, u" begin-parse end-parse"},
        {4, true, Severity::Info, u" parse"},
    };
    for (auto const& [number, isTracing, minimal, expected] : cases) {
        RecordingLogger logger(minimal);
        OptMetrics::SetIsActivityAndResourceTracingEnabledFunction([is = isTracing] { return is; });
        auto const type = static_cast<ElapsedTimeEventScope::Type>(number);
        ElapsedTimeEventScope(logger, u"parse", {{u"file", u"a"}}, type);
        TString keys;
        for (LogRecord const& record : logger.records) {
            keys += u" " + record.event.GetKey();
            EXPECT_EQ(record.severity, Severity::Info);
            EXPECT_EQ(ValuesOf(record).count(u"file"), 1u);
            EXPECT_EQ(ValuesOf(record).count(u"elapsed"), &record == &logger.records.back());
        }
        EXPECT_EQ(keys, expected) << number << ' ' << isTracing;
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
