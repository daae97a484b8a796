/// Reading templates of format strings and writing what they format to.

#pragma once

#include "korcoreplatform/main/string/TFormatString.h"
#include "korsys/main/text/TStringErrors_p.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace TFormatDetail {

/// A template that has been checked. Text and markers lie elsewhere.
struct Layout
{
    std::u16string_view text;
    TFormatString::Marker const* markers;
    int markerCount;
    int maxMarker;
};

/// Whether a template goes on behind a zero unit or ends before it.
enum class Zero
{
    IsText,
    EndsText
};

/// Checks a template and stores its markers.
/// Requires: room for as many markers as the template has percent signs, or half its units.
Layout ReadTemplate(std::u16string_view text, Zero zero, TFormatString::Marker* markers);

[[noreturn, gnu::cold]] void ThrowInsufficientParameters(std::size_t count, Layout const& layout);

/// Opens the storage's copying of short texts.
struct UnitCopier : TStringManager
{
    using TStringManager::copyUnits;
};

/// Writes the units from `from` to `end` at `to` and returns the place behind them.
inline char16_t* Write(char16_t* to, char16_t const* from, char16_t const* end)
{
    int const n = static_cast<int>(end - from);
    UnitCopier::copyUnits(to, from, n);
    return to + n;
}

/// Formats. `parameterOf(number)` is the view of a parameter.
template <class ParameterOf>
TString Render(Layout const& layout, std::size_t parameterCount, ParameterOf const& parameterOf)
{
    if (static_cast<std::size_t>(layout.maxMarker) > parameterCount) {
        ThrowInsufficientParameters(parameterCount, layout);
    }
    auto const replacementOf = [&](TFormatString::Marker const& marker) {
        return marker.number == 0 ? std::u16string_view(u"%", 1) : parameterOf(marker.number);
    };
    auto length = static_cast<std::int64_t>(layout.text.size());
    for (int i = 0; i < layout.markerCount; ++i) {
        TFormatString::Marker const& marker = layout.markers[i];
        length += static_cast<std::int64_t>(replacementOf(marker).size()) - marker.length;
    }

    TString result;
    char16_t* to = result.resizeForOverwrite(TStringErrors::CheckedSum(length));
    char16_t const* const text = layout.text.data();
    char16_t const* from = text; // what is before it has been written
    for (int i = 0; i < layout.markerCount; ++i) {
        TFormatString::Marker const& marker = layout.markers[i];
        char16_t const* const position = text + marker.position;
        to = Write(to, from, position);
        std::u16string_view const replacement = replacementOf(marker);
        to = Write(to, replacement.data(), replacement.data() + replacement.size());
        from = position + marker.length;
    }
    Write(to, from, text + layout.text.size());
    return result;
}

} // namespace TFormatDetail
