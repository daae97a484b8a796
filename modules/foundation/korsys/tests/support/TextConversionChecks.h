/// What holds of the conversion between UTF-8 and UTF-16 for any text, for tests and fuzzers. A
/// check that fails throws.

#pragma once

#include "korsys/main/text/TextConversionKernels_p.h"
#include "korsys/main/text/TextConversion_p.h"
#include "korsys/tests/support/TextPeers.h"

#include <stdexcept>
#include <string>
#include <vector>

inline void RequireOf(char const* version, bool holds)
{
    if (!holds) {
        throw std::logic_error(version);
    }
}

/// Each version must convert well-formed bytes, refuse others, and stay inside its memory.
inline void CheckDecoding(std::string const& bytes)
{
    bool wellFormed = false;
    std::u16string const expected = IcuDecode(bytes, &wellFormed);
    Exact const from(bytes);
    for (TextConversion::Kernels const* kernels : TextConversion::UsableKernels()) {
        std::size_t const units = kernels->countUtf16(from, bytes.size());
        Exact const to(std::u16string(units, u'\xABCD'));
        RequireOf(kernels->name, kernels->decodeUtf8(from, bytes.size(), to, units) == wellFormed &&
                                     (!wellFormed || to.Text() == expected));
    }
    std::vector<char16_t> result;
    TextConversion::Utf8ToUtf16(from, bytes.size(), [&](std::size_t units) {
        result.resize(units);
        result.shrink_to_fit(); // no more memory than that
        return result.data();
    });
    RequireOf("the whole", std::u16string(result.begin(), result.end()) == expected);
}

/// Each version must count and convert units, whatever room there is behind them.
inline void CheckEncoding(std::u16string const& units)
{
    std::string const expected = IcuEncode(units);
    std::size_t const n = units.size();
    std::size_t const points = static_cast<std::size_t>(::u_countChar32(units.data(), Size(units)));
    Exact const from(units);
    for (TextConversion::Kernels const* kernels : TextConversion::UsableKernels()) {
        std::size_t const bytes = kernels->countUtf8(from, n);
        RequireOf(kernels->name,
                  bytes == expected.size() && kernels->countPairs(from, n) == n - points);
        for (std::size_t const slack : {0, 7, 200}) {
            Exact const to(std::string(bytes + slack, '#'));
            RequireOf(kernels->name, kernels->encodeUtf8(from, n, to, bytes + slack) == bytes &&
                                         to.Text().substr(0, bytes) == expected);
        }
    }
    RequireOf("the whole", TextConversion::ToUtf8(from, n) == expected);
}
