/// Creates objects by name, without linking against the module that implements them.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <functional>
#include <map>

/// Makes objects of the types that it knows by name. They are handed out untyped: the caller knows
/// what it asked for.
///
/// Ownership: a created object belongs to the caller. A factory that is known to the
/// `FactoryRegistry` lives until the process ends, as nobody deletes it.
/// Thread safety: a factory that several threads look up has to allow calls from all of them.
class KORCOREPLATFORM_EXPORT IObjectFactory
{
public:
    virtual ~IObjectFactory();

    /// A new object, null when the factory does not know the type. A type that is made with an
    /// argument need not be known without one, nor the other way round.
    virtual void* Create(TString const& typeName) = 0;
    virtual void* Create(TString const& typeName, void* argument) = 0;

    /// The id under which the registry keeps the factory.
    virtual TString GetFactoryID() const = 0;
};

/// A factory that looks up what to call for a type. Derived factories register a creator for each
/// of their types, usually in the constructor:
///
///     ShapeFactory::ShapeFactory() : ObjectFactoryBase(u"shapes")
///     {
///         RegisterCreator(u"circle", [] { return static_cast<Shape*>(new Circle); });
///     }
///
/// A creator returns a pointer to the very type that callers cast to: an untyped pointer knows
/// nothing of base classes.
///
/// Thread safety: once all creators are registered, `Create` may be called from any thread if the
/// creators may.
class KORCOREPLATFORM_EXPORT ObjectFactoryBase : public IObjectFactory
{
public:
    explicit ObjectFactoryBase(TString const& factoryId);
    ~ObjectFactoryBase() override;

    /// Null when no creator is registered under exactly this name, for exactly this form of call.
    /// Throws: `std::bad_function_call` for an empty creator; what the creator throws.
    void* Create(TString const& typeName) override;
    void* Create(TString const& typeName, void* argument) override;

    TString GetFactoryID() const override;

protected:
    using Creator = std::function<void*()>;
    using ArgumentCreator = std::function<void*(void*)>;

    /// Registers a creator without or with an argument; the last one for a name stays.
    void RegisterCreator(TString const& typeName, Creator creator);
    void RegisterCreator(TString const& typeName, ArgumentCreator creator);

    TString m_factoryId;
    std::map<TString, Creator> m_creators;                 ///< By type name.
    std::map<TString, ArgumentCreator> m_argumentCreators; ///< By type name.
};

/// The process's factories by id. It keeps makers: functions that return the factory, usually one
/// that lives in the function as a static object, and may return the same one every time.
///
///     FactoryRegistry::Singleton().Register([]() -> IObjectFactory* {
///         static ShapeFactory s_factory;
///         return &s_factory;
///     });
///
/// Thread safety: safe from any thread. Makers are called while the lock of the registry is held:
/// a maker may use the registry itself, but must not wait for another thread that does.
class KORCOREPLATFORM_EXPORT FactoryRegistry
{
public:
    using Maker = std::function<IObjectFactory*()>;

    FactoryRegistry(FactoryRegistry const&) = delete;
    FactoryRegistry& operator=(FactoryRegistry const&) = delete;

    static FactoryRegistry& Singleton();

    /// Calls `maker` once to learn the id of its factory, and keeps it under that id, in the place
    /// of any registered before.
    /// Requires: `maker` returns a factory, not null.
    /// Throws: `std::bad_function_call` for an empty maker; what the maker throws.
    void Register(Maker maker);

    /// What the maker registered under `id` returns now; null when there is none.
    /// Throws: what the maker throws.
    IObjectFactory* GetFactory(TString const& id);

private:
    FactoryRegistry() = default;

    std::map<TString, Maker> m_makers; ///< By factory id; guarded by the registry lock.
};

namespace ObjectFactoryUtils {

/// A new object from the factory registered under an id; null when there is no such factory or it
/// does not know the type.
/// Thread safety: may be called from any thread; the factory works outside the registry's lock.
KORCOREPLATFORM_EXPORT void* CreateObject(TString const& factoryId, TString const& typeName);
KORCOREPLATFORM_EXPORT void* CreateObject(TString const& factoryId, TString const& typeName,
                                          void* argument);

} // namespace ObjectFactoryUtils
