/// The text type of the library: UTF-16 text that converts to and from Qt's types.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korsys/main/text/TStringCore.h"

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

class QByteArray;
class QDebug;
class QRegularExpression;
class QString;

/// UTF-16 text with everything that `TStringCore` does, results as `TString`, and Qt at its edges.
/// What is said there of positions, aliasing, sharing, errors and threads holds here.
///
///     TString const name = TString(u"report").toUpper() + u".txt";
///     if (name.endsWith(u".TXT", TString::CaseInsensitive)) { ... }
///
/// Qt's texts are taken in three ways, which differ on purpose:
/// - comparison, `contains`, `startsWith`, `endsWith` and `+=` take the units of a `QString` up to
///   the first zero unit;
/// - everything else takes all units of a `QString`, zero units included;
/// - a `QByteArray` is UTF-8 up to its first zero byte.
/// An empty text converts to a `QString` that is null.
class KORCOREPLATFORM_EXPORT TString : public TStringCore
{
public:
    /// Unicode normalisation forms, numbered as Qt numbers them.
    enum NormalizationForm : int
    {
        NormalizationForm_D = 0,
        NormalizationForm_C = 1,
        NormalizationForm_KD = 2,
        NormalizationForm_KC = 3
    };

    // Construction and assignment. 8-bit text is UTF-8, a single `char` is Latin-1.

    TString() noexcept = default;
    TString(TString const&) noexcept = default;
    TString(TString&&) noexcept = default;
    TString(char16_t const* text, int len = -1) : TStringCore(text, len) {}
    TString(char const* text, int len = -1) : TStringCore(text, len) {}
    TString(char16_t c, int n) : TStringCore(c, n) {}
    TString(char c, int n) : TStringCore(c, n) {}
    TString(TString const& text, int n) : TString(text.left(n)) {} ///< The first `n` units.
    TString(TStringCore const& text) noexcept : TStringCore(text) {}
    TString(TStringCore&& text) noexcept : TStringCore(static_cast<TStringCore&&>(text)) {}
    TString(QString const& text);
    TString(QByteArray const& utf8);
    ~TString() = default;

    TString& operator=(TString const&) noexcept = default;
    TString& operator=(TString&&) noexcept = default;
    TString& operator=(TStringCore const& text) noexcept { return assign(text); }
    TString& operator=(TStringCore&& text) noexcept
    {
        return assign(static_cast<TStringCore&&>(text));
    }
    TString& operator=(char16_t const* text) { return assign(text); }
    TString& operator=(char const* text) { return assign(text); }
    TString& operator=(char16_t c) { return assign(c, 1); }
    TString& operator=(char c) { return assign(c, 1); }
    TString& operator=(std::initializer_list<char16_t> units)
    {
        return self(TStringCore::operator=(units));
    }
    TString& operator=(QString const& text);
    TString& operator=(QByteArray const& utf8);

    TString& assign(TStringCore const& text) noexcept { return self(TStringCore::assign(text)); }
    TString& assign(TStringCore&& text) noexcept
    {
        return self(TStringCore::assign(static_cast<TStringCore&&>(text)));
    }
    TString& assign(char16_t const* text, int len = -1)
    {
        return self(TStringCore::assign(text, len));
    }
    TString& assign(char const* text, int len = -1) { return self(TStringCore::assign(text, len)); }
    TString& assign(char16_t c, int n) { return self(TStringCore::assign(c, n)); }
    TString& assign(char c, int n) { return self(TStringCore::assign(c, n)); }
    TString& assign(TString const& text, int n) { return assign(text.left(n)); }
    TString& set(char16_t const* text, int len = -1) { return assign(text, len); }
    void swap(TString& other) noexcept { TStringManager::swap(other); }
    void swap(QString& other);

    /// Never null, so a text in a condition is always true: ask `isEmpty`.
    operator char16_t const*() const noexcept { return constData(); }

    // Size and storage

    TString& resize(int n) { return self(TStringCore::resize(n)); }
    TString& truncate(int n) { return self(TStringCore::truncate(n)); }
    TString& chop(int n) { return self(TStringCore::chop(n)); }
    TString& truncateAtFirstNull() { return self(TStringCore::truncateAtFirstNull()); }
    TString& fill(char16_t c, int n = -1) { return self(TStringCore::fill(c, n)); }

    // Append, insert, remove

    TString& append(TString const& text) { return self(TStringCore::append(text)); }
    TString& append(char16_t const* text, int len = -1)
    {
        return self(TStringCore::append(text, len));
    }
    TString& append(char const* text, int len = -1) { return self(TStringCore::append(text, len)); }
    TString& append(char16_t c) { return self(TStringCore::append(c)); }
    TString& append(char c) { return self(TStringCore::append(c)); }
    TString& append(TString const& text, int n) { return append(text.left(n)); }
    TString& append(QByteArray const& utf8);
    TString& append(char16_t c, int n) { return self(TStringCore::append(c, n)); }
    TString& operator+=(TString const& text) { return append(text); }
    TString& operator+=(char16_t const* text) { return append(text); }
    TString& operator+=(char const* text) { return append(text); }
    TString& operator+=(char16_t c) { return append(c); }
    TString& operator+=(char c) { return append(c); }
    TString& operator+=(QString const& text);
    TString& operator+=(QByteArray const& utf8);
    TString& prepend(TString const& text) { return self(TStringCore::prepend(text)); }
    TString& prepend(char16_t const* text, int len = -1)
    {
        return self(TStringCore::prepend(text, len));
    }
    TString& prepend(char16_t c) { return self(TStringCore::prepend(c)); }
    TString& prepend(char c) { return prepend(unitOf(c)); }
    void push_back(char16_t c) { append(c); }
    void push_back(char c) { append(c); }
    void push_front(char16_t c) { prepend(c); }
    void push_front(char c) { prepend(c); }

    TString& insert(int pos, TString const& text) { return self(TStringCore::insert(pos, text)); }
    TString& insert(int pos, char16_t const* text, int len = -1)
    {
        return self(TStringCore::insert(pos, text, len));
    }
    TString& insert(int pos, char16_t c) { return self(TStringCore::insert(pos, c)); }
    TString& insert(int pos, char c) { return insert(pos, unitOf(c)); }
    TString& insert(int pos, TString const& text, int n) { return insert(pos, text.left(n)); }
    TString& insert(codepoint_const_iterator const& pos, TString const& text)
    {
        return self(TStringCore::insert(pos, text));
    }
    TString& insert(codepoint_const_iterator const& pos, char16_t c)
    {
        return self(TStringCore::insert(pos, c));
    }

    TString& removeAt(int pos, int n = 1) { return self(TStringCore::removeAt(pos, n)); }
    TString& removeAll(char16_t c, CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::removeAll(c, cs));
    }
    TString& removeAll(char16_t const* text, CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::removeAll(text, cs));
    }
    TString& removeAll(TString const& text, CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::removeAll(text, cs));
    }
    TString& removeAll(QRegularExpression const& expression);
    TString& removeAnyOf(char16_t const* set) { return self(TStringCore::removeAnyOf(set)); }
    TString& removeAnyOf(TString const& set) { return self(TStringCore::removeAnyOf(set)); }
    TString& removeAnyOf(char16_t const* set, int len)
    {
        return self(TStringCore::removeAnyOf(set, len));
    }

    TString& replace(int pos, int n, TString const& after)
    {
        return self(TStringCore::replace(pos, n, after));
    }
    TString& replace(int pos, int n, char16_t const* after, int len = -1)
    {
        return self(TStringCore::replace(pos, n, after, len));
    }
    TString& replace(int pos, int n, char16_t after)
    {
        return self(TStringCore::replace(pos, n, after));
    }
    template <class Unit, std::enable_if_t<std::is_same_v<Unit, char16_t>, int> = 0>
    TString& replace(Unit before, Unit after, int) = delete; ///< No position and count.
    TString& replace(char16_t before, char16_t after, CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }
    TString& replace(char16_t before, TString const& after, CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }
    TString& replace(TString const& before, TString const& after,
                     CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }
    TString& replace(char16_t const* before, char16_t const* after,
                     CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }
    TString& replace(TString const& before, char16_t const* after,
                     CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }
    TString& replace(char16_t const* before, TString const& after,
                     CaseSensitivity cs = CaseSensitive)
    {
        return self(TStringCore::replace(before, after, cs));
    }

    /// Replaces every match; `after` may hold back references. An invalid expression changes
    /// nothing.
    TString& replace(QRegularExpression const& expression, TString const& after);
    TString& replaceAnyOf(char16_t const* set, char16_t after)
    {
        return self(TStringCore::replaceAnyOf(set, after));
    }
    TString& replaceAnyOf(TString const& set, char16_t after)
    {
        return self(TStringCore::replaceAnyOf(set, after));
    }
    TString& replaceAnyOf(TString const& set, TString const& after)
    {
        return self(TStringCore::replaceAnyOf(set, after));
    }
    static int replaceCount(TString& text, TString const& before, TString const& after,
                            CaseSensitivity cs = CaseSensitive)
    {
        return TStringCore::replaceCount(text, before, after, cs);
    }

    // Compare

    int compare(TString const& other, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::compare(other, cs);
    }
    int compare(char16_t const* other, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::compare(other, cs);
    }
    int compare(char16_t other, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::compare(other, cs);
    }
    int compare(char const* other, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::compare(TStringCore(other), cs);
    }
    int compare(QString const& other, CaseSensitivity cs = CaseSensitive) const;

    bool operator==(TString const& other) const noexcept
    {
        return equals(other.constData(), other.length());
    }
    bool operator==(TStringCore const& other) const noexcept
    {
        return equals(other.constData(), other.length());
    }
    bool operator==(char16_t const* other) const noexcept { return equals(other, length(other)); }
    bool operator==(char16_t other) const noexcept { return equals(&other, 1); }
    bool operator==(QString const& other) const;
    bool operator!=(TString const& other) const noexcept { return !(*this == other); }
    bool operator!=(TStringCore const& other) const noexcept { return !(*this == other); }
    bool operator!=(char16_t const* other) const noexcept { return !(*this == other); }
    bool operator!=(char16_t other) const noexcept { return !(*this == other); }
    bool operator!=(QString const& other) const { return !(*this == other); }
    bool operator<(TString const& other) const { return TStringCore::compare(other) < 0; }
    bool operator<(TStringCore const& other) const { return TStringCore::compare(other) < 0; }
    bool operator<(char16_t const* other) const { return TStringCore::compare(other) < 0; }
    bool operator<(char16_t other) const { return TStringCore::compare(other) < 0; }
    bool operator<(QString const& other) const { return compare(other) < 0; }
    bool operator<=(TString const& other) const { return TStringCore::compare(other) <= 0; }
    bool operator<=(TStringCore const& other) const { return TStringCore::compare(other) <= 0; }
    bool operator<=(char16_t const* other) const { return TStringCore::compare(other) <= 0; }
    bool operator<=(char16_t other) const { return TStringCore::compare(other) <= 0; }
    bool operator<=(QString const& other) const { return compare(other) <= 0; }
    bool operator>(TString const& other) const { return TStringCore::compare(other) > 0; }
    bool operator>(TStringCore const& other) const { return TStringCore::compare(other) > 0; }
    bool operator>(char16_t const* other) const { return TStringCore::compare(other) > 0; }
    bool operator>(char16_t other) const { return TStringCore::compare(other) > 0; }
    bool operator>(QString const& other) const { return compare(other) > 0; }
    bool operator>=(TString const& other) const { return TStringCore::compare(other) >= 0; }
    bool operator>=(TStringCore const& other) const { return TStringCore::compare(other) >= 0; }
    bool operator>=(char16_t const* other) const { return TStringCore::compare(other) >= 0; }
    bool operator>=(char16_t other) const { return TStringCore::compare(other) >= 0; }
    bool operator>=(QString const& other) const { return compare(other) >= 0; }

    // 8-bit text is UTF-8 here too, a single `char` Latin-1.
    bool operator==(char other) const { return *this == unitOf(other); }
    bool operator==(char const* other) const { return *this == TStringCore(other); }
    bool operator!=(char other) const { return *this != unitOf(other); }
    bool operator!=(char const* other) const { return *this != TStringCore(other); }
    bool operator<(char other) const { return *this < unitOf(other); }
    bool operator<(char const* other) const { return *this < TStringCore(other); }
    bool operator<=(char other) const { return *this <= unitOf(other); }
    bool operator<=(char const* other) const { return *this <= TStringCore(other); }
    bool operator>(char other) const { return *this > unitOf(other); }
    bool operator>(char const* other) const { return *this > TStringCore(other); }
    bool operator>=(char other) const { return *this >= unitOf(other); }
    bool operator>=(char const* other) const { return *this >= TStringCore(other); }

    /// The order in which people expect texts in a list: -1, 0 or 1. The rules are those of
    /// ICU's default locale when the first texts are compared, which the environment names (LC_ALL,
    /// LC_MESSAGES, LANG) unless the host sets another; in the C locale capitals sort before small
    /// letters. Despite the name, case counts; and an empty text sorts after every other, which
    /// callers rely on. A null `other` counts as empty.
    int CollateNoCase(char16_t const* other) const;

    // Search

    int indexOf(TString const& text, int from = 0, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::indexOf(text, from, cs);
    }
    int indexOf(char16_t const* text, int from = 0, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::indexOf(text, from, cs);
    }
    int indexOf(char16_t c, int from = 0, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::indexOf(c, from, cs);
    }
    int indexOf(char c, int from = 0, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::indexOf(unitOf(c), from, cs);
    }
    int lastIndexOf(TString const& text, int from = -1, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::lastIndexOf(text, from, cs);
    }
    int lastIndexOf(char16_t const* text, int from = -1, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::lastIndexOf(text, from, cs);
    }
    int lastIndexOf(char16_t c, int from = -1, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::lastIndexOf(c, from, cs);
    }
    int lastIndexOf(char c, int from = -1, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::lastIndexOf(unitOf(c), from, cs);
    }
    bool contains(TString const& text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::contains(text, cs);
    }
    bool contains(char16_t const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::contains(text, cs);
    }
    bool contains(char const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::contains(TStringCore(text), cs);
    }
    bool contains(char16_t c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::contains(c, cs);
    }
    bool contains(char c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::contains(unitOf(c), cs);
    }
    bool contains(QString const& text, CaseSensitivity cs = CaseSensitive) const;
    int count(TString const& text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::count(text, cs);
    }
    int count(char16_t const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::count(text, cs);
    }
    int count(char16_t c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::count(c, cs);
    }
    int count(char c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::count(unitOf(c), cs);
    }
    bool startsWith(TString const& text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::startsWith(text, cs);
    }
    bool startsWith(char16_t const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::startsWith(text, cs);
    }
    bool startsWith(char16_t c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::startsWith(c, cs);
    }
    bool startsWith(char const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::startsWith(TStringCore(text), cs);
    }
    bool startsWith(char c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::startsWith(unitOf(c), cs);
    }
    bool startsWith(QString const& text, CaseSensitivity cs = CaseSensitive) const;
    bool endsWith(TString const& text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::endsWith(text, cs);
    }
    bool endsWith(char16_t const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::endsWith(text, cs);
    }
    bool endsWith(char16_t c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::endsWith(c, cs);
    }
    bool endsWith(char const* text, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::endsWith(TStringCore(text), cs);
    }
    bool endsWith(char c, CaseSensitivity cs = CaseSensitive) const
    {
        return TStringCore::endsWith(unitOf(c), cs);
    }
    bool endsWith(QString const& text, CaseSensitivity cs = CaseSensitive) const;
    TString spanIncluding(TString const& set) const { return TStringCore::spanIncluding(set); }
    TString spanExcluding(TString const& set) const { return TStringCore::spanExcluding(set); }

    // Substring, split, join

    TString left(int n) const { return taken<TString>(leftPart(n)); }
    TString right(int n) const { return taken<TString>(rightPart(n)); }
    TString mid(int pos, int n = -1) const { return taken<TString>(midPart(pos, n)); }
    TString section(char16_t sep, int start, int end = -1,
                    SectionFlags flags = SectionDefault) const
    {
        return TStringCore::section(sep, start, end, flags);
    }
    TString section(TString const& sep, int start, int end = -1,
                    SectionFlags flags = SectionDefault) const
    {
        return TStringCore::section(sep, start, end, flags);
    }
    TString section(char16_t const* sep, int start, int end = -1,
                    SectionFlags flags = SectionDefault) const
    {
        return TStringCore::section(sep, start, end, flags);
    }
    /// The empty text for an invalid expression.
    TString section(QRegularExpression const& sep, int start, int end = -1,
                    SectionFlags flags = SectionDefault) const;

    std::vector<TString> split(TString const& sep, SplitBehavior behavior = KeepEmptyParts,
                               CaseSensitivity cs = CaseSensitive) const;
    std::vector<TString> split(char16_t const* sep, SplitBehavior behavior = KeepEmptyParts,
                               CaseSensitivity cs = CaseSensitive) const;
    std::vector<TString> split(char16_t sep, SplitBehavior behavior = KeepEmptyParts,
                               CaseSensitivity cs = CaseSensitive) const;
    using TStringCore::split;
    std::vector<TString> splitOnAny(TString const& set,
                                    SplitBehavior behavior = KeepEmptyParts) const;
    std::vector<TString> splitOnAny(char16_t const* set,
                                    SplitBehavior behavior = KeepEmptyParts) const;
    TString tokenize(char16_t sep, int& pos, SplitBehavior behavior = KeepEmptyParts) const
    {
        return TStringCore::tokenize(sep, pos, behavior);
    }
    TString tokenize(TString const& sep, int& pos, SplitBehavior behavior = KeepEmptyParts) const
    {
        return TStringCore::tokenize(sep, pos, behavior);
    }
    static TString join(std::vector<TString> const& list, TString const& sep);
    static TString join(std::vector<TString> const& list, char16_t sep);
    static std::vector<TString> getTStringsFromTStringCores(std::vector<TStringCore> list);

    // Trim and layout

    TString& trim() { return self(TStringCore::trim()); }
    TString& trim(char c) { return self(TStringCore::trim(c)); }
    TString& trim(char16_t c) { return self(TStringCore::trim(c)); }
    TString& trim(char16_t const* set) { return self(TStringCore::trim(set)); }
    TString& trim(TString const& set) { return self(TStringCore::trim(set)); }
    TString& trimLeft() { return self(TStringCore::trimLeft()); }
    TString& trimLeft(char c) { return self(TStringCore::trimLeft(c)); }
    TString& trimLeft(char16_t c) { return self(TStringCore::trimLeft(c)); }
    TString& trimLeft(char16_t const* set) { return self(TStringCore::trimLeft(set)); }
    TString& trimLeft(TString const& set) { return self(TStringCore::trimLeft(set)); }
    TString& trimRight() { return self(TStringCore::trimRight()); }
    TString& trimRight(char c) { return self(TStringCore::trimRight(c)); }
    TString& trimRight(char16_t c) { return self(TStringCore::trimRight(c)); }
    TString& trimRight(char16_t const* set) { return self(TStringCore::trimRight(set)); }
    TString& trimRight(TString const& set) { return self(TStringCore::trimRight(set)); }
    TString trimmed() const { return taken<TString>(trimmedPart()); }
    TString leftJustified(int width, char16_t fill = u' ', bool truncate = false) const
    {
        return TStringCore::leftJustified(width, fill, truncate);
    }
    TString rightJustified(int width, char16_t fill = u' ', bool truncate = false) const
    {
        return TStringCore::rightJustified(width, fill, truncate);
    }
    TString repeated(int times) const { return TStringCore::repeated(times); }
    TString& reverse() { return self(TStringCore::reverse()); }
    TString reversed() const { return TStringCore::reversed(); }

    TString toLower() const { return made<TString>(&TString::becomeLower, *this); }
    TString toUpper() const { return made<TString>(&TString::becomeUpper, *this); }
    TString normalized(NormalizationForm form) const;

    // Line endings and byte-order mark

    TString& dosToUnix() { return self(TStringCore::dosToUnix()); }
    static int dosToUnix(char16_t* text) { return TStringCore::dosToUnix(text); }
    TString& unixToDos() { return self(TStringCore::unixToDos()); }
    TString& toNativeLineEndings() { return self(TStringCore::toNativeLineEndings()); }
    TString& removeBOM() { return self(TStringCore::removeBOM()); }
    TString& prependBOM() { return self(TStringCore::prependBOM()); }

    // Numbers

    /// Replaces the text by the number's text.
    TString& setNum(short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(unsigned short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(unsigned int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(unsigned long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(long long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(unsigned long long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return self(TStringCore::setNum(v, base, fieldWidth, fill));
    }
    TString& setNum(double v, char format = 'g', int precision = 6, bool trimZeros = false)
    {
        return self(TStringCore::setNum(v, format, precision, trimZeros));
    }
    static TString number(short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(unsigned short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(unsigned int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(unsigned long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(long long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(unsigned long long v, int base = 10, int fieldWidth = 0,
                          char16_t fill = u' ')
    {
        return numbered<TString>(v, base, fieldWidth, fill);
    }
    static TString number(double v, char format = 'g', int precision = 6, bool trimZeros = false)
    {
        return numbered<TString>(v, format, precision, trimZeros);
    }

    static TString pointer(void const* address, bool prefix = true, bool padded = false)
    {
        return TStringCore::pointer(address, prefix, padded);
    }

    // Encodings

    static TString fromUtf8(char const* text, int len = -1) { return TString(text, len); }
    static TString fromUtf16(char16_t const* text, int len = -1)
    {
        return TStringCore::fromUtf16(text, len);
    }
    static TString fromUtf32(char32_t const* text, int len = -1)
    {
        return TStringCore::fromUtf32(text, len);
    }
    static TString fromLatin1(char const* text, int len = -1)
    {
        return TStringCore::fromLatin1(text, len);
    }
    static TString fromLatin9(char const* text, int len = -1)
    {
        return TStringCore::fromLatin9(text, len);
    }
    static TString fromLocal8Bit(char const* text, int len = -1)
    {
        return TStringCore::fromLocal8Bit(text, len);
    }
    static TString fromWChar(wchar_t const* text, int len = -1)
    {
        return TStringCore::fromWChar(text, len);
    }
    static TString fromStdString(std::string const& text)
    {
        return TStringCore::fromStdString(text);
    }
    static TString fromStdU16String(std::u16string const& text)
    {
        return TStringCore::fromStdU16String(text);
    }
    static TString fromStdUString(std::u32string const& text)
    {
        return TStringCore::fromStdUString(text);
    }
    static TString fromStdWString(std::wstring const& text)
    {
        return TStringCore::fromStdWString(text);
    }
    static TString fromQString(QString const& text);

    /// Decodes bytes up to the zero with the codec that Qt knows by `encodingName`; UTF-8 when it
    /// knows none. `failed` (may be null) becomes true when some bytes could not be decoded, and
    /// is written only when a codec was found.
    static TString fromEncoding(char const* data, char const* encodingName, bool* failed = nullptr);

    QString toQString() const;
    TStringCore const& toTStringCore() const noexcept { return *this; }

    // The older interface

    int GetLength() const noexcept { return length(); }
    bool IsEmpty() const noexcept { return isEmpty(); }
    char16_t const* GetString() const noexcept { return constData(); }
    char16_t GetAt(int i) const { return TStringCore::operator[](i); }
    void SetAt(int i, char16_t c) { TStringCore::operator[](i) = c; }
    TString& Append(TString const& text) { return append(text); }
    TString& Append(char16_t const* text) { return append(text); }
    TString& Append(TString const& text, int n); ///< The first `n` units; all when there are fewer.
    TString& AppendChar(char16_t c) { return append(c); }
    int Insert(int pos, TString const& text) { return insert(pos, text).length(); }
    int Insert(int pos, char16_t const* text) { return insert(pos, text).length(); }
    int Insert(int pos, char16_t c) { return insert(pos, c).length(); }
    int Delete(int pos, int n = 1) { return removeAt(pos, n).length(); }
    int Remove(char16_t c); ///< Returns how many there were.
    int Replace(char16_t before, char16_t after);
    int Replace(TString const& before, TString const& after)
    {
        return replaceCount(*this, before, after);
    }
    int Replace(char16_t const* before, char16_t const* after)
    {
        return replaceCount(*this, before, after);
    }
    int Replace(TString const& before, char16_t const* after)
    {
        return replaceCount(*this, before, after);
    }
    int Replace(char16_t const* before, TString const& after)
    {
        return replaceCount(*this, before, after);
    }
    int Find(TString const& text, int from = 0) const { return indexOf(text, from); }
    int Find(char16_t const* text, int from = 0) const { return indexOf(text, from); }
    int Find(char16_t c, int from = 0) const { return indexOf(c, from); }
    int ReverseFind(char16_t c) const { return lastIndexOf(c); }
    TString Left(int n) const { return left(n); }
    TString Mid(int pos, int n = -1) const { return mid(pos, n); }
    TString Right(int n) const { return right(n); }
    TString& MakeLower() { return *this = toLower(); }
    TString& MakeUpper() { return *this = toUpper(); }
    TString& Trim() { return trim(); }
    TString& Trim(char16_t c) { return trim(c); }
    TString& Trim(char c) { return trim(c); }
    TString& Trim(char16_t const* set) { return trim(set); }
    TString& Trim(TString const& set) { return trim(set); }
    TString& TrimLeft() { return trimLeft(); }
    TString& TrimLeft(char16_t c) { return trimLeft(c); }
    TString& TrimLeft(char c) { return trimLeft(c); }
    TString& TrimLeft(char16_t const* set) { return trimLeft(set); }
    TString& TrimLeft(TString const& set) { return trimLeft(set); }
    TString& TrimRight() { return trimRight(); }
    TString& TrimRight(char16_t c) { return trimRight(c); }
    TString& TrimRight(char c) { return trimRight(c); }
    TString& TrimRight(char16_t const* set) { return trimRight(set); }
    TString& TrimRight(TString const& set) { return trimRight(set); }
    TString& Truncate(int n) { return truncate(n); }
    int Compare(TString const& other) const { return compare(other, CaseSensitive); }
    int Compare(char16_t const* other) const { return compare(other, CaseSensitive); }
    int CompareNoCase(TString const& other) const { return compare(other, CaseInsensitive); }
    int CompareNoCase(char16_t const* other) const { return compare(other, CaseInsensitive); }
    TString& SetString(char16_t const* text, int len = -1) { return assign(text, len); }

    /// The units for writing: as many as the text has, or `minLength` if that is more, and a
    /// zero after them. `ReleaseBuffer` then sets the length: up to the first zero when negative.
    /// Throws: `StringException` with id AutoGen_0xDBED6C12 for a negative length of
    /// `GetBufferSetLength`, and for a length of `ReleaseBuffer` beyond the capacity.
    char16_t* GetBuffer() { return data(); }
    char16_t* GetBuffer(int minLength);
    char16_t* GetBufferSetLength(int n);
    void ReleaseBuffer(int newLength = -1);

private:
    TString& self(TStringCore&) noexcept { return *this; }
};

static_assert(sizeof(TString) == sizeof(TStringCore), "TString adds no data");

KORCOREPLATFORM_EXPORT TString QStringToTString(QString const& text);
KORCOREPLATFORM_EXPORT QString TStringToQString(TStringCore const& text);

KORCOREPLATFORM_EXPORT TString operator+(TString const& a, TString const& b);
KORCOREPLATFORM_EXPORT TString operator+(TString const& a, char16_t const* b);
KORCOREPLATFORM_EXPORT TString operator+(char16_t const* a, TString const& b);
KORCOREPLATFORM_EXPORT TString operator+(TString const& a, char16_t b);
KORCOREPLATFORM_EXPORT TString operator+(char16_t a, TString const& b);
KORCOREPLATFORM_EXPORT TString operator+(TString const& a, char const* b);
KORCOREPLATFORM_EXPORT TString operator+(char const* a, TString const& b);
KORCOREPLATFORM_EXPORT TString operator+(TString const& a, char b);
KORCOREPLATFORM_EXPORT TString operator+(char a, TString const& b);
KORCOREPLATFORM_EXPORT TString operator+(TString const& a, QString const& b);
KORCOREPLATFORM_EXPORT TString operator+(QString const& a, TString const& b);

// A result that is added to goes on in its own block.
inline TString operator+(TString&& a, TString const& b)
{
    return static_cast<TString&&>(a.append(b));
}
inline TString operator+(TString&& a, char16_t const* b)
{
    return static_cast<TString&&>(a.append(b));
}
inline TString operator+(TString&& a, char16_t b)
{
    return static_cast<TString&&>(a.append(b));
}
inline TString operator+(TString&& a, char const* b)
{
    return static_cast<TString&&>(a.append(b));
}
inline TString operator+(TString&& a, char b)
{
    return static_cast<TString&&>(a.append(b));
}
inline TString operator+(TString&& a, QString const& b)
{
    return static_cast<TString&&>(a.append(TString(b)));
}

// A `QString` on the left: exactly that, as nothing else is to become one for this.

template <class Left, class Right>
using QStringThenTString =
    std::enable_if_t<std::is_same_v<Left, QString> && std::is_same_v<Right, TString>, int>;

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator==(Left const& a, Right const& b)
{
    return b == a;
}

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator!=(Left const& a, Right const& b)
{
    return b != a;
}

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator<(Left const& a, Right const& b)
{
    return b > a;
}

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator<=(Left const& a, Right const& b)
{
    return b >= a;
}

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator>(Left const& a, Right const& b)
{
    return b < a;
}

template <class Left, class Right, QStringThenTString<Left, Right> = 0>
bool operator>=(Left const& a, Right const& b)
{
    return b <= a;
}

/// Writes the text as `QDebug` writes a `QString`.
KORCOREPLATFORM_EXPORT QDebug operator<<(QDebug out, TString const& text);

/// Writes the text as UTF-8; a stream's width and fill count bytes.
KORCOREPLATFORM_EXPORT std::ostream& operator<<(std::ostream& out, TString const& text);

/// The hash of a text depends on its units alone: `THash32` of its bytes with seed 0xDEADBEEF.
template <>
struct std::hash<TString> : std::hash<TStringCore>
{};
