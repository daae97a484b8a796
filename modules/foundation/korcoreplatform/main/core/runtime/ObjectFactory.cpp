#include "korcoreplatform/main/core/runtime/ObjectFactory.h"

#include "korsys/main/thread/TRecursiveMutex.h"

#include <mutex>
#include <utility>

namespace {

/// The one lock of the registry.
TRecursiveMutex& RegistryLock()
{
    static TRecursiveMutex& s_lock = *new TRecursiveMutex;
    return s_lock;
}

} // namespace

IObjectFactory::~IObjectFactory() = default;

ObjectFactoryBase::ObjectFactoryBase(TString const& factoryId) : m_factoryId(factoryId) {}

ObjectFactoryBase::~ObjectFactoryBase() = default;

void* ObjectFactoryBase::Create(TString const& typeName)
{
    auto const found = m_creators.find(typeName);
    return found == m_creators.end() ? nullptr : found->second();
}

void* ObjectFactoryBase::Create(TString const& typeName, void* argument)
{
    auto const found = m_argumentCreators.find(typeName);
    return found == m_argumentCreators.end() ? nullptr : found->second(argument);
}

TString ObjectFactoryBase::GetFactoryID() const
{
    return m_factoryId;
}

void ObjectFactoryBase::RegisterCreator(TString const& typeName, Creator creator)
{
    m_creators[typeName] = std::move(creator);
}

void ObjectFactoryBase::RegisterCreator(TString const& typeName, ArgumentCreator creator)
{
    m_argumentCreators[typeName] = std::move(creator);
}

FactoryRegistry& FactoryRegistry::Singleton()
{
    // The makers go when the process exits; what asks after that still finds a registry.
    static FactoryRegistry& s_registry = *new FactoryRegistry;
    struct EmptyFromExitOn
    {
        ~EmptyFromExitOn()
        {
            std::map<TString, Maker> makers;
            std::lock_guard<TRecursiveMutex> const lock(RegistryLock());
            makers.swap(s_registry.m_makers);
        }
    };
    static EmptyFromExitOn const s_atExit;
    return s_registry;
}

void FactoryRegistry::Register(Maker maker)
{
    std::lock_guard<TRecursiveMutex> const lock(RegistryLock());
    TString const id = maker()->GetFactoryID();
    m_makers[id] = std::move(maker);
}

IObjectFactory* FactoryRegistry::GetFactory(TString const& id)
{
    std::lock_guard<TRecursiveMutex> const lock(RegistryLock());
    auto const found = m_makers.find(id);
    if (found == m_makers.end()) {
        return nullptr;
    }
    Maker const maker = found->second; // a copy: the maker may register another in its place
    return maker();
}

void* ObjectFactoryUtils::CreateObject(TString const& factoryId, TString const& typeName)
{
    IObjectFactory* const factory = FactoryRegistry::Singleton().GetFactory(factoryId);
    return factory == nullptr ? nullptr : factory->Create(typeName);
}

void* ObjectFactoryUtils::CreateObject(TString const& factoryId, TString const& typeName,
                                       void* argument)
{
    IObjectFactory* const factory = FactoryRegistry::Singleton().GetFactory(factoryId);
    return factory == nullptr ? nullptr : factory->Create(typeName, argument);
}
