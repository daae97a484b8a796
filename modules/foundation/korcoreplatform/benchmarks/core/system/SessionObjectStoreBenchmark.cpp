// Reading the objects of sessions beside two hash maps under shared mutexes.

#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"
#include "korcoreplatform/main/core/runtime/SessionScope.h"

#include <benchmark/benchmark.h>
#include <boost/any.hpp>
#include <tbb/concurrent_hash_map.h>

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;
using Object = std::shared_ptr<boost::any>;

constexpr int kSessions = 100;
constexpr char kTime[] = "CPU ns/look-up";

TString const& Key()
{
    static TString const s_key(u"logging-ctx");
    return s_key;
}

class OurStore
{
public:
    TUUID Add(Object const& object)
    {
        TUUID const id = m_sessions.emplace_back().Id();
        SessionObjectStore::SetSynchronizedObject(id, Key(), object);
        return id;
    }
    Object Find(TUUID const& id, TString const& key) const
    {
        return SessionObjectStore::GetSynchronizedObject(id, key);
    }

private:
    std::deque<OwnedSession> m_sessions;
};

/// What a program would write by hand.
class MapStore
{
public:
    TUUID Add(Object const& object)
    {
        TUUID const id = TUUID::CreateUUID();
        auto session = std::make_shared<Session>();
        session->objects[Key()] = object;
        m_sessions[id] = session;
        return id;
    }

protected:
    struct Session
    {
        std::shared_mutex mutex;
        std::unordered_map<TString, Object> objects;

        Object Find(TString const& key)
        {
            std::shared_lock<std::shared_mutex> const lock(mutex);
            auto const found = objects.find(key);
            return found != objects.end() ? found->second : nullptr;
        }
    };

    std::shared_mutex m_mutex;
    std::unordered_map<TUUID, std::shared_ptr<Session>> m_sessions;
};

/// Nobody deletes a session while one is read.
class MapHeldMeanwhile : public MapStore
{
public:
    Object Find(TUUID const& id, TString const& key)
    {
        std::shared_lock<std::shared_mutex> const lock(m_mutex);
        auto const found = m_sessions.find(id);
        return found != m_sessions.end() ? found->second->Find(key) : nullptr;
    }
};

/// The session is read outside the map's lock.
class MapSharingSessions : public MapStore
{
public:
    Object Find(TUUID const& id, TString const& key)
    {
        std::shared_ptr<Session> session;
        {
            std::shared_lock<std::shared_mutex> const lock(m_mutex);
            auto const found = m_sessions.find(id);
            if (found != m_sessions.end()) {
                session = found->second;
            }
        }
        return session != nullptr ? session->Find(key) : nullptr;
    }
};

/// The kind of map that sessions are kept in, with the object in place of the session: what is left
/// when nothing but the session is looked up.
class MapAlone
{
public:
    TUUID Add(Object const& object)
    {
        TUUID const id = TUUID::CreateUUID();
        m_objects.insert({id, object});
        return id;
    }
    Object Find(TUUID const& id, TString const& /*key*/) const
    {
        Objects::const_accessor found;
        return m_objects.find(found, id) ? found->second : nullptr;
    }

private:
    using Objects = tbb::concurrent_hash_map<TUUID, Object, SessionObjectsMap::TUUIDHashCompare>;

    Objects m_objects;
};

/// Each thread reads one object of one session, `run.records` times. They work for one session
/// together, or for one each.
template <class Store>
Rounds::Task Read(int threads, bool isOneSession)
{
    return [=](Run const& run) -> Measures {
        Store store;
        std::vector<TUUID> ids;
        for (int i = 0; i < kSessions; ++i) {
            ids.push_back(store.Add(std::make_shared<boost::any>(i)));
        }
        std::vector<std::thread> readers;
        Rounds::Usage const before;
        for (int i = 0; i < threads; ++i) {
            TUUID const id = ids[isOneSession ? 0 : static_cast<std::size_t>(i)];
            readers.emplace_back([&store, &run, id] {
                for (int n = 0; n < run.records; ++n) {
                    Object const found = store.Find(id, Key());
                    benchmark::DoNotOptimize(found.get());
                }
            });
        }
        for (std::thread& reader : readers) {
            reader.join();
        }
        double const seconds = Rounds::Usage().cpuSeconds - before.cpuSeconds;
        return {{kTime, seconds * 1e9 / run.records / threads}};
    };
}

/// What a log record asks for, again and again.
void Compare(std::string const& who, int threads, bool isOneSession, char const* peer)
{
    bool const isHeld = peer == std::string("map held");
    Scenario("synchronized object, " + who + ", beside " + peer, 500000)
        .Contender("ours", Read<OurStore>(threads, isOneSession))
        .Contender(peer, isHeld ? Read<MapHeldMeanwhile>(threads, isOneSession)
                                : Read<MapSharingSessions>(threads, isOneSession))
        .Limit("oneTBB's map alone", Read<MapAlone>(threads, isOneSession))
        .Runs(4) // threads that wait for each other do so differently each time
        .AtMost(kTime, 1.0);
}

bool ReadingObjects()
{
    for (char const* const peer : {"map held", "sessions shared"}) {
        Compare("1 thread", 1, true, peer);
        Compare("4 threads in 1 session", 4, true, peer);
        Compare("4 threads in 4 sessions", 4, false, peer);
    }
    return true;
}

[[maybe_unused]] bool const s_registered = ReadingObjects();

} // namespace
