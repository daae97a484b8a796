/// The inner loops of `TextConversion`, in one version for each kind of processor.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstddef>
#include <vector>

namespace TextConversion {

/// One version of the loops. All versions give the same results, except in memory whose contents
/// are said to be anything. What is not told here is told in TextConversion_p.h.
struct Kernels
{
    char const* name;

    /// See `CountUtf16IfWellFormed`.
    std::size_t (*countUtf16)(char const* from, std::size_t n);

    /// Converts well-formed text into exactly `units`, which `countUtf16` told. Returns false for
    /// ill-formed text; `to` then holds anything.
    bool (*decodeUtf8)(char const* from, std::size_t n, char16_t* to, std::size_t units);

    /// Writes n units, which are the text if it is ASCII; returns whether it is.
    bool (*decodeAscii)(char const* from, std::size_t n, char16_t* to);

    /// See `CountUtf8`.
    std::size_t (*countUtf8)(char16_t const* from, std::size_t n);

    /// Returns the number of bytes that the text takes, and writes them and nothing behind
    /// `to + room`. Requires: `room` is at least what `countUtf8` tells; more makes it faster.
    std::size_t (*encodeUtf8)(char16_t const* from, std::size_t n, char* to, std::size_t room);

    /// Writes n bytes, which are the text if it is ASCII; returns whether it is.
    bool (*encodeAscii)(char16_t const* from, std::size_t n, char* to);

    /// The number of surrogate pairs.
    std::size_t (*countPairs)(char16_t const* from, std::size_t n);

    void (*latin1ToUtf16)(char const* from, std::size_t n, char16_t* to);
    bool (*utf16ToLatin1)(char16_t const* from, std::size_t n, char* to);
    bool (*isAsciiBytes)(char const* text, std::size_t n);
    bool (*isAsciiUnits)(char16_t const* text, std::size_t n);

    /// See `Length`.
    std::size_t (*length)(char16_t const* zeroTerminated);
};

/// How the versions that seek a zero by aligned blocks are marked. A block that is read holds a
/// unit of the text or its zero, and so touches no page that these do not, but may begin before the
/// text and end behind it, which sanitizers must not watch.
#define KOR_READS_BLOCKS __attribute__((no_sanitize_address, no_sanitize_thread))

/// The fastest version that this processor runs.
Kernels const& BestKernels();

/// Every version that this processor runs, the plain one first and the fastest last.
KORSYS_EXPORT std::vector<Kernels const*> UsableKernels();

/// One character at a time, for every processor.
extern Kernels const kScalarKernels;

} // namespace TextConversion
