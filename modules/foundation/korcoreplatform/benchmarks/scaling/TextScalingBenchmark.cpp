// How texts and formatting grow with the number of units and markers.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/string/TFormatString.h"
#include "korcoreplatform/main/string/TString.h"

#include <QByteArray>
#include <QString>

#include <fmt/args.h>
#include <fmt/format.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

Row TextRow(std::string const& curve, int units)
{
    Row row("text, " + curve + ", " + std::to_string(units) + " units");
    row.At("text-length", curve, units);
    return row;
}

/// 14 units are the most that a text holds without a block.
bool Lengths()
{
    for (int n : {0, 1, 4, 8, 14, 15, 16, 32, 64, 256, 1024, 4096, 16384, 65536, 262144, 1048576}) {
        std::u16string const units = SampleTexts::Words(n);
        TString const ours(units.data(), n);
        QString const qt = ours.toQString();
        TextRow("construct", n)
            .Ours(Repeat([units, n] { return TString(units.data(), n); }))
            .Peer("QString", Repeat([units, n] {
                      return QString(reinterpret_cast<QChar const*>(units.data()), n);
                  }))
            .Limit("memcpy", Repeat([units, to = units]() mutable {
                       return std::memcpy(to.data(), units.data(), units.size() * sizeof(char16_t));
                   }));
        TextRow("copy", n)
            .Ours(Repeat([ours] { return TString(ours); }))
            .Peer("QString", Repeat([qt] { return QString(qt); }));
        TextRow("find, a miss", n)
            .Ours(Repeat([ours] { return ours.indexOf(u'#'); }))
            .Peer("QString", Repeat([qt] { return qt.indexOf(QChar(u'#')); }));
        TextRow("to UTF-8", n)
            .Ours(Repeat([ours] { return ours.toStdString(); }))
            .Peer("QString", Repeat([qt] { return qt.toUtf8(); }));
    }
    return true;
}

/// A template of `n` markers in the way of writing of `marker(i)`, i from 1.
template <class Marker>
std::string Template(int n, Marker marker)
{
    std::string text = "values:";
    for (int i = 1; i <= n; ++i) {
        text += " and " + marker(i);
    }
    return text;
}

bool Markers()
{
    for (int n : {1, 2, 5, 10, 20, 50, 99}) {
        std::string const numbered = Template(n, [](int i) { return "%" + std::to_string(i); });
        std::string const braces = Template(n, [](int) { return std::string("{}"); });
        TString const ours(numbered.c_str());
        QString const qt = ours.toQString();
        std::vector<TString> const values(static_cast<std::size_t>(n), u"value-12");
        std::vector<QString> const qValues(values.size(), QString("value-12"));
        std::vector<std::string> const narrow(values.size(), "value-12");
        Row("format, " + std::to_string(n) + " markers")
            .Ours(Repeat([=] { return TFormatString(ours).arg(values).result(); }))
            .Peer("QString::arg", Repeat([=] {
                      QString text = qt;
                      for (QString const& value : qValues) {
                          text = text.arg(value);
                      }
                      return text;
                  }))
            .Peer("fmt", Repeat([=] {
                      fmt::dynamic_format_arg_store<fmt::format_context> store;
                      for (std::string const& value : narrow) {
                          store.push_back(fmt::string_view(value));
                      }
                      return fmt::vformat(braces, store);
                  }))
            .At("format-markers", "", n);
    }
    return true;
}

[[maybe_unused]] bool const s_registered = Lengths() && Markers();

} // namespace
