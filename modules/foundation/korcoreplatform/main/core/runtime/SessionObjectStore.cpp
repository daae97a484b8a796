#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"

#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
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

struct SessionObjectsMap::Sessions : tbb::concurrent_hash_map<TUUID, Interface, TUUIDHashCompare>
{};

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
    Sessions removed; // destroyed when this map is as it will be
    m_sessions->swap(removed);
}

TUUID SessionObjectsMap::CreateSessionObjects()
{
    TUUID const id = TUUID::CreateUUID();
    bool const insertedNewId = m_sessions->insert({id, nullptr});
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
    Interface removed; // destroyed behind the lock
    Sessions::accessor found;
    if (m_sessions->find(found, id)) {
        removed.swap(found->second);
        m_sessions->erase(found);
    }
}

Interface SessionObjectsMap::GetSessionObjectsInterface(TUUID const& id) const
{
    Sessions::const_accessor found;
    return m_sessions->find(found, id) ? found->second : nullptr;
}

void SessionObjectsMap::SetSessionObjectsInterface(TUUID const& id, Interface interface)
{
    Sessions::accessor sit;
    bool const found = m_sessions->find(sit, id);
    if (!found) {
        Fail(212, "found", &KorErrorsError::LogicAssert_0x0AAE8A7B);
    }
    if (sit->second != nullptr) {
        Fail(214, "sit->second == nullptr", &KorErrorsError::LogicAssert_0x4C43FF6F);
    }
    sit->second = std::move(interface);
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
