/// The bytes of a file.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace TextCensus {

/// Holds the bytes of one file at a time and keeps its memory for the next one.
class FileBytes
{
public:
    /// Reads the whole file, however long it says it is: it may grow or shrink meanwhile. Returns
    /// why it could not, or the empty text. Never waits for another process.
    TString Read(std::filesystem::path const& path);

    char const* Data() const { return m_bytes.data(); }
    std::size_t Size() const { return m_size; }

private:
    TString ReadAll(int descriptor, std::size_t expectedSize);

    std::vector<char> m_bytes; ///< At least `m_size` of them.
    std::size_t m_size = 0;
};

} // namespace TextCensus
