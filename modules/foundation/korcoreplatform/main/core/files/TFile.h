/// Files as streams, whole files, and a patient flush.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TIO.h"
#include "korcoreplatform/main/core/files/TRandomIO.h"
#include "korcoreplatform/main/core/files/TSequentialIO.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>
#include <string>
#include <vector>

class QFile;
class TPath;

/// A file, open or not, that is read and written through Qt's `QFile`; it is closed when the object
/// goes. Only opening and reading throw, all else tells of a failure by what it returns. No process
/// that is started meanwhile inherits the file.
///
///     TFile file(u"/tmp/report.txt", TIO::WriteOnly | TIO::Truncate);
///     file.Write("done\n");
///     FlushFileWithRetry(file, 3);
///
/// Thread safety: one object must not be used by two threads at once. The static functions may be
/// called from any thread.
class KORCOREPLATFORM_EXPORT TFile : public TRandomIO
{
public:
    using TIO::GetQIODevice;
    using TIO::Read;
    using TIO::Write;
    using TRandomIO::Peek;

    TFile(); ///< Names no file, so it cannot be opened before a path is given.
    explicit TFile(TPath const& path);

    /// Opens the file. A failure is also logged, as "file-open-error" at Warn with the call stack,
    /// while `OptLogStackOnFileError` is on.
    /// Throws: `Exception` with id AutoGen_0x3DE8E9E4.
    TFile(TPath const& path, OpenMode mode);
    ~TFile() override;

    void Close() override;
    bool Flush() override;
    QIODevice* GetQIODevice() override;
    bool IsOpen() const override;

    /// Returns true. An open file stays open, and that counts as a failure.
    /// Throws: `Exception` with id AutoGen_0x3470DA84 and the device's text, which names no path.
    bool Open(OpenMode mode) override;

    /// The same for another file; one that is open is closed first.
    bool Open(TPath const& path, OpenMode mode);

    /// Reads up to `max` bytes: fewer at the end of the file, and when an error meets what comes
    /// behind them, which the next call then throws.
    /// Throws: `Exception` with id TFile_0x47B61D6A; its text has the device's negative answer in
    /// the place of the number, and a marker that nothing replaces.
    long long Read(void* buffer, long long max) override;
    long long Size() const override;
    long long Write(void const* data, long long count) override; ///< -1 for a failure.
    long long Peek(void* buffer, long long max) override;        ///< -1 for a failure.
    long long Pos() const override;
    bool Seek(long long pos) override;

    /// Maps `size` bytes from `offset` on into memory, null for a failure. The bytes stay mapped
    /// until `Unmap` is given their address, or the object goes.
    unsigned char* Map(long long offset, long long size);
    bool Unmap(unsigned char* address);

    int handle() const; ///< The system's descriptor, -1 while the file is not open.

    QFile* GetQFile(); ///< Ownership: the object's.
    QFile const* GetQFile() const;
    TPath Path() const;

    // Whole files. Throws, in each of them that loads: `Exception` as the constructor; as `Read`,
    // with one more message in front that names the file. How much there is to load is asked once:
    // a file whose size is 0, as that of many special files, is empty whatever it would give.

    /// The text of a file in the encoding that `DetectEncoding` finds in its first 512 bytes,
    /// without its byte-order mark. UTF-16 and UTF-32 are taken in the machine's byte order; bytes
    /// at the end that are no whole unit are dropped, bytes that are not UTF-8 are replaced by
    /// U+FFFD: nothing tells what was lost. With `normalize`, CR LF becomes LF.
    /// Throws: `StringException` with id AutoGen_0xC83B3D89 for more than a text can hold.
    static TString LoadTextFile(TPath const& path, bool normalize);

    /// The same as UTF-8. A file in UTF-8 is not checked: its bytes are the result.
    static std::string LoadUtf8File(TPath const& path, bool normalize);

    static std::vector<char> LoadBinaryFile(TPath const& path);

    /// As many bytes as the file's size says, zeros where fewer came.
    static std::vector<unsigned char> LoadUnsignedBinaryFile(TPath const& path);

    /// Writes a file, new or over what was there.
    /// Throws: `Exception` as the constructor; with id AutoGen_0x91F378B3 when the device did not
    /// take all bytes.
    static void WriteUnsignedBinaryFile(TPath const& path, std::vector<unsigned char> const& data);

private:
    std::unique_ptr<QFile> m_file; ///< Never null.
};

/// Flushes until it succeeds, at most `retries` times, and returns true. Each failure is logged at
/// Warn and followed by a wait of 500 ms on the calling thread. With a negative number it never
/// gives up.
/// Throws: `KorvelException` with id AutoGen_0xB5B83DCB, which is logged at Error, after the last
/// failure, and at once when `retries` is 0.
KORCOREPLATFORM_EXPORT bool FlushFileWithRetry(TFile& file, int retries);
