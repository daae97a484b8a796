#include "korcoreplatform/main/core/runtime/ObjectFactory.h"

#include "korcoreplatform/tests/support/KorTest.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

using ObjectFactoryUtils::CreateObject;

namespace {

// The registry lasts as long as the process, so every test uses ids of its own.

class TestFactory : public ObjectFactoryBase
{
public:
    using ObjectFactoryBase::ObjectFactoryBase;
    using ObjectFactoryBase::RegisterCreator;
};

FactoryRegistry::Maker MakerOf(TestFactory& factory)
{
    return [&factory] { return &factory; };
}

TEST(ObjectFactoryTest, ObjectsAreFoundByIdNameAndForm)
{
    static TestFactory s_factory(u"shapes");
    static int s_circle = 0;
    static int s_square = 0;
    s_factory.RegisterCreator(u"circle", [] { return &s_square; });
    s_factory.RegisterCreator(u"circle", [] { return &s_circle; }); // the last one stays
    s_factory.RegisterCreator(u"square", [] { return &s_square; });
    s_factory.RegisterCreator(u"copy", [](void* shape) { return shape; });
    s_factory.RegisterCreator(u"empty", std::function<void*()>());
    FactoryRegistry::Singleton().Register(MakerOf(s_factory));

    int argument = 0;
    EXPECT_EQ(CreateObject(u"shapes", u"circle"), &s_circle);
    EXPECT_EQ(CreateObject(u"shapes", u"square"), &s_square);
    EXPECT_EQ(CreateObject(u"shapes", u"copy", &argument), &argument);
    // The two forms do not see each other's types.
    EXPECT_EQ(CreateObject(u"shapes", u"copy"), nullptr);
    EXPECT_EQ(CreateObject(u"shapes", u"circle", &argument), nullptr);
    // Names and ids match exactly or not at all.
    EXPECT_EQ(CreateObject(u"shapes", u"Circle"), nullptr);
    EXPECT_EQ(CreateObject(u"shape", u"circle"), nullptr);
    EXPECT_EQ(CreateObject(u"shape", u"copy", &argument), nullptr);
    EXPECT_THROW(CreateObject(u"shapes", u"empty"), std::bad_function_call);
}

TEST(ObjectFactoryTest, LastMakerUnderAnIdStaysAndIsAskedEveryTime)
{
    static TestFactory s_first(u"same id");
    static TestFactory s_second(u"same id");
    static int s_calls = 0;
    FactoryRegistry& registry = FactoryRegistry::Singleton();
    registry.Register(MakerOf(s_first));
    EXPECT_EQ(registry.GetFactory(u"same id"), &s_first);
    registry.Register([]() -> IObjectFactory* {
        ++s_calls;
        return &s_second;
    });
    EXPECT_EQ(s_calls, 1);
    EXPECT_EQ(registry.GetFactory(u"same id"), &s_second);
    EXPECT_EQ(registry.GetFactory(u"same id"), &s_second);
    EXPECT_EQ(s_calls, 3);
}

TEST(ObjectFactoryTest, FailedRegistrationLeavesTheRegistryUsable)
{
    FactoryRegistry& registry = FactoryRegistry::Singleton();
    EXPECT_THROW(registry.Register(FactoryRegistry::Maker()), std::bad_function_call);
    EXPECT_THROW(registry.Register([]() -> IObjectFactory* { throw 1; }), int);
    bool isLockFree = false; // another thread would wait for a lock that was left held
    std::thread([&] {
        isLockFree = FactoryRegistry::Singleton().GetFactory(u"never registered") == nullptr;
    }).join();
    EXPECT_TRUE(isLockFree);
}

// The maker of "outer" registers "inner" and puts another maker in its own place while it runs.
TEST(ObjectFactoryTest, MakerMayUseTheRegistry)
{
    static TestFactory s_inner(u"inner");
    static TestFactory s_outer(u"outer");
    static TestFactory s_replacement(u"outer");
    static bool s_replaces = false;
    FactoryRegistry::Singleton().Register([text = TString(u"lives in the maker")] {
        FactoryRegistry::Singleton().Register(MakerOf(s_inner));
        if (s_replaces) {
            FactoryRegistry::Singleton().Register(MakerOf(s_replacement));
        }
        EXPECT_EQ(text, u"lives in the maker");
        return FactoryRegistry::Singleton().GetFactory(u"inner") == &s_inner ? &s_outer : nullptr;
    });
    s_replaces = true;
    EXPECT_EQ(FactoryRegistry::Singleton().GetFactory(u"outer"), &s_outer);
    EXPECT_EQ(FactoryRegistry::Singleton().GetFactory(u"outer"), &s_replacement);
}

TEST(ObjectFactoryTest, ThreadsRegisterAndLookUpAtOnce)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    static std::array<std::deque<TestFactory>, kThreads> s_factories; // they outlive the test
    static std::atomic<int> s_ready{0};
    static int s_makersRunning = 0; // no atomic: the registry lets one maker run at a time
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            ++s_ready;
            while (s_ready < kThreads) { // start together
            }
            for (int i = 0; i < kRounds; ++i) {
                TString const own = TString::number(t) + u"/" + TString::number(i);
                TestFactory* const factory = &s_factories[t].emplace_back(own);
                FactoryRegistry::Singleton().Register([factory] {
                    EXPECT_EQ(++s_makersRunning, 1);
                    --s_makersRunning;
                    return factory;
                });
                EXPECT_EQ(FactoryRegistry::Singleton().GetFactory(own), factory);
                CreateObject(TString::number((t + 1) % kThreads) + u"/" + TString::number(i), u"x");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        for (int i = 0; i < kRounds; ++i) {
            TString const id = TString::number(t) + u"/" + TString::number(i);
            IObjectFactory* const factory = FactoryRegistry::Singleton().GetFactory(id);
            ASSERT_NE(factory, nullptr) << id;
            EXPECT_EQ(factory->GetFactoryID(), id);
        }
    }
}

} // namespace
