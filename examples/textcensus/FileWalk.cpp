#include "FileWalk.h"

#include "Paths.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace TextCensus {
namespace {

namespace fs = std::filesystem;

/// Walks without recursion: the depth of a tree of folders costs no stack.
class Walk
{
public:
    explicit Walk(std::function<void(std::size_t)> const& onProgress) : m_onProgress(onProgress) {}

    void AddRoot(fs::path const& root);
    FileList TakeResult();

private:
    void AddPendingFolders();
    void AddFolder(fs::path const& folder);
    void AddEntry(fs::directory_entry const& entry);
    void AddLink(fs::path const& link);
    void AddUnreadable(fs::path const& path, TString const& reason);
    void AddUnreadable(fs::path const& path, std::error_code const& error);

    FileList m_result;
    std::vector<fs::path> m_pendingFolders;
    std::function<void(std::size_t)> const& m_onProgress;
};

void Walk::AddRoot(fs::path const& root)
{
    std::error_code error;
    fs::file_status const status = fs::status(root, error);
    if (fs::is_directory(status)) {
        m_pendingFolders.push_back(root);
        AddPendingFolders();
    } else if (fs::is_regular_file(status)) {
        m_result.files.push_back(root);
    } else if (error) {
        AddUnreadable(root, error);
    } else {
        AddUnreadable(root, u"Not a regular file");
    }
}

FileList Walk::TakeResult()
{
    std::sort(m_result.files.begin(), m_result.files.end(),
              [](fs::path const& a, fs::path const& b) { return a.native() < b.native(); });
    return std::move(m_result);
}

void Walk::AddPendingFolders()
{
    while (!m_pendingFolders.empty()) {
        fs::path const folder = std::move(m_pendingFolders.back());
        m_pendingFolders.pop_back();
        AddFolder(folder);
        m_onProgress(m_result.files.size());
    }
}

void Walk::AddFolder(fs::path const& folder)
{
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    // An iterator that fails becomes the end.
    while (!error && entry != fs::directory_iterator()) {
        AddEntry(*entry);
        entry.increment(error);
    }
    if (error) {
        AddUnreadable(folder, error);
    }
}

void Walk::AddEntry(fs::directory_entry const& entry)
{
    std::error_code error;
    fs::file_status const status = entry.symlink_status(error);
    if (fs::is_regular_file(status)) {
        m_result.files.push_back(entry.path());
    } else if (fs::is_directory(status)) {
        m_pendingFolders.push_back(entry.path());
    } else if (fs::is_symlink(status)) {
        AddLink(entry.path());
    } else if (error) {
        AddUnreadable(entry.path(), error);
    } else {
        ++m_result.skipped;
    }
}

void Walk::AddLink(fs::path const& link)
{
    std::error_code error;
    fs::file_status const target = fs::status(link, error);
    if (fs::is_regular_file(target)) {
        m_result.files.push_back(link);
    } else if (error) {
        AddUnreadable(link, error);
    } else {
        ++m_result.skipped;
    }
}

void Walk::AddUnreadable(fs::path const& path, TString const& reason)
{
    m_result.unreadable.push_back({TextOf(path), reason});
}

void Walk::AddUnreadable(fs::path const& path, std::error_code const& error)
{
    AddUnreadable(path, TString::fromStdString(error.message()));
}

} // namespace

FileList ListFiles(std::vector<fs::path> const& roots,
                   std::function<void(std::size_t)> const& onProgress)
{
    Walk walk(onProgress);
    for (fs::path const& root : roots) {
        walk.AddRoot(root);
    }
    return walk.TakeResult();
}

} // namespace TextCensus
