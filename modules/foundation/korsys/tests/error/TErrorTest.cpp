#include "korsys/main/error/TError.h"

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
    std::tuple<int, int, char16_t const*> const cases[] = {
        {0, 0, u"Unspecified 0 OK"},
        {2, 2, u"System 2 UNKNOWN"},
        {4, 9, u"Internal 9 FAILED_PRECONDITION"},
        {5, 16, u"5 16 UNAUTHENTICATED"}, // no such source
        {-7, 17, u"-7 17 17"},            // nor such a code
        {4, -1, u"Internal -1 -1"},
    };
    for (auto const& [source, code, texts] : cases) {
        TError::ErrorInfo const info = MakeInfo(source, code);
        TStringCore members[3];
        info.GetMembersAsStrings(members[0], members[1], members[2]);
        TStringCore const name = TError::GetStatusCodeAsString(info.GetStatusCode());
        EXPECT_EQ(members[0], u"TIOException_AutoGen_0x3DE8E9E4");
        EXPECT_EQ(TStringCore::join({members[1], members[2], name}, u' '), texts);
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
