/// Reads values one after another from a text.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"
#include "korsys/main/error/KorvelException.h"

/// A cursor in a text that ends with a zero unit. Readers check that the value they want stands at
/// the cursor, return it and move the cursor behind it; skippers do the same without the value. A
/// missing value throws `Exception` and leaves the cursor where it was.
///
///     TScanString scan(u"12 = yes");
///     scan.readInt(number).skipWhitespace().skip(u"=").skipWhitespace().readBool(flag).end();
///
/// The length functions say how many units the value at the start of a text takes. White space is
/// what `TCType::isSpace` says; a line ends at U+000A or at the end of the text. Null texts and
/// sets count as empty.
///
/// Ownership: the text stays the caller's, who keeps it alive and unchanged while it is read; in
/// particular, no reader's result is the text itself.
/// Thread safety: one object must not be used by two threads at once.
class KORCOREPLATFORM_EXPORT TScanString
{
public:
    class Exception;

    TScanString() noexcept = default; ///< Without text, which reads as the empty text.
    TScanString(char16_t const* text) noexcept : m_text(text) {}
    explicit TScanString(TString const& text) noexcept : m_text(text.constData()) {}
    TScanString(TString&&) = delete; ///< The text would be gone before it is read.
    TScanString(TString const&&) = delete;

    /// Goes on with the start of another text.
    void SetText(char16_t const* text) noexcept;
    void SetText(TString&&) = delete;
    void SetText(TString const&&) = delete;

    /// 1, 0, true, false, yes or no in any case; what follows does not matter ("yesterday": 3).
    /// Throws: `Exception` with id AutoGen_0x0E56132D.
    static int lengthBool(char16_t const* text);

    /// The number as `TStringCore::leftIntegerLength` takes it.
    /// Throws: `Exception` with id AutoGen_0x5D4E46DF.
    static int lengthInt(char16_t const* text, int base = 10);

    /// The number as `TStringCore::leftDoubleLength` takes it.
    /// Throws: `Exception` with id AutoGen_0x47A09D13.
    static int lengthFloat(char16_t const* text);

    /// 2 for U+000A and U+000D in either order, 1 for one of them, 0 at the end of the text.
    /// Throws: `Exception` with id AutoGen_0x2241B337.
    static int lengthNewline(char16_t const* text);

    /// What stands before the next U+000A or the end; a U+000D there belongs to it.
    static int lengthLine(char16_t const* text) noexcept;
    static int lengthString(char16_t const* text,
                            int n) noexcept; ///< At most `n`; all when negative.
    static int lengthWhitespace(char16_t const* text) noexcept;
    static int lengthNonWhitespace(char16_t const* text) noexcept;
    static int lengthAnyOf(char16_t const* text, char16_t const* set) noexcept;
    static int lengthAnyNotOf(char16_t const* text, char16_t const* set) noexcept;

    // Readers throw as the length functions do. A text or a line may be empty.

    TScanString& readBool(bool& value);

    /// Throws: `Exception` with id AutoGen_0x7C7E3D50 for a number outside the range; the cursor is
    /// then behind the number.
    TScanString& readInt(int& value, int base = 10);

    /// Throws: `Exception` with id AutoGen_0xDB5CF171 (`double`) or AutoGen_0x3FBB5E47 (`float`)
    /// for a number outside the range; the cursor is then behind the number.
    TScanString& readFloat(double& value);
    TScanString& readFloat(float& value);

    TScanString& readLine(TString& value); ///< The newline is passed over.
    TScanString& readString(TString& value, int n);
    TScanString& readNonWhitespace(TString& value);
    TScanString& readAnyOf(TString& value, char16_t const* set);
    TScanString& readAnyNotOf(TString& value, char16_t const* set);

    TScanString& skipBool();
    TScanString& skipInt(int base = 10);
    TScanString& skipFloat();
    TScanString& skipNewline();
    TScanString& skipLine();
    TScanString& skipString(int n);
    TScanString& skipWhitespace();
    TScanString& skipNonWhitespace();
    TScanString& skipAnyOf(char16_t const* set);
    TScanString& skipAnyNotOf(char16_t const* set);

    /// Throws: `Exception` with id AutoGen_0x4CA5552B unless exactly `expected` comes next.
    TScanString& skip(char16_t const* expected);

    /// Goes back to the start of the text.
    /// Throws: `LogicException` with id LogicAssert_0x858A74C8 when there is no text.
    void reset();

    /// Throws: `Exception` with id AutoGen_0x00985BE7 unless everything has been read.
    void end() const;

private:
    char16_t const* current() const noexcept;
    TScanString& advance(int n) noexcept;
    TScanString& take(TString& value, int n);

    char16_t const* m_text = nullptr; ///< Null: no text.
    int m_position = 0;               ///< From 0 to the length of the text.
};

/// The value that was to be read is not there.
class KORCOREPLATFORM_EXPORT TScanString::Exception : public KorvelException
{
public:
    Exception(TString const& message, TError::ErrorInfo const& errorInfo);
    Exception(Exception const&) noexcept = default;
    Exception& operator=(Exception const&) noexcept = default;
    ~Exception() override;

    Exception* Clone() const override;
    [[noreturn]] void Throw() const override;
};
