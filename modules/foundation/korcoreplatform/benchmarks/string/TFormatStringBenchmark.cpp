// Messages from templates beside absl::Substitute, fmt and QString::arg. The 8-bit peers write
// half as many bytes.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/main/string/TFormatString.h"

#include <QString>

#include <absl/strings/substitute.h>
#include <fmt/format.h>

#include <string>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

bool Messages()
{
    TString const file(u"settings.json");
    QString const qFile("settings.json");
    std::string const narrowFile("settings.json");
    TString const host(u"build-7");
    QString const qHost("build-7");
    std::string const narrowHost("build-7");
    auto const ours2 = [=] {
        return TFormat(u"Unable to read %1 bytes from the file '%2'.", 65536, file);
    };
    auto const qt2 = [=] {
        return QString("Unable to read %1 bytes from the file '%2'.").arg(65536).arg(qFile);
    };
    auto const fmt2 = [=] {
        return fmt::format("Unable to read {} bytes from the file '{}'.", 65536, narrowFile);
    };
    auto const absl2 = [=] {
        return absl::Substitute("Unable to read $0 bytes from the file '$1'.", 65536, narrowFile);
    };
    Row("TFormat, 2 arguments, against 8-bit text", 1.0)
        .Ours(Repeat(ours2))
        .Peer("absl", Repeat(absl2))
        .Peer("fmt", Repeat(fmt2));
    Row("TFormat, 2 arguments, against QString", 0.35)
        .Ours(Repeat(ours2))
        .Peer("QString", Repeat(qt2));
    auto const ours5 = [=] {
        return TFormat(u"%1 of %2 files copied from %3 to '%4' in %5 ms", 17, 250, host, file,
                       1234567);
    };
    auto const qt5 = [=] {
        return QString("%1 of %2 files copied from %3 to '%4' in %5 ms")
            .arg(17)
            .arg(250)
            .arg(qHost)
            .arg(qFile)
            .arg(1234567);
    };
    auto const fmt5 = [=] {
        return fmt::format("{} of {} files copied from {} to '{}' in {} ms", 17, 250, narrowHost,
                           narrowFile, 1234567);
    };
    auto const absl5 = [=] {
        return absl::Substitute("$0 of $1 files copied from $2 to '$3' in $4 ms", 17, 250,
                                narrowHost, narrowFile, 1234567);
    };
    Row("TFormat, 5 arguments, against 8-bit text", 1.0)
        .Ours(Repeat(ours5))
        .Peer("absl", Repeat(absl5))
        .Peer("fmt", Repeat(fmt5));
    Row("TFormat, 5 arguments, against QString", 0.35)
        .Ours(Repeat(ours5))
        .Peer("QString", Repeat(qt5));
    return true;
}

[[maybe_unused]] bool const s_registered = Messages();

} // namespace
