#include "korcoreplatform/main/core/logging/LogMessage.h"

#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/TError.h"

#include <gtest/gtest.h>

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace {

using LogMessageDetail::Pairs;
using TError::ErrorInfo;
using TLog::AnySeverity;
using TLog::NonErrorSeverity;
using TLog::Severity;

ErrorInfo SomeError()
{
    return ErrorInfo(KorErrorsError::AutoGen_0x1A36D05F(), TError::ErrorSource::Internal,
                     grpc::UNKNOWN);
}

TString TextOf(std::shared_ptr<TLog::Value> const& value)
{
    return dynamic_cast<TLog::Literal const&>(*value).GetString();
}

/// All that matters of the records: category, severity, key, text or pairs, whether there is an
/// error.
std::vector<std::string> Described(LogRecording const& log)
{
    std::vector<std::string> lines;
    for (LogRecord const& record : log.Records()) {
        TString line = record.detail ? LogDetail::LogDetailToString(*record.detail) + u" " : u"";
        line += TLog::SeverityToString(record.severity) + u" " + record.event.GetKey() + u"=";
        std::shared_ptr<TLog::Value> const value = record.event.GetValue();
        if (auto const object = std::dynamic_pointer_cast<TLog::Object>(value)) {
            for (auto const& [name, text] : object->GetValues()) {
                line += u"{" + name + u":" + TextOf(text) + u"}";
            }
        } else {
            line += TextOf(value);
        }
        lines.push_back((line + (record.event.GetError() ? u" with error" : u"")).toStdString());
    }
    return lines;
}

/// Calls the 13 overloads for one type of message.
template <class Message, class Source>
void CallAll(Source const& source)
{
    NonErrorSeverity const info(Severity::Info);
    AnySeverity const error(Severity::Error);
    Pairs pairs = {{u"host", u"example"}};
#define MESSAGE static_cast<Message>(Source(source))
    LogMessage(MESSAGE);
    LogMessage(info, MESSAGE);
    LogMessage(error, MESSAGE, SomeError());
    LogMessage(LogDetail::Network, info, MESSAGE);
    LogMessage(LogDetail::Network, error, MESSAGE, SomeError());
    LogMessage(info, MESSAGE, pairs);
    LogMessage(error, MESSAGE, pairs, SomeError());
    LogMessage(LogDetail::Network, info, MESSAGE, pairs);
    LogMessage(LogDetail::Network, error, MESSAGE, pairs, SomeError());
    LogMessage(info, MESSAGE, std::move(pairs)); // not taken: the next calls have it as well
    LogMessage(error, MESSAGE, std::move(pairs), SomeError());
    LogMessage(LogDetail::Network, info, MESSAGE, std::move(pairs));
    LogMessage(LogDetail::Network, error, MESSAGE, std::move(pairs), SomeError());
#undef MESSAGE
}

TEST(LogMessageTest, EveryOverloadWritesItsRecord)
{
    TString const text = u"a message too long to be held in place";
    std::function<void()> const callers[] = {
        [&] { CallAll<char16_t const*>(text.constData()); },
        [&] { CallAll<TString const&>(text); },
        [&] { CallAll<TString&&>(text); },
        [&] { CallAll<TStringCore const&>(TStringCore(text)); },
        [&] { CallAll<TStringCore&&>(TStringCore(text)); },
        [&] { CallAll<TFormatString const&>(TFormatString(u"a %1").args(text.mid(2))); },
    };
    std::vector<std::string> expected = {"Debug msg=TEXT", "Info msg=TEXT",
                                         "Error msg=TEXT with error", "Network Info msg=TEXT",
                                         "Network Error msg=TEXT with error"};
    for (int i = 0; i < 2; ++i) {
        expected.insert(expected.end(),
                        {"Info TEXT={host:example}", "Error TEXT={host:example} with error",
                         "Network Info TEXT={host:example}",
                         "Network Error TEXT={host:example} with error"});
    }
    for (std::string& line : expected) {
        line.replace(line.find("TEXT"), 4, text.toStdString());
    }
    for (auto const& caller : callers) {
        SCOPED_TRACE(&caller - callers);
        LogRecording const log;
        caller();
        EXPECT_EQ(Described(log), expected);
    }
}

TEST(LogMessageTest, CallsAsHostsWriteThemResolve)
{
    LogRecording const log;
    NonErrorSeverity const info(Severity::Info);
    LogMessage(u"text");
    LogMessage(info, QString("text"));
    LogMessage(LogDetail::Count, info, u"text"); // as without a category
    LogMessage(info, u"key", {{u"name", u"text"}});
    LogMessage(LogDetail::Network, info, u"key", {});
    EXPECT_EQ(Described(log),
              (std::vector<std::string>{"Debug msg=text", "Info msg=text", "Info msg=text",
                                        "Info key={name:text}", "Network Info key="}));
}

TEST(LogMessageTest, ARefusedMessageIsNotTouchedAndAnAcceptedMovedOneIsTaken)
{
    constexpr char kNoParameter[] = "TFormatStringException_AutoGen_0x24F8A094";
    LogRecording const log(Severity::Warn);
    NonErrorSeverity const info(Severity::Info);
    NonErrorSeverity const warn(Severity::Warn);
    TString const longText(u'x', 100);
    TString moved = longText;
    TFormatString const incomplete(u"%1");
    Pairs const pairs = {{u"host", u"example"}};
    ErrorInfo error = SomeError();
    {
        AllocationCounter const counter;
        LogMessage(longText.constData());
        LogMessage(info, std::move(moved));
        LogMessage(info, incomplete);
        LogMessage(LogDetail::Network, info, longText, pairs);
        LogMessage(AnySeverity(Severity::Info), longText, pairs, std::move(error));
        if (AllocationCounter::IsAvailable()) {
            EXPECT_EQ(counter.Count(), 0);
        }
    }
    EXPECT_EQ(moved, longText);
    EXPECT_TRUE(log.Records().empty());

    LogMessage(warn, std::move(moved));
    EXPECT_TRUE(moved.isEmpty());
    EXPECT_KOR_ERROR(LogMessage(warn, incomplete), TFormatString::Exception, kNoParameter);
    EXPECT_EQ(log.Records().size(), 1u);
}

} // namespace
