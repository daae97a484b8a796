// Numbers and encodings of a text.

#include "korsys/main/text/NumberText_p.h"
#include "korsys/main/text/TStringCore.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/TextConversion_p.h"

#include <algorithm>
#include <cstring>
#include <ostream>

using TStringErrors::CheckedLength;
using TStringErrors::CheckedSum;

namespace {

void CheckBase(int base)
{
    if (!NumberText::IsBase(base)) {
        TStringErrors::ThrowBadBase(base);
    }
}

void SetField(TStringCore& text, char16_t const* number, int length, int base, int fieldWidth,
              char16_t fill)
{
    int const total = CheckedSum(NumberText::FieldLength(length, fieldWidth));
    NumberText::WriteField(text.resizeForOverwrite(total), number, length, base, fieldWidth, fill);
}

void SetSigned(TStringCore& text, std::int64_t v, int base, int fieldWidth, char16_t fill)
{
    CheckBase(base);
    char16_t units[NumberText::kMaxIntegerUnits];
    SetField(text, units, NumberText::WriteSigned(units, v, base), base, fieldWidth, fill);
}

void SetUnsigned(TStringCore& text, std::uint64_t v, int base, int fieldWidth, char16_t fill)
{
    CheckBase(base);
    char16_t units[NumberText::kMaxIntegerUnits];
    SetField(text, units, NumberText::WriteUnsigned(units, v, base), base, fieldWidth, fill);
}

template <class Number>
Number Answer(NumberText::Parsed<Number> const& parsed, bool* ok)
{
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return parsed.value;
}

int CheckedByteLength(char const* text, int len)
{
    return CheckedLength(text, len,
                         [](char const* p) { return CheckedSum(std::int64_t(std::strlen(p))); });
}

int CheckedLength32(char32_t const* text, int len)
{
    return CheckedLength(text, len, [](char32_t const* p) {
        return CheckedSum(std::int64_t(std::char_traits<char32_t>::length(p)));
    });
}

/// Converts bytes of an encoding that has one byte for each unit.
TStringCore Widened(char const* text, int len, void (*convert)(char const*, std::size_t, char16_t*))
{
    int const n = CheckedByteLength(text, len);
    TStringCore result;
    convert(text, static_cast<std::size_t>(n), result.resizeForOverwrite(n));
    return result;
}

std::string Narrowed(TStringCore const& text, bool* ok,
                     bool (*convert)(char16_t const*, std::size_t, char*))
{
    std::string result(static_cast<std::size_t>(text.length()), '\0');
    bool const allFitted = convert(text.constData(), result.size(), result.data());
    if (ok != nullptr) {
        *ok = allFitted;
    }
    return result;
}

TStringCore FromCodePoints(char32_t const* text, std::size_t n)
{
    TStringCore result;
    std::int64_t const units = std::int64_t(TextConversion::CountUtf16(text, n));
    TextConversion::Utf32ToUtf16(text, n, result.resizeForOverwrite(CheckedSum(units)));
    return result;
}

bool HasUnpairedSurrogate(TStringCore const& text)
{
    auto const isLone = [](char32_t c) { return c >= 0xD800 && c <= 0xDFFF; };
    return std::any_of(text.codepoint_cbegin(), text.codepoint_cend(), isLone);
}

} // namespace

// Numbers

TStringCore& TStringCore::setDecimal(int v)
{
    static_assert(NumberText::kMaxDecimal32Units <= kShortCapacity);
    becomeShort();
    setShortLength(NumberText::WriteDecimal(shortUnits(), std::int32_t(v)));
    return *this;
}

TStringCore& TStringCore::setNum(unsigned int v, int base, int fieldWidth, char16_t fill)
{
    if (base == 10 && fieldWidth == 0) {
        becomeShort();
        setShortLength(NumberText::WriteDecimal(shortUnits(), std::uint32_t(v)));
    } else {
        SetUnsigned(*this, v, base, fieldWidth, fill);
    }
    return *this;
}

TStringCore& TStringCore::setNum(short v, int base, int fieldWidth, char16_t fill)
{
    return setNum(int(v), base, fieldWidth, fill);
}

TStringCore& TStringCore::setNum(unsigned short v, int base, int fieldWidth, char16_t fill)
{
    return setNum(static_cast<unsigned int>(v), base, fieldWidth, fill);
}

TStringCore& TStringCore::setNum(long v, int base, int fieldWidth, char16_t fill)
{
    SetSigned(*this, v, base, fieldWidth, fill);
    return *this;
}

TStringCore& TStringCore::setNum(unsigned long v, int base, int fieldWidth, char16_t fill)
{
    SetUnsigned(*this, v, base, fieldWidth, fill);
    return *this;
}

TStringCore& TStringCore::setNum(long long v, int base, int fieldWidth, char16_t fill)
{
    SetSigned(*this, v, base, fieldWidth, fill);
    return *this;
}

TStringCore& TStringCore::setNum(unsigned long long v, int base, int fieldWidth, char16_t fill)
{
    SetUnsigned(*this, v, base, fieldWidth, fill);
    return *this;
}

TStringCore& TStringCore::setNum(double v, char format, int precision, bool trimZeros)
{
    NumberText::FloatText const text(v, format, precision, trimZeros);
    copyUnits(resizeForOverwrite(text.Length()), text.Data(), text.Length());
    return *this;
}

short TStringCore::toShort(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<short>(constData(), length(), base), ok);
}

unsigned short TStringCore::toUShort(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<unsigned short>(constData(), length(), base), ok);
}

int TStringCore::toInt(bool* ok, int base) const
{
    return Answer(NumberText::ToInt32(constData(), length(), base), ok);
}

unsigned int TStringCore::toUInt(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<unsigned int>(constData(), length(), base), ok);
}

long TStringCore::toLong(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<long>(constData(), length(), base), ok);
}

unsigned long TStringCore::toULong(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<unsigned long>(constData(), length(), base), ok);
}

long long TStringCore::toLongLong(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<long long>(constData(), length(), base), ok);
}

unsigned long long TStringCore::toULongLong(bool* ok, int base) const
{
    return Answer(NumberText::ToInteger<unsigned long long>(constData(), length(), base), ok);
}

float TStringCore::toFloat(bool* ok) const
{
    return Answer(NumberText::ToFloat(constData(), length()), ok);
}

double TStringCore::toDouble(bool* ok) const
{
    return Answer(NumberText::ToDouble(constData(), length()), ok);
}

int TStringCore::leftIntegerLength(int base) const
{
    return NumberText::LeftIntegerLength(constData(), length(), base);
}

int TStringCore::leftDoubleLength() const
{
    return NumberText::LeftDoubleLength(constData(), length());
}

int TStringCore::leftIntegerLength(char16_t const* text, int len, int base)
{
    return NumberText::LeftIntegerLength(text, CheckedLength(text, len), base);
}

int TStringCore::leftDoubleLength(char16_t const* text, int len)
{
    return NumberText::LeftDoubleLength(text, CheckedLength(text, len));
}

TStringCore TStringCore::pointer(void const* address, bool prefix, bool padded)
{
    char16_t units[NumberText::kMaxIntegerUnits];
    return TStringCore(units, NumberText::WritePointer(units, address, prefix, padded));
}

// Encodings

void TStringCore::decodeUtf8(char const* text, std::size_t n)
{
    TextConversion::Utf8ToUtf16(text, n, [this](std::size_t units) {
        return TStringManager::resize(CheckedSum(static_cast<std::int64_t>(units)));
    });
    if (length() <= kShortCapacity || capacity() / 2 > length()) {
        squeeze(); // ill-formed text had room for one unit a byte
    }
}

void TStringCore::becomeUtf8(char const* text, int len)
{
    decodeUtf8(text, static_cast<std::size_t>(CheckedByteLength(text, len)));
}

TStringCore TStringCore::fromUtf16(char16_t const* text, int len)
{
    return TStringCore(text, len);
}

TStringCore TStringCore::fromUtf32(char32_t const* text, int len)
{
    return FromCodePoints(text, static_cast<std::size_t>(CheckedLength32(text, len)));
}

TStringCore TStringCore::fromLatin1(char const* text, int len)
{
    return Widened(text, len, &TextConversion::Latin1ToUtf16);
}

TStringCore TStringCore::fromLatin9(char const* text, int len)
{
    return Widened(text, len, &TextConversion::Latin9ToUtf16);
}

TStringCore TStringCore::fromLocal8Bit(char const* text, int len)
{
    return fromUtf8(text, len);
}

TStringCore TStringCore::fromWChar(wchar_t const* text, int len)
{
    int const n = CheckedLength(text, len, [](wchar_t const* p) {
        return CheckedSum(std::int64_t(std::char_traits<wchar_t>::length(p)));
    });
    return fromStdWString(std::wstring(n == 0 ? L"" : text, static_cast<std::size_t>(n)));
}

TStringCore TStringCore::fromStdString(std::string const& text)
{
    TStringCore result;
    result.decodeUtf8(text.data(), text.size());
    return result;
}

TStringCore TStringCore::fromStdU16String(std::u16string const& text)
{
    return TStringCore(text.data(), CheckedSum(static_cast<std::int64_t>(text.size())));
}

TStringCore TStringCore::fromStdUString(std::u32string const& text)
{
    return FromCodePoints(text.data(), text.size());
}

TStringCore TStringCore::fromStdWString(std::wstring const& text)
{
    if constexpr (sizeof(wchar_t) == sizeof(char32_t)) {
        return fromStdUString(std::u32string(text.begin(), text.end()));
    } else {
        return fromStdU16String(std::u16string(text.begin(), text.end()));
    }
}

std::string TStringCore::toStdString() const
{
    return TextConversion::ToUtf8(constData(), static_cast<std::size_t>(length()));
}

std::u16string TStringCore::toStdU16String() const
{
    return std::u16string(constData(), static_cast<std::size_t>(length()));
}

std::u32string TStringCore::toStdUString() const
{
    std::u32string result(static_cast<std::size_t>(lengthInCodePoints()), U'\0');
    TextConversion::Utf16ToUtf32(constData(), static_cast<std::size_t>(length()), result.data());
    return result;
}

std::wstring TStringCore::toStdWString() const
{
    if constexpr (sizeof(wchar_t) == sizeof(char32_t)) {
        std::u32string const codePoints = toStdUString();
        return std::wstring(codePoints.begin(), codePoints.end());
    } else {
        return std::wstring(cbegin(), cend());
    }
}

std::string TStringCore::toLatin1(bool* ok) const
{
    return Narrowed(*this, ok, &TextConversion::Utf16ToLatin1);
}

std::string TStringCore::toLatin9(bool* ok) const
{
    return Narrowed(*this, ok, &TextConversion::Utf16ToLatin9);
}

std::string TStringCore::toLocal8Bit(bool* ok) const
{
    if (ok != nullptr) {
        *ok = !HasUnpairedSurrogate(*this);
    }
    return toStdString();
}

int TStringCore::toWCharArray(wchar_t* out, int size) const
{
    std::wstring const wide = toStdWString();
    std::size_t const n = std::min(wide.size(), static_cast<std::size_t>(std::max(size, 0)));
    std::copy_n(wide.begin(), n, out);
    return static_cast<int>(n);
}

std::vector<wchar_t> TStringCore::toWCharVector() const
{
    std::wstring const wide = toStdWString();
    return std::vector<wchar_t>(wide.c_str(), wide.c_str() + wide.size() + 1);
}

std::ostream& operator<<(std::ostream& out, TStringCore const& text)
{
    return out << text.toStdString();
}
