/// Streams with a position.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TIO.h"

/// A stream of a known size with a position that can be moved. Positions are in bytes from the
/// start.
class KORCOREPLATFORM_EXPORT TRandomIO : public TIO
{
public:
    ~TRandomIO() override;

    bool AtEnd() const override;
    std::vector<char> ReadAll() override; ///< Throws as `Read(n)`.

    /// As `Read`, and the position stays.
    virtual long long Peek(void* buffer, long long max) = 0;
    virtual long long Pos() const = 0;
    virtual bool Seek(long long pos) = 0; ///< Whether the position could be taken.

    /// As `Read(n)`, and the position stays.
    /// Throws: `Exception` with id AutoGen_0x7A55F773 and `ErrorString()` when the stream answers
    /// with a negative count; what its `Peek` throws.
    std::vector<char> Peek(unsigned long n);
};
