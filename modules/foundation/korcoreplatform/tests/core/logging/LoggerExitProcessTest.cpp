#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

/// Logs before `main` and after it.
struct EarlyAndLate
{
    EarlyAndLate() { LogMessage(TLog::NonErrorSeverity(TLog::Severity::Fatal), u"early"); }
    ~EarlyAndLate() { LogMessage(u"late"); }
} const s_earlyAndLate;

/// Prints how many records it has when it is destroyed, as one that writes in the background would.
class DrainingLogger : public RecordingLogger
{
public:
    using RecordingLogger::RecordingLogger;
    ~DrainingLogger() override
    {
        LogMessage(u"nobody takes this");
        std::fprintf(stderr, "%zu drained", records.size());
    }
};

TEST(LoggerExitProcessTest, ExitDrainsTheLoggerAfterTheHostsStatics)
{
    auto const run = [] {
        TLog::Logger::Set(std::make_unique<DrainingLogger>(TLog::Severity::Trace));
        LogMessage(u"ordinary");
        std::exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^2 drained$");
}

} // namespace
