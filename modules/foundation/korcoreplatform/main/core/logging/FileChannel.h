/// Log lines in a file that one process alone writes.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Channel.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace TLog {

class Formatter;
class LineBuffer;

/// Writes each record as one line, through a buffer of 64 KiB, to a file that is locked while it is
/// open. Only `Flush`, a full buffer and the destructor write to the file, and only whole lines.
///
/// A write that fails is only counted. Its last line is taken back where it is not whole, so that
/// later records follow a whole line, as soon as there is room for them.
///
/// A child made by `fork` has the channel but is not its owner: in it, nothing is written.
class KORCOREPLATFORM_EXPORT FileChannel : public Channel
{
public:
    class LogFile;

    /// `file` may be null: records are lost then, until a subclass sets one.
    explicit FileChannel(std::unique_ptr<LogFile> file);
    FileChannel(FileChannel const&) = delete;
    FileChannel& operator=(FileChannel const&) = delete;
    ~FileChannel() override; ///< Writes what is buffered and closes the file.

    /// Throw what `Formatter::AppendLine` throws, and have then written nothing.
    void Append(Severity severity, Event const& event) override;
    void Append(AccessLevel accessLevel, Severity severity, Event const& event) override;

    void Flush() override;
    TPath GetPath() const override; ///< Of the file that was opened, maybe not the one asked for.
    unsigned long GetFileSizeMB() const override;
    ChannelCounters GetCounters() const override; ///< Of all files that this channel has had.

protected:
    using TextPairs = std::unordered_map<TString, TString>;

    LogFile* File() const noexcept { return m_file.get(); } ///< Null while there is none.

    /// The former file is written and closed.
    void SetFile(std::unique_ptr<LogFile> file);

    /// Another number whenever the file on disk may have changed its size or there is another file.
    std::uint64_t FileVersion() const noexcept;

    /// Whether the file was opened by another process, of which this one is a fork.
    bool IsFileInherited() const noexcept;

    /// Appends a record of the channel itself. A subclass's `Append` is not called.
    void AppendOwn(Severity severity, char16_t const* key, TextPairs const& pairs);

    /// Appends "close-log", for destructors: nothing is thrown. Without a file nothing is done.
    void AppendCloseLog() noexcept;

    /// Opens the file to write at its end.
    /// Throws: as the constructor of `LogFile`.
    static std::unique_ptr<LogFile> OpenToAppend(TPath const& path);

    /// In the same directory: app.log with "1" is app_1.log. A name without extension gets a dot
    /// all the same.
    static TPath WithSuffix(TPath const& path, TString const& suffix);

private:
    ChannelCounters m_formerCounters; ///< Of the files before, and what was given without a file.
    std::uint64_t m_formerVersions = 0;
    std::unique_ptr<LogFile> m_file;
    std::unique_ptr<Formatter> m_formatter; ///< Reused: it keeps what the next line needs again.
};

/// An open log file, locked against other processes and other `LogFile`s of this one.
///
/// In a child made by `fork` it neither writes nor changes the file, and the lock stays with the
/// parent.
///
/// Thread safety: one thread at a time.
class KORCOREPLATFORM_EXPORT FileChannel::LogFile
{
public:
    /// Opens `path` with the flags of `open`, close-on-exec, and permissions 0666 less the
    /// process's mask, and takes an exclusive lock without waiting. When either fails it tries
    /// title_1.ext to title_99.ext in the same directory. O_TRUNC waits for the lock.
    /// Throws: `KorvelException` when all fail, naming the last: with id AutoGen_0x96B9ECEF when
    /// that is locked, AutoGen_0x98E57943 with the error number when it cannot be opened.
    LogFile(TPath const& path, int openFlags);
    LogFile(LogFile const&) = delete;
    LogFile& operator=(LogFile const&) = delete;
    ~LogFile(); ///< Flushes and closes.

    TPath const& GetPath() const noexcept { return m_path; } ///< The name that was opened.

    /// Buffers the bytes, which should end with a line. When they do not fit into the rest of the
    /// buffer, that is written first, and so are they when they do not fit even then.
    /// Throws: `std::bad_alloc`.
    void Write(void const* data, std::size_t size);

    /// Writes straight to the file, past the buffer. Only the low 32 bits of `size` count.
    void WriteRaw(void const* data, std::size_t size);

    void Flush();

    /// Drops what is buffered and makes the file empty.
    void Truncate();

    /// Lines are counted as records.
    ChannelCounters GetCounters() const noexcept { return m_counters; }

    bool IsInherited() const noexcept; ///< Whether another process opened it, before a `fork`.

private:
    friend class FileChannel;

    static constexpr std::size_t kBufferBytes = 65536;

    bool TryOpen(TPath const& path, int openFlags);
    void AppendLine(Formatter& formatter, AccessLevel accessLevel, Severity severity,
                    Event const& event);
    void WriteOutBefore(std::size_t lineStart);
    void WriteOut(std::string_view bytes);
    bool CutBack(std::size_t size);

    TPath m_path;
    int m_descriptor = -1;
    int m_openError = 0;                  ///< Of the last name tried; 0: it was locked.
    std::uint32_t m_processId;            ///< Of the owner.
    std::unique_ptr<LineBuffer> m_buffer; ///< At most kBufferBytes, except while a line is added.
    ChannelCounters m_counters;
    std::uint64_t m_version = 0; ///< Counts the changes of the file.
};

} // namespace TLog
