#include "korsys/main/error/KorvelException.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/error/StringException.h"
#include "korsys/main/error/ThrowError.h"
#include "korsys/tests/support/KorTest.h"

#include <exception>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

using Messages = std::vector<TStringCore>;

TError::ErrorInfo AnyInfo()
{
    return TError::ErrorInfo(KorErrorsError::AutoGen_0x1A36D05F(), TError::ErrorSource::Internal,
                             grpc::UNKNOWN);
}

/// A class as other libraries derive it, with an argument of its own.
class DerivedException : public KorvelException
{
public:
    DerivedException(TStringCore const& message, TError::ErrorInfo const& info, int frames = 0)
        : KorvelException(message, info)
    {
        for (int i = 0; i < frames; ++i) {
            StackMessage(u"frame");
        }
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

TEST(KorvelExceptionTest, MessagesKeepTheirOrderInEveryForm)
{
    struct Case
    {
        int line;
        KorvelException exception;
        Messages messages;
        char const* what;
        char16_t const* logLine;
    };
    KorvelException stacked(u"m", AnyInfo());
    stacked.StackMessage(u"b");
    stacked.StackMessageFront(u"a");
    Case const cases[] = {
        {__LINE__, stacked, {u"a", u"m", u"b"}, "a\nm\nb", u"a | m | b"},
        {__LINE__, {u"Stra\u00DF", AnyInfo()}, {u"Stra\u00DF"}, "Stra\xC3\x9F", u"Stra\u00DF"},
        {__LINE__, {Messages{u"1", u""}, AnyInfo()}, {u"1", u""}, "1\n", u"1 | "},
        {__LINE__, {Messages(), AnyInfo()}, {}, "", u""},
        {__LINE__, {TFormatStringCore(u"%1%2").arg({u"3"}), AnyInfo()}, {u"3%2"}, "3%2", u"3%2"},
        {__LINE__, {BothWays(), AnyInfo()}, {u"format!"}, "format!", u"format!"},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(c.exception.GetMessages(), c.messages);
        EXPECT_EQ(c.exception.GetMessagesFront(), c.messages.empty() ? u"" : c.messages.front());
        EXPECT_STREQ(c.exception.what(), c.what);
        EXPECT_EQ(c.exception.GetConcatenatedMessages(), TStringCore::fromUtf8(c.what));
        EXPECT_EQ(c.exception.CollateMessagesForLog(), c.logLine);
    }
}

TEST(KorvelExceptionTest, CopiesNeverThrowAndChangeAlone)
{
    static_assert(std::is_nothrow_copy_constructible_v<LogicException>);
    KorvelException const original(u"m", AnyInfo());
    KorvelException front(original);
    KorvelException back(u"other", AnyInfo());
    back = original;
    front.StackMessageFront(u"a");
    back.StackMessage(u"z");
    EXPECT_STREQ(original.what(), "m");
    EXPECT_STREQ(front.what(), "a\nm");
    EXPECT_STREQ(back.what(), "m\nz");
}

TEST(KorvelExceptionTest, CloneAndThrowKeepTheDynamicType)
{
    std::unique_ptr<KorvelException> const exceptions[] = {
        std::make_unique<KorvelException>(u"m", AnyInfo()),
        std::make_unique<StringException>(u"m", AnyInfo()),
        std::make_unique<LogicException>(u"m", AnyInfo()),
        std::make_unique<DerivedException>(u"m", AnyInfo()),
    };
    for (auto const& pointer : exceptions) {
        KorvelException const& exception = *pointer;
        std::unique_ptr<KorvelException> const clone(exception.Clone());
        EXPECT_NE(clone, pointer);
        EXPECT_TRUE(KorTest::ThrowsError([&] { clone->Throw(); }, typeid(exception),
                                         "KorvelException_AutoGen_0x1A36D05F"));
    }
}

TEST(KorvelExceptionTest, ThrowErrorBuildsTheRecordOfTheThrowingPlace)
{
    EXPECT_KOR_ERROR(ThrowError<StringException>(u"plain", &KorErrorsError::AutoGen_0x1A36D05F),
                     StringException, "KorvelException_AutoGen_0x1A36D05F");
    try {
        ThrowError<DerivedException>(u"m", &KorErrorsError::AutoGen_0xB5B83DCB);
    } catch (DerivedException const& e) {
        EXPECT_STREQ(e.what(), "m");
        EXPECT_EQ(static_cast<int>(e.GetErrorInfo().GetErrorSource()), 4);
        EXPECT_EQ(static_cast<int>(e.GetErrorInfo().GetStatusCode()), 2);
    }
    try {
        ThrowError<DerivedException>(TStringCore(u"m"), &KorErrorsError::AutoGen_0xB5B83DCB,
                                     TError::ErrorSource::System, 2);
    } catch (DerivedException const& e) {
        EXPECT_STREQ(e.what(), "m\nframe\nframe");
        EXPECT_EQ(static_cast<int>(e.GetErrorInfo().GetErrorSource()), 2);
    }
}

TEST(KorvelExceptionTest, LogicAssertNamesPlaceAndText)
{
    try {
        // The path is Latin-1, the text UTF-8; neither is a template.
        ThrowLogicException("main/%3\xFC", 176, "a %1 \xC3\xBC",
                            KorErrorsError::LogicAssert_0x0AAE8A7B());
    } catch (LogicException const& e) {
        EXPECT_STREQ(e.what(), "Internal error in file \"main/%3\xC3\xBC\" at line 176: "
                               "a %1 \xC3\xBC");
        TError::ErrorInfo const& info = e.GetErrorInfo();
        EXPECT_EQ(info.GetError().GetName(), u"LogicException_LogicAssert_0x0AAE8A7B");
        EXPECT_EQ(static_cast<int>(info.GetErrorSource()), 4);
        EXPECT_EQ(static_cast<int>(info.GetStatusCode()), 2);
    }
}

TEST(KorvelExceptionTest, TheRecordOutlivesNewMessages)
{
    KorvelException exception(u"m", AnyInfo());
    TError::ErrorInfo const& info = exception.GetErrorInfo();
    exception.StackMessage(u"z");
    EXPECT_EQ(&info, &exception.GetErrorInfo());
}

} // namespace
