#include "korsys/main/text/CaseTables_p.h"

#include "korsys/main/text/SurrogatePairs_p.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace CaseTables {
namespace {

int Encode(char32_t codePoint, char16_t* units)
{
    int length = 0;
    U16_APPEND_UNSAFE(units, length, static_cast<UChar32>(codePoint));
    return length;
}

/// Writes the lower-case form of one code point and returns its length.
int LowerOf(char32_t codePoint, char16_t* units)
{
    constexpr char32_t kCapitalIWithDot = 0x130;
    if (codePoint == kCapitalIWithDot) {
        units[0] = u'i';
        units[1] = 0x307;
        return 2;
    }
    return Encode(static_cast<char32_t>(u_tolower(static_cast<UChar32>(codePoint))), units);
}

/// Writes the upper-case form of one code point and returns its length.
int UpperOf(char32_t codePoint, char16_t* units)
{
    char16_t source[2];
    int const length = Encode(codePoint, source);
    if (u_hasBinaryProperty(static_cast<UChar32>(codePoint), UCHAR_CHANGES_WHEN_UPPERCASED)) {
        constexpr int kRoom = std::extent_v<decltype(Mapped::units)>;
        UErrorCode error = U_ZERO_ERROR;
        int const mapped = u_strToUpper(units, kRoom, source, length, "", &error);
        if (U_SUCCESS(error)) {
            return mapped;
        }
    }
    std::copy(source, source + length, units);
    return length;
}

void Enter(Table& table, char16_t unit, char16_t answer)
{
    table.entries[unit].store(kKnown | answer, std::memory_order_relaxed);
}

} // namespace

Table s_fold;
Table s_lower;
Table s_upper;

char16_t AskFold(char16_t unit) noexcept
{
    if (SurrogatePairs::IsSurrogate(unit)) {
        return unit;
    }
    char16_t const folded = static_cast<char16_t>(CaseMapping::Fold(unit));
    Enter(s_fold, unit, folded);
    return folded;
}

char32_t AskFoldAt(char16_t const* text, int index) noexcept
{
    if (SurrogatePairs::IsInside(text, index)) {
        return CaseMapping::Fold(SurrogatePairs::CodePoint(text[index - 1], text[index]));
    }
    return AskFold(text[index]);
}

Mapped Ask(LetterCase to, char16_t const* text, int length) noexcept
{
    char16_t const unit = text[0];
    bool const isPair =
        length > 1 && SurrogatePairs::IsHigh(unit) && SurrogatePairs::IsLow(text[1]);
    char32_t const codePoint = isPair ? SurrogatePairs::CodePoint(unit, text[1]) : unit;
    Mapped mapped;
    mapped.read = isPair ? 2 : 1;
    mapped.written = to == LetterCase::Lower ? LowerOf(codePoint, mapped.units)
                                             : UpperOf(codePoint, mapped.units);
    if (mapped.written == 1 && !SurrogatePairs::IsSurrogate(unit)) {
        Enter(to == LetterCase::Lower ? s_lower : s_upper, unit, mapped.units[0]);
    }
    return mapped;
}

namespace {

/// Which units fold to one unit. Those that fold to an early unit are found by index, the others by
/// a binary search; a unit that nothing else folds to has no entry.
class VariantTable
{
public:
    VariantTable();

    Variants Find(char16_t folded) const;

private:
    static constexpr int kDirect = 0x600; ///< Up to the end of Latin, Greek, Cyrillic, Armenian.

    struct Entry
    {
        char16_t folded;
        Variants variants;
    };
    static bool IsBefore(Entry const& entry, char16_t folded) { return entry.folded < folded; }

    void Add(char16_t folded, char16_t unit);

    std::vector<Variants> m_direct;
    std::vector<Entry> m_entries; ///< By `folded`, ascending.
};

Variants OnlyItself(char16_t unit)
{
    return {1, {unit, unit, unit, unit, unit, unit, unit, unit}};
}

VariantTable::VariantTable()
{
    m_direct.reserve(kDirect);
    for (int unit = 0; unit < kDirect; ++unit) {
        m_direct.push_back(OnlyItself(static_cast<char16_t>(unit)));
    }
    for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
        char32_t const folded = CaseMapping::Fold(unit);
        if (folded != unit && folded <= 0xFFFF) {
            Add(static_cast<char16_t>(folded), static_cast<char16_t>(unit));
        }
    }
}

void VariantTable::Add(char16_t folded, char16_t unit)
{
    Variants* variants = nullptr;
    if (folded < kDirect) {
        variants = &m_direct[folded];
    } else {
        auto at = std::lower_bound(m_entries.begin(), m_entries.end(), folded, IsBefore);
        if (at == m_entries.end() || at->folded != folded) {
            at = m_entries.insert(at, Entry{folded, OnlyItself(folded)});
        }
        variants = &at->variants;
    }
    if (variants->count < Variants::kMost) {
        variants->units[variants->count++] = unit;
    }
}

Variants VariantTable::Find(char16_t folded) const
{
    if (folded < kDirect) {
        return m_direct[folded];
    }
    auto const at = std::lower_bound(m_entries.begin(), m_entries.end(), folded, IsBefore);
    return at != m_entries.end() && at->folded == folded ? at->variants : OnlyItself(folded);
}

} // namespace

Variants VariantsOf(char16_t unit)
{
    static VariantTable const& s_variants = *new VariantTable; // used until the process ends
    return s_variants.Find(FoldUnit(unit));
}

} // namespace CaseTables

char32_t CaseMapping::Fold(char32_t codePoint) noexcept
{
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(codePoint), U_FOLD_CASE_DEFAULT));
}
