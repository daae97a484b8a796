#include "korcoreplatform/main/core/runtime/ObjectFactory.h"

#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

#include <deque>

using ObjectFactoryUtils::CreateObject;

namespace {

// The registry lasts as long as the process, so every test uses ids of its own.

class TestFactory : public ObjectFactoryBase
{
public:
    using ObjectFactoryBase::ObjectFactoryBase;
    using ObjectFactoryBase::RegisterCreator;
};

TEST(ObjectFactoryTest, ObjectsAreFoundByIdNameAndForm)
{
    static TestFactory s_factory(u"shapes");
    int circle = 0;
    int square = 0;
    s_factory.RegisterCreator(u"circle", [&] { return &square; });
    s_factory.RegisterCreator(u"circle", [&] { return &circle; }); // the last one stays
    s_factory.RegisterCreator(u"square", [&] { return &square; });
    s_factory.RegisterCreator(u"copy", [](void* shape) { return shape; });
    s_factory.RegisterCreator(u"empty", std::function<void*()>());
    FactoryRegistry::Singleton().Register([] { return &s_factory; });

    EXPECT_EQ(CreateObject(u"shapes", u"circle"), &circle);
    EXPECT_EQ(CreateObject(u"shapes", u"square"), &square);
    EXPECT_EQ(CreateObject(u"shapes", u"copy", &square), &square);
    EXPECT_THROW(CreateObject(u"shapes", u"empty"), std::bad_function_call);
    // The two forms do not see each other's types; names and ids match exactly or not at all.
    for (void* none :
         {CreateObject(u"shapes", u"copy"), CreateObject(u"shapes", u"circle", &square),
          CreateObject(u"shapes", u"Circle"), CreateObject(u"shape", u"circle"),
          CreateObject(u"shape", u"copy", &square)}) {
        EXPECT_EQ(none, nullptr);
    }
}

// The maker of "outer" registers "inner" and then puts another maker in its own place.
TEST(ObjectFactoryTest, LastMakerUnderAnIdStaysAndMayUseTheRegistry)
{
    static TestFactory s_inner(u"inner");
    static TestFactory s_outer(u"outer");
    static TestFactory s_replacement(u"outer");
    static bool s_replaces = false;
    static FactoryRegistry& s_registry = FactoryRegistry::Singleton();
    s_registry.Register([] { return &s_replacement; });
    s_registry.Register([text = TString(u"a text that lives in the maker")] {
        s_registry.Register([] { return &s_inner; });
        if (s_replaces) {
            s_registry.Register([] { return &s_replacement; });
        }
        EXPECT_EQ(text, u"a text that lives in the maker");
        return s_registry.GetFactory(u"inner") == &s_inner ? &s_outer : nullptr;
    });
    EXPECT_EQ(s_registry.GetFactory(u"outer"), &s_outer);
    s_replaces = true;
    EXPECT_EQ(s_registry.GetFactory(u"outer"), &s_outer);
    EXPECT_EQ(s_registry.GetFactory(u"outer"), &s_replacement);
}

TEST(ObjectFactoryTest, FailedRegistrationReleasesTheLock)
{
    FactoryRegistry& registry = FactoryRegistry::Singleton();
    EXPECT_THROW(registry.Register(FactoryRegistry::Maker()), std::bad_function_call);
    EXPECT_THROW(registry.Register([]() -> IObjectFactory* { throw 1; }), int);
    // Another thread would wait for a lock that was left held.
    std::thread([&] { EXPECT_EQ(registry.GetFactory(u"never registered"), nullptr); }).join();
}

TEST(ObjectFactoryTest, ThreadsRegisterAndLookUpAtOnce)
{
    constexpr unsigned kThreads = 4;
    constexpr int kRounds = 200;
    static std::array<std::deque<TestFactory>, kThreads> s_factories; // they outlive the test
    static std::atomic<unsigned> s_ready{0};
    static int s_makersRunning = 0; // no atomic: the registry lets one maker run at a time
    OnThreads(kThreads, [](unsigned t) {
        FactoryRegistry& registry = FactoryRegistry::Singleton();
        ++s_ready;
        while (s_ready < kThreads) { // start together
        }
        for (int i = 0; i < kRounds; ++i) {
            TString const own = TString::number(t) + u"/" + TString::number(i);
            TestFactory* const factory = &s_factories[t].emplace_back(own);
            registry.Register([factory] {
                EXPECT_EQ(++s_makersRunning, 1);
                --s_makersRunning;
                return factory;
            });
            EXPECT_EQ(registry.GetFactory(own), factory);
            CreateObject(TString::number((t + 1) % kThreads) + u"/" + TString::number(i), u"x");
        }
    });
    for (std::deque<TestFactory>& factories : s_factories) {
        for (TestFactory& factory : factories) {
            ASSERT_EQ(FactoryRegistry::Singleton().GetFactory(factory.GetFactoryID()), &factory);
        }
    }
}

} // namespace
