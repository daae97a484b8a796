// textcensus: counts the text in files and below folders. See Options.cpp for its command line.

#include "FileBytes.h"
#include "FileWalk.h"
#include "JsonReport.h"
#include "Options.h"
#include "Output.h"
#include "Paths.h"
#include "ProgressBar.h"
#include "TableReport.h"
#include "TextCount.h"
#include "Totals.h"

#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

namespace TextCensus {
namespace {

namespace fs = std::filesystem;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

void Complain(TString const& what)
{
    WriteToStandardError(TFormat(u"textcensus: %1\n", what));
}

/// Adds the file to the totals, to the unreadable ones if that is what it is.
void CountFile(fs::path const& path, FileBytes& bytes, Totals& totals)
{
    TString reason;
    try {
        reason = bytes.Read(path);
        if (reason.isEmpty()) {
            totals.Add(TextOf(path), CountText(bytes.Data(), bytes.Size()));
        }
    } catch (std::bad_alloc const&) {
        reason = u"Not enough memory for it";
    } catch (KorvelException const& failure) {
        reason = failure.GetMessagesFront();
    }
    if (!reason.isEmpty()) {
        totals.unreadable.push_back({TextOf(path), reason});
    }
}

Totals TakeCensus(std::vector<fs::path> const& roots)
{
    ProgressBar progress;
    FileList list =
        ListFiles(roots, [&progress](std::size_t found) { progress.ShowListing(found); });

    Totals totals;
    totals.unreadable = std::move(list.unreadable);
    totals.skipped = list.skipped;
    FileBytes bytes;
    std::size_t done = 0;
    for (fs::path const& path : list.files) {
        progress.ShowCounting(done++, list.files.size(), totals.all.bytes);
        CountFile(path, bytes, totals);
    }
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

int Run(int argc, char const* const* argv)
{
    CommandLine const commandLine = ReadCommandLine(argc, argv);
    Options const& options = commandLine.options;
    if (!commandLine.problem.isEmpty()) {
        Complain(commandLine.problem);
        WriteToStandardError(UsageLine());
        return kWrongUsage;
    }
    if (options.help) {
        return WriteReport(HelpText());
    }
    Totals const totals = TakeCensus(options.roots);
    int const status = WriteReport(options.json ? JsonReport(totals) : TableReport(totals));
    return totals.unreadable.empty() ? status : kFailure;
}

} // namespace
} // namespace TextCensus

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that leaves shows as a failed write
    try {
        return TextCensus::Run(argc, argv);
    } catch (std::exception const& failure) {
        TextCensus::Complain(TString::fromUtf8(failure.what()));
        return TextCensus::kFailure;
    }
}
