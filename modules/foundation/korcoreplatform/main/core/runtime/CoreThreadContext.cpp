#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"

#include "korsys/main/error/KorErrorsError.h"
#include "korsys/main/error/LogicException.h"

#include <boost/any.hpp>

#include <utility>

namespace {

constexpr char kFile[] = "modules/foundation/korcoreplatform/main/core/SessionObjectStore";

using LoggingContext = std::shared_ptr<std::unordered_map<TString, TString>>;

TString const& LoggingContextKey()
{
    static TString const& s_key = *new TString(u"logging-ctx"); // exit handlers may log
    return s_key;
}

template <class Hook>
void Replace(Hook& hook, Hook replacement, Hook defaultHook)
{
    hook = replacement ? std::move(replacement) : std::move(defaultHook);
}

} // namespace

ISessionObjects::~ISessionObjects() = default;

bool DefaultHasSessionId()
{
    return false;
}

TUUID DefaultGetSessionId()
{
    return TUUID();
}

std::shared_ptr<ISessionObjects> DefaultGetSessionObjectsInterface()
{
    return nullptr;
}

struct CoreThreadContext::InjectedHooks
{
    std::function<bool()> hasSessionId = &DefaultHasSessionId;
    std::function<TUUID const()> getSessionId = &DefaultGetSessionId;
    std::function<std::shared_ptr<ISessionObjects>()> getSessionObjectsInterface =
        &DefaultGetSessionObjectsInterface;
};

std::atomic<bool> CoreThreadContext::s_isHookInstalled{false};

/// The hooks themselves are never destroyed, as another thread may be in one. From the exit
/// handlers on there is no session: what a hook looks at may be gone.
CoreThreadContext::InjectedHooks& CoreThreadContext::Hooks()
{
    static InjectedHooks& s_hooks = *new InjectedHooks;
    struct NoSessionFromExitOn
    {
        ~NoSessionFromExitOn() { s_isHookInstalled.store(false, std::memory_order_release); }
    };
    static NoSessionFromExitOn const s_atExit;
    return s_hooks;
}

bool CoreThreadContext::CallHasSessionId()
{
    return Hooks().hasSessionId();
}

void CoreThreadContext::SetHasSessionIdFunction(std::function<bool()> hook)
{
    bool const isInstalled = static_cast<bool>(hook);
    Replace(Hooks().hasSessionId, std::move(hook), {&DefaultHasSessionId});
    s_isHookInstalled.store(isInstalled, std::memory_order_release);
}

TUUID CoreThreadContext::GetSessionId()
{
    return Hooks().getSessionId();
}

void CoreThreadContext::SetGetSessionIdFunction(std::function<TUUID const()> hook)
{
    Replace(Hooks().getSessionId, std::move(hook), {&DefaultGetSessionId});
}

std::shared_ptr<ISessionObjects> CoreThreadContext::GetSessionObjectsInterface()
{
    return Hooks().getSessionObjectsInterface();
}

void CoreThreadContext::SetGetSessionObjectsInterfaceFunction(
    std::function<std::shared_ptr<ISessionObjects>()> hook)
{
    Replace(Hooks().getSessionObjectsInterface, std::move(hook),
            {&DefaultGetSessionObjectsInterface});
}

void CoreThreadContext::SetGenericUnsynchronizedObject(TString const& key,
                                                       std::shared_ptr<boost::any> value)
{
    if (!HasSessionId()) {
        ThrowLogicException(kFile, 98,
                            "CoreThreadContext::SetGenericUnsynchronizedObject requires "
                            "ThreadContext to be initialized",
                            KorErrorsError::LogicAssert_0xD612CFB0());
    }
    GetSessionObjectsInterface()->SetUnsynchronizedObject(key, std::move(value));
}

std::shared_ptr<boost::any> CoreThreadContext::GetGenericUnsynchronizedObject(TString const& key)
{
    return HasSessionId() ? GetSessionObjectsInterface()->GetUnsynchronizedObject(key) : nullptr;
}

void CoreThreadContext::SetGenericObject(TString const& key, std::shared_ptr<boost::any> value)
{
    if (!HasSessionId()) {
        ThrowLogicException(kFile, 117,
                            "CoreThreadContext::SetGenericSynchronizedObject requires "
                            "ThreadContext to be initialized",
                            KorErrorsError::LogicAssert_0x7615C447());
    }
    GetSessionObjectsInterface()->SetSynchronizedObject(key, std::move(value));
}

std::shared_ptr<boost::any> CoreThreadContext::GetGenericObject(TString const& key)
{
    return HasSessionId() ? GetSessionObjectsInterface()->GetSynchronizedObject(key) : nullptr;
}

void CoreThreadContextUtils::SetLoggingContext(LoggingContext const& context)
{
    CoreThreadContext::SetGenericObject(LoggingContextKey(), std::make_shared<boost::any>(context));
}

LoggingContext CoreThreadContextUtils::ReadLoggingContext()
{
    std::shared_ptr<boost::any> const object =
        CoreThreadContext::GetGenericObject(LoggingContextKey());
    return object == nullptr ? nullptr : boost::any_cast<LoggingContext const&>(*object);
}
