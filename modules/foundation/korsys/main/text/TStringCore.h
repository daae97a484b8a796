/// The core text type: UTF-16 text with all text algorithms, free of Qt.

#pragma once

#include "korsys/main/text/TConstCodePointIterator.h"
#include "korsys/main/text/THash.h"
#include "korsys/main/text/TStringManager.h"

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

/// UTF-16 text. Lengths and positions are `int` and count code units; "text" arguments given as
/// `char16_t const*` end at their first zero unless a length is passed with them (-1: up to the
/// zero). Units of value zero inside a text are ordinary units.
///
/// The empty text is the only null. Copies share a block and cost no allocation; a reference,
/// pointer or iterator got by a non-const function is good until the next non-const call or copy
/// of that object. A text may be given to its own members: `s.append(s)`, `s.insert(2, s)` and
/// `s.assign(s.constData() + 1)` do what they say.
///
/// Positions that are "not found" are -1. Upper and lower case, and comparison without case,
/// follow Unicode and no locale; without case means by simple case folding of code points.
///
/// Throws, wherever a text grows: `std::bad_alloc`, and `StringException` with id
/// AutoGen_0xC83B3D89 for a text of more than 2^31 - 64 units; wherever a length comes with a
/// pointer: AutoGen_0xDBED6C12 for a length below -1, AutoGen_0xB1923A1A for a null pointer with
/// a positive length. A call that throws leaves its object as it was.
///
/// Thread safety: one object may be read from several threads; a write needs it alone. Copies of
/// one text may be used from different threads at once.
class KORSYS_EXPORT TStringCore : public TStringManager
{
public:
    enum CaseSensitivity : int
    {
        CaseInsensitive = 0,
        CaseSensitive = 1
    };

    /// What becomes of the empty parts of a text that is cut into parts.
    enum SplitBehavior : int
    {
        KeepEmptyParts = 0,
        SkipEmptyParts = 1
    };

    /// How `section` counts its fields; flags are combined with `|`.
    enum SectionFlags : int
    {
        SectionDefault = 0,
        SectionSkipEmpty = 1,          ///< Empty fields do not count.
        SectionIncludeLeadingSep = 2,  ///< The separator before the section belongs to it.
        SectionIncludeTrailingSep = 4, ///< The separator after the section belongs to it.
        SectionCaseInsensitiveSeps = 8 ///< Separators are found without case.
    };

    using value_type = char16_t;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = char16_t&;
    using const_reference = char16_t const&;
    using iterator = char16_t*;
    using const_iterator = char16_t const*;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    using codepoint_const_iterator = TConstCodePointIterator<TStringCore>;

    // Construction and assignment. 8-bit text is UTF-8 (ill-formed parts become U+FFFD), a single
    // `char` is Latin-1.

    TStringCore() noexcept = default;
    TStringCore(TStringCore const&) noexcept = default;
    TStringCore(TStringCore&&) noexcept = default;

    TStringCore(char16_t const* text, int len = -1)
    {
        if (static_cast<unsigned>(len) <= kShortCapacity && text != nullptr) {
            assignShort(text, len);
        } else {
            construct(text, len);
        }
    }

    TStringCore(char const* text, int len = -1) { becomeUtf8(text, len); }
    TStringCore(char16_t c, int n); ///< `n` copies of `c`; none when `n` is not positive.
    TStringCore(char c, int n);
    ~TStringCore() = default;

    TStringCore& operator=(TStringCore const&) noexcept = default;
    TStringCore& operator=(TStringCore&&) noexcept = default;
    TStringCore& operator=(char16_t const* text) { return assign(text); }
    TStringCore& operator=(char const* text) { return assign(text); }
    TStringCore& operator=(char16_t c) { return assign(c, 1); }
    TStringCore& operator=(char c) { return assign(c, 1); }
    TStringCore& operator=(std::initializer_list<char16_t> units);

    TStringCore& assign(TStringCore const& other);
    TStringCore& assign(TStringCore&& other) noexcept;
    TStringCore& assign(char16_t const* text, int len = -1);
    TStringCore& assign(char const* text, int len = -1);
    TStringCore& assign(char16_t c, int n);
    TStringCore& assign(char c, int n);
    TStringCore& set(char16_t const* text, int len = -1) { return assign(text, len); }

    // Size and storage

    using TStringManager::length;
    static int length(char16_t const* text) noexcept; ///< Units before the zero; null: 0.
    int size() const noexcept { return length(); }
    std::size_t lengthInBytes() const noexcept { return std::size_t(length()) * sizeof(char16_t); }
    int lengthInCodePoints() const noexcept;
    bool isEmpty() const noexcept { return length() == 0; }
    bool empty() const noexcept { return length() == 0; }
    TStringCore& resize(int n); ///< New units are U+0000; a negative `n` counts as 0.

    /// The unit at `index`.
    /// Throws: `StringException` with id AutoGen_0x9798B690 when there is none. The constant `[]`
    /// also takes the length as index and gives the terminating zero.
    char16_t at(int index) const;
    char16_t operator[](int index) const;
    char16_t operator[](unsigned long index) const;
    char16_t& operator[](int index);
    char16_t& operator[](unsigned long index);
    char16_t front() const;
    char16_t back() const;
    char16_t& front();
    char16_t& back();

    TStringCore& truncate(int n);              ///< Cuts after `n` units; nothing when `n` > length.
    TStringCore& chop(int n);                  ///< Drops the last `n` units.
    TStringCore& truncateAtFirstNull();        ///< Cuts before the first U+0000.
    TStringCore& fill(char16_t c, int n = -1); ///< All units are `c`; `n` >= 0 sets the length.

    iterator begin() { return data(); }
    iterator end() { return data() + length(); }
    const_iterator begin() const noexcept { return constData(); }
    const_iterator end() const noexcept { return constData() + length(); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const noexcept { return crbegin(); }
    const_reverse_iterator rend() const noexcept { return crend(); }
    const_reverse_iterator crbegin() const noexcept { return const_reverse_iterator(cend()); }
    const_reverse_iterator crend() const noexcept { return const_reverse_iterator(cbegin()); }
    codepoint_const_iterator codepoint_cbegin() const { return {*this, 0}; }
    codepoint_const_iterator codepoint_cend() const { return {*this, length()}; }

    // Append, insert, remove

    TStringCore& append(TStringCore const& text);
    TStringCore& append(char16_t const* text, int len = -1);
    TStringCore& append(char const* text, int len = -1);
    TStringCore& append(char16_t c)
    {
        extendWith(c);
        return *this;
    }
    TStringCore& append(char c) { return append(unitOf(c)); }
    TStringCore& append(char16_t c, int n);
    TStringCore& operator+=(TStringCore const& text) { return append(text); }
    TStringCore& operator+=(char16_t const* text) { return append(text); }
    TStringCore& operator+=(char const* text) { return append(text); }
    TStringCore& operator+=(char16_t c) { return append(c); }
    TStringCore& operator+=(char c) { return append(c); }
    TStringCore& prepend(TStringCore const& text) { return insert(0, text); }
    TStringCore& prepend(char16_t const* text, int len = -1) { return insert(0, text, len); }
    TStringCore& prepend(char16_t c) { return insert(0, c); }
    void push_back(char16_t c) { append(c); }
    void push_front(char16_t c) { prepend(c); }

    /// Inserts before the unit at `pos`, which as an iterator is one of this text. A position
    /// behind the end is first padded up to with blanks; a negative one counts from the end for a
    /// unit, and for texts does nothing. An empty text changes nothing.
    TStringCore& insert(int pos, TStringCore const& text);
    TStringCore& insert(int pos, char16_t const* text, int len = -1);
    TStringCore& insert(int pos, char16_t c);
    TStringCore& insert(codepoint_const_iterator const& pos, TStringCore const& text);
    TStringCore& insert(codepoint_const_iterator const& pos, char16_t c);

    /// Removes `n` units from `pos` on, which counts from the end when negative.
    TStringCore& removeAt(int pos, int n = 1);
    TStringCore& removeAll(char16_t c, CaseSensitivity cs = CaseSensitive);
    TStringCore& removeAll(char16_t const* text, CaseSensitivity cs = CaseSensitive);
    TStringCore& removeAll(TStringCore const& text, CaseSensitivity cs = CaseSensitive);
    TStringCore& removeAnyOf(char16_t const* set); ///< Every unit that is in `set`.
    TStringCore& removeAnyOf(TStringCore const& set);
    TStringCore& removeAnyOf(char16_t const* set, int len);

    /// Replaces `n` units from `pos` on; nothing when `pos` is outside 0..length.
    TStringCore& replace(int pos, int n, TStringCore const& after);
    TStringCore& replace(int pos, int n, char16_t const* after, int len = -1);
    TStringCore& replace(int pos, int n, char16_t after);

    /// Replaces every occurrence, left to right, without looking at what was put in. An empty
    /// `before` stands before every unit and at the end.
    TStringCore& replace(char16_t before, char16_t after, CaseSensitivity cs = CaseSensitive);
    template <class Unit, std::enable_if_t<std::is_same_v<Unit, char16_t>, int> = 0>
    TStringCore& replace(Unit before, Unit after, int) = delete; ///< No position and count.
    TStringCore& replace(char16_t before, TStringCore const& after,
                         CaseSensitivity cs = CaseSensitive);
    TStringCore& replace(TStringCore const& before, TStringCore const& after,
                         CaseSensitivity cs = CaseSensitive);
    TStringCore& replaceAnyOf(char16_t const* set, char16_t after);
    TStringCore& replaceAnyOf(TStringCore const& set, char16_t after);
    TStringCore& replaceAnyOf(TStringCore const& set, TStringCore const& after);

    /// As `replace`, and returns how many occurrences it replaced.
    static int replaceCount(TStringCore& text, TStringCore const& before, TStringCore const& after,
                            CaseSensitivity cs = CaseSensitive);

    // Compare: the sign of the result counts. With case, texts order by their code units.

    int compare(TStringCore const& other, CaseSensitivity cs = CaseSensitive) const;
    int compare(char16_t const* other, CaseSensitivity cs = CaseSensitive) const;
    int compare(char16_t other, CaseSensitivity cs = CaseSensitive) const;

    /// Compares the first `n` units of two texts, or what there is of them up to a zero; with -1
    /// all up to the zero. A null pointer counts as empty.
    static int compareN(char16_t const* a, char16_t const* b, int n,
                        CaseSensitivity cs = CaseSensitive);

    bool equals(char16_t const* units, int n) const noexcept
    {
        return length() == n &&
               (n == 0 || std::memcmp(constData(), units, std::size_t(n) * sizeof(char16_t)) == 0);
    }

    // Search. `from` is the position at which the search starts and counts from the end when
    // negative.

    int indexOf(TStringCore const& text, int from = 0, CaseSensitivity cs = CaseSensitive) const;
    int indexOf(char16_t const* text, int from = 0, CaseSensitivity cs = CaseSensitive) const;
    int indexOf(char16_t c, int from = 0, CaseSensitivity cs = CaseSensitive) const;
    int lastIndexOf(TStringCore const& text, int from = -1,
                    CaseSensitivity cs = CaseSensitive) const;
    int lastIndexOf(char16_t const* text, int from = -1, CaseSensitivity cs = CaseSensitive) const;
    int lastIndexOf(char16_t c, int from = -1, CaseSensitivity cs = CaseSensitive) const;
    bool contains(TStringCore const& text, CaseSensitivity cs = CaseSensitive) const;
    bool contains(char16_t const* text, CaseSensitivity cs = CaseSensitive) const;
    bool contains(char16_t c, CaseSensitivity cs = CaseSensitive) const;

    /// Occurrences, overlapping ones included; an empty text occurs length + 1 times.
    int count(TStringCore const& text, CaseSensitivity cs = CaseSensitive) const;
    int count(char16_t const* text, CaseSensitivity cs = CaseSensitive) const;
    int count(char16_t c, CaseSensitivity cs = CaseSensitive) const;
    bool startsWith(TStringCore const& text, CaseSensitivity cs = CaseSensitive) const;
    bool startsWith(char16_t const* text, CaseSensitivity cs = CaseSensitive) const;
    bool startsWith(char16_t c, CaseSensitivity cs = CaseSensitive) const;
    bool endsWith(TStringCore const& text, CaseSensitivity cs = CaseSensitive) const;
    bool endsWith(char16_t const* text, CaseSensitivity cs = CaseSensitive) const;
    bool endsWith(char16_t c, CaseSensitivity cs = CaseSensitive) const;

    /// The first index at or after `from` (a negative one counts as 0) of a unit, of a text, of a
    /// unit in the set, of a unit outside the set.
    int findChar(char16_t c, int from = 0) const;
    int findStr(TStringCore const& text, int from = 0, CaseSensitivity cs = CaseSensitive) const;
    int findStr(char16_t const* text, int from = 0, CaseSensitivity cs = CaseSensitive) const;
    static int findStr(char16_t const* text, int len, char16_t const* wanted, int wantedLen,
                       CaseSensitivity cs = CaseSensitive);
    int findOneOf(char16_t const* set, int from = 0) const;
    int findOneOf(TStringCore const& set, int from = 0) const;
    static int findOneOf(char16_t const* text, int len, char16_t const* set);
    int findOneNotOf(char16_t const* set, int from = 0) const;
    int findOneNotOf(TStringCore const& set, int from = 0) const;
    int findOneNotOf(char16_t c, int from = 0) const;
    static int findOneNotOf(char16_t const* text, int len, char16_t const* set);
    static int findOneNotOf(char16_t const* text, int len, char16_t const* set, int setLen);
    TStringCore spanIncluding(TStringCore const& set) const; ///< The start made of units in `set`.
    TStringCore spanExcluding(TStringCore const& set) const; ///< The start free of them.

    // Substring, split, join

    /// The first `n` units; all when `n` is outside 0..length.
    TStringCore left(int n) const { return taken<TStringCore>(leftPart(n)); }
    /// The last `n` units; all when `n` is outside 0..length.
    TStringCore right(int n) const { return taken<TStringCore>(rightPart(n)); }
    /// The units that there are of those from `pos` up to `pos` + `n`; `n` < 0: up to the end.
    TStringCore mid(int pos, int n = -1) const { return taken<TStringCore>(midPart(pos, n)); }

    /// Fields `start` to `end` of a text that `sep` separates into fields; negative numbers count
    /// from the last field, which is -1.
    TStringCore section(char16_t sep, int start, int end = -1,
                        SectionFlags flags = SectionDefault) const;
    TStringCore section(TStringCore const& sep, int start, int end = -1,
                        SectionFlags flags = SectionDefault) const;
    TStringCore section(char16_t const* sep, int start, int end = -1,
                        SectionFlags flags = SectionDefault) const;

    /// Cuts at every separator. An empty separator cuts between all units.
    static std::vector<TStringCore> split(char16_t const* data, int len, TStringCore const& sep,
                                          SplitBehavior behavior = KeepEmptyParts,
                                          CaseSensitivity cs = CaseSensitive);
    static std::vector<TStringCore> split(char16_t const* data, int len, char16_t sep,
                                          SplitBehavior behavior = KeepEmptyParts,
                                          CaseSensitivity cs = CaseSensitive);
    /// Cuts at every unit that is in `set`.
    static std::vector<TStringCore> splitOnAny(char16_t const* data, int len,
                                               TStringCore const& set,
                                               SplitBehavior behavior = KeepEmptyParts);

    /// The part from `pos` up to the next separator; `pos` moves behind that separator, or to
    /// length + 1 after the last part, and to -1 when there is no further part:
    ///
    ///     int pos = 0;
    ///     for (auto t = s.tokenize(u',', pos); pos != -1; t = s.tokenize(u',', pos)) { ... }
    TStringCore tokenize(char16_t sep, int& pos, SplitBehavior behavior = KeepEmptyParts) const;
    TStringCore tokenize(TStringCore const& sep, int& pos,
                         SplitBehavior behavior = KeepEmptyParts) const;

    static TStringCore join(std::vector<TStringCore> const& list, TStringCore const& sep);
    static TStringCore join(std::vector<TStringCore> const& list, char16_t sep);

    // Trim and layout. The forms without argument drop white space.

    TStringCore& trim();
    TStringCore& trim(char c) { return trim(unitOf(c)); }
    TStringCore& trim(char16_t c);
    TStringCore& trim(char16_t const* set);
    TStringCore& trim(TStringCore const& set);
    TStringCore& trimLeft();
    TStringCore& trimLeft(char c) { return trimLeft(unitOf(c)); }
    TStringCore& trimLeft(char16_t c);
    TStringCore& trimLeft(char16_t const* set);
    TStringCore& trimLeft(TStringCore const& set);
    TStringCore& trimRight();
    TStringCore& trimRight(char c) { return trimRight(unitOf(c)); }
    TStringCore& trimRight(char16_t c);
    TStringCore& trimRight(char16_t const* set);
    TStringCore& trimRight(TStringCore const& set);
    TStringCore trimmed() const { return taken<TStringCore>(trimmedPart()); }

    /// At least `width` units, `fill` added on the right (left-justified) or on the left. A longer
    /// text stays, or is cut to its first `width` units when `truncate` is set.
    TStringCore leftJustified(int width, char16_t fill = u' ', bool truncate = false) const;
    TStringCore rightJustified(int width, char16_t fill = u' ', bool truncate = false) const;
    TStringCore repeated(int times) const;
    TStringCore& reverse(); ///< Turns the order of the code points around.
    TStringCore reversed() const;

    TStringCore toLower() const { return made<TStringCore>(&TStringCore::becomeLower, *this); }
    TStringCore toUpper() const { return made<TStringCore>(&TStringCore::becomeUpper, *this); }

    // Line endings and byte-order mark

    TStringCore& dosToUnix();             ///< CR LF becomes LF; a lone CR stays.
    static int dosToUnix(char16_t* text); ///< In place; returns the new length.
    TStringCore& unixToDos();             ///< LF without CR before it becomes CR LF.
    TStringCore& toNativeLineEndings() { return dosToUnix(); }
    bool hasBOM() const noexcept;
    TStringCore& removeBOM();
    TStringCore& prependBOM(); ///< Adds U+FEFF unless it is there.

    // Numbers: `setNum` replaces the text. Bases are 2 to 64 with the digits 0-9a-zA-Z-_, of which
    // bases up to 36 use lower case. A positive field width pads on the left, a negative one on the
    // right. Throws: `StringException` with id AutoGen_0x30E31408 for another base.

    TStringCore& setNum(short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(unsigned short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return base == 10 && fieldWidth == 0 ? setDecimal(v)
                                             : setNum(static_cast<long>(v), base, fieldWidth, fill);
    }
    TStringCore& setNum(unsigned int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(unsigned long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(long long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ');
    TStringCore& setNum(unsigned long long v, int base = 10, int fieldWidth = 0,
                        char16_t fill = u' ');

    /// Formats e, E, f, g and G (any other acts as f); a negative precision is 6. Exact ties round
    /// away from zero. `trimZeros` drops the zeros that end the fraction.
    TStringCore& setNum(double v, char format = 'g', int precision = 6, bool trimZeros = false);

    /// A text that `setNum` with the same arguments has made.
    static TStringCore number(short v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(unsigned short v, int base = 10, int fieldWidth = 0,
                              char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(int v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(unsigned int v, int base = 10, int fieldWidth = 0,
                              char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(unsigned long v, int base = 10, int fieldWidth = 0,
                              char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(long long v, int base = 10, int fieldWidth = 0, char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(unsigned long long v, int base = 10, int fieldWidth = 0,
                              char16_t fill = u' ')
    {
        return numbered<TStringCore>(v, base, fieldWidth, fill);
    }
    static TStringCore number(double v, char format = 'g', int precision = 6,
                              bool trimZeros = false)
    {
        return numbered<TStringCore>(v, format, precision, trimZeros);
    }

    // Parsers: white space around the number is skipped, anything else left over is a failure.
    // `ok` (may be null) tells success; on failure the result is 0, or an infinity for a number
    // too large for a floating type. Floating types take inf, -inf and nan. Base 0 takes 0x for 16
    // and a leading 0 for 8.

    short toShort(bool* ok = nullptr, int base = 10) const;
    unsigned short toUShort(bool* ok = nullptr, int base = 10) const;
    int toInt(bool* ok = nullptr, int base = 10) const;
    unsigned int toUInt(bool* ok = nullptr, int base = 10) const;
    long toLong(bool* ok = nullptr, int base = 10) const;
    unsigned long toULong(bool* ok = nullptr, int base = 10) const;
    long long toLongLong(bool* ok = nullptr, int base = 10) const;
    unsigned long long toULongLong(bool* ok = nullptr, int base = 10) const;
    std::size_t toSizeT(bool* ok = nullptr, int base = 10) const { return toULong(ok, base); }
    float toFloat(bool* ok = nullptr) const;
    double toDouble(bool* ok = nullptr) const;

    /// Length of the number that starts the text, white space not skipped; 0 when there is none.
    int leftIntegerLength(int base = 10) const;
    int leftDoubleLength() const;
    static int leftIntegerLength(char16_t const* text, int len = -1, int base = 10);
    static int leftDoubleLength(char16_t const* text, int len = -1);

    /// An address in lower-case hexadecimal digits: "0x7f…", padded to 16 digits when asked for.
    static TStringCore pointer(void const* address, bool prefix = true, bool padded = false);

    // Encodings. Ill-formed input gives U+FFFD, an unpaired surrogate gives U+FFFD on the way out.
    // A byte-order mark is never dropped. `len` counts bytes (or units of the type); -1: to the
    // zero.

    static TStringCore fromUtf8(char const* text, int len = -1) { return TStringCore(text, len); }
    static TStringCore fromUtf16(char16_t const* text, int len = -1);
    static TStringCore fromUtf32(char32_t const* text, int len = -1);
    static TStringCore fromLatin1(char const* text, int len = -1);
    static TStringCore fromLatin9(char const* text, int len = -1);
    static TStringCore fromLocal8Bit(char const* text, int len = -1); ///< UTF-8 on every system.
    static TStringCore fromWChar(wchar_t const* text, int len = -1);
    static TStringCore fromStdString(std::string const& text); ///< UTF-8.
    static TStringCore fromStdU16String(std::u16string const& text);
    static TStringCore fromStdUString(std::u32string const& text);
    static TStringCore fromStdWString(std::wstring const& text);

    std::string toStdString() const; ///< UTF-8.
    std::u16string toStdU16String() const;
    std::u32string toStdUString() const;
    std::wstring toStdWString() const;

    /// Units that the encoding lacks become "?". `ok` (may be null) tells whether there were none.
    std::string toLatin1(bool* ok = nullptr) const;
    std::string toLatin9(bool* ok = nullptr) const;
    std::string toLocal8Bit(bool* ok = nullptr) const; ///< UTF-8; fails for unpaired surrogates.

    /// Writes at most `size` wide characters, no terminating zero, and returns how many.
    int toWCharArray(wchar_t* out, int size) const;
    std::vector<wchar_t> toWCharVector() const; ///< Ends with a zero.

    // What a single unit given as either type stands for: a `char` is a character of Latin-1.
    static char16_t unitOf(char c) noexcept { return static_cast<unsigned char>(c); }
    static char16_t unitOf(char16_t c) noexcept { return c; }

protected:
    struct Part
    {
        int from;
        int length;
    };

    Part leftPart(int n) const noexcept { return {0, n < 0 || n >= length() ? length() : n}; }
    Part rightPart(int n) const noexcept
    {
        Part const part = leftPart(n);
        return {length() - part.length, part.length};
    }
    Part midPart(int pos, int n) const noexcept;
    Part trimmedPart() const noexcept;

    /// The part as a text, which shares the block when it is the whole.
    template <class Text>
    Text taken(Part part) const
    {
        return part.length == length() && part.length > kShortCapacity
                   ? Text(*this)
                   : Text(constData() + part.from, part.length);
    }

    // These fill a new text in place, of this class or of one derived from it: a text that is made
    // and at once moved on would be read before its parts have reached memory.
    void becomeLower(TStringCore const& source);
    void becomeUpper(TStringCore const& source);
    void becomeUtf8(char const* text, int len);

    template <class Text, class... Parameters, class... Arguments>
    static Text made(void (TStringCore::*become)(Parameters...), Arguments const&... arguments)
    {
        Text text;
        (text.*become)(arguments...);
        return text;
    }

    template <class Text, class... Arguments>
    static Text numbered(Arguments... arguments)
    {
        Text text;
        text.setNum(arguments...);
        return text;
    }

    TStringCore& setDecimal(int v); ///< The common case of `setNum`.

private:
    void construct(char16_t const* text, int len);
    TStringCore& appendSlowly(TStringCore const& text);
    TStringCore& keep(int from, int n);
    char16_t* splice(int pos, int removed, int inserted);
    void decodeUtf8(char const* text, std::size_t n);
};

inline TStringCore::SectionFlags operator|(TStringCore::SectionFlags a, TStringCore::SectionFlags b)
{
    return static_cast<TStringCore::SectionFlags>(static_cast<int>(a) | static_cast<int>(b));
}

inline bool operator==(TStringCore const& a, TStringCore const& b) noexcept
{
    return a.equals(b.constData(), b.length());
}

inline bool operator==(TStringCore const& a, char16_t const* b) noexcept
{
    return a.equals(b, TStringCore::length(b));
}

inline bool operator!=(TStringCore const& a, TStringCore const& b) noexcept
{
    return !(a == b);
}

inline bool operator!=(TStringCore const& a, char16_t const* b) noexcept
{
    return !(a == b);
}

inline bool operator<(TStringCore const& a, TStringCore const& b)
{
    return a.compare(b) < 0;
}

inline bool operator<=(TStringCore const& a, TStringCore const& b)
{
    return a.compare(b) <= 0;
}

inline bool operator>(TStringCore const& a, TStringCore const& b)
{
    return a.compare(b) > 0;
}

inline bool operator>=(TStringCore const& a, TStringCore const& b)
{
    return a.compare(b) >= 0;
}

// With a single unit: UTF-16, or a character of Latin-1. Other numbers are none, so they do not
// fit.

template <class Unit>
using TStringUnit =
    std::enable_if_t<std::is_same_v<Unit, char16_t> || std::is_same_v<Unit, char>, int>;

template <class Unit, TStringUnit<Unit> = 0>
bool operator==(TStringCore const& a, Unit b) noexcept
{
    char16_t const unit = TStringCore::unitOf(b);
    return a.equals(&unit, 1);
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator!=(TStringCore const& a, Unit b) noexcept
{
    return !(a == b);
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator<(TStringCore const& a, Unit b)
{
    return a.compare(TStringCore::unitOf(b)) < 0;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator<=(TStringCore const& a, Unit b)
{
    return a.compare(TStringCore::unitOf(b)) <= 0;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator>(TStringCore const& a, Unit b)
{
    return a.compare(TStringCore::unitOf(b)) > 0;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator>=(TStringCore const& a, Unit b)
{
    return a.compare(TStringCore::unitOf(b)) >= 0;
}

// The text on the right.

template <class Unit, TStringUnit<Unit> = 0>
bool operator==(Unit a, TStringCore const& b) noexcept
{
    return b == a;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator!=(Unit a, TStringCore const& b) noexcept
{
    return b != a;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator<(Unit a, TStringCore const& b)
{
    return b > a;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator<=(Unit a, TStringCore const& b)
{
    return b >= a;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator>(Unit a, TStringCore const& b)
{
    return b < a;
}

template <class Unit, TStringUnit<Unit> = 0>
bool operator>=(Unit a, TStringCore const& b)
{
    return b <= a;
}

inline bool operator==(char16_t const* a, TStringCore const& b) noexcept
{
    return b == a;
}

inline bool operator!=(char16_t const* a, TStringCore const& b) noexcept
{
    return b != a;
}

inline bool operator<(char16_t const* a, TStringCore const& b)
{
    return b > a;
}

inline bool operator<=(char16_t const* a, TStringCore const& b)
{
    return b >= a;
}

inline bool operator>(char16_t const* a, TStringCore const& b)
{
    return b < a;
}

inline bool operator>=(char16_t const* a, TStringCore const& b)
{
    return b <= a;
}

/// Writes the text as UTF-8; a stream's width and fill count bytes.
KORSYS_EXPORT std::ostream& operator<<(std::ostream& out, TStringCore const& text);

/// The hash of a text depends on its units alone.
template <>
struct std::hash<TStringCore>
{
    std::size_t operator()(TStringCore const& text) const noexcept
    {
        return THash32(text.constData(), text.lengthInBytes(), 0xDEADBEEF);
    }
};
