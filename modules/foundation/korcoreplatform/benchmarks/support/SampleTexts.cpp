#include "korcoreplatform/benchmarks/support/SampleTexts.h"

#include <random>

namespace {

/// Words of two to nine units taken from `letters`, one blank between two.
std::u16string WordsOf(std::u16string const& letters, int units, unsigned seed)
{
    std::mt19937 random(seed);
    std::u16string text;
    while (int(text.size()) < units) {
        for (unsigned n = 2 + random() % 8; n > 0; --n) {
            text += letters[random() % letters.size()];
        }
        text += u' ';
    }
    text.resize(std::size_t(units));
    return text;
}

std::u16string Range(char16_t first, char16_t last)
{
    std::u16string letters;
    for (char16_t c = first; c <= last; ++c) {
        letters += c;
    }
    return letters;
}

} // namespace

std::u16string SampleTexts::Words(int units, unsigned seed)
{
    return WordsOf(u"abcdefghijklmnoprstuvwxy", units, seed);
}

std::u16string SampleTexts::Cyrillic(int units)
{
    return WordsOf(Range(u'\u0430', u'\u044F'), units, 1);
}

std::u16string SampleTexts::Greek(int units)
{
    return WordsOf(Range(u'\u03B1', u'\u03C1') + Range(u'\u03C3', u'\u03C9'), units, 1);
}

std::u16string SampleTexts::Latin(int units)
{
    std::u16string const plain = u"abcdefghijklmnoprstuvwxy";
    return WordsOf(plain + u"\u00E4\u00E9\u00E8", units, 1);
}

std::u16string SampleTexts::Chinese(int units)
{
    std::mt19937 random(1);
    std::u16string text;
    while (int(text.size()) < units) {
        text += random() % 12 == 0 ? u'\u3002' : char16_t(0x4E00 + random() % 0x5000);
    }
    return text;
}

std::u16string SampleTexts::Emoji(int units)
{
    std::mt19937 random(1);
    std::u16string text;
    while (int(text.size()) < units) {
        text += char16_t(0xD83D);
        text += char16_t(0xDE00 + random() % 0x50);
    }
    return text;
}
