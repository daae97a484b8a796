#include "korcoreplatform/main/string/TString.h"

#include "korsys/main/system/TCollator.h"
#include "korsys/main/text/TStringErrors_p.h"

#include <QByteArray>
#include <QDebug>
#include <QRegularExpression>
#include <QString>

#include <algorithm>
#include <cstring>
#include <ostream>

namespace {

// Qt's texts may be made over memory that ends without a zero, so their sizes bound every look.

char16_t const* UnitsOf(QString const& text)
{
    return reinterpret_cast<char16_t const*>(text.constData());
}

/// All units of a `QString`.
TStringCore WholeText(QString const& text)
{
    return TStringCore(UnitsOf(text), text.size() < 0 ? -1 : text.size());
}

/// The units of a `QString` before its first zero unit.
TStringCore TextToZero(QString const& text)
{
    int const zero = text.indexOf(QChar(0));
    return TStringCore(UnitsOf(text), zero < 0 ? text.size() : zero);
}

/// UTF-8 up to the first zero byte.
TStringCore TextToZero(QByteArray const& utf8)
{
    int const zero = utf8.indexOf('\0');
    return TStringCore::fromUtf8(utf8.constData(), zero < 0 ? utf8.size() : zero);
}

std::vector<TString> AsTStrings(std::vector<TStringCore>&& cores)
{
    std::vector<TString> texts;
    texts.reserve(cores.size());
    for (TStringCore& core : cores) {
        texts.emplace_back(std::move(core));
    }
    return texts;
}

QString::SectionFlags ToQt(TString::SectionFlags flags)
{
    return QString::SectionFlags(static_cast<int>(flags));
}

/// `a` and `b` in one block that has room for more of the same.
TString Concatenated(char16_t const* a, int aLength, char16_t const* b, int bLength)
{
    TString result;
    std::int64_t const sum = std::int64_t(aLength) + bLength;
    if (sum > TString::kShortCapacity) {
        std::int64_t const room = std::min<std::int64_t>(sum + sum / 2, TString::kMaxLength);
        result.reserve(TStringErrors::CheckedSum(std::max(sum, room)));
    }
    result.append(a, aLength);
    result.append(b, bLength);
    return result;
}

} // namespace

TString::TString(QString const& text) : TStringCore(WholeText(text)) {}

TString::TString(QByteArray const& utf8) : TStringCore(TextToZero(utf8)) {}

TString& TString::operator=(QString const& text)
{
    return *this = WholeText(text);
}

TString& TString::operator=(QByteArray const& utf8)
{
    return *this = TextToZero(utf8);
}

void TString::swap(QString& other)
{
    TString taken(other);
    other = toQString();
    swap(taken);
}

TString& TString::operator+=(QString const& text)
{
    return append(TString(TextToZero(text)));
}

TString& TString::operator+=(QByteArray const& utf8)
{
    return append(TString(TextToZero(utf8)));
}

TString& TString::append(QByteArray const& utf8)
{
    return *this += utf8;
}

TString& TString::removeAll(QRegularExpression const& expression)
{
    return replace(expression, TString());
}

TString& TString::replace(QRegularExpression const& expression, TString const& after)
{
    if (expression.isValid()) {
        *this = toQString().replace(expression, after.toQString());
    }
    return *this;
}

int TString::compare(QString const& other, CaseSensitivity cs) const
{
    return TStringCore::compare(TextToZero(other), cs);
}

bool TString::operator==(QString const& other) const
{
    return *this == TextToZero(other);
}

int TString::CollateNoCase(char16_t const* other) const
{
    int const otherLength = length(other);
    if (otherLength == 0) {
        return isEmpty() ? 0 : -1;
    }
    if (isEmpty()) {
        return 1;
    }
    return TCollator::Compare(constData(), length(), other, otherLength);
}

bool TString::contains(QString const& text, CaseSensitivity cs) const
{
    return TStringCore::contains(TextToZero(text), cs);
}

bool TString::startsWith(QString const& text, CaseSensitivity cs) const
{
    return TStringCore::startsWith(TextToZero(text), cs);
}

bool TString::endsWith(QString const& text, CaseSensitivity cs) const
{
    return TStringCore::endsWith(TextToZero(text), cs);
}

TString TString::section(QRegularExpression const& sep, int start, int end,
                         SectionFlags flags) const
{
    return sep.isValid() ? TString(toQString().section(sep, start, end, ToQt(flags))) : TString();
}

std::vector<TString> TString::split(TString const& sep, SplitBehavior behavior,
                                    CaseSensitivity cs) const
{
    return AsTStrings(TStringCore::split(constData(), length(), sep, behavior, cs));
}

std::vector<TString> TString::split(char16_t const* sep, SplitBehavior behavior,
                                    CaseSensitivity cs) const
{
    return split(TString(sep), behavior, cs);
}

std::vector<TString> TString::split(char16_t sep, SplitBehavior behavior, CaseSensitivity cs) const
{
    return AsTStrings(TStringCore::split(constData(), length(), sep, behavior, cs));
}

std::vector<TString> TString::splitOnAny(TString const& set, SplitBehavior behavior) const
{
    return AsTStrings(TStringCore::splitOnAny(constData(), length(), set, behavior));
}

std::vector<TString> TString::splitOnAny(char16_t const* set, SplitBehavior behavior) const
{
    return splitOnAny(TString(set), behavior);
}

TString TString::join(std::vector<TString> const& list, TString const& sep)
{
    return TStringCore::join(std::vector<TStringCore>(list.begin(), list.end()), sep);
}

TString TString::join(std::vector<TString> const& list, char16_t sep)
{
    return join(list, TString(&sep, 1));
}

std::vector<TString> TString::getTStringsFromTStringCores(std::vector<TStringCore> list)
{
    return AsTStrings(std::move(list));
}

TString TString::normalized(NormalizationForm form) const
{
    return toQString().normalized(static_cast<QString::NormalizationForm>(form));
}

TString TString::fromQString(QString const& text)
{
    return TString(text);
}

QString TString::toQString() const
{
    return TStringToQString(*this);
}

// The older interface

TString& TString::Append(TString const& text, int n)
{
    return append(text.left(n));
}

int TString::Remove(char16_t c)
{
    int const oldLength = length();
    removeAll(c);
    return oldLength - length();
}

int TString::Replace(char16_t before, char16_t after)
{
    return replaceCount(*this, TString(&before, 1), TString(&after, 1));
}

char16_t* TString::GetBuffer(int minLength)
{
    int const n = std::max(minLength, length());
    reserve(n);
    char16_t* const units = data();
    units[n] = 0; // so that `ReleaseBuffer` finds an end also behind a buffer that was filled
    return units;
}

char16_t* TString::GetBufferSetLength(int n)
{
    if (n < 0) {
        TStringErrors::ThrowBadLength(n);
    }
    resize(n);
    return data();
}

void TString::ReleaseBuffer(int newLength)
{
    if (newLength > capacity()) {
        TStringErrors::ThrowBadLength(newLength);
    }
    int n = newLength;
    if (n < 0) {
        char16_t const* const units = constData();
        n = static_cast<int>(std::find(units, units + capacity(), char16_t(0)) - units);
    }
    TStringManager::resize(n);
}

// Free functions

TString QStringToTString(QString const& text)
{
    return TString(text);
}

QString TStringToQString(TStringCore const& text)
{
    if (text.isEmpty()) {
        return QString();
    }
    return QString(reinterpret_cast<QChar const*>(text.constData()), text.length());
}

TString operator+(TString const& a, TString const& b)
{
    return Concatenated(a.constData(), a.length(), b.constData(), b.length());
}

TString operator+(TString const& a, char16_t const* b)
{
    return Concatenated(a.constData(), a.length(), b, TString::length(b));
}

TString operator+(char16_t const* a, TString const& b)
{
    return Concatenated(a, TString::length(a), b.constData(), b.length());
}

TString operator+(TString const& a, char16_t b)
{
    return Concatenated(a.constData(), a.length(), &b, 1);
}

TString operator+(char16_t a, TString const& b)
{
    return Concatenated(&a, 1, b.constData(), b.length());
}

TString operator+(TString const& a, char const* b)
{
    return a + TString(b);
}

TString operator+(char const* a, TString const& b)
{
    return TString(a) + b;
}

TString operator+(TString const& a, char b)
{
    return a + TString(b, 1);
}

TString operator+(char a, TString const& b)
{
    return TString(a, 1) + b;
}

TString operator+(TString const& a, QString const& b)
{
    return a + TString(b);
}

TString operator+(QString const& a, TString const& b)
{
    return TString(a) + b;
}

QDebug operator<<(QDebug out, TString const& text)
{
    return out << text.toQString();
}

std::ostream& operator<<(std::ostream& out, TString const& text)
{
    return out << text.toTStringCore();
}
