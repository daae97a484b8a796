#include "korcoreplatform/main/core/files/TFile.h"

#include "korcoreplatform/main/core/files/PathText_p.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/LoggingStackWalker.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/text/TFormatStringCore.h"

#include <QFile>
#include <QString>

#include <chrono>
#include <thread>
#include <utility>

using TLog::Severity;

namespace {

constexpr int kFlushWaitMs = 500;

QString NativeName(TPath const& path)
{
    return path.NativeString().toQString();
}

/// Refuses names that hold a zero.
class Device : public QFile
{
public:
    using QFile::QFile;

    bool open(OpenMode mode) override
    {
        if (PathText::HoldsZero(TString(fileName()))) {
            setErrorString(QLatin1String(PathText::kZeroInName));
            return false;
        }
        return QFile::open(mode);
    }
};

QIODevice::OpenMode DeviceMode(TIO::OpenMode mode)
{
    return QIODevice::OpenMode(static_cast<int>(mode));
}

void LogOpenError(TPath const& path, TString const& error)
{
    if (!OptLogStackOnFileError::GetLogStackOnFileError() ||
        !LoggerAcceptsSeverity(Severity::Warn, LogDetail::Count)) {
        return;
    }
    TLog::Object::Map values = CaptureStackTraceForLogging(true);
    values[u"filename"] = TLog::Literal::String(TString(path));
    values[u"error"] = TLog::Literal::String(error);
    TLog::Event event(u"file-open-error", TLog::Object::Make(std::move(values)));
    (*TLog::Logger::Get())->Log(Severity::Warn, std::move(event));
}

[[noreturn]] void ThrowReadError(long long answer)
{
    TFormatString format(u"IO error, attempting to read %1 bytes from file. (error=%2)");
    format.arg(static_cast<int>(answer));
    // The core form renders the marker without a parameter as it stands; `result` would throw.
    TStringCore const message = static_cast<TFormatStringCore>(format).result();
    ThrowError<TIO::Exception>(TString(message), &KorErrorsError::TFile_0x47B61D6A,
                               TError::ErrorSource::System);
}

[[noreturn]] void GiveUpFlushing(TFile const& file)
{
    TString const message =
        TFormat(u"Unable to flush \"%1\" afer exhausting all retries.  Giving up.", file.Path());
    LogMessage(TLog::AnySeverity(Severity::Error), message,
               TError::ErrorInfo(KorErrorsError::AutoGen_0xB5B83DCB(), TError::ErrorSource::System,
                                 grpc::UNKNOWN));
    ThrowError<KorvelException>(message, &KorErrorsError::AutoGen_0xB5B83DCB,
                                TError::ErrorSource::System);
}

} // namespace

TFile::TFile() : m_file(std::make_unique<Device>(QString())) {}

TFile::TFile(TPath const& path) : m_file(std::make_unique<Device>(NativeName(path))) {}

TFile::TFile(TPath const& path, OpenMode mode) : TFile(path)
{
    if (!m_file->open(DeviceMode(mode))) {
        TString const error = m_file->errorString();
        LogOpenError(path, error);
        ThrowError<Exception>(TFormat(u"Unable to open file '%1': %2", path, error),
                              &KorErrorsError::AutoGen_0x3DE8E9E4);
    }
}

TFile::~TFile() = default;

void TFile::Close()
{
    m_file->close();
}

bool TFile::Flush()
{
    return m_file->flush();
}

QIODevice* TFile::GetQIODevice()
{
    return m_file.get();
}

bool TFile::IsOpen() const
{
    return m_file->isOpen();
}

bool TFile::Open(OpenMode mode)
{
    if (!m_file->open(DeviceMode(mode))) {
        ThrowError<Exception>(TString(m_file->errorString()), &KorErrorsError::AutoGen_0x3470DA84);
    }
    return true;
}

bool TFile::Open(TPath const& path, OpenMode mode)
{
    m_file->setFileName(NativeName(path));
    return Open(mode);
}

long long TFile::Read(void* buffer, long long max)
{
    long long const count = m_file->read(static_cast<char*>(buffer), max);
    if (count < 0) {
        ThrowReadError(count);
    }
    return count;
}

long long TFile::Size() const
{
    return m_file->size();
}

long long TFile::Write(void const* data, long long count)
{
    return m_file->write(static_cast<char const*>(data), count);
}

long long TFile::Peek(void* buffer, long long max)
{
    return m_file->peek(static_cast<char*>(buffer), max);
}

long long TFile::Pos() const
{
    return m_file->pos();
}

bool TFile::Seek(long long pos)
{
    return m_file->seek(pos);
}

unsigned char* TFile::Map(long long offset, long long size)
{
    return m_file->map(offset, size);
}

bool TFile::Unmap(unsigned char* address)
{
    return m_file->unmap(address);
}

int TFile::handle() const
{
    return m_file->handle();
}

QFile* TFile::GetQFile()
{
    return m_file.get();
}

QFile const* TFile::GetQFile() const
{
    return m_file.get();
}

TPath TFile::Path() const
{
    return TPath(TString(m_file->fileName()));
}

bool FlushFileWithRetry(TFile& file, int retries)
{
    for (; retries != 0; --retries) {
        if (file.Flush()) {
            return true;
        }
        LogMessage(TLog::NonErrorSeverity(Severity::Warn),
                   TFormatString(u"Unable to flush \"%1\".  Wating %2 milliseconds before retry.  "
                                 u"%3 retries left.")
                       .args(file.Path(), kFlushWaitMs, retries));
        std::this_thread::sleep_for(std::chrono::milliseconds(kFlushWaitMs));
    }
    GiveUpFlushing(file);
}
