#include "Session.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korsys/main/system/TSystemCore.h"

#include <mutex>
#include <utility>

namespace TextCensus {
namespace {

class SessionObjects final : public ISessionObjects
{
public:
    void SetUnsynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) override
    {
        m_unsynchronized[key] = std::move(value);
    }
    std::shared_ptr<boost::any> GetUnsynchronizedObject(TString const& key) override
    {
        return Find(m_unsynchronized, key);
    }
    void SetSynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) override
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_synchronized[key] = std::move(value);
    }
    std::shared_ptr<boost::any> GetSynchronizedObject(TString const& key) override
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return Find(m_synchronized, key);
    }

private:
    using Objects = std::unordered_map<TString, std::shared_ptr<boost::any>>;

    static std::shared_ptr<boost::any> Find(Objects const& objects, TString const& key)
    {
        auto const found = objects.find(key);
        return found == objects.end() ? nullptr : found->second;
    }

    Objects m_unsynchronized;
    std::mutex m_mutex;
    Objects m_synchronized; ///< Guarded by `m_mutex`.
};

} // namespace

struct SessionScope::Session
{
    TUUID id = TUUID::CreateUUID();
    TString name = id.ToString(TUUIDFormatOption::Base36); ///< In log records.
    std::shared_ptr<ISessionObjects> objects = std::make_shared<SessionObjects>();
};

thread_local SessionScope::Session const* SessionScope::t_current = nullptr;

SessionScope::SessionScope(std::unordered_map<TString, TString> const& context)
    : m_session(std::make_unique<Session>()), m_former(t_current)
{
    t_current = m_session.get();
    if (CoreThreadContext::HasSessionId()) {
        CoreThreadContextUtils::SetLoggingContext(
            std::make_shared<std::unordered_map<TString, TString>>(context));
    }
}

SessionScope::~SessionScope()
{
    t_current = m_former;
}

void InstallSessions()
{
    using Scope = SessionScope;
    CoreThreadContext::SetGetSessionIdFunction(
        [] { return Scope::t_current != nullptr ? Scope::t_current->id : TUUID(); });
    CoreThreadContext::SetGetSessionObjectsInterfaceFunction(
        [] { return Scope::t_current != nullptr ? Scope::t_current->objects : nullptr; });
    CoreThreadContext::SetHasSessionIdFunction([] { return Scope::t_current != nullptr; });
    TLog::ActivityInfoFactory::SetFactoryFunction([](TLog::EventTime time, TString const& none) {
        return TLog::ActivityInfo(time, TSystemCore::ProcessID(), TSystemCore::ThreadID(),
                                  Scope::t_current != nullptr ? Scope::t_current->name : none, none,
                                  none, none, nullptr, nullptr, nullptr, none);
    });
}

} // namespace TextCensus
