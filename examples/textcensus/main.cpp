// textcensus: counts the text in files and below folders. See Options.cpp for its command line.

#include "Census.h"
#include "FileComparison.h"
#include "FileCount.h"
#include "FileWalk.h"
#include "JsonReport.h"
#include "LastRoots.h"
#include "Logging.h"
#include "Options.h"
#include "Output.h"
#include "Phase.h"
#include "ProgressBar.h"
#include "TableReport.h"
#include "Totals.h"
#include "Unreadable.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/system/TSystem.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <exception>
#include <optional>
#include <system_error>
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

FileList FindFiles(std::vector<TPath> const& roots, ProgressBar& progress)
{
    Phase phase(u"files-listed");
    FileList list =
        ListFiles(roots, [&progress](std::size_t found) { progress.ShowListing(found); });
    phase.Note(u"files", list.files.size());
    phase.Note(u"skipped", list.skipped);
    phase.Note(u"unreadable", list.unreadable.size());
    return list;
}

Census TakeCensus(Options const& options)
{
    ProgressBar progress(!options.IsLogOnStandardError());
    FileList list = FindFiles(options.roots, progress);
    TString const roots = TString::join({options.roots.begin(), options.roots.end()}, u' ');
    Totals totals = CountFiles(list.files, options.jobs, roots, [&](Progress const& done) {
        progress.ShowCounting(done.files, list.files.size(), done.bytes);
    });
    std::vector<Unreadable>& unreadable = totals.unreadable;
    unreadable.insert(unreadable.end(), list.unreadable.begin(), list.unreadable.end());
    std::sort(unreadable.begin(), unreadable.end(),
              [](Unreadable const& a, Unreadable const& b) { return a.path < b.path; });
    totals.skipped = list.skipped;
    Census census{std::move(totals), std::nullopt};
    if (options.compareWithFile) {
        census.comparison = CompareWithFile(list.files);
    }
    return census;
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

int ReportCensus(Options const& options)
{
    Census const census = TakeCensus(options);
    int const status = WriteReport(options.json ? JsonReport(census) : TableReport(census));
    return census.totals.unreadable.empty() ? status : kFailure;
}

void LogMachine()
{
    TSystem::ProcessorInfo const processor = TSystem::Processor();
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), u"machine",
               {{u"computer", TSystem::ComputerFullName()},
                {u"processor", processor.name},
                {u"megahertz", TString::number(processor.frequencyMHz)},
                {u"processors", TString::number(processor.logicalProcessors)},
                {u"architecture", TSystem::OSArchitectureType()},
                {u"addresses", TSystem::MacAddresses()}});
}

int Run(std::vector<TString> const& arguments)
{
    CommandLine commandLine = ReadCommandLine(arguments);
    Options& options = commandLine.options;
    if (!commandLine.problem.isEmpty()) {
        return RefuseUsage(commandLine.problem);
    }
    if (options.help) {
        return WriteReport(HelpText());
    }
    OpenSettings();
    if (options.again) {
        options.roots = LastRoots();
        if (options.roots.empty()) {
            return RefuseUsage(u"there was no run before");
        }
    }
    KeepRoots(options.roots);
    std::optional<Logging> logging;
    try {
        logging.emplace(options);
    } catch (KorvelException const& failure) {
        return RefuseUsage(failure.CollateMessagesForLog());
    }
    LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info), u"census-started",
               {{u"arguments", TString::join(arguments, u' ')}});
    LogMachine();
    int const status = ReportCensus(options);
    logging->Finish();
    return status;
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
