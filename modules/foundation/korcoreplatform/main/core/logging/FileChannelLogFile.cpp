#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LineBuffer_p.h"
#include "korcoreplatform/main/core/logging/WriteAll_p.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/system/TSystemCore.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TLog {
namespace {

constexpr int kMaxNames = 100;
constexpr ::mode_t kPermissions = 0666;

/// Repeats a system call that a signal interrupts.
template <class Call>
int Retry(Call const& call)
{
    int result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

[[noreturn]] void ThrowNotOpened(TPath const& path, int error)
{
    if (error == 0) {
        ThrowError<KorvelException>(TFormat(u"logfile %1 is already locked", path),
                                    &KorErrorsError::AutoGen_0x96B9ECEF);
    }
    ThrowError<KorvelException>(TFormat(u"Creating logfile %1 failed with error %2", path, error),
                                &KorErrorsError::AutoGen_0x98E57943);
}

} // namespace

FileChannel::LogFile::LogFile(TPath const& path, int openFlags)
    : m_path(path), m_processId(TSystemCore::ProcessID()), m_buffer(std::make_unique<LineBuffer>())
{
    m_buffer->Reserve(kBufferBytes);
    for (int i = 1; !TryOpen(m_path, openFlags); ++i) {
        if (i == kMaxNames) {
            ThrowNotOpened(m_path, m_openError);
        }
        m_path = WithSuffix(path, TString::number(i));
    }
}

FileChannel::LogFile::~LogFile()
{
    Flush();
    ::close(m_descriptor); // releases the lock, unless a process that is a fork has it as well
}

/// Emptying waits for the lock: a file that is locked is another's.
bool FileChannel::LogFile::TryOpen(TPath const& path, int openFlags)
{
    std::string const name = path.NativeString().toStdString();
    int const flags = (openFlags & ~O_TRUNC) | O_CLOEXEC;
    int const descriptor = Retry([&] { return ::open(name.c_str(), flags, kPermissions); });
    if (descriptor < 0) {
        m_openError = errno;
        return false;
    }
    if (Retry([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) < 0) {
        m_openError = 0;
        ::close(descriptor);
        return false;
    }
    m_descriptor = descriptor;
    if ((openFlags & O_TRUNC) != 0) {
        Truncate();
    }
    return true;
}

bool FileChannel::LogFile::IsInherited() const noexcept
{
    return m_processId != TSystemCore::ProcessID();
}

void FileChannel::LogFile::Write(void const* data, std::size_t size)
{
    std::string_view const bytes(static_cast<char const*>(data), size);
    if (kBufferBytes - m_buffer->Size() < size) {
        Flush();
    }
    if (size > kBufferBytes) {
        WriteOut(bytes);
    } else {
        m_buffer->Append(bytes);
    }
}

void FileChannel::LogFile::WriteRaw(void const* data, std::size_t size)
{
    WriteOut({static_cast<char const*>(data), static_cast<std::uint32_t>(size)});
}

void FileChannel::LogFile::Flush()
{
    WriteOut(m_buffer->View());
    m_buffer->Truncate(0);
}

void FileChannel::LogFile::Truncate()
{
    m_buffer->Truncate(0);
    if (!IsInherited()) {
        static_cast<void>(Retry([this] { return ::ftruncate(m_descriptor, 0); }));
        static_cast<void>(::lseek(m_descriptor, 0, SEEK_SET)); // matters without O_APPEND
        ++m_version;
    }
}

/// What `Write` does with the bytes of the line, without another copy of them.
void FileChannel::LogFile::AppendLine(Formatter& formatter, AccessLevel accessLevel,
                                      Severity severity, Event const& event)
{
    std::size_t const lineStart = m_buffer->Size();
    formatter.AppendLine(*m_buffer, accessLevel, severity, event);
    if (m_buffer->Size() > kBufferBytes) {
        WriteOutBefore(lineStart);
    }
}

void FileChannel::LogFile::WriteOutBefore(std::size_t lineStart)
{
    WriteOut(m_buffer->View().substr(0, lineStart));
    std::string_view const line = m_buffer->View().substr(lineStart);
    m_buffer->Truncate(0);
    if (line.size() > kBufferBytes) {
        WriteOut(line);
        *m_buffer = LineBuffer(); // one huge line is no reason to keep its memory
    } else {
        char* const to = m_buffer->Reserve(line.size()); // which is there: nothing moves
        std::memmove(to, line.data(), line.size());
        m_buffer->Commit(to + line.size());
    }
}

void FileChannel::LogFile::WriteOut(std::string_view bytes)
{
    if (bytes.empty() || IsInherited()) {
        return;
    }
    ++m_version;
    std::size_t written = WriteAll(m_descriptor, bytes);
    if (written < bytes.size()) {
        std::string_view const lost = bytes.substr(written);
        m_counters.lostRecords += static_cast<std::uint64_t>(
            std::count(lost.begin(), lost.end(), '\n') + (lost.back() != '\n'));
        std::size_t const torn = written - (bytes.substr(0, written).rfind('\n') + 1);
        if (torn != 0 && CutBack(torn)) {
            written -= torn;
        }
    }
    m_counters.bytesWritten += written;
}

/// Takes back the last `size` bytes that were written, if they are the end of the file.
bool FileChannel::LogFile::CutBack(std::size_t size)
{
    struct stat status;
    ::off_t const end = ::lseek(m_descriptor, 0, SEEK_CUR);
    if (end < 0 || ::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size != end) {
        return false;
    }
    ::off_t const whole = end - static_cast<::off_t>(size);
    return Retry([&] { return ::ftruncate(m_descriptor, whole); }) == 0 &&
           ::lseek(m_descriptor, whole, SEEK_SET) == whole;
}

} // namespace TLog
