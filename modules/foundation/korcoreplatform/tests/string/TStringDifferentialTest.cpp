// Holds every member that shares its name and meaning with QString against it, on random texts.

#include "korcoreplatform/main/string/TString.h"

#include <gtest/gtest.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

/// The same arguments for both sides.
struct Arguments
{
    TString text;
    TString other;
    TString third;
    QString qText;
    QString qOther;
    QString qThird;
    char16_t unit;
    int i;
    int j;
    bool withCase;

    TString::CaseSensitivity cs() const
    {
        return withCase ? TString::CaseSensitive : TString::CaseInsensitive;
    }
    Qt::CaseSensitivity qCs() const { return withCase ? Qt::CaseSensitive : Qt::CaseInsensitive; }
    QChar qUnit() const { return QChar(unit); }
};

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

Answer Of(std::vector<TString> const& list)
{
    Answer all;
    for (TString const& text : list) {
        all += Of(text) + u'\x1';
    }
    return all;
}

Answer Of(QStringList const& list)
{
    Answer all;
    for (QString const& text : list) {
        all += Of(text) + u'\x1';
    }
    return all;
}

int Sign(int n)
{
    return (n > 0) - (n < 0);
}

template <class Number>
Answer Of(Number value, bool ok)
{
    return QString("%1 %2").arg(value, 0, 'g', 17).arg(int(ok)).toStdU16String();
}

struct Operation
{
    char const* name;
    std::function<Answer(Arguments const&)> ours;
    std::function<Answer(Arguments const&)> qts;
};

// One line a member; the arguments are named alike so that the two sides read alike.
#define SAME(name, ours, qts)                                                                      \
    {                                                                                              \
        name, [](Arguments const& a) { return Of(ours); },                                         \
            [](Arguments const& a) { return Of(qts); }                                             \
    }
#define SAME_CHANGE(name, ours, qts)                                                               \
    {                                                                                              \
        name,                                                                                      \
            [](Arguments const& a) {                                                               \
                TString s(a.text);                                                                 \
                s.ours;                                                                            \
                return Of(s);                                                                      \
            },                                                                                     \
            [](Arguments const& a) {                                                               \
                QString s(a.qText);                                                                \
                s.qts;                                                                             \
                return Of(s);                                                                      \
            }                                                                                      \
    }

TString::SplitBehavior Behavior(Arguments const& a)
{
    return a.j % 2 == 0 ? TString::KeepEmptyParts : TString::SkipEmptyParts;
}

Qt::SplitBehavior QBehavior(Arguments const& a)
{
    return a.j % 2 == 0 ? Qt::KeepEmptyParts : Qt::SkipEmptyParts;
}

TString::SectionFlags Flags(Arguments const& a)
{
    return static_cast<TString::SectionFlags>(a.unit % 16);
}

QString::SectionFlags QFlags(Arguments const& a)
{
    return QString::SectionFlags(a.unit % 16);
}

std::vector<Operation> const kQuestions = {
    SAME("compare", Sign(a.text.compare(a.other, a.cs())),
         Sign(a.qText.compare(a.qOther, a.qCs()))),
    SAME("compare QString", Sign(a.text.compare(a.qOther, a.cs())),
         Sign(a.qText.compare(a.qOther, a.qCs()))),
    SAME("<", int(a.text < a.other), int(a.qText < a.qOther)),
    SAME(">= unit", int(a.text >= a.unit), int(a.qText >= QString(a.qUnit()))),
    SAME("==", int(a.text == a.other), int(a.qText == a.qOther)),
    SAME("indexOf", a.text.indexOf(a.other, std::max(a.i, -a.text.length()), a.cs()),
         a.qText.indexOf(a.qOther, std::max(a.i, -a.qText.length()), a.qCs())),
    SAME("indexOf unit", a.text.indexOf(a.unit, a.i, a.cs()),
         a.qText.indexOf(a.qUnit(), a.i, a.qCs())),
    SAME("lastIndexOf", a.text.lastIndexOf(a.other, a.i, a.cs()),
         a.qText.lastIndexOf(a.qOther, a.i, a.qCs())),
    SAME("lastIndexOf unit", a.text.lastIndexOf(a.unit, a.i, a.cs()),
         a.qText.lastIndexOf(a.qUnit(), a.i, a.qCs())),
    SAME("contains", int(a.text.contains(a.other, a.cs())),
         int(a.qText.contains(a.qOther, a.qCs()))),
    SAME("contains unit", int(a.text.contains(a.unit, a.cs())),
         int(a.qText.contains(a.qUnit(), a.qCs()))),
    SAME("contains QString", int(a.text.contains(a.qOther, a.cs())),
         int(a.qText.contains(a.qOther, a.qCs()))),
    SAME("count", a.text.count(a.other, a.cs()), a.qText.count(a.qOther, a.qCs())),
    SAME("count unit", a.text.count(a.unit, a.cs()), a.qText.count(a.qUnit(), a.qCs())),
    SAME("startsWith", int(a.text.startsWith(a.other, a.cs())),
         int(a.qText.startsWith(a.qOther, a.qCs()))),
    SAME("startsWith unit", int(a.text.startsWith(a.unit, a.cs())),
         int(a.qText.startsWith(a.qUnit(), a.qCs()))),
    SAME("endsWith", int(a.text.endsWith(a.other, a.cs())),
         int(a.qText.endsWith(a.qOther, a.qCs()))),
    SAME("endsWith unit", int(a.text.endsWith(a.unit, a.cs())),
         int(a.qText.endsWith(a.qUnit(), a.qCs()))),
    SAME("left", a.text.left(a.i), a.qText.left(a.i)),
    SAME("right", a.text.right(a.i), a.qText.right(a.i)),
    SAME("mid", a.text.mid(a.i, a.j), a.qText.mid(a.i, a.j)),
    SAME("section", a.text.section(a.other, a.i, a.j, Flags(a)),
         a.qText.section(a.qOther, a.i, a.j, QFlags(a))),
    SAME("section unit", a.text.section(u' ', a.i, a.j, Flags(a)),
         a.qText.section(' ', a.i, a.j, QFlags(a))),
    SAME("split", a.text.split(a.other, Behavior(a), a.cs()),
         a.qText.split(a.qOther, QBehavior(a), a.qCs())),
    SAME("split unit", a.text.split(a.unit, Behavior(a), a.cs()),
         a.qText.split(a.qUnit(), QBehavior(a), a.qCs())),
    SAME("join", TString::join({a.text, a.third, a.other}, a.other),
         QStringList({a.qText, a.qThird, a.qOther}).join(a.qOther)),
    SAME("trimmed", a.text.trimmed(), a.qText.trimmed()),
    SAME("leftJustified", a.text.leftJustified(a.i, a.unit, a.withCase),
         a.qText.leftJustified(a.i, a.qUnit(), a.withCase)),
    SAME("rightJustified", a.text.rightJustified(a.i, a.unit, a.withCase),
         a.qText.rightJustified(a.i, a.qUnit(), a.withCase)),
    SAME("repeated", a.text.repeated(a.i), a.qText.repeated(a.i)),
    SAME("toLower", a.text.toLower(), a.qText.toLower()),
    SAME("toUpper", a.text.toUpper(), a.qText.toUpper()),
    SAME("normalized", a.text.normalized(TString::NormalizationForm(a.unit % 4)),
         a.qText.normalized(QString::NormalizationForm(a.unit % 4))),
    SAME("+", a.text + a.other + a.unit + a.third,
         QString(a.qText + a.qOther + a.qUnit() + a.qThird)),
    SAME("toStdU16String", a.text, a.qText),
    SAME("toLatin1", TString::fromLatin1(a.text.toLatin1().c_str()),
         QString::fromLatin1(a.qText.toLatin1())),
    SAME("toQString", a.text.toQString(), a.qText),
};

std::vector<Operation> const kChanges = {
    SAME_CHANGE("append", append(a.other), append(a.qOther)),
    SAME_CHANGE("append itself", append(s), append(s)),
    SAME_CHANGE("prepend", prepend(a.other), prepend(a.qOther)),
    SAME_CHANGE("prepend itself", prepend(s), prepend(s)),
    SAME_CHANGE("insert", insert(a.i, a.other), insert(a.i, a.qOther)),
    SAME_CHANGE("insert unit", insert(a.i, a.unit), insert(a.i, a.qUnit())),
    SAME_CHANGE("insert itself", insert(a.i, s), insert(a.i, QString(s))),
    SAME_CHANGE("removeAt", removeAt(a.i, a.j), remove(a.i, a.j)),
    SAME_CHANGE("removeAll", removeAll(a.other, a.cs()), remove(a.qOther, a.qCs())),
    SAME_CHANGE("removeAll unit", removeAll(a.unit, a.cs()), remove(a.qUnit(), a.qCs())),
    SAME_CHANGE("replace part", replace(a.i, std::max(a.j, 0), a.other),
                replace(a.i, std::max(a.j, 0), a.qOther)),
    SAME_CHANGE("replace", replace(a.other, a.third, a.cs()), replace(a.qOther, a.qThird, a.qCs())),
    SAME_CHANGE("replace by itself", replace(a.other, s, a.cs()),
                replace(a.qOther, QString(s), a.qCs())),
    SAME_CHANGE("replace units", replace(a.unit, u'#', a.cs()),
                replace(a.qUnit(), QChar('#'), a.qCs())),
    SAME_CHANGE("truncate", truncate(a.i), truncate(a.i)),
    SAME_CHANGE("chop", chop(a.i), chop(a.i)),
    SAME_CHANGE("fill", fill(a.unit, a.i), fill(a.qUnit(), a.i < 0 ? -1 : a.i)),
    SAME_CHANGE("assign a part of itself", assign(s.mid(a.i, a.j)), operator=(s.mid(a.i, a.j))),
};

class RandomArguments
{
public:
    Arguments next()
    {
        Arguments a;
        a.qText = text(m_random() % 8 == 0 ? 90 : 12);
        a.qOther = text(3);
        a.qThird = text(5);
        a.text = a.qText;
        a.other = a.qOther;
        a.third = a.qThird;
        a.unit = m_units[m_random() % m_units.size()];
        a.i = int(m_random() % 20) - 6;
        a.j = int(m_random() % 20) - 6;
        a.withCase = m_random() % 2 == 0;
        return a;
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

void HoldAgainstQt(std::vector<Operation> const& operations)
{
    RandomArguments random;
    for (int round = 0; round < 4000; ++round) {
        Arguments const a = random.next();
        for (Operation const& operation : operations) {
            ASSERT_EQ(operation.ours(a), operation.qts(a))
                << operation.name << ", round " << round << ": text " << a.text << ", other "
                << a.other << ", third " << a.third << ", unit " << int(a.unit) << ", i " << a.i
                << ", j " << a.j << ", case " << a.withCase;
        }
    }
}

TEST(TStringDifferentialTest, AsksAsQStringDoes)
{
    HoldAgainstQt(kQuestions);
}

TEST(TStringDifferentialTest, ChangesAsQStringDoes)
{
    HoldAgainstQt(kChanges);
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
            EXPECT_EQ(Of(double(value), ok), Of(double(qValue), qOk)) << ours << " base " << base;
        };
        same(ours.toShort(&ok, base), text.toShort(&qOk, base));
        same(ours.toUInt(&ok, base), text.toUInt(&qOk, base));
        same(ours.toLongLong(&ok, base), text.toLongLong(&qOk, base));
        same(ours.toULongLong(&ok, base), text.toULongLong(&qOk, base));
        same(ours.toDouble(&ok), text.toDouble(&qOk));
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace
