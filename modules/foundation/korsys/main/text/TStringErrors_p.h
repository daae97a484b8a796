/// The failures of the text core, each raised out of line so that callers stay small.

#pragma once

#include "korsys/main/text/TStringCore.h"

#include <cstdint>

namespace TStringErrors {

[[noreturn]] KORSYS_EXPORT void ThrowIndexOutside(std::int64_t index,
                                                  std::int64_t length); ///< id 0x9798B690
[[noreturn]] KORSYS_EXPORT void ThrowBadLength(std::int64_t length);    ///< id 0xDBED6C12
[[noreturn]] KORSYS_EXPORT void ThrowTooLong(std::int64_t length);      ///< id 0xC83B3D89
[[noreturn]] KORSYS_EXPORT void ThrowNullText(std::int64_t length);     ///< id 0xB1923A1A
[[noreturn]] KORSYS_EXPORT void ThrowBadBase(int base);                 ///< id 0x30E31408

/// Settles a pointer and its length argument: -1 stands for "up to the zero", and a null pointer
/// for the empty text.
template <class Unit, class Measure>
int CheckedLength(Unit const* text, int len, Measure const& measure)
{
    if (len < -1) {
        ThrowBadLength(len);
    }
    if (text == nullptr) {
        if (len > 0) {
            ThrowNullText(len);
        }
        return 0;
    }
    return len < 0 ? measure(text) : len;
}

/// A length computed in 64 bits, as the `int` it has to be.
inline int CheckedSum(std::int64_t length)
{
    if (length > TStringManager::kMaxLength) {
        ThrowTooLong(length);
    }
    return static_cast<int>(length);
}

inline int CheckedLength(char16_t const* text, int len)
{
    int const n =
        CheckedLength(text, len, [](char16_t const* p) { return TStringCore::length(p); });
    return CheckedSum(n); // the text at the pointer may be longer than any text of ours
}

} // namespace TStringErrors
