// UTF-8 and UTF-16 read from any bytes: every version of the loops must agree with ICU, and
// well-formed text must come back as it was. The bytes are taken as UTF-8, then as UTF-16 units.

#include "korsys/main/text/TextConversionKernels_p.h"
#include "korsys/main/text/TextConversion_p.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <unicode/ustring.h>

namespace {

void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// A block of exactly the text's size, so that the address sanitizer sees an access outside.
template <class T>
std::unique_ptr<T[]> Exact(T const* text, std::size_t n)
{
    std::unique_ptr<T[]> copy(new T[n]);
    std::copy_n(text, n, copy.get());
    return copy;
}

std::u16string IcuDecode(char const* bytes, std::size_t n, bool& wellFormed)
{
    std::u16string units(n, u'\0');
    int32_t length = 0;
    int32_t replaced = 0;
    UErrorCode status = U_ZERO_ERROR;
    ::u_strFromUTF8WithSub(&units[0], static_cast<int32_t>(n), &length, bytes,
                           static_cast<int32_t>(n), 0xFFFD, &replaced, &status);
    Require(U_SUCCESS(status));
    wellFormed = replaced == 0;
    units.resize(static_cast<std::size_t>(length));
    return units;
}

std::string IcuEncode(char16_t const* units, std::size_t n, bool& wellFormed)
{
    std::string bytes(3 * n, '\0');
    int32_t length = 0;
    int32_t replaced = 0;
    UErrorCode status = U_ZERO_ERROR;
    ::u_strToUTF8WithSub(&bytes[0], static_cast<int32_t>(bytes.size()), &length, units,
                         static_cast<int32_t>(n), 0xFFFD, &replaced, &status);
    Require(U_SUCCESS(status));
    wellFormed = replaced == 0;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

std::u16string Decode(char const* bytes, std::size_t n)
{
    std::u16string units;
    TextConversion::Utf8ToUtf16(bytes, n, [&](std::size_t wanted) {
        units.resize(wanted);
        return &units[0];
    });
    return units;
}

void CheckDecoding(char const* bytes, std::size_t n)
{
    bool wellFormed = false;
    std::u16string const expected = IcuDecode(bytes, n, wellFormed);
    for (TextConversion::Kernels const* kernels : TextConversion::UsableKernels()) {
        std::size_t const units = kernels->countUtf16(bytes, n);
        std::unique_ptr<char16_t[]> const to(new char16_t[units]);
        Require(kernels->decodeUtf8(bytes, n, to.get(), units) == wellFormed);
        Require(!wellFormed || expected == std::u16string(to.get(), units));
    }
    Require(Decode(bytes, n) == expected);
    std::string const back = TextConversion::ToUtf8(expected.data(), expected.size());
    Require(!wellFormed || back == std::string(bytes, n));
}

void CheckEncoding(char16_t const* units, std::size_t n)
{
    bool wellFormed = false;
    std::string const expected = IcuEncode(units, n, wellFormed);
    for (TextConversion::Kernels const* kernels : TextConversion::UsableKernels()) {
        std::size_t const bytes = kernels->countUtf8(units, n);
        Require(bytes == expected.size());
        std::unique_ptr<char[]> const to(new char[bytes]);
        Require(kernels->encodeUtf8(units, n, to.get(), bytes) == bytes);
        Require(expected == std::string(to.get(), bytes));
    }
    Require(TextConversion::ToUtf8(units, n) == expected);
    std::u16string const back = Decode(expected.data(), expected.size());
    Require(!wellFormed || back == std::u16string(units, n));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const* const bytes = reinterpret_cast<char const*>(data);
    CheckDecoding(Exact(bytes, size).get(), size);
    std::u16string units(size / 2, u'\0');
    std::memcpy(&units[0], data, units.size() * sizeof(char16_t));
    CheckEncoding(Exact(units.data(), units.size()).get(), units.size());
    return 0;
}
