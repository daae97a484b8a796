#include "Logging.h"

#include "Grouped.h"
#include "Options.h"
#include "Output.h"
#include "Session.h"

#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/RotateFileChannel.h"
#include "korcoreplatform/main/core/logging/StandardErrorChannel.h"
#include "korcoreplatform/main/core/runtime/CorePlatformOptions.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

namespace TextCensus {
namespace {

constexpr unsigned long kMaxFileMB = 64;
constexpr std::chrono::seconds kMaxUnflushedAge(1);
constexpr int kFinishMs = 10'000;

std::shared_ptr<TLog::SizeRotateFileChannel> OpenLogFile(TPath const& folder)
{
    std::error_code ignored; // opening the file tells
    std::filesystem::create_directories(folder.NativeString().toStdString(), ignored);
    auto file =
        std::make_shared<TLog::SizeRotateFileChannel>(folder / u"textcensus.log", kMaxFileMB);
    file->Open();
    return file;
}

TLog::Severity MinimalSeverity(Options const& options)
{
    if (options.verbose) {
        return TLog::Severity::Debug;
    }
    return options.logFolder.IsEmpty() ? TLog::Severity::Warn : TLog::Severity::Info;
}

std::unique_ptr<TLog::AsyncLogger> MakeLogger(Options const& options)
{
    try {
        return std::make_unique<TLog::AsyncLogger>(MinimalSeverity(options), options.logConfig);
    } catch (KorvelException& failure) {
        failure.StackMessageFront(TFormat(u"%1 cannot configure the log", options.logConfig));
        throw;
    }
}

} // namespace

Logging::Logging(Options const& options)
{
    if (!options.IsLogging()) {
        return;
    }
    InstallSessions();
    TLog::SetLoggingContextEnabled(true);
    CorePlatformOptions::SetIsSeverityPerLogDetailOn([] { return true; });

    std::unique_ptr<TLog::AsyncLogger> logger = MakeLogger(options);
    if (options.logFolder.IsEmpty()) {
        logger->AddChannel(std::make_shared<TLog::StandardErrorChannel>());
    } else {
        m_file = OpenLogFile(options.logFolder);
        logger->AddChannel(m_file);
        logger->SetMaximumUnflushedAge(kMaxUnflushedAge);
    }
    m_logger = logger.get();
    TLog::Logger::Set(std::move(logger));
    m_logger->LogStartupProblems();
}

Logging::~Logging()
{
    TLog::Logger::Set(nullptr);
}

void Logging::Finish()
{
    if (m_file == nullptr) {
        TLog::Logger::Set(nullptr);
        return;
    }
    m_logger->FlushAndWait(kFinishMs); // what it wrote is counted then
    TLog::AsyncLogger::Counters const counters = m_logger->GetCounters();
    TLog::Logger::Set(nullptr);
    WriteToStandardError(TFormat(u"textcensus: %1 records logged, %2 lost; to read them:\n"
                                 u"  jq -c '[.ts, .sev, .ctx.worker, .k, .v]' '%3'\n",
                                 Grouped(counters.written), Grouped(counters.lost),
                                 m_file->GetPath()));
    m_file.reset(); // closes it
}

} // namespace TextCensus
