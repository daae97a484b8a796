#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/ReadMostlyLock_p.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/text/THash.h"

#include <QtEndian>
#include <tbb/concurrent_hash_map.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

using Interface = std::shared_ptr<ISessionObjects>;

[[noreturn, gnu::cold]] void Fail(int line, char const* condition, KorvelError (*makeError)())
{
    ThrowLogicException("modules/foundation/korcoreplatform/main/core/SessionObjectStore", line,
                        condition, makeError());
}

/// The store of a session of the process; fails as the caller's line says when there is none.
Interface StoreOf(TUUID const& id, int line, KorvelError (*makeError)())
{
    Interface interface = SessionObjectsMap::Get().GetSessionObjectsInterface(id);
    if (interface == nullptr) {
        Fail(line, "sessionObjectsInterface != nullptr", makeError);
    }
    return interface;
}

class LastSession;

[[gnu::tls_model("initial-exec")]] thread_local LastSession* t_last = nullptr;
thread_local bool t_isThreadOver = false;

/// The session that a thread looked up last. Most threads work for one session for a while; they
/// find it again without a lock.
class LastSession
{
public:
    LastSession(LastSession const&) = delete;
    LastSession& operator=(LastSession const&) = delete;
    ~LastSession()
    {
        t_last = nullptr;
        t_isThreadOver = true; // what is looked up even later goes without
    }

    /// Null when the thread is ending.
    static LastSession* OfThread() { return t_last != nullptr ? t_last : Make(); }

    /// Null unless this holds what the map, in that state of it, has for `id`, and that is alive.
    Interface Find(std::uint64_t state, TUUID const& id) const
    {
        if (!IsAbout(state, id) || m_store.expired()) {
            return nullptr;
        }
        try {
            // libstdc++'s `lock` reads the count behind its exchange, which takes as long again.
            return Interface(m_store);
        } catch (std::bad_weak_ptr const&) { // expired in between
            return nullptr;
        }
    }

    /// Takes down what the map answered. The store is kept from the second time on: who asks for
    /// several sessions in turn pays nothing for it.
    void Note(std::uint64_t state, TUUID const& id, Interface const& store)
    {
        if (IsAbout(state, id)) {
            std::weak_ptr<ISessionObjects>(store).swap(m_store); // a deleter may come back here
        } else {
            m_state = state;
            m_id = id;
            m_store.reset();
        }
    }

private:
    LastSession() noexcept { t_last = this; }

    static LastSession* Make()
    {
        if (!t_isThreadOver) {
            static thread_local LastSession t_theLast;
        }
        return t_last;
    }

    bool IsAbout(std::uint64_t state, TUUID const& id) const noexcept
    {
        return m_state == state && m_id == id;
    }

    std::uint64_t m_state = 0; ///< Of the map, before it was asked.
    TUUID m_id;
    std::weak_ptr<ISessionObjects> m_store; ///< Deleting a session destroys its store in time.
};

/// A number above 0 that nobody got before.
std::uint64_t NewState() noexcept
{
    static std::atomic<std::uint64_t> s_last{0};
    return s_last.fetch_add(1, std::memory_order_relaxed) + 1;
}

} // namespace

struct SessionObjectsMap::Sessions
{
    using Map = tbb::concurrent_hash_map<TUUID, Interface, TUUIDHashCompare>;

    Interface Find(TUUID const& id)
    {
        ReadMostlyLock::ReadGuard const reading(lock);
        Map::const_accessor found;
        return map.find(found, id) ? found->second : nullptr;
    }

    /// To be called while the session that is to be deleted is locked for writing: who sees the new
    /// state asks the map, and finds it deleted.
    void ForgetLast() noexcept { state.store(NewState(), std::memory_order_release); }

    /// Held for reading by every operation, as they go on at the same time; for writing by the one
    /// that the map itself does not let others go on with.
    ReadMostlyLock lock;
    Map map; ///< A null store is not attached yet.

    /// Which sessions there are. On a line of its own, as every look-up reads it.
    alignas(64) std::atomic<std::uint64_t> state{NewState()};
};

std::size_t SessionObjectsMap::TUUIDHashCompare::hash(TUUID const& id) noexcept
{
    QUuid const& uuid = id;
    quint64 const fields = quint64(uuid.data1) << 32 | quint64(uuid.data2) << 16 | uuid.data3;
    quint64 const bigEndian = qToBigEndian(fields);
    unsigned char bytes[16]; // written in words, as they are read
    std::memcpy(bytes, &bigEndian, sizeof(bigEndian));
    std::memcpy(bytes + sizeof(bigEndian), uuid.data4, sizeof(uuid.data4));
    return THash(bytes, sizeof(bytes));
}

SessionObjectsMap::SessionObjectsMap() : m_sessions(std::make_unique<Sessions>()) {}

SessionObjectsMap::~SessionObjectsMap()
{
    Clear(); // stores may look into the map while they are destroyed
}

SessionObjectsMap& SessionObjectsMap::Get()
{
    static SessionObjectsMap& s_map = *new SessionObjectsMap; // threads may outlive the exit
    return s_map;
}

void SessionObjectsMap::Clear()
{
    Sessions::Map removed; // destroyed behind the lock, as wherever stores are dropped
    ReadMostlyLock::WriteGuard const writing(m_sessions->lock);
    m_sessions->ForgetLast();
    m_sessions->map.swap(removed);
}

TUUID SessionObjectsMap::CreateSessionObjects()
{
    TUUID const id = TUUID::CreateUUID();
    bool insertedNewId = false;
    {
        ReadMostlyLock::ReadGuard const reading(m_sessions->lock);
        insertedNewId = m_sessions->map.insert({id, nullptr});
    }
    if (!insertedNewId) {
        Fail(185, "insertedNewId", &KorErrorsError::LogicAssert_0x8EC5143D);
    }
    return id;
}

void SessionObjectsMap::DeleteSessionObjects(TUUID const& id)
{
    if (id.IsNull()) {
        return;
    }
    Interface removed;
    ReadMostlyLock::ReadGuard const reading(m_sessions->lock);
    Sessions::Map::accessor found;
    if (m_sessions->map.find(found, id)) {
        removed.swap(found->second);
        m_sessions->ForgetLast();
        m_sessions->map.erase(found);
    }
}

Interface SessionObjectsMap::GetSessionObjectsInterface(TUUID const& id) const
{
    std::uint64_t const state = m_sessions->state.load(std::memory_order_acquire);
    LastSession* const last = LastSession::OfThread();
    if (last == nullptr) {
        return m_sessions->Find(id);
    }
    Interface store = last->Find(state, id);
    if (store == nullptr) {
        store = m_sessions->Find(id);
        last->Note(state, id, store);
    }
    return store;
}

void SessionObjectsMap::SetSessionObjectsInterface(TUUID const& id, Interface interface)
{
    bool found = false;
    bool isFree = false;
    {
        ReadMostlyLock::ReadGuard const reading(m_sessions->lock);
        Sessions::Map::accessor sit;
        found = m_sessions->map.find(sit, id);
        isFree = found && sit->second == nullptr;
        if (isFree) {
            sit->second = std::move(interface);
        }
    }
    if (!found) {
        Fail(212, "found", &KorErrorsError::LogicAssert_0x0AAE8A7B);
    }
    if (!isFree) {
        Fail(214, "sit->second == nullptr", &KorErrorsError::LogicAssert_0x4C43FF6F);
    }
}

TUUID SessionObjectStore::CreateSession()
{
    return SessionObjectsMap::Get().CreateSessionObjects();
}

void SessionObjectStore::DeleteSession(TUUID const& id)
{
    SessionObjectsMap::Get().DeleteSessionObjects(id);
}

void SessionObjectStore::SetSessionObjectsInterface(TUUID const& id, Interface interface)
{
    SessionObjectsMap::Get().SetSessionObjectsInterface(id, std::move(interface));
}

void SessionObjectStore::SetUnsynchronizedObject(TUUID const& id, TString const& key,
                                                 std::shared_ptr<boost::any> value)
{
    StoreOf(id, 238, &KorErrorsError::LogicAssert_0xA1EE3CF3)
        ->SetUnsynchronizedObject(key, std::move(value));
}

std::shared_ptr<boost::any> SessionObjectStore::GetUnsynchronizedObject(TUUID const& id,
                                                                        TString const& key)
{
    return StoreOf(id, 246, &KorErrorsError::LogicAssert_0x7B7322CC)->GetUnsynchronizedObject(key);
}

void SessionObjectStore::SetSynchronizedObject(TUUID const& id, TString const& key,
                                               std::shared_ptr<boost::any> value)
{
    StoreOf(id, 255, &KorErrorsError::LogicAssert_0x0F1C04B5)
        ->SetSynchronizedObject(key, std::move(value));
}

std::shared_ptr<boost::any> SessionObjectStore::GetSynchronizedObject(TUUID const& id,
                                                                      TString const& key)
{
    return StoreOf(id, 263, &KorErrorsError::LogicAssert_0xF735FBEE)->GetSynchronizedObject(key);
}
