// How a look-up grows with the number of keys: object factories, lookup tables, sessions.

#include "korcoreplatform/benchmarks/support/Rounds.h"
#include "korcoreplatform/main/core/runtime/ObjectFactory.h"
#include "korcoreplatform/main/core/runtime/SessionObjectStore.h"
#include "korcoreplatform/main/core/runtime/SessionObjects.h"
#include "korcoreplatform/main/core/runtime/StringLookupTable.h"
#include "korcoreplatform/main/core/runtime/TUUID.h"
#include "korcoreplatform/main/string/TString.h"

#include <benchmark/benchmark.h>
#include <boost/any.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using Rounds::Measures;
using Rounds::Run;
using Rounds::Scenario;
using Clock = std::chrono::steady_clock;

constexpr char kTime[] = "ns/look-up";

template <class Text>
std::vector<Text> Keys(int n)
{
    std::vector<Text> keys;
    for (int i = 0; i != n; ++i) {
        TString const key = TString(u"resource-") + TString::number(i);
        keys.push_back(Text(key.constData()));
    }
    return keys;
}

/// The mean time of `find(key)` for keys in no order.
template <class Key, class Find>
Measures TimeLookUps(std::vector<Key> const& keys, Find find)
{
    constexpr std::size_t kLookUps = 200000;
    std::mt19937 random(7);
    std::vector<std::size_t> order(kLookUps);
    for (std::size_t& place : order) {
        place = random() % keys.size();
    }
    Clock::time_point const start = Clock::now();
    for (std::size_t const place : order) {
        auto found = find(keys[place]);
        benchmark::DoNotOptimize(found);
    }
    std::chrono::duration<double, std::nano> const time = Clock::now() - start;
    return {{kTime, time.count() / kLookUps}};
}

class NamedFactory : public ObjectFactoryBase
{
public:
    using ObjectFactoryBase::ObjectFactoryBase;
};

Measures InRegistry(Run const& run)
{
    std::vector<TString> const keys = Keys<TString>(run.records);
    std::vector<std::unique_ptr<IObjectFactory>> factories;
    FactoryRegistry& registry = FactoryRegistry::Singleton();
    for (TString const& key : keys) {
        factories.push_back(std::make_unique<NamedFactory>(key));
        registry.Register([factory = factories.back().get()] { return factory; });
    }
    return TimeLookUps(keys, [&](TString const& key) { return registry.GetFactory(key); });
}

Measures InLookupTable(Run const& run)
{
    std::vector<TString> const keys = Keys<TString>(run.records);
    std::unordered_map<TString, TString> map;
    for (TString const& key : keys) {
        map.emplace(key, u"a text of more than fourteen units");
    }
    StringLookupTable const table = FromStringLookupTable(map);
    return TimeLookUps(keys,
                       [&](TString const& key) { return LookupString(table, key.constData()); });
}

/// The peer's table is for one thread at a time.
Measures InStdMap(Run const& run)
{
    std::vector<std::u16string> const keys = Keys<std::u16string>(run.records);
    std::unordered_map<std::u16string, std::u16string> map;
    for (std::u16string const& key : keys) {
        map.emplace(key, u"a text of more than fourteen units");
    }
    return TimeLookUps(keys,
                       [&](std::u16string const& key) { return map.find(key.c_str())->second; });
}

/// One store serves all sessions, so that the map alone grows.
Measures InSessions(Run const& run)
{
    TString const key(u"user");
    auto const store = std::make_shared<SessionObjects>();
    store->SetSynchronizedObject(key, std::make_shared<boost::any>(1));
    std::vector<TUUID> ids;
    for (int i = 0; i != run.records; ++i) {
        ids.push_back(SessionObjectStore::CreateSession());
        SessionObjectStore::SetSessionObjectsInterface(ids.back(), store);
    }
    return TimeLookUps(
        ids, [&](TUUID const& id) { return SessionObjectStore::GetSynchronizedObject(id, key); });
}

bool Register()
{
    for (int n : {1, 10, 100, 1000, 10000, 100000, 1000000}) {
        std::string const among = ", keys: " + std::to_string(n);
        Scenario("factory registry" + among, n)
            .Contender("ours", &InRegistry)
            .Shown(kTime)
            .At("keys", "factory registry", n);
        Scenario("lookup table" + among, n)
            .Contender("ours", &InLookupTable)
            .Contender("std::unordered_map", &InStdMap)
            .Shown(kTime)
            .At("keys", "lookup table", n);
        Scenario("session map" + among, n)
            .Contender("ours", &InSessions)
            .Shown(kTime)
            .At("keys", "session map", n);
    }
    return true;
}

[[maybe_unused]] bool const s_registered = Register();

} // namespace
