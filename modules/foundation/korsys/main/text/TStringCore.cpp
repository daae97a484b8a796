#include "korsys/main/text/TStringCore.h"

#include "korsys/main/text/CaseMapping_p.h"
#include "korsys/main/text/TStringErrors_p.h"
#include "korsys/main/text/TextConversion_p.h"
#include "korsys/main/text/UnitSearch_p.h"

#include <algorithm>
#include <array>

using TStringErrors::CheckedLength;
using TStringErrors::CheckedSum;

namespace {

std::size_t BytesOf(int units)
{
    return static_cast<std::size_t>(units) * sizeof(char16_t);
}

void CheckIndex(std::int64_t index, int length)
{
    if (index < 0 || index >= length) {
        TStringErrors::ThrowIndexOutside(index, length);
    }
}

/// As `CheckIndex`, for readers that may see the terminating zero.
void CheckReadIndex(std::int64_t index, int length)
{
    if (index < 0 || index > length) {
        TStringErrors::ThrowIndexOutside(index, length);
    }
}

std::int64_t SignedIndex(unsigned long index)
{
    return static_cast<std::int64_t>(std::min<unsigned long>(index, INT64_MAX));
}

/// Positions found in a text: on the stack while they are few.
class Positions
{
public:
    void add(int position)
    {
        if (m_count < m_few.size()) {
            m_few[m_count] = position;
        } else {
            m_more.push_back(position);
        }
        ++m_count;
    }

    std::size_t count() const { return m_count; }

    int operator[](std::size_t i) const
    {
        return i < m_few.size() ? m_few[i] : m_more[i - m_few.size()];
    }

private:
    std::array<int, 128> m_few;
    std::size_t m_count = 0;
    std::vector<int> m_more;
};

/// Where `before`, which is not empty, stands in `text`, left to right without overlap.
void FindAll(TStringCore const& text, TStringCore const& before, TStringCore::CaseSensitivity cs,
             Positions& found)
{
    int position = text.indexOf(before, 0, cs);
    while (position >= 0) {
        found.add(position);
        int const next = position + before.length();
        position = next < text.length() ? text.indexOf(before, next, cs) : -1;
    }
}

/// `text` with `after` in place of the `removed` units at each position.
TStringCore Rebuilt(TStringCore const& text, Positions const& positions, int removed,
                    TStringCore const& after)
{
    std::int64_t const growth = static_cast<std::int64_t>(after.length()) - removed;
    std::int64_t const hits = static_cast<std::int64_t>(positions.count());
    TStringCore result;
    char16_t* to = result.resizeForOverwrite(CheckedSum(text.length() + hits * growth));
    char16_t const* from = text.constData();
    char16_t const* const end = from + text.length();
    for (std::size_t i = 0; i < positions.count(); ++i) {
        char16_t const* const hit = text.constData() + positions[i];
        to = std::copy(from, hit, to);
        to = std::copy(after.cbegin(), after.cend(), to);
        from = hit + removed;
    }
    std::copy(from, end, to);
    return result;
}

/// `text` between all units and at both ends.
TStringCore Interleaved(TStringCore const& units, TStringCore const& text)
{
    std::int64_t const places = static_cast<std::int64_t>(units.length()) + 1;
    TStringCore result;
    char16_t* to = result.resizeForOverwrite(CheckedSum(units.length() + places * text.length()));
    for (char16_t const unit : units) {
        to = std::copy(text.cbegin(), text.cend(), to);
        *to++ = unit;
    }
    std::copy(text.cbegin(), text.cend(), to);
    return result;
}

} // namespace

// Construction and assignment

void TStringCore::construct(char16_t const* text, int len)
{
    // Most texts are given like this: nothing more is asked before a short one is copied.
    if (len == -1 && text != nullptr) {
        std::size_t const n = TextConversion::Length(text);
        if (n <= kShortCapacity) {
            assignShort(text, static_cast<int>(n));
            return;
        }
        len = static_cast<int>(std::min<std::size_t>(n, INT32_MAX));
    }
    int const n = CheckedLength(text, len);
    if (n <= kShortCapacity) {
        assignShort(text, n);
    } else {
        std::memcpy(becomeLong(n), text, BytesOf(n));
    }
}

TStringCore::TStringCore(char16_t c, int n)
{
    if (n > 0) {
        std::fill_n(resizeForOverwrite(n), n, c);
    }
}

TStringCore::TStringCore(char c, int n) : TStringCore(unitOf(c), n) {}

TStringCore& TStringCore::assign(TStringCore const& other)
{
    return *this = other;
}

TStringCore& TStringCore::assign(TStringCore&& other) noexcept
{
    return *this = std::move(other);
}

TStringCore& TStringCore::assign(char16_t const* text, int len)
{
    int const n = CheckedLength(text, len);
    if (n > kShortCapacity && n <= capacity() && !isShared()) {
        // The text may be a part of this one.
        std::memmove(data(), text, BytesOf(n));
        TStringManager::resize(n);
    } else {
        TStringCore fresh(text, n);
        swap(fresh);
    }
    return *this;
}

TStringCore& TStringCore::assign(char const* text, int len)
{
    return *this = fromUtf8(text, len);
}

TStringCore& TStringCore::assign(char16_t c, int n)
{
    return *this = TStringCore(c, n);
}

TStringCore& TStringCore::assign(char c, int n)
{
    return *this = TStringCore(c, n);
}

TStringCore& TStringCore::operator=(std::initializer_list<char16_t> units)
{
    return assign(units.begin(), CheckedSum(static_cast<std::int64_t>(units.size())));
}

// Size and storage

int TStringCore::length(char16_t const* text) noexcept
{
    // More than `kMaxLength` stands for "too long": no text is, and none can be made of it.
    std::size_t const units = text == nullptr ? 0 : TextConversion::Length(text);
    return static_cast<int>(std::min<std::size_t>(units, INT32_MAX));
}

int TStringCore::lengthInCodePoints() const noexcept
{
    std::size_t const units = static_cast<std::size_t>(length());
    return static_cast<int>(TextConversion::CountCodePoints(constData(), units));
}

TStringCore& TStringCore::resize(int n)
{
    int const oldLength = length();
    char16_t* const units = TStringManager::resize(n);
    if (n > oldLength) {
        std::fill(units + oldLength, units + n, char16_t(0));
    }
    return *this;
}

char16_t TStringCore::at(int index) const
{
    CheckIndex(index, length());
    return constData()[index];
}

char16_t TStringCore::operator[](int index) const
{
    CheckReadIndex(index, length());
    return constData()[index];
}

char16_t TStringCore::operator[](unsigned long index) const
{
    CheckReadIndex(SignedIndex(index), length());
    return constData()[index];
}

char16_t& TStringCore::operator[](int index)
{
    CheckIndex(index, length());
    return data()[index];
}

char16_t& TStringCore::operator[](unsigned long index)
{
    CheckIndex(SignedIndex(index), length());
    return data()[index];
}

char16_t TStringCore::front() const
{
    return at(0);
}

char16_t TStringCore::back() const
{
    CheckIndex(0, length());
    return constData()[length() - 1];
}

char16_t& TStringCore::front()
{
    return (*this)[0];
}

char16_t& TStringCore::back()
{
    CheckIndex(0, length());
    return data()[length() - 1];
}

TStringCore& TStringCore::truncate(int n)
{
    if (n < length()) {
        TStringManager::resize(n);
    }
    return *this;
}

TStringCore& TStringCore::chop(int n)
{
    if (n > 0) {
        truncate(n >= length() ? 0 : length() - n);
    }
    return *this;
}

TStringCore& TStringCore::truncateAtFirstNull()
{
    int const zero = UnitSearch::FindUnit(constData(), length(), 0);
    return zero < 0 ? *this : truncate(zero);
}

TStringCore& TStringCore::fill(char16_t c, int n)
{
    int const wanted = n < 0 ? length() : n;
    std::fill_n(resizeForOverwrite(wanted), wanted, c);
    return *this;
}

// Append, insert, remove

TStringCore& TStringCore::append(TStringCore const& text)
{
    if (isLong() && &text != this && appendInBlock(text.constData(), text.length())) {
        return *this;
    }
    return appendSlowly(text);
}

/// Apart from `append`, which then has no registers to save.
TStringCore& TStringCore::appendSlowly(TStringCore const& text)
{
    int const n = text.length();
    if (n == 0) {
        return *this;
    }
    if (isEmpty() && !isLong()) {
        return assign(text); // takes the other's block
    }
    if (&text == this) {
        TStringCore const copy(text);
        return append(copy);
    }
    copyUnits(extend(n), text.constData(), n);
    return *this;
}

TStringCore& TStringCore::append(char16_t const* text, int len)
{
    int const n = CheckedLength(text, len);
    if (n == 0) {
        return *this;
    }
    if (holds(text)) {
        TStringCore const copy(text, n);
        return append(copy);
    }
    copyUnits(extend(n), text, n);
    return *this;
}

TStringCore& TStringCore::append(char const* text, int len)
{
    return append(fromUtf8(text, len));
}

TStringCore& TStringCore::append(char16_t c, int n)
{
    if (n > 0) {
        std::fill_n(extend(n), n, c);
    }
    return *this;
}

/// Makes a gap of `inserted` units that hold anything in place of the `removed` ones at `pos`,
/// which all exist, and returns where the gap is.
char16_t* TStringCore::splice(int pos, int removed, int inserted)
{
    int const tail = length() - pos - removed;
    std::int64_t const sum = static_cast<std::int64_t>(length()) - removed + inserted;
    int const newLength = CheckedSum(sum);
    if (newLength <= capacity() && !isShared()) {
        char16_t* const gap = data() + pos;
        std::memmove(gap + inserted, gap + removed, BytesOf(tail));
        TStringManager::resize(newLength);
        return gap;
    }
    TStringCore other;
    if (newLength > length()) {
        other.reserve(CheckedSum(std::min<std::int64_t>(sum + sum / 2, kMaxLength)));
    }
    char16_t* const units = other.TStringManager::resize(newLength);
    std::memcpy(units, constData(), BytesOf(pos));
    std::memcpy(units + pos + inserted, constData() + pos + removed, BytesOf(tail));
    swap(other);
    return data() + pos;
}

TStringCore& TStringCore::insert(int pos, TStringCore const& text)
{
    return insert(pos, text.constData(), text.length());
}

TStringCore& TStringCore::insert(int pos, char16_t const* text, int len)
{
    int const n = CheckedLength(text, len);
    if (pos < 0 || n == 0) {
        return *this;
    }
    if (holds(text)) {
        TStringCore const copy(text, n);
        return insert(pos, copy.constData(), n);
    }
    int const padding = std::max(pos - length(), 0);
    if (padding > 0) {
        CheckedSum(static_cast<std::int64_t>(pos) + n);
        reserve(pos + n);
        append(u' ', padding);
    }
    copyUnits(splice(pos, 0, n), text, n);
    return *this;
}

TStringCore& TStringCore::insert(int pos, char16_t c)
{
    return insert(pos < 0 ? pos + length() : pos, &c, 1);
}

TStringCore& TStringCore::insert(codepoint_const_iterator const& pos, TStringCore const& text)
{
    return insert(pos.base(), text);
}

TStringCore& TStringCore::insert(codepoint_const_iterator const& pos, char16_t c)
{
    return insert(pos.base(), &c, 1);
}

TStringCore& TStringCore::removeAt(int pos, int n)
{
    int const from = pos < 0 ? pos + length() : pos;
    if (from >= 0 && from < length() && n > 0) {
        splice(from, std::min(n, length() - from), 0);
    }
    return *this;
}

TStringCore& TStringCore::removeAll(char16_t c, CaseSensitivity cs)
{
    return removeAll(TStringCore(&c, 1), cs);
}

TStringCore& TStringCore::removeAll(char16_t const* text, CaseSensitivity cs)
{
    return removeAll(TStringCore(text), cs);
}

TStringCore& TStringCore::removeAll(TStringCore const& text, CaseSensitivity cs)
{
    if (!text.isEmpty()) {
        replaceCount(*this, text, TStringCore(), cs);
    }
    return *this;
}

TStringCore& TStringCore::removeAnyOf(char16_t const* set)
{
    return removeAnyOf(set, -1);
}

TStringCore& TStringCore::removeAnyOf(TStringCore const& set)
{
    return removeAnyOf(set.constData(), set.length());
}

TStringCore& TStringCore::removeAnyOf(char16_t const* set, int len)
{
    return replaceAnyOf(TStringCore(set, len), TStringCore());
}

TStringCore& TStringCore::replace(int pos, int n, TStringCore const& after)
{
    return replace(pos, n, after.constData(), after.length());
}

TStringCore& TStringCore::replace(int pos, int n, char16_t const* after, int len)
{
    int const inserted = CheckedLength(after, len);
    if (pos < 0 || pos > length()) {
        return *this;
    }
    if (inserted != 0 && holds(after)) {
        TStringCore const copy(after, inserted);
        return replace(pos, n, copy.constData(), inserted);
    }
    int const removed = std::clamp(n, 0, length() - pos);
    if (removed != 0 || inserted != 0) {
        copyUnits(splice(pos, removed, inserted), after, inserted);
    }
    return *this;
}

TStringCore& TStringCore::replace(int pos, int n, char16_t after)
{
    return replace(pos, n, &after, 1);
}

TStringCore& TStringCore::replace(char16_t before, char16_t after, CaseSensitivity cs)
{
    int position = indexOf(before, 0, cs);
    if (position < 0) {
        return *this;
    }
    char16_t* const units = data();
    if (cs == CaseSensitive) {
        UnitSearch::ReplaceUnit(units, length(), before, after);
        return *this;
    }
    while (position >= 0) {
        units[position] = after;
        position = indexOf(before, position + 1, cs);
    }
    return *this;
}

TStringCore& TStringCore::replace(char16_t before, TStringCore const& after, CaseSensitivity cs)
{
    replaceCount(*this, TStringCore(&before, 1), after, cs);
    return *this;
}

TStringCore& TStringCore::replace(TStringCore const& before, TStringCore const& after,
                                  CaseSensitivity cs)
{
    replaceCount(*this, before, after, cs);
    return *this;
}

TStringCore& TStringCore::replaceAnyOf(char16_t const* set, char16_t after)
{
    return replaceAnyOf(TStringCore(set), after);
}

TStringCore& TStringCore::replaceAnyOf(TStringCore const& set, char16_t after)
{
    return replaceAnyOf(set, TStringCore(&after, 1));
}

TStringCore& TStringCore::replaceAnyOf(TStringCore const& set, TStringCore const& after)
{
    Positions found;
    int position = findOneOf(set, 0);
    while (position >= 0) {
        found.add(position);
        position = findOneOf(set, position + 1);
    }
    if (found.count() != 0) {
        *this = Rebuilt(*this, found, 1, after);
    }
    return *this;
}

int TStringCore::replaceCount(TStringCore& text, TStringCore const& before,
                              TStringCore const& after, CaseSensitivity cs)
{
    if (before.isEmpty()) {
        int const places = text.length() + 1;
        if (!after.isEmpty()) {
            text = Interleaved(text, after);
        }
        return places;
    }
    Positions found;
    FindAll(text, before, cs, found);
    if (found.count() != 0) {
        text = Rebuilt(text, found, before.length(), after);
    }
    return static_cast<int>(found.count());
}

// Compare

int TStringCore::compare(TStringCore const& other, CaseSensitivity cs) const
{
    return cs == CaseSensitive
               ? UnitSearch::Compare(constData(), length(), other.constData(), other.length())
               : CaseMapping::CompareFolded(constData(), length(), other.constData(),
                                            other.length());
}

int TStringCore::compare(char16_t const* other, CaseSensitivity cs) const
{
    int const n = length(other);
    return cs == CaseSensitive ? UnitSearch::Compare(constData(), length(), other, n)
                               : CaseMapping::CompareFolded(constData(), length(), other, n);
}

int TStringCore::compare(char16_t other, CaseSensitivity cs) const
{
    return compare(TStringCore(&other, 1), cs);
}

int TStringCore::compareN(char16_t const* a, char16_t const* b, int n, CaseSensitivity cs)
{
    auto const bounded = [n](char16_t const* text) {
        if (n < 0 || text == nullptr) {
            return CheckedLength(text, std::min(n, -1));
        }
        int length = 0;
        while (length < n && text[length] != 0) {
            ++length;
        }
        return length;
    };
    int const aLength = bounded(a);
    int const bLength = bounded(b);
    return cs == CaseSensitive ? UnitSearch::Compare(a, aLength, b, bLength)
                               : CaseMapping::CompareFolded(a, aLength, b, bLength);
}
