// Any text: identifiers are read as Qt reads them, the base-36 form is read group by group as
// numbers are, and every form that is written reads back.

#include "korcoreplatform/main/core/runtime/TUUID.h"

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/main/error/KorvelException.h"

#include <QByteArray>
#include <QString>

namespace {

template <class Id>
std::vector<bool> Relations(Id const& a, Id const& b)
{
    return {a == b, a != b, a > b, a >= b, a < b, a <= b};
}

void CheckForms(TUUID const& id, TUUID const& other)
{
    QUuid const& qUuid = id;
    Require(Relations<TUUID>(id, other) == Relations<QUuid>(id, other));
    Require(std::hash<TUUID>()(id) == qHash(qUuid, 0));
    TString const braced = id;
    TString compact = braced;
    Require(braced == qUuid.toString().toUpper());
    Require(TUUID(braced) == id);
    Require(id.ToString(TUUIDFormatOption::Compact) == compact.removeAnyOf(u"{}-"));
    TString const base36 = id.ToString(TUUIDFormatOption::Base36);
    Require(TUUID::FromBase36(base36) == id && TUUID::FromBase36(base36.toUpper() + u"?") == id);
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
    TUUID const any = size >= 16 ? TUUID::FromRFC4122(data, 16)
                                 : TUUID(u"{00000001-0002-0003-0004-000500000006}");
    for (auto const& units : {Latin1(data, size), Units(data, size)}) {
        TString const text = TString::fromStdU16String(units);
        TUUID const id(text);
        Require(id == TUUID(QUuid(text.toQString())));
        QString const upToZero(reinterpret_cast<QChar const*>(text.constData()));
        Require(TUUID(text.constData()) == TUUID(QUuid(upToZero)));
        Require(id == TUUID(text.toQString()));
        CheckForms(id, any);
        CheckBase36(text);
    }
    if (size >= 16) {
        Require(any == TUUID(QUuid::fromRfc4122(QByteArray(bytes.data(), 16))));
        CheckForms(any, any);
    }
    return 0;
}
