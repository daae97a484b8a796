// Any text and any time: the line is JSON for an independent reader, which finds the text up to its
// first zero, wherever a record holds it.

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/Value.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <chrono>
#include <cmath>
#include <cstring>

namespace {

using TLog::Literal;

/// A line without blanks, line breaks and bytes above ASCII, read as one object.
QJsonObject Read(TLog::Event const& event)
{
    static TLog::Formatter s_formatter; // what it keeps from line to line must not show
    std::string line;
    s_formatter.AppendLine(line, TLog::AccessLevel::Standard, TLog::Severity::Info, event);
    Require(line.back() == '\n');
    line.pop_back();
    for (char const c : line) {
        Require(c >= ' ' && c <= '~');
    }
    QJsonParseError error;
    QJsonDocument const document = QJsonDocument::fromJson(QByteArray::fromStdString(line), &error);
    Require(error.error == QJsonParseError::NoError && document.isObject());
    Require(s_formatter(TLog::Severity::Info, event).toStdString() == line);
    return document.object();
}

void CheckLine(TString const& text, TLog::EventTime time, double number)
{
    QString expected = text.toQString();
    int const zero = expected.indexOf(QChar(0));
    expected.truncate(zero < 0 ? expected.size() : zero);
    auto const list = TLog::Array::Make({Literal::String(text), Literal::Double(number),
                                         Literal::Double(number, Literal::Scientific)});
    TLog::Event const event(
        text, TLog::Object::Make({{u"list", list}, {u"-" + text, nullptr}}),
        TLog::ActivityInfo(time, 1, 2, text, u"-", u"-", u"-", nullptr, nullptr));
    QJsonObject const line = Read(event);
    Require(line["k"].toString() == expected);
    Require(line["sess"].toString() == expected);
    Require(line["ts"].toString() == event.GetTimestamp().GetFormattedLocalValue().toQString());
    QJsonArray const values = line["v"].toObject()["list"].toArray();
    Require(values.size() == 3 && values[0].toString() == expected);
    Require(line["v"].toObject()["-" + expected].isNull());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::int64_t bits = 0;
    if (size >= sizeof(bits)) {
        std::memcpy(&bits, data, sizeof(bits));
    }
    double number;
    std::memcpy(&number, &bits, sizeof(number));
    if (std::abs(number) > 1.79e308) {
        number = 0; // rounded to two decimals it may be more than the reader's numbers hold
    }
    TLog::EventTime const time{std::chrono::microseconds(bits)};
    CheckLine(TString::fromStdU16String(Units(data, size)), time, number);
    CheckLine(TString::fromStdU16String(Latin1(data, size)), time, number);
    return 0;
}
