#include "FileWalk.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/files/TDirectory.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/system/TElapsedTimer.h"
#include "korsys/main/error/KorvelException.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace TextCensus {
namespace {

/// Unlike `PathExists`, follows links: one to nowhere leads nowhere too.
bool LeadsSomewhere(TPath const& path)
{
    std::error_code error;
    return std::filesystem::exists(path.NativeString().toStdString(), error);
}

void LogFolder(TPath const& folder, std::uint64_t entries, TElapsedTimer const& timer)
{
    if (LoggerAcceptsSeverity(TLog::Severity::Debug, LogDetail::ListFilesTimings)) {
        LogMessage(LogDetail::ListFilesTimings, TLog::NonErrorSeverity(TLog::Severity::Debug),
                   u"folder-listed",
                   {{u"path", folder},
                    {u"entries", TString::number(entries)},
                    {u"milliseconds", TString::number(timer.ElapsedMsec(), 'f', 3)}});
    }
}

/// Walks without recursion: the depth of a tree of folders costs no stack.
class Walk
{
public:
    explicit Walk(std::function<void(std::size_t)> const& onProgress) : m_onProgress(onProgress) {}

    void AddRoot(TPath const& root);
    FileList TakeResult();

private:
    void AddPendingFolders();
    void AddFolder(TPath const& folder);
    void AddEntry(TPath const& entry);

    FileList m_result;
    std::vector<TPath> m_pendingFolders;
    std::function<void(std::size_t)> const& m_onProgress;
};

void Walk::AddRoot(TPath const& root)
{
    if (IsDirectory(root, true)) {
        m_pendingFolders.push_back(root);
        AddPendingFolders();
    } else if (IsRegularFile(root, true) || !LeadsSomewhere(root)) {
        m_result.files.push_back(root);
    } else {
        AddUnreadable(m_result.unreadable, root, u"Not a regular file");
    }
}

FileList Walk::TakeResult()
{
    std::sort(m_result.files.begin(), m_result.files.end());
    return std::move(m_result);
}

void Walk::AddPendingFolders()
{
    while (!m_pendingFolders.empty()) {
        TPath const folder = std::move(m_pendingFolders.back());
        m_pendingFolders.pop_back();
        AddFolder(folder);
        m_onProgress(m_result.files.size());
    }
}

void Walk::AddFolder(TPath const& folder)
{
    TElapsedTimer const timer(true);
    std::uint64_t entries = 0;
    try {
        for (TPath const& entry : TDirectory(folder)) {
            AddEntry(entry);
            ++entries;
        }
        LogFolder(folder, entries, timer);
    } catch (TDirectory::Exception const& failure) {
        AddUnreadable(m_result.unreadable, folder, failure);
    }
}

void Walk::AddEntry(TPath const& entry)
{
    try {
        if (IsRegularFile(entry, true) || !LeadsSomewhere(entry)) {
            m_result.files.push_back(entry);
        } else if (IsDirectory(entry, true) && !IsSymlink(entry)) {
            m_pendingFolders.push_back(entry);
        } else {
            ++m_result.skipped;
        }
    } catch (TPath::Exception const& failure) { // gone meanwhile
        AddUnreadable(m_result.unreadable, entry, failure);
    }
}

} // namespace

FileList ListFiles(std::vector<TPath> const& roots,
                   std::function<void(std::size_t)> const& onProgress)
{
    Walk walk(onProgress);
    for (TPath const& root : roots) {
        walk.AddRoot(root);
    }
    return walk.TakeResult();
}

} // namespace TextCensus
