/// The bytes of a file.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"

#include <cstddef>
#include <vector>

namespace TextCensus {

/// Holds the bytes of one file at a time and keeps its memory for the next one.
class FileBytes
{
public:
    /// Reads the whole file, however long it says it is: it may grow or shrink meanwhile.
    /// Throws: what `TFile` throws when the file cannot be opened or read; `std::system_error` for
    /// one that is longer than a text can be; `std::bad_alloc`.
    void Read(TPath const& path);

    char const* Data() const { return m_bytes.data(); }
    std::size_t Size() const { return m_size; }

private:
    std::vector<char> m_bytes; ///< At least `m_size` of them.
    std::size_t m_size = 0;
};

} // namespace TextCensus
