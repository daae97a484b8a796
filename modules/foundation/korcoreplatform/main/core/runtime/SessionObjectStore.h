/// The sessions of the process, and where each of them keeps its objects.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <memory>

namespace boost {
class any;
}

class ISessionObjects;

/// Sessions by their ids. A session is created without a store for objects; one is attached to it
/// later, once, and stays until the session is deleted.
///
/// Ownership: the map shares each store with everybody who gets it. A store outlives the deletion
/// of its session while somebody uses it. Its deleter, where it has one, and the memory of
/// `std::make_shared` may stay until threads that used the session look up another one, or end.
/// Thread safety: safe from any thread; an operation locks the entry that it is about. A thread
/// finds the session that it asked for again and again without a lock. Stores are called and
/// destroyed outside the locks, so that they may use the map.
class KORCOREPLATFORM_EXPORT SessionObjectsMap
{
public:
    /// How ids are hashed and compared, in the form that the hash maps of oneTBB want.
    struct KORCOREPLATFORM_EXPORT TUUIDHashCompare
    {
        static std::size_t hash(TUUID const& id) noexcept; ///< `THash` of the id's sixteen bytes.
        static bool equal(TUUID const& a, TUUID const& b) noexcept { return a == b; }
    };

    SessionObjectsMap();
    SessionObjectsMap(SessionObjectsMap const&) = delete;
    SessionObjectsMap& operator=(SessionObjectsMap const&) = delete;
    ~SessionObjectsMap();

    /// The map of the process, made at the first call and never destroyed.
    static SessionObjectsMap& Get();

    /// Deletes every session. No other operation goes on meanwhile.
    void Clear();

    /// Makes a session with a new random id, and no store.
    /// Throws: `LogicException` with id LogicAssert_0x8EC5143D when the id is in use already.
    TUUID CreateSessionObjects();

    /// Nothing happens when there is no such session, or the id is null.
    void DeleteSessionObjects(TUUID const& id);

    /// The store of the session; null when it has none yet or there is no such session.
    std::shared_ptr<ISessionObjects> GetSessionObjectsInterface(TUUID const& id) const;

    /// Attaches the store. A null one changes nothing.
    /// Throws: `LogicException` with id LogicAssert_0x0AAE8A7B when there is no such session,
    /// LogicAssert_0x4C43FF6F when it has a store.
    void SetSessionObjectsInterface(TUUID const& id, std::shared_ptr<ISessionObjects> interface);

private:
    struct Sessions;

    std::unique_ptr<Sessions> const m_sessions; ///< Never null.
};

/// Sessions, and the objects of any of them, in the map of the process.
///
///     TUUID const id = SessionObjectStore::CreateSession();
///     SessionObjectStore::SetSessionObjectsInterface(id, std::make_shared<SessionObjects>());
///     SessionObjectStore::SetSynchronizedObject(id, u"user", std::make_shared<boost::any>(name));
///     ...
///     SessionObjectStore::DeleteSession(id);
///
/// The four functions for objects throw for a session without a store and for an unknown one, the
/// getters too: whoever names a session has to know it. They also throw what the store throws.
///
/// Thread safety: safe from any thread as far as the map goes. Unsynchronized objects are for one
/// thread at a time.
class KORCOREPLATFORM_EXPORT SessionObjectStore
{
public:
    SessionObjectStore() = delete;

    // As the functions of `SessionObjectsMap`.
    static TUUID CreateSession();
    static void DeleteSession(TUUID const& id);
    static void SetSessionObjectsInterface(TUUID const& id,
                                           std::shared_ptr<ISessionObjects> interface);

    /// Throws: `LogicException` with id LogicAssert_0xA1EE3CF3 without a store.
    static void SetUnsynchronizedObject(TUUID const& id, TString const& key,
                                        std::shared_ptr<boost::any> value);

    /// Null when there is no object under the key.
    /// Throws: `LogicException` with id LogicAssert_0x7B7322CC without a store.
    static std::shared_ptr<boost::any> GetUnsynchronizedObject(TUUID const& id, TString const& key);

    /// Throws: `LogicException` with id LogicAssert_0x0F1C04B5 without a store.
    static void SetSynchronizedObject(TUUID const& id, TString const& key,
                                      std::shared_ptr<boost::any> value);

    /// Null when there is no object under the key.
    /// Throws: `LogicException` with id LogicAssert_0xF735FBEE without a store.
    static std::shared_ptr<boost::any> GetSynchronizedObject(TUUID const& id, TString const& key);
};
