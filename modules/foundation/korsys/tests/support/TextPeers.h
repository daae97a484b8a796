/// Texts for tests and fuzzers of loops over texts: in exact memory, at random, and as ICU has
/// them.

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include <unicode/ustring.h>

/// A copy of a text that ends where its memory ends, so that the address sanitizer sees a read
/// behind it, and that begins `offset` units behind an allocation's alignment.
template <class Unit>
class Exact
{
public:
    explicit Exact(std::basic_string<Unit> const& text, std::size_t offset = 0)
        : m_units(new Unit[text.size() + offset]), m_data(&m_units[offset]), m_length(text.size())
    {
        text.copy(m_data, text.size());
    }
    operator Unit*() const { return m_data; }
    std::basic_string<Unit> Text() const { return std::basic_string<Unit>(m_data, m_length); }

private:
    std::unique_ptr<Unit[]> m_units;
    Unit* m_data;
    std::size_t m_length;
};

inline int Size(std::u16string const& text)
{
    return static_cast<int>(text.size());
}

inline std::u16string RandomText(std::mt19937& random, std::size_t length,
                                 std::u16string const& alphabet)
{
    std::u16string text(length, u' ');
    for (char16_t& unit : text) {
        unit = alphabet[random() % alphabet.size()];
    }
    return text;
}

/// The text in another encoding, with U+FFFD for each ill-formed part, and whether there was none.
template <class To, class From, class Convert>
std::basic_string<To> IcuConverted(Convert convert, std::basic_string<From> const& text,
                                   bool* wellFormed)
{
    std::basic_string<To> converted(3 * text.size(), To(0));
    std::int32_t length = 0;
    std::int32_t replaced = 0;
    UErrorCode status = U_ZERO_ERROR;
    convert(converted.data(), static_cast<std::int32_t>(converted.size()), &length, text.data(),
            static_cast<std::int32_t>(text.size()), 0xFFFD, &replaced, &status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(u_errorName(status));
    }
    if (wellFormed != nullptr) {
        *wellFormed = replaced == 0;
    }
    converted.resize(static_cast<std::size_t>(length));
    return converted;
}

inline std::u16string IcuDecode(std::string const& bytes, bool* wellFormed = nullptr)
{
    return IcuConverted<char16_t>(::u_strFromUTF8WithSub, bytes, wellFormed);
}

inline std::string IcuEncode(std::u16string const& units)
{
    return IcuConverted<char>(::u_strToUTF8WithSub, units, nullptr);
}
