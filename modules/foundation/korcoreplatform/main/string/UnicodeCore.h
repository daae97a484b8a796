/// Reusable converters between UTF-16 and UTF-8 for callers that need a zero-terminated view.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"

#include <vector>

namespace UnicodeCore {

/// Converts UTF-16 to UTF-8. A converter keeps its buffer: one that is used again allocates only
/// for a result that is longer than any before.
///
///     UnicodeCore::ToUTF8 toUtf8;
///     ::setenv(toUtf8(name), UnicodeCore::ToUTF8(value).Data(), 1);
///
/// A unit that is no character, an unpaired surrogate, becomes U+FFFD. When ICU refuses a text,
/// null with a length other than 0 for instance, that is logged at Warn, and the former result
/// stays.
///
/// Throws, wherever a text is converted: `std::bad_alloc`; the result is then any.
/// Thread safety: one object must not be used by two threads at once.
class KORCOREPLATFORM_EXPORT ToUTF8
{
public:
    ToUTF8() : m_buffer(1) {} ///< Holds the empty text.
    explicit ToUTF8(char16_t const* text);
    ToUTF8(char16_t const* text, unsigned long length);
    ToUTF8(ToUTF8 const&) = default; // no move: it would leave no zero
    ToUTF8& operator=(ToUTF8 const&) = default;
    ~ToUTF8() = default;

    /// Converts `length` units, for -1 those up to the terminating zero.
    void Convert(char16_t const* text, int length);

    /// As `Convert`. The result is good until the next conversion; zeros within the text are kept.
    char const* operator()(char16_t const* text);
    char const* operator()(char16_t const* text, unsigned long length);

    char const* Data() const noexcept { return m_buffer.data(); } ///< Zero-terminated.
    int Length() const noexcept { return m_length; } ///< Of the result, in bytes without the zero.

private:
    std::vector<char> m_buffer; ///< The result, its terminating zero, then anything.
    int m_length = 0;
};

/// Converts UTF-8 to UTF-16 in the same way: a byte that is no part of a character becomes U+FFFD.
class KORCOREPLATFORM_EXPORT FromUTF8
{
public:
    FromUTF8() : m_buffer(1) {} ///< Holds the empty text.
    explicit FromUTF8(char const* text);
    FromUTF8(char const* text, unsigned long length);
    FromUTF8(FromUTF8 const&) = default;
    FromUTF8& operator=(FromUTF8 const&) = default;
    ~FromUTF8() = default;

    /// Converts `length` bytes, for -1 those up to the terminating zero.
    void Convert(char const* text, int length);

    /// As `Convert`. The result is good until the next conversion; zeros within the text are kept.
    char16_t const* operator()(char const* text);
    char16_t const* operator()(char const* text, unsigned long length);

    char16_t const* Data() const noexcept { return m_buffer.data(); } ///< Zero-terminated.
    int Length() const noexcept { return m_length; } ///< Of the result, in units without the zero.

private:
    std::vector<char16_t> m_buffer; ///< As that of `ToUTF8`.
    int m_length = 0;
};

} // namespace UnicodeCore
