/// Log files that take turns.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/FileChannel.h"
#include "korcoreplatform/main/string/TString.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace TLog {

/// Starts a new file, named after its time, whenever `ShouldRotate` says so: app.log becomes
/// app_2024_03_02_14_03_09.log, in local time. When the next file cannot be opened, records go on
/// into the old one and nothing is tried again for five seconds.
///
///     auto channel = std::make_shared<TLog::SizeRotateFileChannel>(u"/var/log/app.log", 10);
///     channel->Open();
///     logger->AddChannel(std::move(channel));
///
/// The records of a file begin with "open-log", or "rotate-log" when it follows another; that ends
/// with "rotate-log" as well. A failure is told by "rotate-log-failed". The destructor writes
/// "close-log". Old files stay: to remove them is the host's business.
class KORCOREPLATFORM_EXPORT RotateFileChannel : public FileChannel
{
public:
    using SteadyTime = std::chrono::steady_clock::time_point;

    /// Opens nothing yet; until `Open`, records are lost.
    explicit RotateFileChannel(TPath const& path);
    ~RotateFileChannel() override;

    /// Opens the first file.
    /// Throws: `KorvelException` as `FileChannel::LogFile`.
    virtual void Open();

    virtual SteadyTime GetTimestamp() const; ///< Now.

    /// Whether the record that is being appended belongs into a new file. Asked for every record.
    virtual bool ShouldRotate() const = 0;

    /// Starts a new file, whatever `ShouldRotate` says and also within five seconds after a
    /// failure. Returns false when it could not be opened.
    virtual bool Rotate();

    /// Makes and opens the file for a time.
    /// Throws: `KorvelException` as `FileChannel::LogFile`; another exception than that leaves
    /// `Append`.
    virtual std::unique_ptr<LogFile> OpenFile(SteadyTime time) const;

    using FileChannel::Append;
    void Append(AccessLevel accessLevel, Severity severity, Event const& event) override;

    bool ShouldBackOff() const;                     ///< Up to five seconds after a failed rotation.
    bool BackOffTimeCompleted() const;              ///< More than five seconds after it.
    bool DoRotate();                                ///< What `Rotate` does.
    TString FormatTimestamp(SteadyTime time) const; ///< "2024_03_02_14_03_09", local time.

protected:
    SteadyTime OpenTime() const noexcept { return m_openTime; } ///< Of the current file.
    TPath PathAt(SteadyTime time) const; ///< The name for the time in the place of the base path.

private:
    TPath m_basePath;
    SteadyTime m_openTime;
    SteadyTime m_backOffMark; ///< The last failure, or long ago.
};

/// Rotates when the current file has reached a size in whole MiB, which is looked at after each
/// write to the file. What is buffered does not count, so a file may end 64 KiB and a line bigger.
/// Every rotation makes a file that was not there; a size of 0 makes one for every record.
class KORCOREPLATFORM_EXPORT SizeRotateFileChannel : public RotateFileChannel
{
public:
    SizeRotateFileChannel(TPath const& path, unsigned long maxSizeMB);
    ~SizeRotateFileChannel() override;

    bool ShouldRotate() const override;

    /// As the base class does, but takes none of the names that exist.
    std::unique_ptr<LogFile> OpenFile(SteadyTime time) const override;

private:
    unsigned long m_maxSizeMB;
    mutable std::uint64_t m_measuredVersion = 0; ///< The version of the file whose size was asked.
    mutable bool m_isFull;
};

/// Rotates when the current file has been open for so long and there is a record for the next one.
class KORCOREPLATFORM_EXPORT TimeRotateFileChannel : public RotateFileChannel
{
public:
    TimeRotateFileChannel(TPath const& path, std::chrono::seconds maxAge);
    ~TimeRotateFileChannel() override;

    bool ShouldRotate() const override;

private:
    std::chrono::seconds m_maxAge;
};

} // namespace TLog
