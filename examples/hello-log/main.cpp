#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/RotateFileChannel.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <utility>

int main()
{
    auto file = std::make_shared<TLog::SizeRotateFileChannel>(TPath(u"hello.log"), 10); // in MiB
    file->Open(); // hello_2024_03_02_14_03_09.log
    auto logger = std::make_unique<TLog::AsyncLogger>(TLog::Severity::Info, TPath());
    logger->AddChannel(file);
    TLog::Logger::Set(std::move(logger));

    TLog::NonErrorSeverity const info(TLog::Severity::Info);
    LogMessage(info, u"hello");
    LogMessage(info, u"counted", {{u"name", u"Zoë"}, {u"units", TString::number(3)}});
    LogMessage(u"below Info: not written");
    TLog::Logger::Set(nullptr); // waits until what was logged is written
}
