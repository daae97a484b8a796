#include "korcoreplatform/main/core/files/PathFunctions.h"

#include "korcoreplatform/main/core/files/PathText_p.h"
#include "korcoreplatform/main/core/files/TFile.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/runtime/OptLogStackOnFileError.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/error/ThrowError.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <string>

namespace {

QString NativeOf(TPath const& path)
{
    return path.NativeString().toQString();
}

/// A link that leads nowhere exists too.
bool Exists(QFileInfo const& info)
{
    return info.isSymLink() || info.exists();
}

[[noreturn]] void ThrowPathError(TString const& message, KorvelError (*makeError)())
{
    ThrowError<TPath::Exception>(message, makeError, TError::ErrorSource::Internal,
                                 OptLogStackOnFileError::GetLogStackOnFileError());
}

/// The log gets the text with the paths, the exception only the short one.
[[noreturn]] void LogAndThrow(TString const& logged, char16_t const* thrown,
                              KorvelError (*makeError)())
{
    LogMessage(TLog::AnySeverity(TLog::Severity::Error), logged,
               TError::ErrorInfo(makeError(), TError::ErrorSource::Internal, grpc::UNKNOWN));
    ThrowPathError(thrown, makeError);
}

/// In seconds since the epoch, whatever the time zone.
std::int64_t LocalLastWriteTime(TPath const& path)
{
    QFileInfo const info(NativeOf(path));
    if (!Exists(info)) {
        ThrowPathError(TFormat(u"LocalLastWriteTime: Cannot get modification time of non-existent "
                               u"path '%1'",
                               path),
                       &KorErrorsError::AutoGen_0xBF27D89B);
    }
    return info.lastModified().toSecsSinceEpoch();
}

/// Makes room for a copy, or finds that none is wanted. Returns whether to copy.
bool PrepareDestination(TPath const& from, TPath const& to, QFileInfo const& toInfo,
                        CopyOption option)
{
    if (option == CopyOption::FailIfExists) {
        LogAndThrow(TFormat(u"Destination exists: not copying '%1' to '%2'", from, to),
                    u"Destination exists. Not copying file", &KorErrorsError::AutoGen_0x7C7DFAB4);
    }
    if (option == CopyOption::OverwriteUnlessSame && CanonicalPath(from) == CanonicalPath(to)) {
        return false;
    }
    if (option == CopyOption::OverwriteIfNewer && toInfo.isFile() &&
        LocalLastWriteTime(from) <= LocalLastWriteTime(to)) {
        return false;
    }
    if (!toInfo.isFile() && !toInfo.isSymLink()) {
        LogAndThrow(TFormat(u"Unable to copy file '%1' to existing non-file '%2'", from, to),
                    u"Unable to copy file to existing non-file",
                    &KorErrorsError::AutoGen_0x0C5F149A);
    }
    RemovePath(to); // what it leaves makes the copy fail
    return true;
}

/// Why the source of a failed copy cannot be read, which the error of the copy does not tell.
TString ReadError(QString const& from, QString const& copyError)
{
    QFile file(from);
    if (!copyError.endsWith(QLatin1String("for input")) || file.open(QIODevice::ReadOnly)) {
        return TString();
    }
    return u": " + TString(file.errorString());
}

void ReportFailedWrite(TPath const& path)
{
    LogMessage(TLog::AnySeverity(TLog::Severity::Error),
               TFormat(u"Unable to write to \"%1\".", path),
               TError::ErrorInfo(KorErrorsError::AutoGen_0x8CA372D6(), TError::ErrorSource::System,
                                 grpc::UNKNOWN));
}

/// Sees only that nothing arrived: the text's length is not that of its bytes.
void CheckIsNotEmpty(TPath const& path, int textLength)
{
    long long const size = TFile(path, TIO::ReadOnly).Size();
    if (size <= 0) {
        LogMessage(TLog::NonErrorSeverity(TLog::Severity::Info),
                   TFormat(u"Unexpected file size for \"%1\". Expected size: %2  Actual size: %3",
                           path, textLength, size));
    }
}

} // namespace

bool PathExists(TPath const& path)
{
    return Exists(QFileInfo(NativeOf(path)));
}

bool IsDirectory(TPath const& path, bool noThrow)
{
    QFileInfo const info(NativeOf(path));
    if (!noThrow && !Exists(info)) {
        ThrowPathError(TFormat(u"IsDirectory: Cannot get status of non-existent path '%1'", path),
                       &KorErrorsError::AutoGen_0x4C0573C8);
    }
    return info.isDir();
}

bool IsRegularFile(TPath const& path, bool noThrow)
{
    QFileInfo const info(NativeOf(path));
    if (!noThrow && !Exists(info)) {
        ThrowPathError(TFormat(u"IsRegularFile: Cannot get status of non-existent path '%1'", path),
                       &KorErrorsError::AutoGen_0xD1E89D61);
    }
    return info.isFile();
}

bool IsSymlink(TPath const& path)
{
    QFileInfo const info(NativeOf(path));
    if (!Exists(info)) {
        ThrowPathError(TFormat(u"IsSymlink: Cannot get status of non-existent path '%1'", path),
                       &KorErrorsError::AutoGen_0xC4B62E99);
    }
    return info.isSymLink();
}

// Neither kind is found where nothing exists.

bool FileExists(TPath const& path)
{
    return IsRegularFile(path, true);
}

bool DirectoryExists(TPath const& path)
{
    return IsDirectory(path, true);
}

long long FileSize(TPath const& path)
{
    QFileInfo const info(NativeOf(path));
    if (!info.isFile()) {
        ThrowPathError(
            TFormat(u"Unable to determine size of file '%1' (file does not exist)", path),
            &KorErrorsError::AutoGen_0x7F4B3D5C);
    }
    return info.size();
}

long long GetFileSize(TPath const& path)
{
    try {
        return FileSize(path);
    } catch (TPath::Exception const&) {
        return -1;
    }
}

bool RemovePath(TPath const& path)
{
    return !PathExists(path) || std::remove(path.NativeString().toLocal8Bit().c_str()) == 0;
}

void CopyFile(TPath const& from, TPath const& to, CopyOption option)
{
    TPath const destination = IsDirectory(to, true) ? to / from.Filename() : to;
    QFileInfo const info(NativeOf(destination));
    if (Exists(info) && !PrepareDestination(from, destination, info, option)) {
        return;
    }
    QFile source(NativeOf(from));
    bool const isNamed = !PathText::HoldsZero(from) && !PathText::HoldsZero(destination);
    if (isNamed && source.copy(NativeOf(destination))) {
        return;
    }
    QString const error = isNamed ? source.errorString() : QLatin1String(PathText::kZeroInName);
    LogAndThrow(TFormat(u"Error copying file '%1' to '%2' (%3)%4", from, destination, error,
                        ReadError(source.fileName(), error)),
                u"Error copying file", &KorErrorsError::AutoGen_0xF7FF15E2);
}

void ChangeDirectory(TPath const& path)
{
    QDir::setCurrent(NativeOf(path));
}

TString LoadXMLFile(TPath const& path, bool normalize)
{
    return TFile::LoadTextFile(path, normalize);
}

void SaveXMLFile(TPath const& path, TString const& text, bool toDos, bool append,
                 std::function<void(TPath const&)> const& onOpened)
{
    constexpr int kFlushAttempts = 5;
    TFile file(path, TIO::WriteOnly | (append ? TIO::Append : TIO::Truncate));
    onOpened(path);
    TString written(text);
    if (toDos) {
        written.unixToDos();
    }
    std::string const bytes = written.toStdString();
    if (file.Write(bytes.data(), static_cast<long long>(bytes.size())) < 0) {
        ReportFailedWrite(file.Path());
    } else {
        FlushFileWithRetry(file, kFlushAttempts);
    }
    file.Close();
    if (!text.isEmpty()) {
        CheckIsNotEmpty(path, text.length());
    }
}
