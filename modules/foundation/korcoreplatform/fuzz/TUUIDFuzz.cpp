// Any text: identifiers are read as Qt reads them, the base-36 form is read group by group as
// numbers are, and every form that is written reads back.

#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/main/error/KorvelException.h"

#include <QByteArray>
#include <QString>

namespace {

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

/// A base-36 form is read exactly when it is long enough and all its groups are numbers of 32
/// bits; they are then written again without white space around them and without sign, in lower
/// case, filled up with zeros.
void CheckBase36(TString const& text)
{
    bool isGood = text.length() >= 28;
    TString expected;
    for (int at = 0; isGood && at < 28; at += 7) {
        TString group = text.mid(at, 7).trimmed();
        group.toUInt(&isGood, 36);
        expected += group.removeAll(u'+').toLower().rightJustified(7, u'0');
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
    std::string const bytes(data, data + size);
    Require(TUUID(bytes.c_str()) == TUUID(QUuid(QByteArray(bytes.c_str()))));
    for (auto const& units : {Latin1(data, size), Units(data, size)}) {
        TString const text = TString::fromStdU16String(units);
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
