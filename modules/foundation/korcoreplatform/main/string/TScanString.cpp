#include "korcoreplatform/main/string/TScanString.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/main/text/NumberText_p.h"
#include "korsys/main/text/TCType.h"

namespace {

[[noreturn, gnu::cold]] void ThrowScanError(char16_t const* message, KorvelError (*makeError)())
{
    ThrowError<TScanString::Exception>(TString(message), makeError);
}

char16_t const* OrEmpty(char16_t const* text)
{
    return text != nullptr ? text : u"";
}

/// How many units of the text, the terminating zero excepted, come before the first that fails.
template <class Belongs>
int RunLength(char16_t const* text, Belongs belongs)
{
    text = OrEmpty(text);
    int length = 0;
    while (text[length] != 0 && belongs(text[length])) {
        ++length;
    }
    return length;
}

bool IsIn(char16_t const* set, char16_t unit)
{
    while (*set != 0 && *set != unit) {
        ++set;
    }
    return *set != 0;
}

bool IsDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

// What a number can be made of. Measuring only such a run keeps a number's cost apart from the
// length of the text behind it.

bool CanBeInInteger(char16_t unit)
{
    auto const letter = static_cast<char16_t>(unit | 0x20);
    return IsDigit(unit) || (letter >= u'a' && letter <= u'z') || IsIn(u"+-_", unit);
}

bool CanBeInFloat(char16_t unit)
{
    return IsDigit(unit) || IsIn(u"+-.eE", unit);
}

bool IsTrue(char16_t firstUnit)
{
    // U+0011 stands beside the digit one on purpose.
    return IsIn(u"1\u0011TtYy", firstUnit);
}

template <class Number>
void Store(NumberText::Parsed<Number> const& parsed, Number& value, char16_t const* message,
           KorvelError (*makeError)())
{
    if (!parsed.ok) {
        ThrowScanError(message, makeError);
    }
    value = parsed.value;
}

} // namespace

void TScanString::SetText(char16_t const* text) noexcept
{
    m_text = text;
    m_position = 0;
}

int TScanString::lengthBool(char16_t const* text)
{
    for (char16_t const* const word : {u"1", u"0", u"true", u"false", u"yes", u"no"}) {
        int const length = TStringCore::length(word);
        if (TStringCore::compareN(text, word, length, TStringCore::CaseInsensitive) == 0) {
            return length;
        }
    }
    ThrowScanError(u"TScanString::lengthBool: Boolean value not found.",
                   &KorErrorsError::AutoGen_0x0E56132D);
}

int TScanString::lengthInt(char16_t const* text, int base)
{
    int const length = TStringCore::leftIntegerLength(text, RunLength(text, CanBeInInteger), base);
    if (length <= 0) {
        ThrowScanError(u"TScanString::lengthInt: Integer value not found.",
                       &KorErrorsError::AutoGen_0x5D4E46DF);
    }
    return length;
}

int TScanString::lengthFloat(char16_t const* text)
{
    int const length = TStringCore::leftDoubleLength(text, RunLength(text, CanBeInFloat));
    if (length <= 0) {
        ThrowScanError(u"TScanString::lengthFloat: Float value not found.",
                       &KorErrorsError::AutoGen_0x47A09D13);
    }
    return length;
}

int TScanString::lengthNewline(char16_t const* text)
{
    text = OrEmpty(text);
    if (*text == 0) {
        return 0;
    }
    if (*text != u'\n' && *text != u'\r') {
        ThrowScanError(u"TScanString::lengthNewLine: No new line found.",
                       &KorErrorsError::AutoGen_0x2241B337);
    }
    char16_t const other = *text == u'\n' ? u'\r' : u'\n';
    return text[1] == other ? 2 : 1;
}

int TScanString::lengthLine(char16_t const* text) noexcept
{
    return RunLength(text, [](char16_t unit) { return unit != u'\n'; });
}

int TScanString::lengthString(char16_t const* text, int n) noexcept
{
    return n < 0 ? TStringCore::length(text)
                 : RunLength(text, [n](char16_t) mutable { return n-- > 0; });
}

int TScanString::lengthWhitespace(char16_t const* text) noexcept
{
    return RunLength(text, TCType::isSpace);
}

int TScanString::lengthNonWhitespace(char16_t const* text) noexcept
{
    return RunLength(text, [](char16_t unit) { return !TCType::isSpace(unit); });
}

int TScanString::lengthAnyOf(char16_t const* text, char16_t const* set) noexcept
{
    return RunLength(text, [units = OrEmpty(set)](char16_t unit) { return IsIn(units, unit); });
}

int TScanString::lengthAnyNotOf(char16_t const* text, char16_t const* set) noexcept
{
    return RunLength(text, [units = OrEmpty(set)](char16_t unit) { return !IsIn(units, unit); });
}

TScanString& TScanString::readBool(bool& value)
{
    int const length = lengthBool(current());
    value = IsTrue(*current());
    return advance(length);
}

TScanString& TScanString::readInt(int& value, int base)
{
    char16_t const* const number = current();
    int const length = lengthInt(number, base);
    advance(length);
    Store(NumberText::ToInt32(number, length, base), value,
          u"TScanString::readInt: Integer value not found.", &KorErrorsError::AutoGen_0x7C7E3D50);
    return *this;
}

TScanString& TScanString::readFloat(double& value)
{
    char16_t const* const number = current();
    int const length = lengthFloat(number);
    advance(length);
    Store(NumberText::ToDouble(number, length), value,
          u"TScanString::readDouble: Float value not found.", &KorErrorsError::AutoGen_0xDB5CF171);
    return *this;
}

TScanString& TScanString::readFloat(float& value)
{
    char16_t const* const number = current();
    int const length = lengthFloat(number);
    advance(length);
    Store(NumberText::ToFloat(number, length), value,
          u"TScanString::readFloat: Float value not found.", &KorErrorsError::AutoGen_0x3FBB5E47);
    return *this;
}

TScanString& TScanString::readLine(TString& value)
{
    return take(value, lengthLine(current())).skipNewline();
}

TScanString& TScanString::readString(TString& value, int n)
{
    return take(value, lengthString(current(), n));
}

TScanString& TScanString::readNonWhitespace(TString& value)
{
    return take(value, lengthNonWhitespace(current()));
}

TScanString& TScanString::readAnyOf(TString& value, char16_t const* set)
{
    return take(value, lengthAnyOf(current(), set));
}

TScanString& TScanString::readAnyNotOf(TString& value, char16_t const* set)
{
    return take(value, lengthAnyNotOf(current(), set));
}

TScanString& TScanString::skipBool()
{
    return advance(lengthBool(current()));
}

TScanString& TScanString::skipInt(int base)
{
    return advance(lengthInt(current(), base));
}

TScanString& TScanString::skipFloat()
{
    return advance(lengthFloat(current()));
}

TScanString& TScanString::skipNewline()
{
    return advance(lengthNewline(current()));
}

TScanString& TScanString::skipLine()
{
    return advance(lengthLine(current())).skipNewline();
}

TScanString& TScanString::skipString(int n)
{
    return advance(lengthString(current(), n));
}

TScanString& TScanString::skipWhitespace()
{
    return advance(lengthWhitespace(current()));
}

TScanString& TScanString::skipNonWhitespace()
{
    return advance(lengthNonWhitespace(current()));
}

TScanString& TScanString::skipAnyOf(char16_t const* set)
{
    return advance(lengthAnyOf(current(), set));
}

TScanString& TScanString::skipAnyNotOf(char16_t const* set)
{
    return advance(lengthAnyNotOf(current(), set));
}

TScanString& TScanString::skip(char16_t const* expected)
{
    char16_t const* const text = current();
    int length = 0;
    for (char16_t const* unit = OrEmpty(expected); *unit != 0; ++unit, ++length) {
        if (text[length] != *unit) {
            ThrowScanError(u"TScanString::skip: String mismatch.",
                           &KorErrorsError::AutoGen_0x4CA5552B);
        }
    }
    return advance(length);
}

void TScanString::reset()
{
    if (m_text == nullptr) {
        ThrowLogicException("modules/foundation/korcoreplatform/main/string/TScanString", 225,
                            "text", KorErrorsError::LogicAssert_0x858A74C8());
    }
    m_position = 0;
}

void TScanString::end() const
{
    if (*current() != 0) {
        ThrowScanError(u"TScanString::end(): Expected null character.",
                       &KorErrorsError::AutoGen_0x00985BE7);
    }
}

char16_t const* TScanString::current() const noexcept
{
    return OrEmpty(m_text) + m_position;
}

TScanString& TScanString::advance(int n) noexcept
{
    m_position += n;
    return *this;
}

/// Moves the next `n` units into `value`.
TScanString& TScanString::take(TString& value, int n)
{
    value.assign(current(), n);
    return advance(n);
}

TScanString::Exception::Exception(TString const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

TScanString::Exception::~Exception() = default;

TScanString::Exception* TScanString::Exception::Clone() const
{
    return new Exception(*this);
}

void TScanString::Exception::Throw() const
{
    throw Exception(*this);
}
