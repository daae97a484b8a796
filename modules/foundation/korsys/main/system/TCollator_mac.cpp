#include "korsys/main/system/TCollator.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>

#include <CoreFoundation/CoreFoundation.h>

namespace {

struct Release
{
    void operator()(CFStringRef text) const { ::CFRelease(text); }
};

using String = std::unique_ptr<std::remove_pointer_t<CFStringRef>, Release>;

/// Wraps the units without copying them; null when the system has no memory for it.
String Wrap(char16_t const* units, int length)
{
    return String(::CFStringCreateWithCharactersNoCopy(
        kCFAllocatorDefault, reinterpret_cast<UniChar const*>(units), length, kCFAllocatorNull));
}

int CompareUnits(char16_t const* a, int aLength, char16_t const* b, int bLength)
{
    int const order = std::char_traits<char16_t>::compare(
        a, b, static_cast<std::size_t>(std::min(aLength, bLength)));
    int const difference = order != 0 ? order : aLength - bLength;
    return (difference > 0) - (difference < 0);
}

} // namespace

int TCollator::Compare(char16_t const* a, int aLength, char16_t const* b, int bLength) noexcept
{
    String const left = Wrap(a, aLength);
    String const right = Wrap(b, bLength);
    if (!left || !right) {
        return CompareUnits(a, aLength, b, bLength);
    }
    // kCFCompareLessThan, kCFCompareEqualTo and kCFCompareGreaterThan are -1, 0 and 1.
    return static_cast<int>(::CFStringCompare(left.get(), right.get(), kCFCompareLocalized));
}
