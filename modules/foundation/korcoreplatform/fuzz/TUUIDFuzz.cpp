// Any text: identifiers are read as Qt reads them, the base-36 form is read group by group as
// numbers are, and every form that is written reads back.

#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korsys/main/error/KorvelException.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int kBase36Units = 28;
constexpr int kGroup = 7;

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void CheckForms(TUUID const& id)
{
    TString const braced = id;
    TString compact = braced;
    Require(braced == static_cast<QUuid const&>(id).toString().toUpper());
    Require(TUUID(braced) == id);
    Require(id.ToString(TUUIDFormatOption::Compact) == compact.removeAnyOf(u"{}-"));
    Require(TUUID::FromBase36(id.ToString(TUUIDFormatOption::Base36)) == id);
    Require(TUUID::FromRFC4122(id.ToRFC4122()) == id);
}

/// A group of a base-36 form as it is written when it is read and written again: without white
/// space around it and without its sign, in lower case, filled up with zeros.
TString Rewritten(TString const& group)
{
    TString digits = group.trimmed();
    if (digits.startsWith(u'+')) {
        digits.removeAt(0);
    }
    return digits.toLower().rightJustified(kGroup, u'0');
}

/// A base-36 form is read exactly when it is long enough and all its groups are numbers of 32
/// bits; it is then written again group by group.
void CheckBase36(TString const& text)
{
    bool isGood = text.length() >= kBase36Units;
    TString expected;
    for (int at = 0; isGood && at < kBase36Units; at += kGroup) {
        TString const group = text.mid(at, kGroup);
        group.toUInt(&isGood, 36);
        expected += Rewritten(group);
    }
    try {
        TUUID const id = TUUID::FromBase36(text);
        Require(isGood && id.ToString(TUUIDFormatOption::Base36) == expected);
    } catch (KorvelException const&) {
        Require(!isGood);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // The bytes as Latin-1 text, where most mutations of a good text stay close to it, and as
    // UTF-16 text.
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    std::u16string units(size / 2, u'\0');
    if (!units.empty()) { // `data` may be null when it is empty
        std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
    }
    Require(TUUID(bytes.c_str()) == TUUID(QUuid(QByteArray(bytes.c_str()))));
    for (TString const& text : {TString::fromLatin1(bytes.data(), static_cast<int>(bytes.size())),
                                TString::fromStdU16String(units)}) {
        TUUID const id(text);
        Require(id == TUUID(QUuid(text.toQString())));
        QString const upToZero(reinterpret_cast<QChar const*>(text.constData()));
        Require(TUUID(text.constData()) == TUUID(QUuid(upToZero)));
        CheckForms(id);
        CheckBase36(text);
    }
    if (size >= 16) {
        CheckForms(TUUID::FromRFC4122(data, 16));
    }
    return 0;
}
