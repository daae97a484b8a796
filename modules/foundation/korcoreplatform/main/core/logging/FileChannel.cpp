#include "korcoreplatform/main/core/logging/FileChannel.h"

#include "korcoreplatform/main/core/files/PathFunctions.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LineBuffer_p.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/string/TFormatString.h"

#include <exception>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace TLog {

FileChannel::FileChannel(std::unique_ptr<LogFile> file)
    : m_file(std::move(file)), m_formatter(std::make_unique<Formatter>())
{}

FileChannel::~FileChannel() = default;

void FileChannel::Append(Severity severity, Event const& event)
{
    Append(AccessLevel::Standard, severity, event);
}

void FileChannel::Append(AccessLevel accessLevel, Severity severity, Event const& event)
{
    if (m_file == nullptr) {
        ++m_formerCounters.lostRecords;
    } else if (!m_file->IsInherited()) {
        m_file->AppendLine(*m_formatter, accessLevel, severity, event);
    }
}

void FileChannel::Flush()
{
    if (m_file != nullptr) {
        m_file->Flush();
    }
}

TPath FileChannel::GetPath() const
{
    return m_file == nullptr ? TPath() : m_file->GetPath();
}

unsigned long FileChannel::GetFileSizeMB() const
{
    // The system is asked itself: at the end of the process the writer outlives Qt's statics.
    struct stat status = {};
    if (m_file == nullptr ||
        ::stat(m_file->GetPath().NativeString().toStdString().c_str(), &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return 0;
    }
    return static_cast<unsigned long>(status.st_size >> 20);
}

ChannelCounters FileChannel::GetCounters() const
{
    ChannelCounters counters = m_formerCounters;
    if (m_file != nullptr) {
        counters.lostRecords += m_file->m_counters.lostRecords;
        counters.bytesWritten += m_file->m_counters.bytesWritten;
    }
    return counters;
}

void FileChannel::SetFile(std::unique_ptr<LogFile> file)
{
    Flush();
    m_formerCounters = GetCounters();
    m_formerVersions = FileVersion() + 1;
    m_file = std::move(file);
}

std::uint64_t FileChannel::FileVersion() const noexcept
{
    return m_formerVersions + (m_file == nullptr ? 0 : m_file->m_version);
}

bool FileChannel::IsFileInherited() const noexcept
{
    return m_file != nullptr && m_file->IsInherited();
}

void FileChannel::AppendOwn(Severity severity, char16_t const* key, TextPairs const& pairs)
{
    FileChannel::Append(AccessLevel::Standard, severity, Event(key, Object::Make(pairs)));
}

void FileChannel::AppendCloseLog() noexcept
{
    try {
        if (m_file != nullptr) {
            AppendOwn(Severity::Info, u"close-log", {{u"path", m_file->GetPath()}});
        }
    } catch (...) {
        // A file without its last record is still a log.
    }
}

std::unique_ptr<FileChannel::LogFile> FileChannel::OpenToAppend(TPath const& path)
{
    return std::make_unique<LogFile>(path, O_WRONLY | O_APPEND | O_CREAT);
}

TPath FileChannel::WithSuffix(TPath const& path, TString const& suffix)
{
    return path.Parent() /
           TPath(TFormat(u"%1_%2.%3", GetFileTitle(path), suffix, path.Extension()));
}

} // namespace TLog
