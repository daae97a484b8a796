// textcensus: counts the text in files and below folders. See Options.cpp for its command line.

#include "FileBytes.h"
#include "FileWalk.h"
#include "JsonReport.h"
#include "Logging.h"
#include "Options.h"
#include "Output.h"
#include "ProgressBar.h"
#include "TableReport.h"
#include "TextCount.h"
#include "Totals.h"
#include "Unreadable.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <exception>
#include <new>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace TextCensus {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

void Complain(TString const& what)
{
    WriteToStandardError(TFormat(u"textcensus: %1\n", what));
}

void LogInfo(char16_t const* key, std::unordered_map<TString, TString> const& pairs)
{
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), key, pairs);
}

TString Milliseconds(TElapsedTimer const& timer)
{
    return TString::number(timer.ElapsedMsec(), 'f', 3);
}

/// Adds the file to the totals, to the unreadable ones if that is what it is.
void CountFile(TPath const& path, FileBytes& bytes, Totals& totals)
{
    try {
        bytes.Read(path);
        totals.Add(path, CountText(bytes.Data(), bytes.Size()));
    } catch (KorvelException const& failure) {
        AddUnreadable(totals.unreadable, path, failure);
    } catch (std::system_error const& failure) {
        AddUnreadable(totals.unreadable, path, TString::fromUtf8(failure.what()));
    } catch (std::bad_alloc const&) {
        AddUnreadable(totals.unreadable, path, u"Not enough memory for it");
    }
}

FileList FindFiles(std::vector<TPath> const& roots, ProgressBar& progress)
{
    TElapsedTimer const timer(true);
    FileList list =
        ListFiles(roots, [&progress](std::size_t found) { progress.ShowListing(found); });
    LogInfo(u"files-listed", {{u"files", TString::number(list.files.size())},
                              {u"skipped", TString::number(list.skipped)},
                              {u"unreadable", TString::number(list.unreadable.size())},
                              {u"milliseconds", Milliseconds(timer)}});
    return list;
}

void CountFiles(std::vector<TPath> const& files, ProgressBar& progress, Totals& totals)
{
    TElapsedTimer const timer(true);
    FileBytes bytes;
    std::size_t done = 0;
    for (TPath const& path : files) {
        progress.ShowCounting(done++, files.size(), totals.all.bytes);
        CountFile(path, bytes, totals);
    }
    LogInfo(u"files-counted", {{u"files", TString::number(totals.all.files)},
                               {u"bytes", TString::number(totals.all.bytes)},
                               {u"code-units", TString::number(totals.all.codeUnits)},
                               {u"lines", TString::number(totals.all.lines)},
                               {u"unreadable", TString::number(totals.unreadable.size())},
                               {u"milliseconds", Milliseconds(timer)}});
}

Totals TakeCensus(Options const& options)
{
    ProgressBar progress(!options.IsLogging());
    FileList list = FindFiles(options.roots, progress);
    Totals totals;
    totals.unreadable = std::move(list.unreadable);
    totals.skipped = list.skipped;
    CountFiles(list.files, progress, totals);
    std::sort(totals.unreadable.begin(), totals.unreadable.end(),
              [](Unreadable const& a, Unreadable const& b) { return a.path < b.path; });
    return totals;
}

/// Nobody reading on is no reason to complain; it still is a failure.
int WriteReport(TString const& report)
{
    int const error = WriteToStandardOutput(report);
    if (error != 0 && error != EPIPE) {
        Complain(TFormat(u"the report could not be written: %1",
                         TString::fromStdString(std::generic_category().message(error))));
    }
    return error == 0 ? kSuccess : kFailure;
}

int RefuseUsage(TString const& problem)
{
    Complain(problem);
    WriteToStandardError(UsageLine());
    return kWrongUsage;
}

int Run(std::vector<TString> const& arguments)
{
    CommandLine const commandLine = ReadCommandLine(arguments);
    Options const& options = commandLine.options;
    if (!commandLine.problem.isEmpty()) {
        return RefuseUsage(commandLine.problem);
    }
    if (options.help) {
        return WriteReport(HelpText());
    }
    try {
        StartLogging(options);
    } catch (KorvelException const& failure) {
        return RefuseUsage(TFormat(u"%1: %2", options.logConfig, failure.GetMessagesFront()));
    }
    LogInfo(u"census-started", {{u"arguments", TString::join(arguments, u' ')}});
    Totals const totals = TakeCensus(options);
    int const status = WriteReport(options.json ? JsonReport(totals) : TableReport(totals));
    return totals.unreadable.empty() ? status : kFailure;
}

} // namespace
} // namespace TextCensus

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that leaves shows as a failed write
    try {
        std::vector<TString> arguments;
        for (int i = 1; i < argc; ++i) {
            arguments.push_back(TString::fromUtf8(argv[i]));
        }
        return TextCensus::Run(arguments);
    } catch (std::exception const& failure) {
        TextCensus::Complain(TString::fromUtf8(failure.what()));
        return TextCensus::kFailure;
    }
}
