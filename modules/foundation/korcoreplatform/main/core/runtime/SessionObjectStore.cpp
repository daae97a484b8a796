#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/ReadMostlyLock_p.h"
#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"
#include "korsys/main/text/THash.h"

#include <QtEndian>
#include <tbb/concurrent_hash_map.h>

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

} // namespace

struct SessionObjectsMap::Sessions
{
    using Map = tbb::concurrent_hash_map<TUUID, Interface, TUUIDHashCompare>;

    /// Held for reading by every operation, as they go on at the same time; for writing by the one
    /// that the map itself does not let others go on with.
    ReadMostlyLock lock;
    Map map; ///< A null store is not attached yet.
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
        m_sessions->map.erase(found);
    }
}

Interface SessionObjectsMap::GetSessionObjectsInterface(TUUID const& id) const
{
    ReadMostlyLock::ReadGuard const reading(m_sessions->lock);
    Sessions::Map::const_accessor found;
    return m_sessions->map.find(found, id) ? found->second : nullptr;
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
