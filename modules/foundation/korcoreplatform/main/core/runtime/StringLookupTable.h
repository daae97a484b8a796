/// Tables of texts that several threads fill and read at once.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <tbb/concurrent_unordered_map.h>

#include <unordered_map>

/// A text for each key. Threads may look up and insert at the same time, but not erase.
using StringLookupTable = tbb::concurrent_unordered_map<TString, TString>;

/// The text for a key; empty when the table has none. `key` ends with its zero; null is the empty
/// key.
/// Thread safety: may be called from any thread.
KORCOREPLATFORM_EXPORT TString LookupString(StringLookupTable const& table, char16_t const* key);

/// Makes a table of every pair of a map.
KORCOREPLATFORM_EXPORT StringLookupTable
FromStringLookupTable(std::unordered_map<TString, TString> const& map);

/// Makes a map of every pair of a table. What other threads insert meanwhile may be missing.
KORCOREPLATFORM_EXPORT std::unordered_map<TString, TString>
ToStringLookupTable(StringLookupTable const& table);
