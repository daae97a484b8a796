#include "korsys/main/error/KorvelException.h"

#include "korsys/main/error/ThrowError.h"
#include "korsys/tests/support/KorTest.h"

namespace {

constexpr char kOfTheSystem[] = "KorvelException_AutoGen_0xB5B83DCB";
using KorTest::SomeError;
using Messages = std::vector<TStringCore>;

/// A class as other libraries derive it, with an argument of its own.
class DerivedException : public KorvelException
{
public:
    DerivedException(TStringCore const& message, TError::ErrorInfo const& info,
                     TStringCore const& more = u"")
        : KorvelException(message, info)
    {
        StackMessage(more);
    }
    DerivedException* Clone() const override { return new DerivedException(*this); }
    [[noreturn]] void Throw() const override { throw DerivedException(*this); }
};

/// Converts to a text and to a format string, as the format strings above this layer do.
struct BothWays
{
    operator TStringCore() const { return u"text"; }
    operator TFormatStringCore() const { return TFormatStringCore(u"%1!").arg({u"format"}); }
};

TEST(KorvelExceptionTest, MessagesKeepTheirOrderInEveryFormAndCopiesChangeAlone)
{
    static_assert(std::is_nothrow_copy_constructible_v<LogicException>);
    KorvelException const original(u"m", SomeError());
    KorvelException stacked(original);
    TError::ErrorInfo const& info = stacked.GetErrorInfo();
    stacked.StackMessage(u"b");
    stacked.StackMessageFront(u"a");
    EXPECT_EQ(&info, &stacked.GetErrorInfo()) << "the record outlives new messages";
    KorvelException assigned(u"other", SomeError());
    assigned = original;
    assigned.StackMessage(u"z");
    std::tuple<int, KorvelException, Messages, char const*, char16_t const*> const cases[] = {
        {__LINE__, original, {u"m"}, "m", u"m"},
        {__LINE__, stacked, {u"a", u"m", u"b"}, "a\nm\nb", u"a | m | b"},
        {__LINE__, assigned, {u"m", u"z"}, "m\nz", u"m | z"},
        {__LINE__, {u"Stra\u00DF", SomeError()}, {u"Stra\u00DF"}, "Stra\xC3\x9F", u"Stra\u00DF"},
        {__LINE__, {Messages{u"1", u""}, SomeError()}, {u"1", u""}, "1\n", u"1 | "},
        {__LINE__, {Messages(), SomeError()}, {}, "", u""},
        {__LINE__, {TFormatStringCore(u"%1%2").arg({u"3"}), SomeError()}, {u"3%2"}, "3%2", u"3%2"},
        {__LINE__, {BothWays(), SomeError()}, {u"format!"}, "format!", u"format!"},
    };
    for (auto const& [line, exception, messages, what, logLine] : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(exception.GetMessages(), messages);
        EXPECT_EQ(exception.GetMessagesFront(), messages.empty() ? u"" : messages.front());
        EXPECT_STREQ(exception.what(), what);
        EXPECT_EQ(exception.GetConcatenatedMessages(), TStringCore::fromUtf8(what));
        EXPECT_EQ(exception.CollateMessagesForLog(), logLine);
    }
}

TEST(KorvelExceptionTest, ThrowingBuildsTheRecordAndTheMessageOfThePlace)
{
    EXPECT_KOR_ERROR_TEXT(ThrowError<StringException>(u"m", &KorErrorsError::AutoGen_0x1A36D05F),
                          StringException, "KorvelException_AutoGen_0x1A36D05F", u"m");
    auto const run = [] {
        ThrowError<DerivedException>(
            TStringCore(u"m"), &KorErrorsError::AutoGen_0xB5B83DCB, TError::ErrorSource::System,
            u"Unable to flush \"f\" afer exhausting all retries.  Giving up.");
    };
    EXPECT_KOR_ERROR_TEXT(run(), DerivedException, kOfTheSystem, u"m");
    // The path is Latin-1, the text UTF-8; neither is a template.
    auto const fail = [] {
        ThrowLogicException("main/%3\xFC", 176, "%1 \xC3\xBC: found",
                            KorErrorsError::LogicAssert_0x0AAE8A7B());
    };
    EXPECT_KOR_ERROR_TEXT(
        fail(), LogicException, "LogicException_LogicAssert_0x0AAE8A7B",
        u"Internal error in file \"main/%3\u00FC\" at line 176: %1 \u00FC: found");
}

} // namespace
