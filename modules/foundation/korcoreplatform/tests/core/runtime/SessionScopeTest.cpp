#include "korcoreplatform/main/core/runtime/SessionScope.h"

#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/SessionHooks.h"

#include <boost/any.hpp>

namespace {

struct SessionScopeTest : testing::Test
{
    SessionHooks const hooks;
};

void ExpectSession(TUUID const& id)
{
    EXPECT_EQ(CoreThreadContext::HasSessionId(), !id.IsNull());
    EXPECT_EQ(CoreThreadContext::GetSessionId(), id);
    EXPECT_EQ(CoreThreadContext::GetSessionObjectsInterface(),
              SessionObjectsMap::Get().GetSessionObjectsInterface(id));
}

TEST_F(SessionScopeTest, TheInnermostScopeOfTheThreadCounts)
{
    OwnedSession const first;
    OwnedSession const second;
    TUUID const empty = SessionObjectStore::CreateSession(); // nothing attached
    ExpectSession(TUUID());
    {
        SessionScope const outer(first.Id());
        {
            SessionScope const inner(second.Id());
            ExpectSession(second.Id());
            std::thread([&] {
                ExpectSession(TUUID());
                SessionScope const own(first.Id());
                ExpectSession(first.Id());
            }).join();
            for (TUUID const& none : {empty, TUUID(), TUUID::CreateUUID()}) {
                SessionScope const pause(none);
                ExpectSession(TUUID());
                EXPECT_EQ(CoreThreadContextUtils::GetLoggingContext(), nullptr);
            }
            ExpectSession(second.Id());
        }
        ExpectSession(first.Id());
    }
    ExpectSession(TUUID());
    SessionObjectStore::DeleteSession(empty);
}

TEST_F(SessionScopeTest, AWrongOrderOfEndsLeavesNothingBehind)
{
    OwnedSession const first;
    OwnedSession const second;
    std::optional<SessionScope> outer(first.Id());
    std::optional<SessionScope> inner(second.Id());
    outer.reset();
    ExpectSession(second.Id());
    inner.reset();
    ExpectSession(TUUID());
}

TEST_F(SessionScopeTest, AScopeKeepsTheObjectsOfADeletedSession)
{
    std::optional<OwnedSession> session(std::in_place);
    TUUID const id = session->Id();
    auto const object = std::make_shared<boost::any>(1);
    SessionObjectStore::SetSynchronizedObject(id, u"k", object);
    {
        SessionScope const scope(id);
        session.reset();
        EXPECT_EQ(SessionObjectsMap::Get().GetSessionObjectsInterface(id), nullptr);
        EXPECT_TRUE(CoreThreadContext::HasSessionId());
        EXPECT_EQ(CoreThreadContext::GetGenericObject(u"k"), object);
    }
    EXPECT_EQ(object.use_count(), 1);
}

} // namespace
