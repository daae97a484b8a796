// The text type beside Qt's, ICU's and the standard library's: making, joining, finding, mapping.

#include "korcoreplatform/benchmarks/support/PeerTable.h"
#include "korcoreplatform/benchmarks/support/SampleTexts.h"
#include "korcoreplatform/main/string/TString.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using PeerTable::Repeat;
using PeerTable::RepeatAction;
using PeerTable::Row;

/// One text in all four types. Copies of a `Texts` would share blocks, which is what "copy" rows
/// measure.
struct Texts
{
    explicit Texts(std::u16string const& text)
        : std(text), ours(TString::fromStdU16String(text)), qt(QString::fromStdU16String(text)),
          icu(text.data(), int32_t(text.size()))
    {}

    std::u16string std;
    TString ours;
    QString qt;
    icu::UnicodeString icu;
};

/// The least code that appends a unit to a text of this library's layout: 32 bytes with the form in
/// the last unit, a long text in a block that others may own, with its length in front.
class BareText
{
public:
    BareText() noexcept { std::memset(m_units, 0, sizeof(m_units)); }
    ~BareText()
    {
        if (isLong()) {
            std::free(block());
        }
    }
    BareText(BareText const&) = delete;
    BareText& operator=(BareText const&) = delete;

    void append(char16_t c)
    {
        if (!isLong()) {
            unsigned const length = m_units[kForm];
            if (length < 14) {
                m_units[kForm] = char16_t(length + 1);
                putLast(m_units + length, c);
                return;
            }
            char16_t units[16];
            std::memcpy(units, m_units, sizeof(units));
            setBlock(firstBlock(units));
            std::memcpy(m_units + 4, &length, sizeof(length));
            m_units[kForm] = 0xFFFF;
        }
        Block* owned = block();
        unsigned length;
        std::memcpy(&length, m_units + 4, sizeof(length));
        if (length >= unsigned(owned->capacity) ||
            owned->references.load(std::memory_order_acquire) != 1) {
            owned = grown(owned);
            setBlock(owned);
        }
        unsigned const newLength = length + 1;
        std::memcpy(m_units + 4, &newLength, sizeof(newLength));
        owned->length = int(newLength);
        putLast(reinterpret_cast<char16_t*>(owned + 1) + length, c);
    }

private:
    struct alignas(16) Block
    {
        std::atomic<int> references;
        int length;
        int capacity;
    };

    static constexpr int kForm = 15;

    bool isLong() const { return std::int16_t(m_units[kForm]) < 0; }

    Block* block() const
    {
        Block* block;
        std::memcpy(&block, m_units, sizeof(block));
        return block;
    }

    void setBlock(Block* block) { std::memcpy(m_units, &block, sizeof(block)); }

    static void putLast(char16_t* to, char16_t c)
    {
        std::uint32_t const withZero = c;
        std::memcpy(to, &withZero, sizeof(withZero));
    }

    static Block* allocated(void* old, int capacity)
    {
        auto const bytes = sizeof(Block) + (std::size_t(capacity) + 1) * sizeof(char16_t);
        auto* const block = static_cast<Block*>(std::realloc(old, bytes));
        block->capacity = capacity;
        return block;
    }

    __attribute__((noinline)) static Block* grown(Block* old)
    {
        return allocated(static_cast<void*>(old), 2 * old->capacity);
    }

    __attribute__((noinline)) static Block* firstBlock(char16_t const (&units)[16])
    {
        Block* const block = allocated(nullptr, 55);
        block->references = 1;
        std::memcpy(static_cast<void*>(block + 1), units, sizeof(units));
        return block;
    }

    alignas(void*) char16_t m_units[16];
};

bool MakeAndCopy()
{
    Row("default constructor, then move", 1.0)
        .Ours(Repeat([] {
            TString a;
            benchmark::DoNotOptimize(a);
            TString b(std::move(a));
            return b;
        }))
        .Peer("QString", Repeat([] {
                  QString a;
                  benchmark::DoNotOptimize(a);
                  QString b(std::move(a));
                  return b;
              }))
        .Peer("ICU", Repeat([] {
                  icu::UnicodeString a;
                  benchmark::DoNotOptimize(a);
                  icu::UnicodeString b(std::move(a));
                  return b;
              }))
        .Peer("std", Repeat([] {
                  std::u16string a;
                  benchmark::DoNotOptimize(a);
                  std::u16string b(std::move(a));
                  return b;
              }));
    for (int n : {10, 60, 1000}) {
        Texts const t(SampleTexts::Words(n));
        Row row("copy of " + std::to_string(n) + " units", n == 10 ? 0.5 : 1.0);
        row.Ours(Repeat([t] { return TString(t.ours); }))
            .Peer("QString", Repeat([t] { return QString(t.qt); }))
            .Peer("ICU", Repeat([t] { return icu::UnicodeString(t.icu); }))
            .Peer("std", Repeat([t] { return std::u16string(t.std); }));
        if (n > 10) { // shared: one more user, then one fewer
            auto const users = std::make_shared<std::atomic<int>>(1);
            row.Limit("atomics", Repeat([users] {
                          users->fetch_add(1, std::memory_order_relaxed);
                          return users->fetch_sub(1, std::memory_order_acq_rel);
                      }));
        }
    }
    std::u16string const ten = SampleTexts::Words(10);
    Row("construct from 10 units", 0.5)
        .Ours(Repeat([ten] { return TString(ten.data(), int(ten.size())); }))
        .Peer("QString", Repeat([ten] {
                  return QString(reinterpret_cast<QChar const*>(ten.data()), int(ten.size()));
              }))
        .Peer("ICU", Repeat([ten] { return icu::UnicodeString(ten.data(), int(ten.size())); }))
        .Peer("std", Repeat([ten] { return std::u16string(ten.data(), ten.size()); }));
    return true;
}

bool AppendAndConcatenate()
{
    Row("append one unit up to 1000", 1.0)
        .Ours(Repeat([] {
            TString s;
            for (int i = 0; i < 1000; ++i) {
                s.append(char16_t(u'a' + (i & 15)));
            }
            return s;
        }))
        .Peer("QString", Repeat([] {
                  QString s;
                  for (int i = 0; i < 1000; ++i) {
                      s.append(QChar(u'a' + (i & 15)));
                  }
                  return s;
              }))
        .Peer("ICU", Repeat([] {
                  icu::UnicodeString s;
                  for (int i = 0; i < 1000; ++i) {
                      s.append(char16_t(u'a' + (i & 15)));
                  }
                  return s;
              }))
        .Peer("std", Repeat([] {
                  std::u16string s;
                  for (int i = 0; i < 1000; ++i) {
                      s.push_back(char16_t(u'a' + (i & 15)));
                  }
                  return s;
              }))
        .Limit("layout", RepeatAction([] {
                   BareText s;
                   for (int i = 0; i < 1000; ++i) {
                       s.append(char16_t(u'a' + (i & 15)));
                   }
                   benchmark::DoNotOptimize(s);
               }));
    Texts const ten(SampleTexts::Words(10));
    Row("append ten units up to 1000", 1.0)
        .Runs(4) // the mark is near
        .Ours(Repeat([ten] {
            TString s;
            for (int i = 0; i < 100; ++i) {
                s.append(ten.ours);
            }
            return s;
        }))
        .Peer("QString", Repeat([ten] {
                  QString s;
                  for (int i = 0; i < 100; ++i) {
                      s.append(ten.qt);
                  }
                  return s;
              }))
        .Peer("ICU", Repeat([ten] {
                  icu::UnicodeString s;
                  for (int i = 0; i < 100; ++i) {
                      s.append(ten.icu);
                  }
                  return s;
              }))
        .Peer("std", Repeat([ten] {
                  std::u16string s;
                  for (int i = 0; i < 100; ++i) {
                      s.append(ten.std);
                  }
                  return s;
              }));
    for (int n : {4, 20}) {
        Texts const a(SampleTexts::Words(n));
        Texts const b(SampleTexts::Words(n, 2));
        Texts const c(SampleTexts::Words(n, 3));
        Row("a + b + c of " + std::to_string(3 * n) + " units", n == 4 ? 0.6 : 0.8)
            .Ours(Repeat([a, b, c] { return a.ours + b.ours + c.ours; }))
            .Peer("QString", Repeat([a, b, c] { return QString(a.qt + b.qt + c.qt); }))
            .Peer("ICU", Repeat([a, b, c] { return a.icu + b.icu + c.icu; }))
            .Peer("std", Repeat([a, b, c] { return a.std + b.std + c.std; }));
    }
    return true;
}

bool Compare()
{
    for (int n : {60, 1000}) {
        Texts const a(SampleTexts::Words(n));
        Texts const b(std::u16string(SampleTexts::Words(n).c_str())); // blocks of its own
        Row("equality of " + std::to_string(n) + " units", 1.0)
            .Ours(Repeat([a, b] { return a.ours == b.ours; }))
            .Peer("QString", Repeat([a, b] { return a.qt == b.qt; }))
            .Peer("ICU", Repeat([a, b] { return a.icu == b.icu; }))
            .Peer("std", Repeat([a, b] { return a.std == b.std; }))
            .Limit("memcmp", Repeat([a, b] {
                       return std::memcmp(a.std.data(), b.std.data(), 2 * a.std.size()) == 0;
                   }));
    }
    struct Script
    {
        char const* name;
        std::u16string text;
        double mark;
    };
    for (Script const& script : {Script{"ASCII", SampleTexts::Words(60), 0.15},
                                 Script{"Cyrillic", SampleTexts::Cyrillic(60), 0.5}}) {
        Texts const a(script.text);
        Texts const b(TString::fromStdU16String(script.text).toUpper().toStdU16String());
        Row(std::string("compare without case, 60 units ") + script.name, script.mark)
            .Ours(Repeat([a, b] { return a.ours.compare(b.ours, TString::CaseInsensitive); }))
            .Peer("QString", Repeat([a, b] { return a.qt.compare(b.qt, Qt::CaseInsensitive); }))
            .Peer("ICU", Repeat([a, b] { return a.icu.caseCompare(b.icu, U_FOLD_CASE_DEFAULT); }));
    }
    return true;
}

bool Find()
{
    std::u16string const words = SampleTexts::Words(1000);
    Texts const text(words);
    Texts const lateHit(words.substr(0, 985) + u"Zephyr4, the end");
    Texts const needle(u"Zephyr4,");
    Texts const folded(u"zEPHYR4,");
    char16_t const unit = u'#';
    char16_t const letter = u'Q'; // in no sample, in neither case
    Row("find a unit, miss, 1000", 1.0)
        .Ours(Repeat([=] { return text.ours.indexOf(unit); }))
        .Peer("QString", Repeat([=] { return text.qt.indexOf(QChar(unit)); }))
        .Peer("ICU", Repeat([=] { return text.icu.indexOf(unit); }))
        .Peer("std", Repeat([=] { return text.std.find(unit); }));
    Row("find a unit without case, miss, 1000", 0.5)
        .Ours(Repeat([=] { return text.ours.indexOf(letter, 0, TString::CaseInsensitive); }))
        .Peer("QString",
              Repeat([=] { return text.qt.indexOf(QChar(letter), 0, Qt::CaseInsensitive); }));
    for (bool hit : {false, true}) {
        Texts const& in = hit ? lateHit : text;
        std::string const how = hit ? "late hit" : "miss";
        Row("find 8 units, " + how + ", 1000", 0.75)
            .Ours(Repeat([=] { return in.ours.indexOf(needle.ours); }))
            .Peer("QString", Repeat([=] { return in.qt.indexOf(needle.qt); }))
            .Peer("ICU", Repeat([=] { return in.icu.indexOf(needle.icu); }))
            .Peer("std", Repeat([=] { return in.std.find(needle.std); }));
        Row("find 8 units without case, " + how + ", 1000", 0.5)
            .Ours(Repeat([=] { return in.ours.indexOf(folded.ours, 0, TString::CaseInsensitive); }))
            .Peer("QString",
                  Repeat([=] { return in.qt.indexOf(folded.qt, 0, Qt::CaseInsensitive); }));
    }
    return true;
}

bool MapCase()
{
    struct Sample
    {
        std::string name;
        std::u16string text;
        double mark;
    };
    Sample const samples[] = {{"ASCII 60", SampleTexts::Words(60), 0.2},
                              {"ASCII 1000", SampleTexts::Words(1000), 0.2},
                              {"Cyrillic 1000", SampleTexts::Cyrillic(1000), 0.5},
                              {"Greek 1000", SampleTexts::Greek(1000), 0.5}};
    icu::Locale const root = icu::Locale::getRoot();
    for (Sample const& sample : samples) {
        Texts const t(sample.text);
        Row("toUpper " + sample.name, sample.mark)
            .Ours(Repeat([t] { return t.ours.toUpper(); }))
            .Peer("QString", Repeat([t] { return t.qt.toUpper(); }))
            .Peer("ICU", Repeat([t, root] { return icu::UnicodeString(t.icu).toUpper(root); }));
        Texts const upper(t.ours.toUpper().toStdU16String());
        Row("toLower " + sample.name, sample.mark)
            .Ours(Repeat([upper] { return upper.ours.toLower(); }))
            .Peer("QString", Repeat([upper] { return upper.qt.toLower(); }))
            .Peer("ICU",
                  Repeat([upper, root] { return icu::UnicodeString(upper.icu).toLower(root); }));
    }
    return true;
}

/// Every occurrence in a std::u16string, as its users write it.
std::u16string StdReplaced(std::u16string text, std::u16string const& before,
                           std::u16string const& after)
{
    for (std::size_t at = text.find(before); at != text.npos;
         at = text.find(before, at + after.size())) {
        text.replace(at, before.size(), after);
    }
    return text;
}

bool SplitJoinReplace()
{
    std::u16string parts;
    for (int i = 0; i < 100; ++i) {
        parts += SampleTexts::Words(9, i) + (i < 99 ? u";" : u"");
    }
    Texts const t(parts);
    Row("split of 1000 units into 100 parts", 0.5)
        .Ours(Repeat([t] { return t.ours.split(u';'); }))
        .Peer("QString", Repeat([t] { return t.qt.split(';'); }));
    std::vector<TString> const ours = t.ours.split(u';');
    QStringList const qts = t.qt.split(';');
    Row("join of 100 parts", 1.0)
        .Ours(Repeat([ours] { return TString::join(ours, u", "); }))
        .Peer("QString", Repeat([qts] { return qts.join(", "); }));
    Texts const before(u";");
    Texts const after(u" :: ");
    Texts const absent(u"#;#");
    Row("replace of 99 hits", 0.9)
        .Ours(Repeat([=] { return TString(t.ours).replace(before.ours, after.ours); }))
        .Peer("QString", Repeat([=] { return QString(t.qt).replace(before.qt, after.qt); }))
        .Peer("ICU", Repeat([=] {
                  return icu::UnicodeString(t.icu).findAndReplace(before.icu, after.icu);
              }))
        .Peer("std", Repeat([=] { return StdReplaced(t.std, before.std, after.std); }));
    Row("replace with no hit", 0.8)
        .Ours(Repeat([=] { return TString(t.ours).replace(absent.ours, after.ours); }))
        .Peer("QString", Repeat([=] { return QString(t.qt).replace(absent.qt, after.qt); }))
        .Peer("ICU", Repeat([=] {
                  return icu::UnicodeString(t.icu).findAndReplace(absent.icu, after.icu);
              }))
        .Peer("std", Repeat([=] { return StdReplaced(t.std, absent.std, after.std); }));
    return true;
}

bool Hash()
{
    for (int n : {10, 60, 1000}) {
        Texts const t(SampleTexts::Words(n));
        // ICU hashes a sample of the units of a long text and is no peer.
        Row("hash of " + std::to_string(n) + " units", n == 1000 ? 0.5 : 1.0)
            .Ours(Repeat([t] { return std::hash<TString>()(t.ours); }))
            .Peer("QString", Repeat([t] { return qHash(t.qt); }))
            .Peer("std", Repeat([t] { return std::hash<std::u16string>()(t.std); }));
    }
    return true;
}

[[maybe_unused]] bool const s_registered = MakeAndCopy() && AppendAndConcatenate() && Compare() &&
                                           Find() && MapCase() && SplitJoinReplace() && Hash();

} // namespace
