/// What reading from a stream and peeking into it have in common.

#pragma once

#include "korcoreplatform/main/core/files/TIO.h"
#include "korsys/main/error/KorvelError.h"
#include "korsys/main/error/ThrowError.h"

#include <vector>

/// The bytes that one call of `read(buffer, n)` gives; nothing, without a call, for an `n` of 0.
/// Throws: `TIO::Exception` with the error of `makeError` and the stream's text when that call
/// answers with a negative count.
template <class ReadOperation>
std::vector<char> ReadIntoVector(TIO const& stream, unsigned long n, ReadOperation const& read,
                                 KorvelError (*makeError)())
{
    std::vector<char> bytes(n);
    if (n == 0) {
        return bytes;
    }
    long long const count = read(bytes.data(), static_cast<long long>(n));
    if (count < 0) {
        ThrowError<TIO::Exception>(stream.ErrorString(), makeError);
    }
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}
