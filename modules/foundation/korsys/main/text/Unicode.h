/// Line endings of text in bytes.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstddef>

namespace Unicode {

/// Turns every CR LF among the `length` bytes at `data` into LF, in place, and returns the new
/// length. A CR without LF behind it stays, also as the last byte. The bytes may be in any encoding
/// whose bytes below 0x80 are ASCII. What is behind the new length is unspecified.
KORSYS_EXPORT std::size_t normalizeLineEndings(char* data, std::size_t length) noexcept;

} // namespace Unicode
