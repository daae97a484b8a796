/// The interface of byte streams.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

#include <QFlags>

#include <vector>

class QIODevice;

/// A stream of bytes, mostly over a device of Qt. Counts and sizes are in bytes, a negative count
/// stands for a failure. What an operation throws is up to the class of the stream, but for the
/// operations that are not virtual.
///
/// Thread safety: one object must not be used by two threads at once.
class KORCOREPLATFORM_EXPORT TIO
{
public:
    /// How a stream is opened. The bits are those of `QIODevice::OpenModeFlag`.
    enum OpenModeFlag : int
    {
        ReadOnly = 0x01,
        WriteOnly = 0x02,
        ReadWrite = 0x03,
        Append = 0x04,
        Truncate = 0x08,
        Text = 0x10, ///< The device translates line endings.
        Unbuffered = 0x20
    };
    using OpenMode = QFlags<OpenModeFlag>;

    class Exception;

    TIO(TIO const&) = delete;
    TIO& operator=(TIO const&) = delete;
    virtual ~TIO();

    virtual bool AtEnd() const = 0;
    virtual void Close() = 0;

    /// Hands what is buffered to the system; whether that went well. True where nothing is
    /// buffered.
    virtual bool Flush();

    /// The device below, null when there is none.
    /// Ownership: the stream's, and good as long as that.
    virtual QIODevice* GetQIODevice() = 0;
    virtual bool IsOpen() const = 0;
    virtual bool Open(OpenMode mode) = 0;

    /// Reads up to `max` bytes and returns how many these were.
    virtual long long Read(void* buffer, long long max) = 0;
    virtual std::vector<char> ReadAll() = 0; ///< What there is from here to the end.
    virtual long long Size() const = 0;      ///< What can be read, or the size of a whole file.

    /// Writes `count` bytes and returns how many were taken.
    virtual long long Write(void const* data, long long count) = 0;

    /// What the device says of its last failure; empty without a device.
    virtual TString ErrorString() const;

    QIODevice const* GetQIODevice() const;

    /// Throws: `Exception` with id AutoGen_0x16CDB0C3 when there is no device.
    QIODevice* GetQIODeviceOrThrow();
    QIODevice const* GetQIODeviceOrThrow() const;

    /// Reads up to `n` bytes; nothing is read for 0.
    /// Throws: `Exception` with id AutoGen_0x15B14D91 and `ErrorString()` when the stream answers
    /// with a negative count; what its `Read` throws.
    std::vector<char> Read(unsigned long n);

    long long Write(char const* text); ///< The bytes before the terminating zero.
    long long Write(std::vector<char> const& data);

protected:
    TIO() = default;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TIO::OpenMode)

/// A stream could not be opened, read or written.
class KORCOREPLATFORM_EXPORT TIO::Exception : public KorvelException
{
public:
    Exception(TString const& message, TError::ErrorInfo const& errorInfo);
    Exception(Exception const&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    ~Exception() override;

    Exception* Clone() const override;
    [[noreturn]] void Throw() const override;
};
