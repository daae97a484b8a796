#include "korcoreplatform/main/core/logging/TLogException.h"

#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

namespace {

using namespace TLog;

TLog::NonErrorSeverity const kWarn(TLog::Severity::Warn);
TLog::AnySeverity const kError(TLog::Severity::Error);
constexpr char kWarned[] = "Warn: excp";
constexpr char kFailed[] = "Error: excp [StringException_AutoGen_0xDBED6C12]";

struct HostFailure : std::exception
{
    char const* what() const noexcept override { return "Zo\xC3\xAB"; }
};

TError::ErrorInfo Error()
{
    return {KorErrorsError::AutoGen_0xDBED6C12(), TError::ErrorSource::User, grpc::UNKNOWN};
}

/// Logs the exception in every way; each record must have these texts beside what is given.
template <class Exception>
void ExpectRecords(Exception const& e, TString const& type, TString const& text)
{
    LogRecording const recording;
    Object::Map values{{u"a", Literal::Int(1)}, {u"msg", Literal::String(u"replaced")}};
    try {
        throw e;
    } catch (...) {
        LogCurrentException(kWarn, u"m", values);
        LogCurrentException(kError, u"m", Error(), values);
    }
    constexpr bool isNamed = std::is_base_of_v<std::exception, Exception>;
    if constexpr (isNamed) {
        LogException(kWarn, u"m", e, values);
        LogException(kError, u"m", e, Error(), values);
        LogException(kWarn, u"m", e, Object::Map(values));
        LogException(kError, u"m", e, Error(), std::move(values));
    }
    std::vector<LogRecord> const& records = recording.Records();
    EXPECT_EQ(records.size(), isNamed ? 6u : 2u);
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i].Line(), i % 2 == 0 ? kWarned : kFailed);
        EXPECT_EQ(TLog::Formatter()(*records[i].event.GetValue()),
                  u"{\"a\":1,\"excp-msg\":\"" + text + u"\",\"excp-type\":\"" + type +
                      u"\",\"msg\":\"m\"}");
    }
}

TEST(TLogExceptionTest, ARecordDescribesTheException)
{
    StringException own(TStringCore(u"broken"), Error());
    own.StackMessageFront(TStringCore(u"not read"));
    ExpectRecords(own, u"StringException", u"not read | broken");
    ExpectRecords(std::runtime_error("no"), u"std::runtime_error", u"no");
    ExpectRecords(HostFailure(), u"(anonymous namespace)::HostFailure", u"Zo\\u00eb");
    ExpectRecords(5, u"Unknown-exception-type", u"Unknown exception caught by catch(...)");
}

TEST(TLogExceptionTest, ARefusedSeverityTakesNothing)
{
    LogRecording const recording(TLog::Severity::Error);
    Object::Map values{{u"a", Literal::Int(1)}};
    LogException(kWarn, u"m", std::runtime_error("no"), std::move(values));
    EXPECT_EQ(values.size(), 1u); // NOLINT(bugprone-use-after-move): it was not moved from
    EXPECT_KOR_ERROR(LogCurrentException(kWarn, u"m", {}), LogicException, // asserted in any case
                     "LogicException_LogicAssert_0x8C06D7DE");
    EXPECT_TRUE(recording.Records().empty());
}

} // namespace
