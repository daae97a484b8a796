#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/tests/support/AllocationCounter.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <unordered_map>

namespace {

/// What an operation of the table allocates when it is not done for the first time.
struct Operation
{
    std::string name;
    std::function<void()> run;
};

TLog::NonErrorSeverity const kInfo(TLog::Severity::Info);
TLog::NonErrorSeverity const kDebug(TLog::Severity::Debug);

std::vector<Operation> Operations()
{
    static TString const s_long(u"a text that lies in a block of its own");
    static TPath const s_folder(u"/usr/share/applications");
    static TPath const s_name(u"mimeinfo.cache");
    static TUUID const s_id = TUUID::CreateUUID();
    return {
        {"text of up to 14 units", [] { TString const text(u"fourteen units"); }},
        {"text of 38 units", [] { TString const text(u"a text that lies in a block of its own"); }},
        {"copy of a text of 38 units", [] { TString const copy(s_long); }},
        {"TFormat, result of up to 14 units", [] { TFormat(u"%1 of %2", 12, 345); }},
        {"TFormat, longer result", [] { TFormat(u"%1 of %2 files in %3", 12, 345, s_long); }},
        {"toUtf8 of 38 units", [] { s_long.toStdString(); }},
        {"join of two paths", [] { s_folder / s_name; }},
        {"UUID to text, 38 units", [] { s_id.ToString(); }},
        {"refused record", [] { LogMessage(kDebug, u"The query was answered by cache"); }},
        {"accepted record, literal message",
         [] { LogMessage(kInfo, u"The query was answered by cache"); }},
        {"accepted record, formatted message",
         [] { LogMessage(kInfo, TFormat(u"%1 of %2 files were answered by cache", 12, 345)); }},
        {"accepted record, 2 pairs",
         [] {
             LogMessage(kInfo, u"query", {{u"source", u"cache"}, {u"rows", u"12"}});
         }},
    };
}

TEST(AllocationTableTest, TheDocumentTellsWhatIsAllocated)
{
    if (!AllocationCounter::IsAvailable()) {
        GTEST_SKIP() << "allocations cannot be counted in this build";
    }
    std::string const document =
        TFile::LoadUtf8File(u"" KOR_PROJECT_FOLDER "/docs/performance.md", false);
    TLog::Logger::Set(std::make_unique<TLog::AsyncLogger>(TLog::Severity::Info, TPath()));
    for (Operation const& operation : Operations()) {
        operation.run();
        NoKeptTextBlocks const noneKept;
        AllocationCounter const counter;
        operation.run();
        std::string const row = "| " + operation.name + " | " + std::to_string(counter.Count()) +
                                " | " + std::to_string(counter.Bytes()) + " |\n";
        EXPECT_NE(document.find(row), std::string::npos) << row;
    }
    TLog::Logger::Set(nullptr);
}

} // namespace
