// Holds every member that shares its name and meaning with QString against it, on random texts.

#include "korcoreplatform/main/string/TString.h"

#include "korcoreplatform/tests/support/KorTest.h"

#include <QStringList>
#include <QVector>

namespace {

template <class Text, class Unit, class Case, class Split, class Flags, class Form>
struct Arguments
{
    Text text, other, third;
    Unit unit;
    int i, j;
    Case cs;
    Split behavior;
    Flags flags;
    Form form;
};

using Ours = Arguments<TString, char16_t, TString::CaseSensitivity, TString::SplitBehavior,
                       TString::SectionFlags, TString::NormalizationForm>;
using Qts = Arguments<QString, QChar, Qt::CaseSensitivity, Qt::SplitBehavior, QString::SectionFlags,
                      QString::NormalizationForm>;
using Answer = std::u16string;

Answer Of(TString const& text)
{
    return text.toStdU16String();
}

Answer Of(QString const& text)
{
    return text.toStdU16String();
}

Answer Of(int number)
{
    return QString::number(number).toStdU16String();
}

template <class List>
Answer Of(List const& list)
{
    Answer all;
    for (auto const& text : list) {
        all += Of(text) + u'\x1';
    }
    return all;
}

int Sign(int n)
{
    return (n > 0) - (n < 0);
}

struct Operation
{
    char const* name;
    Answer (*ours)(Ours const&);
    Answer (*qts)(Qts const&);
};

// One line a member: what is asked or changed on both sides, or on each side when the names differ.
#define SAME(asked) BOTH(asked, asked)
#define BOTH(ours, qts)                                                                            \
    Operation                                                                                      \
    {                                                                                              \
#ours, [](Ours const& a) { return Of(ours); }, [](Qts const& a) { return Of(qts); }        \
    }
#define SAME_CHANGE(change) BOTH_CHANGES(change, change)
#define BOTH_CHANGES(ours, qts)                                                                    \
    BOTH(Changed(a.text, [&](TString& s) { s.ours; }), Changed(a.text, [&](QString& s) { s.qts; }))

template <class Text, class Change>
Text Changed(Text text, Change const& change)
{
    change(text);
    return text;
}

Operation const kOperations[] = {
    SAME(Sign(a.text.compare(a.other, a.cs))),
    BOTH(Sign(a.text.compare(a.other.toQString(), a.cs)), Sign(a.text.compare(a.other, a.cs))),
    SAME(int(a.text < a.other)),
    BOTH(int(a.text >= a.unit), int(a.text >= QString(a.unit))),
    SAME(int(a.text == a.other)),
    SAME(a.text.indexOf(a.other, std::max(a.i, -a.text.length()), a.cs)),
    SAME(a.text.indexOf(a.unit, a.i, a.cs)),
    SAME(a.text.lastIndexOf(a.other, a.i, a.cs)),
    SAME(a.text.lastIndexOf(a.unit, a.i, a.cs)),
    SAME(int(a.text.contains(a.other, a.cs))),
    SAME(int(a.text.contains(a.unit, a.cs))),
    BOTH(int(a.text.contains(a.other.toQString(), a.cs)), int(a.text.contains(a.other, a.cs))),
    SAME(a.text.count(a.other, a.cs)),
    SAME(a.text.count(a.unit, a.cs)),
    SAME(int(a.text.startsWith(a.other, a.cs))),
    SAME(int(a.text.startsWith(a.unit, a.cs))),
    SAME(int(a.text.endsWith(a.other, a.cs))),
    SAME(int(a.text.endsWith(a.unit, a.cs))),
    SAME(a.text.left(a.i)),
    SAME(a.text.right(a.i)),
    SAME(a.text.mid(a.i, a.j)),
    SAME(a.text.section(a.other, a.i, a.j, a.flags)),
    SAME(a.text.section(u' ', a.i, a.j, a.flags)),
    SAME(a.text.split(a.other, a.behavior, a.cs)),
    SAME(a.text.split(a.unit, a.behavior, a.cs)),
    BOTH(TString::join({a.text, a.third, a.other}, a.other),
         QStringList({a.text, a.third, a.other}).join(a.other)),
    SAME(a.text.trimmed()),
    SAME(a.text.leftJustified(a.i, a.unit, a.j % 2 == 0)),
    SAME(a.text.rightJustified(a.i, a.unit, a.j % 2 == 0)),
    SAME(a.text.repeated(a.i)),
    SAME(a.text.toLower()),
    SAME(a.text.toUpper()),
    SAME(a.text.normalized(a.form)),
    BOTH(a.text + a.other + a.unit + a.third, QString(a.text + a.other + a.unit + a.third)),
    BOTH(TString::fromLatin1(a.text.toLatin1().c_str()), QString::fromLatin1(a.text.toLatin1())),
    BOTH(a.text.toQString(), a.text),
    SAME_CHANGE(append(a.other)),
    SAME_CHANGE(append(s)),
    SAME_CHANGE(prepend(a.other)),
    SAME_CHANGE(prepend(s)),
    SAME_CHANGE(insert(a.i, a.other)),
    SAME_CHANGE(insert(a.i, a.unit)),
    BOTH_CHANGES(insert(a.i, s), insert(a.i, QString(s))),
    BOTH_CHANGES(removeAt(a.i, a.j), remove(a.i, a.j)),
    BOTH_CHANGES(removeAll(a.other, a.cs), remove(a.other, a.cs)),
    BOTH_CHANGES(removeAll(a.unit, a.cs), remove(a.unit, a.cs)),
    SAME_CHANGE(replace(a.i, std::max(a.j, 0), a.other)),
    SAME_CHANGE(replace(a.other, a.third, a.cs)),
    BOTH_CHANGES(replace(a.other, s, a.cs), replace(a.other, QString(s), a.cs)),
    BOTH_CHANGES(replace(a.unit, u'#', a.cs), replace(a.unit, QChar('#'), a.cs)),
    SAME_CHANGE(truncate(a.i)),
    SAME_CHANGE(chop(a.i)),
    BOTH_CHANGES(fill(a.unit, a.i), fill(a.unit, std::max(a.i, -1))),
    BOTH_CHANGES(assign(s.mid(a.i, a.j)), operator=(s.mid(a.i, a.j))),
};

class RandomArguments
{
public:
    std::pair<Ours, Qts> next()
    {
        QString const text = this->text(m_random() % 8 == 0 ? 90 : 12);
        QString const other = this->text(3);
        QString const third = this->text(5);
        char16_t const unit = m_units[m_random() % m_units.size()];
        int const i = int(m_random() % 20) - 6;
        int const j = int(m_random() % 20) - 6;
        unsigned const bits = m_random();
        bool const cs = bits % 2 == 0;
        bool const keeps = bits % 4 < 2;
        return {
            {text, other, third, unit, i, j, cs ? TString::CaseSensitive : TString::CaseInsensitive,
             keeps ? TString::KeepEmptyParts : TString::SkipEmptyParts,
             TString::SectionFlags(bits / 4 % 16), TString::NormalizationForm(bits / 64 % 4)},
            {text, other, third, QChar(unit), i, j, cs ? Qt::CaseSensitive : Qt::CaseInsensitive,
             keeps ? Qt::KeepEmptyParts : Qt::SkipEmptyParts, QString::SectionFlags(bits / 4 % 16),
             QString::NormalizationForm(bits / 64 % 4)}};
    }

private:
    /// Few different units, so that needles occur; long enough at times to leave the object.
    QString text(unsigned maxUnits)
    {
        QString s;
        unsigned const wanted = m_random() % (maxUnits + 1);
        while (unsigned(s.size()) < wanted) {
            unsigned const kind = m_random() % 12;
            if (kind == 0) {
                s += QString::fromUcs4(&m_astral[m_random() % 3], 1);
            } else {
                s += QChar(m_units[m_random() % (kind < 8 ? 6 : m_units.size())]);
            }
        }
        return s;
    }

    std::mt19937 m_random{20301};
    // a A b B blank and comma are the most frequent; then letters with unusual cases or foldings,
    // white space, a combining mark.
    std::u16string m_units =
        u"aAbB ,kK\u212As\u017F\u00DF\u0130\u0131\u0442\u0422\u03C3\u03C2\u03A3"
        u"\u01C5\uFB01\u0301\u00A0\t\u2003z";
    uint m_astral[3] = {0x10400, 0x10428, 0x1F600}; // two letters of one case pair, no letter
};

TEST(TStringDifferentialTest, AsksAndChangesAsQStringDoes)
{
    RandomArguments random;
    for (int round = 0; round < 4000; ++round) {
        auto const [a, q] = random.next();
        for (Operation const& operation : kOperations) {
            ASSERT_EQ(operation.ours(a), operation.qts(q))
                << operation.name << ", round " << round << ": text " << a.text << ", other "
                << a.other << ", third " << a.third << ", unit " << int(a.unit) << ", i " << a.i
                << ", j " << a.j << ", case " << a.cs << ", split " << a.behavior;
        }
    }
}

TEST(TStringDifferentialTest, ReadsNumbersAsQStringDoes)
{
    std::mt19937 random(77);
    std::u16string const pieces = u"0123456789+-.eExX abzZ\u00A0nfi";
    int const bases[] = {0, 2, 8, 10, 16, 36};
    for (int round = 0; round < 100000; ++round) {
        QString text;
        for (unsigned n = random() % 9; n > 0; --n) {
            unsigned const range = random() % 3 == 0 ? unsigned(pieces.size()) : 10;
            text += QChar(pieces[random() % range]);
        }
        TString const ours(text);
        int const base = bases[random() % 6];
        bool ok = false;
        bool qOk = false;
        auto const same = [&](auto value, auto qValue) {
            EXPECT_TRUE(ok == qOk && value == qValue) << ours << " base " << base << ": " << value;
        };
        same(ours.toShort(&ok, base), text.toShort(&qOk, base));
        same(ours.toUInt(&ok, base), text.toUInt(&qOk, base));
        same(ours.toLongLong(&ok, base), text.toLongLong(&qOk, base));
        same(ours.toULongLong(&ok, base), text.toULongLong(&qOk, base));
        double const number = ours.toDouble(&ok);
        double const qNumber = text.toDouble(&qOk);
        same(number == number ? number : 7.5, qNumber == qNumber ? qNumber : 7.5); // no number
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace
