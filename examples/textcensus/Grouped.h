/// Numbers for people.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstdint>

namespace TextCensus {

/// The number with its digits in groups of three: "1,234,567".
inline TString Grouped(std::uint64_t number)
{
    TString text = TString::number(number);
    for (int at = text.length() - 3; at > 0; at -= 3) {
        text.insert(at, u',');
    }
    return text;
}

} // namespace TextCensus
