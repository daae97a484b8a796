/// The session that the calling thread works for, as the host tells it, and what is stored there.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/main/string/TString.h"

#include <atomic>
#include <functional>
#include <memory>
#include <unordered_map>

namespace boost {
class any;
}

/// Where a session keeps its objects. The host implements it, and includes <boost/any.hpp> for
/// that.
///
/// Synchronized objects are those that the implementation guards for several threads of the
/// session, the others are for one thread at a time. A key may stand for one object of each kind.
///
/// Ownership: an object is shared between the store and everybody who got it.
class KORCOREPLATFORM_EXPORT ISessionObjects
{
public:
    virtual ~ISessionObjects();

    virtual void SetUnsynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) = 0;

    /// Null when there is no object under the key.
    virtual std::shared_ptr<boost::any> GetUnsynchronizedObject(TString const& key) = 0;

    virtual void SetSynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) = 0;

    /// Null when there is no object under the key.
    virtual std::shared_ptr<boost::any> GetSynchronizedObject(TString const& key) = 0;
};

// What the hooks of `CoreThreadContext` do until the host replaces them.
KORCOREPLATFORM_EXPORT bool DefaultHasSessionId();  ///< False.
KORCOREPLATFORM_EXPORT TUUID DefaultGetSessionId(); ///< Null.
KORCOREPLATFORM_EXPORT std::shared_ptr<ISessionObjects>
DefaultGetSessionObjectsInterface(); ///< Null.

/// Asks the host, through three hooks, about the session of the calling thread, and reads and
/// writes the generic objects of that session. The library itself knows no sessions. Log records
/// take the logging context from here, but the text of the session from
/// `TLog::ActivityInfoFactory`.
///
///     CoreThreadContext::SetHasSessionIdFunction([] { return t_session != nullptr; });
///     CoreThreadContext::SetGetSessionObjectsInterfaceFunction([] { return t_session->objects; });
///
/// A hook given as an empty callable is the default again. The old hook is destroyed at once.
///
/// Throws: what the hook that is asked and the host's `ISessionObjects` throw, in every function.
/// Thread safety: reading is safe from any thread, as far as the host's hooks are. Hooks are
/// replaced while no other thread uses them, usually at start-up. At the exit of the process,
/// `HasSessionId` turns false when what stood before the first hook begins to be destroyed: what a
/// hook looks at may be gone from then on. The other two hooks are asked even then.
class KORCOREPLATFORM_EXPORT CoreThreadContext
{
public:
    CoreThreadContext() = delete;

    /// Whether the calling thread works for a session. Costs a load while the host set no hook.
    static bool HasSessionId() { return IsHookInstalled() && CallHasSessionId(); }
    static void SetHasSessionIdFunction(std::function<bool()> hook);

    static TUUID GetSessionId();
    static void SetGetSessionIdFunction(std::function<TUUID const()> hook);

    static std::shared_ptr<ISessionObjects> GetSessionObjectsInterface();
    static void
    SetGetSessionObjectsInterfaceFunction(std::function<std::shared_ptr<ISessionObjects>()> hook);

    // While a thread has a session, the hook for its objects must not return null.

    /// Stores an object in the session of the calling thread.
    /// Throws: `LogicException` with id LogicAssert_0xD612CFB0 without a session.
    static void SetGenericUnsynchronizedObject(TString const& key,
                                               std::shared_ptr<boost::any> value);

    /// The object stored in the session of the calling thread; null without a session.
    static std::shared_ptr<boost::any> GetGenericUnsynchronizedObject(TString const& key);

    /// Stores a synchronized object in the session of the calling thread.
    /// Throws: `LogicException` with id LogicAssert_0x7615C447 without a session.
    static void SetGenericObject(TString const& key, std::shared_ptr<boost::any> value);

    /// The synchronized object stored in the session of the calling thread; null without a session.
    static std::shared_ptr<boost::any> GetGenericObject(TString const& key);

private:
    friend class CoreThreadContextUtils;
    struct InjectedHooks;

    static bool IsHookInstalled() noexcept
    {
        // Pairs with the stores that install and remove the hook.
        return s_isHookInstalled.load(std::memory_order_acquire);
    }
    static InjectedHooks& Hooks();
    static bool CallHasSessionId();

    static std::atomic<bool> s_isHookInstalled; ///< Until it is set, no thread has a session.
};

/// The logging context of a session: names and texts that go with its log records. It is a
/// synchronized object of the session, under the key "logging-ctx".
///
/// Thread safety: as `CoreThreadContext`. The map is shared by all who got it, without a lock.
class KORCOREPLATFORM_EXPORT CoreThreadContextUtils
{
public:
    CoreThreadContextUtils() = delete;

    /// Makes `context`, which may be null, the context of the calling thread's session.
    /// Throws: `LogicException` with id LogicAssert_0x7615C447 without a session.
    static void
    SetLoggingContext(std::shared_ptr<std::unordered_map<TString, TString>> const& context);

    /// The context of the calling thread's session; null when there is none, or no session. Every
    /// later reader sees what is changed in the map. Costs a load while the host set no hook.
    /// Throws: `boost::bad_any_cast` when something else is stored under the key.
    static std::shared_ptr<std::unordered_map<TString, TString>> GetLoggingContext()
    {
        return CoreThreadContext::IsHookInstalled() ? ReadLoggingContext() : nullptr;
    }

private:
    static std::shared_ptr<std::unordered_map<TString, TString>> ReadLoggingContext();
};
