#include "korcoreplatform/main/core/logging/LogMessage.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

#include <regex>

namespace {

using KorTest::SomeError;
using LogMessageDetail::Pairs;
using TError::ErrorInfo;
using namespace TLog;

/// Each record: its category, severity, key, value, and whether there is an error.
std::string Described(LogRecording const& log)
{
    TString lines;
    for (LogRecord const& record : log.Records()) {
        lines += record.detail ? LogDetail::LogDetailToString(*record.detail) + u" " : u"";
        lines += TLog::SeverityToString(record.severity) + u" " + record.event.GetKey() + u"=" +
                 TLog::Formatter()(*record.event.GetValue());
        lines += record.event.GetError() ? u" with error\n" : u"\n";
    }
    return lines.toStdString();
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
    TString text;
    std::function<void()> const callers[] = {
        [&] { CallAll<char16_t const*>(text.constData()); },
        [&] { CallAll<TString const&>(text); },
        [&] { CallAll<TString&&>(text); },
        [&] { CallAll<TStringCore const&>(TStringCore(text)); },
        [&] { CallAll<TStringCore&&>(TStringCore(text)); },
        [&] { CallAll<TFormatString const&>(TFormatString(u"a %1").args(text.mid(2))); },
    };
    std::string const plain = R"(Debug msg="TEXT"
Info msg="TEXT"
Error msg="TEXT" with error
Network Info msg="TEXT"
Network Error msg="TEXT" with error
)";
    std::string const pairs = R"(Info TEXT={"host":"example"}
Error TEXT={"host":"example"} with error
Network Info TEXT={"host":"example"}
Network Error TEXT={"host":"example"} with error
)";
    for (int const length : {36, 2000}) { // a record holds the shorter one in place
        text = u"a " + TString(u'x', length);
        std::string const expected =
            std::regex_replace(plain + pairs + pairs, std::regex("TEXT"), text.toStdString());
        for (auto const& caller : callers) {
            SCOPED_TRACE(&caller - callers);
            LogRecording const log;
            caller();
            EXPECT_EQ(Described(log), expected);
        }
    }
}

TEST(LogMessageTest, AMessageOfAnyLengthAndKindComesThrough)
{
    for (int length = 0; length < 520; ++length) { // in bytes or units, in each size of a block
        TString const plain(u'x', length);
        for (TString const& text : {plain, plain + u"\"", u"\u0178" + plain, plain + u"\xD800",
                                    plain + TString(u'\0', 1) + u"x"}) {
            LogRecording const log;
            LogMessage(text);
            ASSERT_EQ(log.Records().size(), 1u);
            Event const& event = log.Records()[0].event;
            std::string line;
            TLog::Formatter().AppendLine(line, AccessLevel::Standard, Severity::Info, event);
            std::string const value = R"("k":"msg","v":)" + Formatter().String(text).toStdString();
            ASSERT_NE(line.find(value + "}\n"), std::string::npos) << line;
            ASSERT_EQ(Formatter()(*event.GetValue()), Formatter().String(text));
            ASSERT_EQ(static_cast<Literal const&>(*event.GetValue()).GetString(), text);
        }
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
    EXPECT_EQ(Described(log), R"(Debug msg="text"
Info msg="text"
Info msg="text"
Info key={"name":"text"}
Network Info key={}
)");
}

TEST(LogMessageTest, ARefusedMessageIsNotTouchedAndAnAcceptedMovedOneIsTaken)
{
    LogRecording const log(Severity::Warn);
    NonErrorSeverity const info(Severity::Info);
    NonErrorSeverity const warn(Severity::Warn);
    TString const longText(u'x', 100);
    TString moved = longText;
    TFormatString const incomplete(u"%1");
    Pairs const pairs = {{u"host", u"example"}};
    ErrorInfo error = SomeError();
    {
        NoKeptTextBlocks const noneKept;
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
    EXPECT_KOR_ERROR(LogMessage(warn, incomplete), TFormatString::Exception,
                     "TFormatStringException_AutoGen_0x24F8A094");
    EXPECT_EQ(log.Records().size(), 1u);
}

} // namespace
