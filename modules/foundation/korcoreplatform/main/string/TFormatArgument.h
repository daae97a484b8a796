/// How a value becomes the text that a format string inserts for it.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

/// The arguments of `TFormatString::args` and `TFormat`: `Of(value)` picks the class that holds a
/// value's text. `View` is for a caller that formats at once; it is good as long as the argument
/// and the value live. `Text` is for a caller that keeps it.
///
/// - Texts are inserted as they are: `TString`, everything that converts to it, zero-terminated
///   `char` (UTF-8) and `char16_t`. A null pointer to these is the empty text.
/// - Integers but `wchar_t` and `char32_t` are decimal, `bool` is 0 or 1, an enumerator its number.
/// - `char16_t` and `char` (Latin-1) are one character.
/// - Floating-point numbers have six significant digits, as `TString::number` writes 'g'.
/// - Any other pointer to an object (`wchar_t` as well) is its address: "0x7ffe...".
namespace TFormatArgument {

/// A text of the library.
class SharedText
{
public:
    explicit SharedText(TStringCore const& text) noexcept : m_text(text) {}

    std::u16string_view View() const noexcept
    {
        return {m_text.constData(), static_cast<std::size_t>(m_text.length())};
    }
    TString Text() const noexcept { return m_text; }

private:
    TStringCore const& m_text;
};

/// Units that lie elsewhere.
class Units
{
public:
    explicit Units(char16_t const* text) noexcept
        : m_view(text, static_cast<std::size_t>(TStringCore::length(text)))
    {}
    KORCOREPLATFORM_EXPORT explicit Units(QString const& text) noexcept; ///< Zero units included.

    std::u16string_view View() const noexcept { return m_view; }
    TString Text() const { return TString(m_view.data(), static_cast<int>(m_view.size())); }

private:
    std::u16string_view m_view;
};

/// A short text that is written here.
class Written
{
public:
    explicit Written(char16_t c) noexcept : m_length(1) { m_units[0] = c; }
    KORCOREPLATFORM_EXPORT explicit Written(int number) noexcept;
    KORCOREPLATFORM_EXPORT explicit Written(unsigned int number) noexcept;
    KORCOREPLATFORM_EXPORT explicit Written(long long number) noexcept;
    KORCOREPLATFORM_EXPORT explicit Written(unsigned long long number) noexcept;
    KORCOREPLATFORM_EXPORT explicit Written(void const* address) noexcept;

    std::u16string_view View() const noexcept
    {
        return {m_units, static_cast<std::size_t>(m_length)};
    }
    TString Text() const { return TString(m_units, m_length); }

private:
    static constexpr int kUnits = 64; ///< What the writers of numbers ask for.

    int m_length;
    char16_t m_units[kUnits]; ///< Those behind the length hold anything.
};

/// A text made for the purpose.
class OwnText
{
public:
    explicit OwnText(TString text) noexcept : m_text(static_cast<TString&&>(text)) {}

    std::u16string_view View() const noexcept { return SharedText(m_text).View(); }
    TString Text() const noexcept { return m_text; }

private:
    TString m_text;
};

template <class Integer>
Written OfInteger(Integer number) noexcept
{
    static_assert(sizeof(Integer) <= sizeof(long long), "an integer this wide cannot be formatted");
    constexpr bool isSigned = std::is_signed_v<Integer>;
    if constexpr (sizeof(Integer) <= sizeof(int)) {
        return Written(static_cast<std::conditional_t<isSigned, int, unsigned int>>(number));
    } else {
        return Written(
            static_cast<std::conditional_t<isSigned, long long, unsigned long long>>(number));
    }
}

template <class Value>
constexpr bool kIsNumber = std::is_integral_v<Value> && !std::is_same_v<Value, wchar_t> &&
                           !std::is_same_v<Value, char32_t>;

template <class Value>
constexpr bool kIsUnitPointer =
    std::is_pointer_v<Value>&& std::is_convertible_v<Value, char16_t const*>;

template <class Value>
constexpr bool
    kIsPointer = (std::is_pointer_v<Value> ||
                  std::is_null_pointer_v<Value>)&&std::is_convertible_v<Value, void const*>;

template <class Value>
auto Of(Value const& value)
{
    if constexpr (std::is_enum_v<Value>) {
        return OfInteger(static_cast<std::underlying_type_t<Value>>(value));
    } else if constexpr (std::is_same_v<Value, char>) {
        return Written(static_cast<char16_t>(static_cast<unsigned char>(value)));
    } else if constexpr (std::is_same_v<Value, char16_t>) {
        return Written(value);
    } else if constexpr (kIsNumber<Value>) {
        return OfInteger(value);
    } else if constexpr (std::is_floating_point_v<Value>) {
        return OwnText(TString::number(static_cast<double>(value), 'g', 6, false));
    } else if constexpr (std::is_base_of_v<TStringCore, Value>) {
        return SharedText(value);
    } else if constexpr (kIsUnitPointer<std::decay_t<Value>> || std::is_same_v<Value, QString>) {
        return Units(value);
    } else if constexpr (std::is_convertible_v<Value const&, TString>) {
        return OwnText(value);
    } else {
        static_assert(kIsPointer<std::decay_t<Value>>, "this type cannot be formatted");
        return Written(static_cast<void const*>(value));
    }
}

/// Whether the value becomes a text by what its class says, which may fail.
template <class Value>
constexpr bool kConvertsItself =
    std::is_class_v<Value>&& std::is_same_v<decltype(Of(std::declval<Value const&>())), OwnText>;

} // namespace TFormatArgument
