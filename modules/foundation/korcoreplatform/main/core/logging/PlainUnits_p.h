/// The part of escaping that meets nothing to escape.

#pragma once

#include <cstddef>

namespace TLog {

/// Printable ASCII that stands for itself in a quoted JSON text.
constexpr bool IsPlainUnit(char16_t unit)
{
    return unit >= u' ' && unit <= u'~' && unit != u'"' && unit != u'\\';
}

/// Writes the plain units that `from` starts with as bytes and returns how many there are. The
/// bytes behind those, up to `n` in all, may hold anything then.
std::size_t CopyPlainUnits(char16_t const* from, std::size_t n, char* to) noexcept;

} // namespace TLog
