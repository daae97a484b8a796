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
        char16_t const* texts;
    };
    Case const cases[] = {
        {0, 0, u"Unspecified 0 OK"},
        {2, 2, u"System 2 UNKNOWN"},
        {4, 9, u"Internal 9 FAILED_PRECONDITION"},
        {5, 16, u"5 16 UNAUTHENTICATED"}, // no such source
        {-7, 17, u"-7 17 17"},            // nor such a code
        {4, -1, u"Internal -1 -1"},
    };
    for (Case const& c : cases) {
        TError::ErrorInfo const info = MakeInfo(c.source, c.code);
        TStringCore id;
        TStringCore source;
        TStringCore code;
        info.GetMembersAsStrings(id, source, code);
        TStringCore const name = TError::GetStatusCodeAsString(info.GetStatusCode());
        EXPECT_EQ(id, u"TIOException_AutoGen_0x3DE8E9E4");
        EXPECT_EQ(TStringCore::join({source, code, name}, u' '), c.texts);
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
