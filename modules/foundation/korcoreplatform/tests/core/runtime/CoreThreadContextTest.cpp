#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"

#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korcoreplatform/tests/support/SessionHooks.h"

#include <boost/any.hpp>

namespace {

using Object = std::shared_ptr<boost::any>;
using Context = std::unordered_map<TString, TString>;

struct SessionScopeTest : testing::Test
{
    SessionHooks const hooks;
};

/// The thread works for a session.
class CoreThreadContextTest : public SessionScopeTest
{
protected:
    OwnedSession const m_session;
    SessionScope const m_scope{m_session.Id()};
    std::shared_ptr<ISessionObjects> const m_objects =
        SessionObjectsMap::Get().GetSessionObjectsInterface(m_session.Id());
};

void ExpectNoSession()
{
    EXPECT_FALSE(CoreThreadContext::HasSessionId());
    EXPECT_EQ(CoreThreadContext::GetGenericObject(u"x"), nullptr);
    EXPECT_EQ(CoreThreadContext::GetGenericUnsynchronizedObject(u"x"), nullptr);
    EXPECT_EQ(CoreThreadContextUtils::GetLoggingContext(), nullptr);
    EXPECT_KOR_ASSERT(CoreThreadContext::SetGenericUnsynchronizedObject(u"x", nullptr),
                      "0xD612CFB0", "core/SessionObjectStore", 98,
                      "CoreThreadContext::SetGenericUnsynchronizedObject requires ThreadContext to "
                      "be initialized");
    EXPECT_KOR_ASSERT(CoreThreadContext::SetGenericObject(u"x", nullptr), "0x7615C447",
                      "core/SessionObjectStore", 117,
                      "CoreThreadContext::SetGenericSynchronizedObject requires ThreadContext to "
                      "be initialized");
    EXPECT_THROW(CoreThreadContextUtils::SetLoggingContext(nullptr), LogicException);
}

TEST_F(CoreThreadContextTest, ObjectsOfTheTwoKindsGoToTheSessionOfTheThread)
{
    Object const own = std::make_shared<boost::any>(1);
    Object const shared = std::make_shared<boost::any>(2);
    CoreThreadContext::SetGenericUnsynchronizedObject(u"x", own);
    CoreThreadContext::SetGenericObject(u"x", shared);
    EXPECT_EQ(m_objects->GetUnsynchronizedObject(u"x"), own);
    EXPECT_EQ(m_objects->GetSynchronizedObject(u"x"), shared);
    EXPECT_EQ(CoreThreadContext::GetGenericUnsynchronizedObject(u"x"), own);
    EXPECT_EQ(CoreThreadContext::GetGenericObject(u"x"), shared);
    std::thread(ExpectNoSession).join();
}

TEST_F(CoreThreadContextTest, EmptyHooksAreTheDefaultsAgain)
{
    SessionHooks::Remove();
    ExpectNoSession();
    EXPECT_TRUE(CoreThreadContext::GetSessionId().IsNull());
    EXPECT_EQ(CoreThreadContext::GetSessionObjectsInterface(), nullptr);
}

TEST_F(CoreThreadContextTest, LoggingContextIsOneMapForAllReaders)
{
    auto const context = std::make_shared<Context>();
    CoreThreadContextUtils::SetLoggingContext(context);
    EXPECT_EQ(CoreThreadContextUtils::GetLoggingContext(), context);
    Object const stored = m_objects->GetSynchronizedObject(u"logging-ctx");
    EXPECT_EQ(boost::any_cast<std::shared_ptr<Context>>(*stored), context);
    *stored = std::shared_ptr<Context const>(context); // nearly the right type
    EXPECT_THROW(CoreThreadContextUtils::GetLoggingContext(), boost::bad_any_cast);
}

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
