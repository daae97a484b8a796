/// Texts for benchmarks: word-like, of a wanted length, the same in every run.

#pragma once

#include <string>

namespace SampleTexts {

/// Words of lower-case ASCII letters (neither q nor z) and blanks.
std::u16string Words(int units, unsigned seed = 1);

std::u16string Cyrillic(int units); ///< Lower-case words and blanks.
std::u16string Greek(int units);
std::u16string Latin(int units);   ///< Words of which one letter in eight has an accent.
std::u16string Chinese(int units); ///< Ideographs with a full stop here and there.
std::u16string Emoji(int units);   ///< Surrogate pairs; `units` is even.

} // namespace SampleTexts
