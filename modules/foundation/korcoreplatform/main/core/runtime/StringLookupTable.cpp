#include "korcoreplatform/main/core/runtime/StringLookupTable.h"

TString LookupString(StringLookupTable const& table, char16_t const* key)
{
    auto const found = table.find(TString(key));
    return found == table.end() ? TString() : found->second;
}

StringLookupTable FromStringLookupTable(std::unordered_map<TString, TString> const& map)
{
    return StringLookupTable(map.begin(), map.end());
}

std::unordered_map<TString, TString> ToStringLookupTable(StringLookupTable const& table)
{
    std::unordered_map<TString, TString> map;
    map.reserve(table.size());
    map.insert(table.begin(), table.end());
    return map;
}
