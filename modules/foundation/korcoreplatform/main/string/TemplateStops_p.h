/// The units of a format string's template at which its reader has to look.

#pragma once

#include <cstdint>

namespace TemplateStops {

constexpr int kMaxUnits = 64;

/// One bit for each of `n` units, up to `kMaxUnits`, the first unit's lowest: set for those that
/// are percent signs or `other`.
std::uint64_t Find(char16_t const* units, int n, char16_t other) noexcept;

} // namespace TemplateStops
