#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"

#include "korcoreplatform/main/core/runtime/SessionObjects.h"
#include "korcoreplatform/tests/support/KorTest.h"
#include "korsys/main/text/THash.h"
#include "korsys/tests/support/Threads.h"

#include <boost/any.hpp>
#include <tbb/concurrent_hash_map.h>

#include <unordered_map>

namespace {

using Object = std::shared_ptr<boost::any>;

Object Number(int number)
{
    return std::make_shared<boost::any>(number);
}

constexpr char kPlace[] = "core/SessionObjectStore";

/// A host's own store, which uses the map of the process whenever it is called or destroyed.
class HostObjects : public ISessionObjects
{
public:
    ~HostObjects() override { SessionObjectsMap::Get().DeleteSessionObjects(id); }
    void SetUnsynchronizedObject(TString const&, Object value) override { own = value; }
    Object GetUnsynchronizedObject(TString const&) override { return own; }
    void SetSynchronizedObject(TString const&, Object value) override { shared = value; }
    Object GetSynchronizedObject(TString const&) override
    {
        SessionObjectStore::DeleteSession(id);
        return shared;
    }

    TUUID id;
    Object own;
    Object shared;
};

TEST(SessionObjectStoreTest, ObjectsNeedASessionWithAStore)
{
    TUUID const id = SessionObjectStore::CreateSession();
    TUUID const unknown = TUUID::CreateUUID();
    for (TUUID const& bad : {id, unknown, TUUID()}) {
        SCOPED_TRACE(bad.ToString().toStdString());
        using Store = SessionObjectStore;
        constexpr char kText[] = "sessionObjectsInterface != nullptr";
        EXPECT_KOR_ASSERT(Store::SetUnsynchronizedObject(bad, u"k", Number(1)), "0xA1EE3CF3",
                          kPlace, 238, kText);
        EXPECT_KOR_ASSERT(Store::GetUnsynchronizedObject(bad, u"k"), "0x7B7322CC", kPlace, 246,
                          kText);
        EXPECT_KOR_ASSERT(Store::SetSynchronizedObject(bad, u"k", Number(1)), "0x0F1C04B5", kPlace,
                          255, kText);
        EXPECT_KOR_ASSERT(Store::GetSynchronizedObject(bad, u"k"), "0xF735FBEE", kPlace, 263,
                          kText);
    }
    for (TUUID const& any : {id, unknown, TUUID()}) {
        SessionObjectStore::DeleteSession(any);
    }
}

TEST(SessionObjectStoreTest, AStoreIsAttachedOnceAndOutlivesItsSession)
{
    SessionObjectsMap map;
    TUUID const id = map.CreateSessionObjects();
    auto const attach = [&](TUUID const& to) {
        map.SetSessionObjectsInterface(to, std::make_shared<SessionObjects>());
    };
    EXPECT_EQ(map.GetSessionObjectsInterface(id), nullptr);
    attach(id);
    EXPECT_KOR_ASSERT(attach(id), "0x4C43FF6F", kPlace, 214, "sit->second == nullptr");
    EXPECT_KOR_ASSERT(attach(TUUID()), "0x0AAE8A7B", kPlace, 212, "found");
    EXPECT_EQ(SessionObjectsMap::Get().GetSessionObjectsInterface(id), nullptr);

    std::shared_ptr<ISessionObjects> held;
    for (int i = 0; i < 3; ++i) { // from the second time on, the thread remembers it
        held = map.GetSessionObjectsInterface(id);
        ASSERT_NE(held, nullptr);
    }
    EXPECT_EQ(SessionObjectsMap().GetSessionObjectsInterface(id), nullptr);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(map.GetSessionObjectsInterface(id), held);
    }
    std::weak_ptr<ISessionObjects> const store = held;
    map.DeleteSessionObjects(id);
    held->SetSynchronizedObject(u"k", Number(1));
    EXPECT_EQ(boost::any_cast<int>(*held->GetSynchronizedObject(u"k")), 1);
    held = nullptr;
    EXPECT_TRUE(store.expired());
    EXPECT_EQ(map.GetSessionObjectsInterface(id), nullptr);
}

TEST(SessionObjectStoreTest, AHostsStoreIsCalledAndDestroyedOutsideTheLocks)
{
    auto host = std::make_shared<HostObjects>();
    TUUID const id = host->id = SessionObjectStore::CreateSession();
    HostObjects const& objects = *host;
    SessionObjectStore::SetSessionObjectsInterface(id, host);
    Object const one = Number(1);
    Object const two = Number(2);
    SessionObjectStore::SetUnsynchronizedObject(id, u"k", one);
    SessionObjectStore::SetSynchronizedObject(id, u"k", two);
    EXPECT_EQ(objects.own, one);
    EXPECT_EQ(SessionObjectStore::GetUnsynchronizedObject(id, u"k"), one);
    host = nullptr; // only the session has it: the getter destroys it
    EXPECT_EQ(SessionObjectStore::GetSynchronizedObject(id, u"k"), two);
    EXPECT_EQ(SessionObjectsMap::Get().GetSessionObjectsInterface(id), nullptr);
}

TEST(SessionObjectStoreTest, ObjectsComeBackUnderTheirKeysAndKinds)
{
    SessionObjects objects;
    std::unordered_map<TString, int> expected;
    std::mt19937 random(11);         // fixed seed: a failure can be run again
    for (int i = 0; i < 3000; ++i) { // as many removals as additions: chains with gaps
        TString const key = TString::number(static_cast<int>(random() % 40));
        bool const isRemoved = random() % 2 == 0;
        objects.SetSynchronizedObject(key, isRemoved ? nullptr : Number(i));
        objects.SetUnsynchronizedObject(key, isRemoved ? Number(-i) : nullptr);
        expected[key] = isRemoved ? -i : i;
        for (auto const& [known, number] : expected) {
            Object const shared = objects.GetSynchronizedObject(known);
            Object const own = objects.GetUnsynchronizedObject(known);
            ASSERT_EQ(shared != nullptr ? boost::any_cast<int>(*shared) : 0, std::max(number, 0));
            ASSERT_EQ(own != nullptr ? boost::any_cast<int>(*own) : 0, std::min(number, 0));
        }
    }
    EXPECT_EQ(objects.GetSynchronizedObject(u"absent"), nullptr);
}

TEST(SessionObjectStoreTest, HashIsThatOfTheBytesAndFitsOneTbb)
{
    TUUID const id(u"{00112233-4455-6677-8899-aabbccddeeff}");
    std::vector<unsigned char> const bytes = id.ToRFC4122();
    EXPECT_EQ(SessionObjectsMap::TUUIDHashCompare::hash(id), THash(bytes.data(), bytes.size()));
    tbb::concurrent_hash_map<TUUID, int, SessionObjectsMap::TUUIDHashCompare> map;
    map.insert({id, 1});
    EXPECT_EQ(map.count(TUUID(u"00112233-4455-6677-8899-AABBCCDDEEFF")), 1u);
}

TEST(SessionObjectStoreTest, ReadersOfADeletedSessionGetTheObjectOrTheError)
{
    constexpr int kRounds = 300;
    std::atomic<int> round{0};
    std::atomic<int> destroyed{0};
    std::atomic<int> odd{0};
    std::atomic<int> reading{0};
    TUUID ids[kRounds];
    auto const deleter = [&destroyed](boost::any* object) {
        delete object;
        ++destroyed;
    };
    auto const read = [&] {
        int known = 0;
        ++reading;
        do {
            known = round;
            try {
                Object const found = SessionObjectStore::GetSynchronizedObject(ids[known], u"k");
                odd += found == nullptr || boost::any_cast<int>(*found) != known ? 1 : 0;
                SessionObjectStore::SetSynchronizedObject(ids[known], u"k2", found);
            } catch (LogicException const&) { // deleted
            }
        } while (known + 1 < kRounds);
    };
    for (int i = 0; i < kRounds; ++i) {
        ids[i] = SessionObjectStore::CreateSession();
        auto objects = std::make_shared<SessionObjects>();
        objects->SetSynchronizedObject(u"k", Object(new boost::any(i), deleter));
        SessionObjectStore::SetSessionObjectsInterface(ids[i], std::move(objects));
    }
    OnThreads(4, [&](unsigned thread) {
        if (thread != 0) {
            return read();
        }
        while (reading < 3) {
            std::this_thread::yield();
        }
        for (int i = 0; i < kRounds; ++i) {
            round = i;
            std::this_thread::yield();
            SessionObjectStore::DeleteSession(ids[i]);
        }
    });
    EXPECT_EQ(odd, 0);
    EXPECT_EQ(destroyed, kRounds);
}

/// More than there are slots for, all at once.
TEST(SessionObjectStoreTest, AnyNumberOfThreadsReadsWhatOthersWrite)
{
    constexpr int kThreads = 160;
    SessionObjects objects;
    objects.SetSynchronizedObject(u"k", Number(0));
    std::atomic<int> reading{0};
    OnThreads(kThreads, [&](unsigned) {
        EXPECT_NE(objects.GetSynchronizedObject(u"k"), nullptr);
        for (++reading; reading < kThreads;) {
            std::this_thread::yield();
        }
        objects.SetSynchronizedObject(u"k", Number(1));
        EXPECT_EQ(boost::any_cast<int>(*objects.GetSynchronizedObject(u"k")), 1);
    });
}

/// Looks a session up when everything that a thread remembers is gone.
struct LateUser
{
    ~LateUser()
    {
        EXPECT_NE(map->GetSessionObjectsInterface(id), nullptr);
        map->DeleteSessionObjects(id);
        EXPECT_EQ(map->GetSessionObjectsInterface(id), nullptr);
    }

    SessionObjectsMap* map;
    TUUID id;
};

TEST(SessionObjectStoreTest, SessionsAreFoundUntilTheEndOfAThread)
{
    SessionObjectsMap map;
    std::thread([&map] {
        thread_local LateUser t_user{&map, map.CreateSessionObjects()}; // destroyed last
        map.SetSessionObjectsInterface(t_user.id, std::make_shared<SessionObjects>());
        for (int i = 0; i < 3; ++i) {
            EXPECT_NE(map.GetSessionObjectsInterface(t_user.id), nullptr);
        }
    }).join();
}

TEST(SessionObjectStoreTest, ClearingDeletesEverySession)
{
    SessionObjectsMap map;
    auto const objects = std::make_shared<SessionObjects>();
    TUUID id;
    for (int i = 0; i < 500; ++i) {
        map.SetSessionObjectsInterface(id = map.CreateSessionObjects(), objects);
    }
    for (int i = 0; i < 3; ++i) { // from the second time on, the thread remembers it
        EXPECT_EQ(map.GetSessionObjectsInterface(id), objects);
    }
    map.Clear();
    EXPECT_EQ(objects.use_count(), 1);
    EXPECT_EQ(map.GetSessionObjectsInterface(id), nullptr);
    map.SetSessionObjectsInterface(map.CreateSessionObjects(), objects);
    std::thread creator([&map] { map.DeleteSessionObjects(map.CreateSessionObjects()); });
    map.Clear();
    creator.join();
    EXPECT_EQ(objects.use_count(), 1);
}

} // namespace
