#include "korsys/main/error/TError.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/system/TStackWalker.h"
#include "korsys/tests/support/KorTest.h"

namespace {

TError::ErrorInfo MakeInfo(int source = 4, int code = 2)
{
    return TError::ErrorInfo(KorErrorsError::AutoGen_0x3DE8E9E4(),
                             static_cast<TError::ErrorSource>(source),
                             static_cast<grpc::StatusCode>(code));
}

TEST(TErrorTest, MembersHaveTheirCanonicalTexts)
{
    struct Case
    {
        int source;
        int code;
        char16_t const* sourceText;
        char16_t const* codeNumber;
        char16_t const* codeName;
    };
    Case const cases[] = {
        {0, 0, u"Unspecified", u"0", u"OK"},
        {2, 2, u"System", u"2", u"UNKNOWN"},
        {4, 9, u"Internal", u"9", u"FAILED_PRECONDITION"},
        {5, 16, u"5", u"16", u"UNAUTHENTICATED"}, // no such source
        {-7, 17, u"-7", u"17", u"17"},            // nor such a code
        {4, -1, u"Internal", u"-1", u"-1"},
    };
    for (Case const& c : cases) {
        TError::ErrorInfo const info = MakeInfo(c.source, c.code);
        TStringCore id;
        TStringCore source;
        TStringCore code;
        info.GetMembersAsStrings(id, source, code);
        EXPECT_EQ(id, u"TIOException_AutoGen_0x3DE8E9E4");
        EXPECT_EQ(source, c.sourceText);
        EXPECT_EQ(code, c.codeNumber);
        EXPECT_EQ(TError::GetStatusCodeAsString(info.GetStatusCode()), c.codeName);
    }
}

TEST(TErrorTest, CallstackIsCapturedOnlyWhileTheWalkerIsActive)
{
    EXPECT_TRUE(MakeInfo().GetCallstack().empty());
    TStackWalker::SetActive(true);
    TError::ErrorInfo const copy = MakeInfo(); // the stack outlives the record it was made for
    TStackWalker::SetActive(false);
    ASSERT_FALSE(copy.GetCallstack().empty());
    EXPECT_EQ(copy.GetCallstack().front().find("ErrorInfo::ErrorInfo"), std::string::npos);
    EXPECT_TRUE(MakeInfo().GetCallstack().empty());
}

} // namespace
