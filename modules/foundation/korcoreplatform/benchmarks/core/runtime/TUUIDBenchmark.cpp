// Identifiers beside QUuid.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/main/string/TString.h"

#include <QString>
#include <QUuid>

#include <array>

#include <sys/random.h>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

bool Identifiers()
{
    QUuid const qUuid = QUuid::createUuid();
    TUUID const uuid(qUuid);
    QString const qText = qUuid.toString();
    TString const text(qText);
    Row("UUID to text", 1.0)
        .Ours(Repeat([=] { return uuid.ToString(TUUIDFormatOption::Braced); }))
        .Peer("QUuid", Repeat([=] { return qUuid.toString(); }));
    Row("UUID from text", 1.0).Ours(Repeat([=] { return TUUID(text); })).Peer("QUuid", Repeat([=] {
                                                                                  return QUuid(
                                                                                      qText);
                                                                              }));
    Row("UUID create", 1.0)
        .Ours(Repeat([] { return TUUID::CreateUUID(); }))
        .Peer("QUuid", Repeat([] { return QUuid::createUuid(); }))
        .Limit("getentropy", Repeat([] {
                   std::array<char, 16> bytes;
                   return ::getentropy(bytes.data(), bytes.size());
               }));
    return true;
}

[[maybe_unused]] bool const s_registered = Identifiers();

} // namespace
