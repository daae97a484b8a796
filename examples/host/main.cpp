// What a host does at its start, for each piece of work, and at its end. The first argument is the
// folder of the log, the others are files, each of which a thread reads in a session of its own.

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/LoggingContext.h"
#include "korcoreplatform/main/core/logging/QtMessageBridge.h"
#include "korcoreplatform/main/core/logging/RotateFileChannel.h"
#include "korcoreplatform/main/core/logging/TLogException.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/SessionScope.h"
#include "korcoreplatform/main/core/system/TSettings.h"
#include "korcoreplatform/main/string/TString.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

TLog::NonErrorSeverity const kInfo(TLog::Severity::Info);
TLog::NonErrorSeverity const kWarn(TLog::Severity::Warn);

void StartLog(TPath const& folder)
{
    bool const isVerbose = TSettings::GetBoolValue(TSettings::Debug, u"Verbose", false);
    auto file = std::make_shared<TLog::SizeRotateFileChannel>(folder / u"host.log", 64); // MiB
    file->Open(); // throws when it cannot
    auto logger = std::make_unique<TLog::AsyncLogger>(
        isVerbose ? TLog::Severity::Debug : TLog::Severity::Info, TPath());
    logger->AddChannel(file);
    logger->SetMaximumUnflushedAge(std::chrono::seconds(1));
    TLog::Logger::Set(std::move(logger));
    TLog::SetLoggingContextEnabled(true);
}

void Work(TString const& path)
{
    try {
        OwnedSession const session;
        SessionScope const scope(session.Id());
        using Texts = std::unordered_map<TString, TString>;
        CoreThreadContextUtils::SetLoggingContext(std::make_shared<Texts>(Texts{{u"path", path}}));
        try {
            TString const text = LoadXMLFile(path, false);
            LogMessage(kInfo, u"read", {{u"units", TString::number(text.length())}});
        } catch (...) { // logged with the context
            TLog::LogCurrentException(kWarn, u"not-read", {});
        }
    } catch (...) {
        TLog::LogCurrentException(kWarn, u"no session", {});
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        TSettings::Configure(u"korcoreplatform", u"host", TString()); // before anything is read
        SessionScope::InstallHooks();                                 // before there are threads
        StartLog(argc > 1 ? TPath(TString(argv[1])) : CurrentPath());
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    {
        TLog::QtMessageBridge const bridge;
        std::vector<std::thread> threads;
        for (int i = 2; i < argc; ++i) {
            threads.emplace_back(Work, TString(argv[i]));
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        LogMessage(kInfo, u"done");
    }
    TLog::Logger::Set(nullptr); // waits until what was logged is written
}
