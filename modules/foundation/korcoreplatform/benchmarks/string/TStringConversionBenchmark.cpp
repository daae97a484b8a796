// Numbers and encodings beside Qt, ICU and the standard library.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/string/TString.h"

#include <QByteArray>
#include <QString>

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using PeerTable::Repeat;
using PeerTable::Row;

/// Goes round a list: each task has its own, so that all see the same order.
template <class Value>
class Ring
{
public:
    explicit Ring(std::vector<Value> values) : m_values(std::move(values)) {}
    Value const& next() { return m_values[m_next++ & (m_values.size() - 1)]; }

private:
    std::vector<Value> m_values; ///< A power of two of them.
    std::size_t m_next = 0;
};

/// Calls `task` with the next value of a ring each time.
template <class Value, class Use>
PeerTable::Task ForEach(std::vector<Value> const& values, Use use)
{
    return Repeat([ring = Ring<Value>(values), use]() mutable { return use(ring.next()); });
}

// So many that no branch predictor learns their order; that of 4096 is learnt in part.
constexpr std::size_t kValues = 16384;

std::vector<int> Integers()
{
    std::mt19937 random(5);
    std::vector<int> values(kValues);
    int digits = 0;
    for (int& value : values) {
        int limit = 9;
        for (int d = digits++ % 9; d > 0; --d) {
            limit = limit * 10 + 9;
        }
        value = int(random() % unsigned(limit)) * (random() % 4 == 0 ? -1 : 1);
    }
    std::shuffle(values.begin(), values.end(), random);
    return values;
}

std::vector<double> Doubles()
{
    std::mt19937_64 random(6);
    std::vector<double> values(kValues);
    double const usual[] = {3.14159, 0.001234, 123456.789, 1e-7, 2.5e17, 0.5, 42, 99.99};
    for (std::size_t i = 0; i < values.size(); ++i) {
        double const any = double(random() >> 11) * 0x1p-53;
        values[i] = i % 2 == 0 ? usual[random() % 8] : any * std::pow(10.0, int(random() % 24) - 8);
    }
    return values;
}

template <class Value>
std::string Narrow(Value value)
{
    std::array<char, 64> buffer;
    auto const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

template <class Value>
std::vector<std::string> NarrowAll(std::vector<Value> const& values)
{
    std::vector<std::string> texts;
    for (Value const value : values) {
        texts.push_back(Narrow(value));
    }
    return texts;
}

template <class Text>
std::vector<Text> Converted(std::vector<std::string> const& texts)
{
    std::vector<Text> result;
    for (std::string const& text : texts) {
        result.push_back(Text(text.c_str()));
    }
    return result;
}

/// As large as one of our texts.
using Object = std::array<char, sizeof(TString)>;

/// What a library adds to `std::to_chars`: a call, and a whole object to fill.
[[gnu::noinline]] Object CalledToChars(int value)
{
    Object object{};
    auto const end = std::to_chars(object.data(), object.data() + object.size(), value).ptr;
    object.back() = static_cast<char>(end - object.data());
    return object;
}

bool WriteNumbers()
{
    Row("number(int)", 1.0)
        .Ours(ForEach(Integers(), [](int v) { return TString::number(v); }))
        .Peer("QString", ForEach(Integers(), [](int v) { return QString::number(v); }))
        .Peer("std", ForEach(Integers(),
                             [](int v) {
                                 std::array<char, 16> buffer;
                                 std::to_chars(buffer.data(), buffer.data() + buffer.size(), v);
                                 return buffer;
                             }))
        .Limit("to_chars behind a call", ForEach(Integers(), &CalledToChars));
    Row("number(double, 'g', 6)", 1.1)
        .Ours(ForEach(Doubles(), [](double v) { return TString::number(v, 'g', 6); }))
        .Peer("QString", ForEach(Doubles(), [](double v) { return QString::number(v, 'g', 6); }))
        .Peer("std", ForEach(Doubles(), [](double v) {
                  std::array<char, 32> buffer;
                  std::to_chars(buffer.data(), buffer.data() + buffer.size(), v,
                                std::chars_format::general, 6);
                  return buffer;
              }));
    return true;
}

template <class Value>
Value StdRead(std::string const& text)
{
    Value value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

bool ReadNumbers()
{
    std::vector<std::string> const integers = NarrowAll(Integers());
    Row("toInt", 1.0)
        .Ours(ForEach(Converted<TString>(integers), [](TString const& s) { return s.toInt(); }))
        .Peer("QString",
              ForEach(Converted<QString>(integers), [](QString const& s) { return s.toInt(); }))
        .Peer("std", ForEach(integers, &StdRead<int>));
    std::vector<std::string> const doubles = NarrowAll(Doubles());
    Row("toDouble", 1.1)
        .Ours(ForEach(Converted<TString>(doubles), [](TString const& s) { return s.toDouble(); }))
        .Peer("QString",
              ForEach(Converted<QString>(doubles), [](QString const& s) { return s.toDouble(); }))
        .Peer("std", ForEach(doubles, &StdRead<double>));
    return true;
}

/// A copy into a block of its own that reads and writes as many bytes in all as a conversion.
PeerTable::Task CopyOf(std::size_t bytesReadAndWritten)
{
    return PeerTable::RepeatAction([from = std::vector<char>(bytesReadAndWritten / 2, 'c')] {
        void* const block = std::malloc(from.size());
        benchmark::DoNotOptimize(std::memcpy(block, from.data(), from.size()));
        std::free(block);
    });
}

void Utf8Rows(std::string const& name, std::u16string const& units, double mark)
{
    int const runs = units.size() > 1000 ? 4 : 1; // how fast memory is varies most
    TString const ours = TString::fromStdU16String(units);
    QString const qt = QString::fromStdU16String(units);
    icu::UnicodeString const icu(units.data(), int32_t(units.size()));
    std::string const bytes = ours.toStdString();
    std::size_t const moved = bytes.size() + units.size() * sizeof(char16_t);
    Row("fromUtf8 " + name, mark)
        .Runs(runs)
        .Ours(Repeat([bytes] { return TString::fromUtf8(bytes.data(), int(bytes.size())); }))
        .Peer("QString",
              Repeat([bytes] { return QString::fromUtf8(bytes.data(), int(bytes.size())); }))
        .Peer("ICU", Repeat([bytes] { return icu::UnicodeString::fromUTF8(bytes); }))
        .Limit("memcpy", CopyOf(moved));
    Row("toUtf8 " + name, mark)
        .Runs(runs)
        .Ours(Repeat([ours] { return ours.toStdString(); }))
        .Peer("QString", Repeat([qt] { return qt.toUtf8(); }))
        .Peer("ICU", Repeat([icu] {
                  std::string out;
                  icu.toUTF8String(out);
                  return out;
              }))
        .Limit("memcpy", CopyOf(moved));
}

bool Encodings()
{
    for (int n : {1000, 1 << 20}) {
        std::string const size = n == 1000 ? "1000" : "1 Mi";
        Utf8Rows("ASCII " + size, SampleTexts::Words(n), 1.0);
        Utf8Rows("Latin " + size, SampleTexts::Latin(n), 1.0);
        Utf8Rows("Cyrillic " + size, SampleTexts::Cyrillic(n), 0.8);
        Utf8Rows("CJK " + size, SampleTexts::Chinese(n), 0.7);
        Utf8Rows("emoji " + size, SampleTexts::Emoji(n), 1.0);
    }
    TString const ours = TString::fromStdU16String(SampleTexts::Latin(1000));
    QString const qt = ours.toQString();
    std::string const bytes = ours.toLatin1();
    Row("fromLatin1 1000", 1.0)
        .Ours(Repeat([bytes] { return TString::fromLatin1(bytes.data(), int(bytes.size())); }))
        .Peer("QString",
              Repeat([bytes] { return QString::fromLatin1(bytes.data(), int(bytes.size())); }));
    Row("toLatin1 1000", 1.0)
        .Ours(Repeat([ours] { return ours.toLatin1(); }))
        .Peer("QString", Repeat([qt] { return qt.toLatin1(); }));
    return true;
}

[[maybe_unused]] bool const s_registered = WriteNumbers() && ReadNumbers() && Encodings();

} // namespace
