#include "FileComparison.h"

#include "FileBytes.h"
#include "Phase.h"
#include "TextCount.h"

#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/system/TProcessLaunch.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace TextCensus {
namespace {

constexpr std::size_t kMostFiles = 500;
constexpr std::size_t kFilesOfRun = 100; ///< Their names fit into one command line.
constexpr int kDeadlineMs = 30'000;
constexpr std::size_t kMostOutputBytes = 1 << 20;

std::vector<TPath> SampleOf(std::vector<TPath> const& files)
{
    std::size_t const count = std::min(files.size(), kMostFiles);
    std::vector<TPath> sample;
    for (std::size_t i = 0; i < count; ++i) {
        sample.push_back(files[i * files.size() / count]);
    }
    return sample;
}

/// Nothing for a file that cannot be read: the census tells why.
std::optional<TString> OurEncoding(TPath const& path, FileBytes& bytes)
{
    try {
        bytes.Read(path);
        return TString(kEncodingNames[IndexOf(CountText(bytes.Data(), bytes.Size()).encoding)]);
    } catch (KorvelException const&) {
        return std::nullopt;
    } catch (std::system_error const&) {
        return std::nullopt;
    }
}

void LogRun(std::size_t files, TProcessLaunch::Result const& result, TString const& problem)
{
    TLog::Severity const severity =
        problem.isEmpty() ? TLog::Severity::Debug : TLog::Severity::Warn;
    LogMessage(TLog::NonErrorSeverity(severity), u"file-run",
               {{u"files", TString::number(files)},
                {u"pid", TString::number(result.pid)},
                {u"problem", problem},
                {u"complaint", result.ErrorText().trimmed()}});
}

/// What `file` says of each path, in their order; nothing and the problem when it failed.
std::vector<TString> TheirEncodings(std::vector<TPath> const& paths, TString& problem)
{
    std::vector<TString> arguments = {u"--brief", u"--dereference", u"--mime-encoding", u"--"};
    for (TPath const& path : paths) { // "-" alone would be standard input
        arguments.push_back(path == TPath(u"-") ? TString(u"./-") : path.NativeString());
    }
    TProcessLaunch launch(TPath(u"file"), arguments);
    launch.Variable(u"LC_ALL", u"C").Deadline(kDeadlineMs).OutputLimit(kMostOutputBytes);
    TProcessLaunch::Result const result = launch.Run();
    std::vector<TString> lines = result.OutputText().split(u'\n', TString::SkipEmptyParts);
    if (!result.Succeeded()) {
        problem = u"file " + result.Description();
    } else if (lines.size() != paths.size()) {
        problem = TFormat(u"file answered %1 lines for %2 files", lines.size(), paths.size());
    }
    LogRun(paths.size(), result, problem);
    return problem.isEmpty() ? std::move(lines) : std::vector<TString>();
}

bool IsSame(TString const& ours, TString const& theirs)
{
    return ours == theirs || (ours == u"utf-8" && theirs == u"us-ascii");
}

/// Puts what both say together.
class Comparison
{
public:
    void Add(TPath const& path, TString const& ours, TString const& theirs)
    {
        ++m_result.files;
        if (IsSame(ours, theirs)) {
            ++m_result.agreed;
            return;
        }
        Difference& difference = m_differences[{ours, theirs}];
        if (difference.files++ == 0) {
            difference = {ours, theirs, 1, path};
        }
    }

    FileComparison Result(TString const& problem)
    {
        for (auto const& [key, difference] : m_differences) {
            m_result.differences.push_back(difference);
        }
        std::stable_sort(
            m_result.differences.begin(), m_result.differences.end(),
            [](Difference const& a, Difference const& b) { return a.files > b.files; });
        m_result.problem = problem;
        return m_result;
    }

private:
    FileComparison m_result;
    std::map<std::pair<TString, TString>, Difference> m_differences;
};

} // namespace

FileComparison CompareWithFile(std::vector<TPath> const& files)
{
    Phase phase(u"compared-with-file");
    std::vector<TPath> const sample = SampleOf(files);
    Comparison comparison;
    FileBytes bytes;
    TString problem;
    for (std::size_t begin = 0; begin < sample.size() && problem.isEmpty(); begin += kFilesOfRun) {
        std::size_t const end = std::min(begin + kFilesOfRun, sample.size());
        std::vector<TPath> paths;
        std::vector<TString> ours;
        for (std::size_t i = begin; i < end; ++i) {
            if (std::optional<TString> const encoding = OurEncoding(sample[i], bytes)) {
                paths.push_back(sample[i]);
                ours.push_back(*encoding);
            }
        }
        if (paths.empty()) {
            continue;
        }
        std::vector<TString> const theirs = TheirEncodings(paths, problem);
        for (std::size_t i = 0; i < theirs.size(); ++i) {
            comparison.Add(paths[i], ours[i], theirs[i]);
        }
    }
    FileComparison result = comparison.Result(problem);
    phase.Note(u"files", result.files);
    phase.Note(u"agreed", result.agreed);
    return result;
}

} // namespace TextCensus
