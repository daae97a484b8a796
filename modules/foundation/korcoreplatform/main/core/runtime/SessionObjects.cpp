#include "korcoreplatform/main/core/runtime/SessionObjects.h"

#include "korcoreplatform/main/core/runtime/ReadMostlyLock_p.h"

#include <unordered_map>
#include <utility>

namespace {

using Object = std::shared_ptr<boost::any>;
using Objects = std::unordered_map<TString, Object>;

Object Find(Objects const& objects, TString const& key)
{
    auto const found = objects.find(key);
    return found != objects.end() ? found->second : nullptr;
}

/// Returns what was under the key before, for the caller to destroy.
Object Exchange(Objects& objects, TString const& key, Object value)
{
    if (value != nullptr) {
        objects[key].swap(value);
    } else if (auto const found = objects.find(key); found != objects.end()) {
        value = std::move(found->second);
        objects.erase(found);
    }
    return value;
}

} // namespace

struct SessionObjects::Tables
{
    ReadMostlyLock lock;
    Objects synchronized;   ///< Guarded by `lock`; none is null.
    Objects unsynchronized; ///< None is null.
};

SessionObjects::SessionObjects() : m_tables(std::make_unique<Tables>()) {}

SessionObjects::~SessionObjects() = default;

void SessionObjects::SetUnsynchronizedObject(TString const& key, Object value)
{
    Object const former = Exchange(m_tables->unsynchronized, key, std::move(value));
}

Object SessionObjects::GetUnsynchronizedObject(TString const& key)
{
    return Find(m_tables->unsynchronized, key);
}

void SessionObjects::SetSynchronizedObject(TString const& key, Object value)
{
    Object former; // destroyed behind the lock
    ReadMostlyLock::WriteGuard const writing(m_tables->lock);
    former = Exchange(m_tables->synchronized, key, std::move(value));
}

Object SessionObjects::GetSynchronizedObject(TString const& key)
{
    ReadMostlyLock::ReadGuard const reading(m_tables->lock);
    return Find(m_tables->synchronized, key);
}
