#include "korcoreplatform/main/core/logging/RotateFileChannel.h"

#include "korcoreplatform/main/core/logging/TimeText_p.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorvelException.h"

#include <ctime>
#include <utility>

#include <fcntl.h>

using std::chrono::steady_clock;
using std::chrono::system_clock;

namespace TLog {
namespace {

constexpr std::chrono::seconds kBackOff(5);

/// A time at which no rotation can have failed. The steady clock's own zero would not do: it may be
/// the start of the machine, less than five seconds ago.
steady_clock::time_point LongAgo()
{
    return steady_clock::now() - std::chrono::nanoseconds(system_clock::now().time_since_epoch());
}

} // namespace

RotateFileChannel::RotateFileChannel(TPath const& path)
    : FileChannel(nullptr), m_basePath(path), m_openTime(steady_clock::now()),
      m_backOffMark(LongAgo())
{}

RotateFileChannel::~RotateFileChannel()
{
    AppendCloseLog();
}

void RotateFileChannel::Open()
{
    SteadyTime const now = GetTimestamp();
    SetFile(OpenFile(now));
    m_openTime = now;
    AppendOwn(Severity::Info, u"open-log", {{u"path", GetPath()}});
}

RotateFileChannel::SteadyTime RotateFileChannel::GetTimestamp() const
{
    return steady_clock::now();
}

bool RotateFileChannel::Rotate()
{
    return DoRotate();
}

std::unique_ptr<FileChannel::LogFile> RotateFileChannel::OpenFile(SteadyTime time) const
{
    return OpenToAppend(PathAt(time));
}

void RotateFileChannel::Append(AccessLevel accessLevel, Severity severity, Event const& event)
{
    if (IsFileInherited()) {
        return; // a child's rotation would leave a file behind
    }
    if (ShouldRotate() && BackOffTimeCompleted()) {
        Rotate();
    }
    FileChannel::Append(accessLevel, severity, event);
}

bool RotateFileChannel::ShouldBackOff() const
{
    return !BackOffTimeCompleted();
}

bool RotateFileChannel::BackOffTimeCompleted() const
{
    return GetTimestamp() - m_backOffMark > kBackOff;
}

bool RotateFileChannel::DoRotate()
{
    SteadyTime const now = GetTimestamp();
    std::unique_ptr<LogFile> next;
    try {
        next = OpenFile(now);
    } catch (KorvelException const& e) {
        m_backOffMark = now;
        AppendOwn(Severity::Error, u"rotate-log-failed", {{u"msg", e.GetConcatenatedMessages()}});
        return false;
    }
    TextPairs const paths = {{u"old-path", GetPath()}, {u"new-path", next->GetPath()}};
    AppendOwn(Severity::Info, u"rotate-log", paths);
    SetFile(std::move(next));
    m_openTime = now;
    AppendOwn(Severity::Info, u"rotate-log", paths);
    m_backOffMark = LongAgo();
    return true;
}

TString RotateFileChannel::FormatTimestamp(SteadyTime time) const
{
    auto const distance =
        std::chrono::duration_cast<system_clock::duration>(time - steady_clock::now());
    std::time_t const wallTime = system_clock::to_time_t(system_clock::now() + distance);
    std::tm const parts = LocalTime(wallTime);
    TFormatString format(u"%1_%2_%3_%4_%5_%6");
    format.arg(parts.tm_year + 1900, 4, 10, u'0');
    for (int const part :
         {parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec}) {
        format.arg(part, 2, 10, u'0');
    }
    return format.result();
}

TPath RotateFileChannel::PathAt(SteadyTime time) const
{
    return WithSuffix(m_basePath, FormatTimestamp(time));
}

SizeRotateFileChannel::SizeRotateFileChannel(TPath const& path, unsigned long maxSizeMB)
    : RotateFileChannel(path), m_maxSizeMB(maxSizeMB), m_isFull(maxSizeMB == 0)
{}

SizeRotateFileChannel::~SizeRotateFileChannel() = default;

bool SizeRotateFileChannel::ShouldRotate() const
{
    std::uint64_t const version = FileVersion();
    if (version != m_measuredVersion) {
        m_isFull = GetFileSizeMB() >= m_maxSizeMB;
        m_measuredVersion = version;
    }
    return m_isFull;
}

/// Several files may fill up in one second. One of them that is closed again is not locked, and to
/// go on with it would let it grow beyond the limit.
std::unique_ptr<FileChannel::LogFile> SizeRotateFileChannel::OpenFile(SteadyTime time) const
{
    return std::make_unique<LogFile>(PathAt(time), O_WRONLY | O_APPEND | O_CREAT | O_EXCL);
}

TimeRotateFileChannel::TimeRotateFileChannel(TPath const& path, std::chrono::seconds maxAge)
    : RotateFileChannel(path), m_maxAge(maxAge)
{}

TimeRotateFileChannel::~TimeRotateFileChannel() = default;

bool TimeRotateFileChannel::ShouldRotate() const
{
    return GetTimestamp() - OpenTime() >= m_maxAge;
}

} // namespace TLog
